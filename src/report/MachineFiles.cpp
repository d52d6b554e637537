#include "report/MachineFiles.h"

#include "base/TimeZone.h"
#include "figures/Rankings.h"
#include "report/Csv.h"
#include "report/ReportStory.h"

#include <QDate>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

constexpr int formatVersion = 1;

QString timeText(qint64 second)
{
    return isoTimeText(second * 1000);
}

QString noteOf(const Outage &outage)
{
    QStringList notes;
    if (outage.beganBefore)
        notes.append(QStringLiteral("began before"));
    if (outage.ending == OutageEnd::NoData)
        notes.append(QStringLiteral("then no data"));
    else if (outage.ending == OutageEnd::StillFailing)
        notes.append(QStringLiteral("still failing"));
    return notes.join(QLatin1String(", "));
}

QJsonValue orNull(std::optional<double> number)
{
    return number ? QJsonValue(*number) : QJsonValue();
}

QJsonObject objectOf(const Period &period)
{
    return {{QStringLiteral("from"), timeText(period.from)},
            {QStringLiteral("to"), timeText(period.to)},
            {QStringLiteral("seconds"), period.seconds()}};
}

/// What devices and whole reports have alike.
QJsonObject objectOf(const Availability &availability, qint64 periodSeconds)
{
    const Downtime &downtime = availability.downtime;
    return {{QStringLiteral("tests"), availability.tests},
            {QStringLiteral("successes"), availability.successes()},
            {QStringLiteral("failures"), availability.failures},
            {QStringLiteral("rate"), orNull(availability.rate())},
            {QStringLiteral("serviceTests"), availability.countedTests},
            {QStringLiteral("serviceFailures"), availability.countedFailures},
            {QStringLiteral("serviceRate"), orNull(availability.countedRate())},
            {QStringLiteral("coverage"), orNull(availability.coverage())},
            {QStringLiteral("outages"), downtime.outages},
            {QStringLiteral("downtimeSeconds"), downtime.seconds},
            {QStringLiteral("longestSeconds"), downtime.longestSeconds},
            {QStringLiteral("meanSecondsToRepair"), orNull(downtime.meanTimeToRepair())},
            {QStringLiteral("meanSecondsBetweenFailures"),
             orNull(downtime.meanTimeBetweenFailures(periodSeconds))}};
}

QJsonValue comparisonJson(const Availability &present, const std::optional<Availability> &preceding)
{
    if (!preceding)
        return {};
    const Comparability answer = comparability(present.coverage(), preceding->coverage());
    if (!answer.isComparable)
        return QJsonObject{{QStringLiteral("comparable"), false},
                           {QStringLiteral("reason"), answer.reason}};
    return QJsonObject{{QStringLiteral("comparable"), true},
                       {QStringLiteral("ratePoints"), *present.rate() - *preceding->rate()},
                       {QStringLiteral("precedingRate"), *preceding->rate()},
                       {QStringLiteral("precedingDowntimeSeconds"), preceding->downtime.seconds},
                       {QStringLiteral("precedingOutages"), preceding->downtime.outages}};
}

QJsonValue targetJson(const DeviceFigures &device)
{
    if (!device.target)
        return {};
    const TargetResult &target = *device.target;
    return QJsonObject{{QStringLiteral("percent"), target.target},
                       {QStringLiteral("met"), target.isMet()},
                       {QStringLiteral("marginPoints"), target.margin()},
                       {QStringLiteral("tests"), target.tests},
                       {QStringLiteral("failuresAllowed"), target.allowedFailures()},
                       {QStringLiteral("failuresUsed"), target.failures}};
}

QJsonArray gapsJson(const DeviceFigures &device)
{
    QJsonArray gaps;
    for (const ItemFigures &item : device.items) {
        for (const Gap &gap : item.present.gaps)
            gaps.append(QJsonObject{{QStringLiteral("dataIdent"), item.dataIdent},
                                    {QStringLiteral("item"), item.name},
                                    {QStringLiteral("from"), timeText(gap.from)},
                                    {QStringLiteral("to"), timeText(gap.to)}});
    }
    return gaps;
}

QJsonObject nameOf(const DeviceFigures &device)
{
    return {{QStringLiteral("muid"), device.muid}, {QStringLiteral("name"), device.name}};
}

QJsonObject nameOf(const DeviceFigures &device, const ItemFigures &item)
{
    QJsonObject object = nameOf(device);
    object.insert(QStringLiteral("dataIdent"), item.dataIdent);
    object.insert(QStringLiteral("item"), item.name);
    object.insert(QStringLiteral("unit"), item.unit);
    return object;
}

QJsonArray devicesJson(const ReportFigures &figures)
{
    QJsonArray devices;
    for (const DeviceFigures &device : figures.devices) {
        QJsonObject object = objectOf(device.present, figures.period.seconds());
        object.insert(QStringLiteral("muid"), device.muid);
        object.insert(QStringLiteral("name"), device.name);
        object.insert(QStringLiteral("target"), targetJson(device));
        object.insert(QStringLiteral("comparison"),
                      comparisonJson(device.present, device.preceding));
        object.insert(QStringLiteral("gaps"), gapsJson(device));
        devices.append(object);
    }
    return devices;
}

QJsonArray incidentsJson(const ReportFigures &figures)
{
    QJsonArray incidents;
    for (const Incident &incident : figures.incidents) {
        QJsonArray devices;
        for (const Incident::Device &part : incident.devices) {
            QJsonObject device = nameOf(figures.devices[part.index]);
            device.insert(QStringLiteral("begin"), timeText(part.begin));
            device.insert(QStringLiteral("downtimeSeconds"), part.seconds);
            devices.append(device);
        }
        incidents.append(QJsonObject{{QStringLiteral("begin"), timeText(incident.begin)},
                                     {QStringLiteral("end"), timeText(incident.end)},
                                     {QStringLiteral("seconds"), incident.seconds()},
                                     {QStringLiteral("deviceSeconds"), incident.deviceSeconds},
                                     {QStringLiteral("devices"), devices}});
    }
    return incidents;
}

QJsonArray rankingsJson(const ReportFigures &figures)
{
    static const QString kinds[] = {QStringLiteral("percentile95"), QStringLiteral("changePercent"),
                                    QStringLiteral("percentOfLimit")};
    QJsonArray rankings;
    for (const Ranking &ranking : rankingsOf(figures)) {
        QJsonArray entries;
        for (const Ranking::Entry &entry : ranking.entries) {
            const DeviceFigures &device = figures.devices[entry.device];
            QJsonObject object = nameOf(device, device.items[entry.item]);
            object.insert(QStringLiteral("value"), entry.value);
            entries.append(object);
        }
        rankings.append(QJsonObject{{QStringLiteral("item"), ranking.name},
                                    {QStringLiteral("unit"), ranking.unit},
                                    {QStringLiteral("by"), kinds[static_cast<int>(ranking.by)]},
                                    {QStringLiteral("entries"), entries}});
    }
    return rankings;
}

QJsonArray forecastsJson(const ReportFigures &figures)
{
    const auto dateText = [](qint64 day) {
        return QDate::fromJulianDay(day).toString(Qt::ISODate);
    };
    QJsonArray forecasts;
    for (const DeviceFigures &device : figures.devices) {
        for (const ItemFigures &item : device.items) {
            if (!item.forecast)
                continue;
            const Forecast &forecast = *item.forecast;
            QJsonObject object = nameOf(device, item);
            object.insert(QStringLiteral("limit"), orNull(limitOf(item)));
            object.insert(QStringLiteral("perDay"), forecast.slope);
            object.insert(QStringLiteral("date"), dateText(forecast.day));
            object.insert(QStringLiteral("earliest"), dateText(forecast.earliest));
            object.insert(QStringLiteral("latest"),
                          forecast.latest ? QJsonValue(dateText(*forecast.latest)) : QJsonValue());
            forecasts.append(object);
        }
    }
    return forecasts;
}

} // namespace

QByteArray outagesCsv(const ReportFigures &figures)
{
    CsvText csv;
    for (const char *name :
         {"Device", "MUID", "Item", "DataIDent", "Begin", "End", "Seconds", "FailedTests", "Note"})
        csv.text(QLatin1String(name));
    csv.endRecord();
    for (const DeviceFigures &device : figures.devices) {
        for (const ItemFigures &item : device.items) {
            for (const Outage &outage : item.present.outages) {
                csv.text(device.name).text(device.muid).text(item.name).number(item.dataIdent);
                csv.text(timeText(outage.begin)).text(timeText(outage.end));
                csv.number(outage.seconds).number(qint64(outage.failedTests));
                csv.text(noteOf(outage));
                csv.endRecord();
            }
        }
    }
    return csv.bytes();
}

QByteArray reportJson(const QString &reportId, const QString &title, const ReportFigures &figures)
{
    QJsonObject report = objectOf(figures.present, figures.period.seconds());
    report.insert(QStringLiteral("version"), formatVersion);
    report.insert(QStringLiteral("report"),
                  QJsonObject{{QStringLiteral("id"), reportId}, {QStringLiteral("title"), title}});
    const ReportStory story = storyOf(figures);
    report.insert(QStringLiteral("sentences"), QJsonArray::fromStringList(story.sentences));
    report.insert(QStringLiteral("verdict"), story.verdict);
    report.insert(QStringLiteral("period"), objectOf(figures.period));
    report.insert(QStringLiteral("precedingPeriod"),
                  figures.precedingPeriod ? objectOf(*figures.precedingPeriod) : QJsonValue());
    report.insert(QStringLiteral("excludedSeconds"), figures.excludedSeconds);
    report.insert(QStringLiteral("comparison"), comparisonJson(figures.present, figures.preceding));
    report.insert(QStringLiteral("devicesWithTarget"), figures.withTarget);
    report.insert(QStringLiteral("devicesMissedTarget"), figures.missedTarget);
    report.insert(QStringLiteral("devices"), devicesJson(figures));
    report.insert(QStringLiteral("incidents"), incidentsJson(figures));
    report.insert(QStringLiteral("briefIncidents"), figures.briefIncidents);
    report.insert(QStringLiteral("rankings"), rankingsJson(figures));
    report.insert(QStringLiteral("forecasts"), forecastsJson(figures));
    return QJsonDocument(report).toJson();
}
