#include "report/TemplateNames.h"

#include <array>

namespace {

#define VANTREL_TOTALS                                                                             \
    "total.rate total.tests total.failed total.devices total.troubled total.silent "
#define VANTREL_DEVICE                                                                             \
    "mach.name mach.desc report.date report.time report.id report.title report.daterange "         \
    "report.zone chart.title dev.prev dev.next dev.items dev.counted page.lang page.nonce "
#define VANTREL_REPORT                                                                             \
    VANTREL_TOTALS                                                                                 \
    "report.title report.date report.time report.id report.daterange report.zone report.note "     \
    "report.worst report.archive chart.title page.lang page.nonce img.width img.height img.alt "   \
    "overall.graph overall.width overall.height overall.alt "
#define VANTREL_ITEM                                                                               \
    VANTREL_DEVICE                                                                                 \
    "varb.name varb.desc varb.unit dev.graph dev.graphpage sample.csv item.id item.failed "        \
    "item.note img.width img.height img.alt "
#define VANTREL_CHART                                                                              \
    VANTREL_ITEM                                                                                   \
    "chart.samplelabel chart.scroll chart.maxscroll chart.starttime chart.endtime chart.series1 "  \
    "chart.series2 chart.series3 chart.labels chart.series1.total chart.series2.total "            \
    "chart.series3.total chart.scalename chart.lowrange chart.upperrange chart.ranged "            \
    "chart.average chart.percentile95 chart.moving chart.movingperiod"

constexpr auto entry(const char *attribute, const char *marker, const char *names)
{
    return TemplateNames{QLatin1String(attribute), QLatin1String(marker), QLatin1String(names)};
}

const std::array pageTemplates = {
    entry("TIN_TOC", "report.list", "page.lang page.nonce"),
    entry("TIN_TOC_ReportItem", "",
          VANTREL_TOTALS "report.href summary.href devices.href report.id report.tempid "
                         "report.title chart.title report.lastrun report.lastresult "
                         "report.lastnote report.nextdue report.devices report.archive"),
    entry("TIN_REPORT", "", VANTREL_REPORT),
    entry("TIN_REP_TOC", "device.list", "report.title report.id chart.title page.lang page.nonce"),
    entry("TIN_REP_DeviceItem", "", "mach.muid mach.unmuid mach.name mach.desc"),
    entry("TIN_REP_Top", "", "report.title report.id chart.title page.lang page.nonce"),
    entry("TIN_REP_Summary", "state.detail", VANTREL_REPORT),
    entry("TIN_STATE_Detail", "detail.items",
          "sample.name sample.description sample.scale sample.csv report.daterange chart.title"),
    entry("TIN_STATE_DetailItem", "",
          "sample.label sample.href successcount criticalcount totalcount successrate"),
    entry("TIN_COUNT_Detail", "detail.items",
          "sample.name sample.csv sample.description sample.scale report.daterange chart.title"),
    entry("TIN_COUNT_DetailItem", "", "sample.label sample.value"),
    entry("TIN_DEV_Rep", "dev.varblist", VANTREL_DEVICE),
    entry("TIN_VARB_Item", "detail.list", VANTREL_ITEM),
};

const std::array chartTemplates = {
    entry("StateFile", "", VANTREL_CHART),
    entry("CountFile", "", VANTREL_CHART),
};

} // namespace

bool TemplateNames::knows(QStringView name) const
{
    if (name == marker)
        return !marker.isEmpty();
    for (const QLatin1String known :
         QLatin1String(names).tokenize(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        if (name == known)
            return true;
    }
    return false;
}

std::span<const TemplateNames> pageTemplateNames()
{
    return pageTemplates;
}

std::span<const TemplateNames> chartTemplateNames()
{
    return chartTemplates;
}
