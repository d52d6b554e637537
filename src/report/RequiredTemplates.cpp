#include "report/RequiredTemplates.h"

#include "base/Error.h"
#include "base/Paths.h"
#include "config/clsGrapherConfig.h"
#include "definitions/TemplateFile.h"
#include "series/DataSeries.h"

#include <optional>

namespace {

/// The error of reading a chart's template; null when it can be read, or there is none.
std::optional<Error> chartTemplateError(const QString &name, const clsGrapherConfig &settings)
{
    if (name.isEmpty())
        return {};
    try {
        readTemplate(chartTemplatePath(name, NormalizeFolder(settings.PTH_Config())));
        return {};
    } catch (const Error &error) {
        return Error(
            error.number,
            QStringLiteral("Error reading chart template '%1': %2").arg(name, error.description));
    }
}

/// Whether a report charts state items, or counter items.
bool charts(const PlannedReport &report, const Inventory &inventory, bool stateItems)
{
    for (const PlannedReport::Device &device : report.devices) {
        for (const qint64 dataIdent : device.dataIdents) {
            const ItemRow *item = inventory.item(dataIdent);
            if (item && (item->scale == stateScale) == stateItems)
                return true;
        }
    }
    return false;
}

} // namespace

void requireTemplates(const PlannedReport &report, const Inventory &inventory,
                      const clsChartOutputBuilder &builder, const clsGrapherConfig &settings)
{
    builder.requireReportTemplates();
    for (const bool state : {true, false}) {
        const auto error = chartTemplateError(
            state ? report.chart.StateTemplateFile : report.chart.CountTemplateFile, settings);
        if (error && charts(report, inventory, state))
            throw *error;
    }
}
