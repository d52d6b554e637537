#include "demo/DemoReports.h"

#include "base/Xml.h"

#include <QDateTime>

#include <functional>

namespace demo {

namespace {

/// Ids of the factory's definitions.
enum Chart { LastDay = 1, LastWeek, LastMonth, LastYear };
enum Schedule { Hourly = 1, Daily, Weekly, Monthly, MissedRunsMadeUp };

struct Report
{
    const char16_t *title;
    Chart chart;
    Schedule schedule;
    std::function<bool(const MonitoredDevice &)> hasDevice;
    std::function<bool(const MonitoredItem &)> hasItem;
};

QString chartId(Chart chart)
{
    return QStringLiteral("{A1000001-0000-4000-8000-%1}").arg(int(chart), 12, 10, QLatin1Char('0'));
}

QString scheduleId(Schedule schedule)
{
    return QStringLiteral("{B1000001-0000-4000-8000-%1}")
        .arg(int(schedule), 12, 10, QLatin1Char('0'));
}

std::vector<Report> reports()
{
    const auto anyDevice = [](const MonitoredDevice &) { return true; };
    const auto anyItem = [](const MonitoredItem &) { return true; };
    const auto stateItem = [](const MonitoredItem &item) { return item.scale == stateScale; };
    const auto inGroup = [](const char16_t *group) {
        return [group](const MonitoredDevice &device) { return device.group == group; };
    };
    return {
        {u"Network core - last 24 hours", LastDay, Hourly, inGroup(u"Network core"), anyItem},
        {u"Web sites - last 24 hours", LastDay, Hourly, inGroup(u"Web"), anyItem},
        {u"Servers - last week", LastWeek, Daily, inGroup(u"Servers"), anyItem},
        {u"Power and climate - last week", LastWeek, Daily, inGroup(u"Power"), anyItem},
        {u"Availability - last month", LastMonth, Weekly, anyDevice, stateItem},
        {u"Everything - last month", LastMonth, Weekly, anyDevice, anyItem},
        {u"Availability - last year", LastYear, Monthly, anyDevice, stateItem},
    };
}

void addSchedule(pugi::xml_node &report, Schedule schedule, const QString &lastRun)
{
    pugi::xml_node element = report.append_child("SCHEDULE");
    setAttr(element, "ScheduleID", scheduleId(schedule));
    setAttr(element, "LastRunDate", lastRun);
}

void addDevice(pugi::xml_node &element, const MonitoredDevice &device, const Report &report)
{
    pugi::xml_node deviceElement = element.append_child("DEVICE");
    setAttr(deviceElement, "MUID", device.muid);
    for (const MonitoredItem &item : device.items) {
        if (!item.isGlobal || !report.hasItem(item))
            continue;
        pugi::xml_node datum = deviceElement.append_child("DATUM");
        setAttr(datum, "DataIDent", item.dataIdent);
    }
}

} // namespace

QByteArray demoReports(const MonitoringPlan &plan)
{
    constexpr qint64 day = 24 * 60 * 60;
    const QString lastRun = QDateTime::fromSecsSinceEpoch(plan.options.until - day, Qt::UTC)
                                .toString(QStringLiteral("yyyy-MM-dd'T'HH:mm:ss'-00:00'"));
    pugi::xml_document document;
    pugi::xml_node root = document.append_child("REPORTDEFINITIONS");
    int number = 0;
    for (const Report &report : reports()) {
        ++number;
        pugi::xml_node element = root.append_child("CUSTOMREPORT");
        setAttr(
            element, "ReportID",
            QStringLiteral("{D1000001-0000-4000-8000-%1}").arg(number, 12, 10, QLatin1Char('0')));
        setAttr(element, "ReportTitle", QString::fromUtf16(report.title));
        setAttr(element, "ChartID", chartId(report.chart));
        setAttr(element, "OutputFile", QStringLiteral(".\\TEMP.HTML"));
        setAttr(element, "OutputTemplate", QString());
        addSchedule(element, MissedRunsMadeUp, lastRun);
        addSchedule(element, report.schedule, lastRun);
        for (const MonitoredDevice &device : plan.devices) {
            if (report.hasDevice(device))
                addDevice(element, device, report);
        }
        if (!element.child("DEVICE")) // a small database has no device of this report's kind
            root.remove_child(element);
    }
    return documentBytes(document);
}

} // namespace demo
