#include "report/RequiredTemplates.h"

#include "core/Error.h"
#include "data/Connection.h"
#include "data/DataSeries.h"
#include "definitions/DefinitionStores.h"
#include "definitions/TemplateFile.h"

#include <QSet>

namespace {

/// The error of reading a chart's template; nothing when it can be read, or when there is none.
std::optional<Error> chartTemplateError(const QString &name)
{
    if (name.isEmpty())
        return {};
    try {
        readTemplate(chartTemplatePath(name));
        return {};
    } catch (const Error &error) {
        return Error(
            error.number,
            QStringLiteral("Error reading chart template '%1': %2").arg(name, error.description));
    }
}

/// Whether a report charts state items, or counter items.
bool charts(const clsReportDef &report, bool stateItems)
{
    QSet<QString> idents;
    for (const auto &device : report.ReportDevices) {
        for (const auto &item : device->DataItems)
            idents.insert(item->DataIDent);
    }
    const auto fields =
        gConnection->open(QStringLiteral("Select DataIDent, iScale from DataFields"));
    while (fields->next()) {
        if (idents.contains(fields->text(0)) && (fields->integer(1) == stateScale) == stateItems)
            return true;
    }
    return false;
}

} // namespace

void requireTemplates(const clsReportDef &report, const clsChartOutputBuilder &builder)
{
    builder.requireReportTemplates();
    const auto chart = gChartDefs.find(report.ChartID);
    if (!chart)
        return;
    for (const bool state : {true, false}) {
        const auto error =
            chartTemplateError(state ? chart->StateTemplateFile : chart->CountTemplateFile);
        if (error && charts(report, state))
            throw *error;
    }
}
