#include "report/ItemPreview.h"

#include "report/DeviceJob.h"
#include "report/ReportContext.h"

Chart itemChart(MonitoringDatabase &database, const clsGraphDef &chart, const QString &muid,
                qint64 dataIdent, const clsGrapherConfig &settings, qint64 latest)
{
    clsReportDef report;
    report.ChartID = chart.ChartID;
    report.Compare = false;
    const auto device = std::make_shared<clsReportDeviceDef>();
    device->MUID = muid;
    const auto item = std::make_shared<clsReportDataIdentDef>();
    item->DataIDent = QString::number(dataIdent);
    device->DataItems.add(u'k' + item->DataIDent, item);
    report.ReportDevices.add(muid, device);

    const PlannedReport plan = plannedReport(report, &chart, latest);
    if (plan.error)
        throw *plan.error;
    if (plan.axisError)
        throw *plan.axisError;
    const std::shared_ptr<const Inventory> inventory = database.inventory();
    if (!inventory->device(muid) || !inventory->item(dataIdent))
        throw Error(ItemNotFound, QStringLiteral("The data item is not in the database"));
    DeviceQuestions questions(plan, plan.devices.front(), *inventory);
    database.answer(questions.items, std::span(&questions.summary, 1));
    const DeviceFacts facts = questions.takeFacts();
    if (facts.items.empty())
        throw Error(ItemNotFound, QStringLiteral("The data item is not one of this device"));
    if (facts.items.front().error)
        throw *facts.items.front().error;
    const clsChartOutputBuilder noTemplates;
    return chartOf(ReportContext(plan, noTemplates, settings), facts, facts.items.front());
}
