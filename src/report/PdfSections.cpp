#include "report/PdfSections.h"

#include "base/Durations.h"
#include "base/Numbers.h"
#include "charts/ValueAxis.h"
#include "figures/Rankings.h"
#include "report/ReportStory.h"

#include <QDate>

#include <algorithm>

namespace {

constexpr size_t maxRows = 200;

using Cell = PdfTable::Cell;

QString number(qint64 count)
{
    return groupedNumber(static_cast<double>(count), 0);
}

QString dateText(qint64 day)
{
    return QDate::fromJulianDay(day).toString(Qt::ISODate);
}

Cell cellOf(const DeviceFigures &device, const DevicePages &pages)
{
    return {shownName(device.name), pages.value(device.folder, -1)};
}

/// Keeps what fits into a table, and says how much there is besides.
void limitRows(PdfTable &table, size_t all, const char *where)
{
    if (all > table.rows.size())
        table.note =
            QStringLiteral("and %1 more, in %2")
                .arg(number(static_cast<qint64>(all - table.rows.size())), QLatin1String(where));
}

PdfTable incidents(const ReportFigures &figures, const DevicePages &pages)
{
    PdfTable table;
    table.columns = {{QStringLiteral("Began")},
                     {QStringLiteral("Lasted"), true},
                     {QStringLiteral("Devices"), true},
                     {QStringLiteral("First to fail")},
                     {QStringLiteral("Downtime, all devices"), true}};
    for (const Incident &incident : figures.incidents) {
        if (table.rows.size() == maxRows)
            break;
        table.rows.push_back({{storyTime(incident.begin)},
                              {durationText(incident.seconds())},
                              {number(static_cast<qint64>(incident.devices.size()))},
                              cellOf(figures.devices[incident.devices.front().index], pages),
                              {durationText(incident.deviceSeconds)}});
    }
    limitRows(table, figures.incidents.size(), "report.json");
    return table;
}

PdfTable missedTargets(const ReportFigures &figures, const DevicePages &pages)
{
    PdfTable table;
    table.columns = {{QStringLiteral("Device")},
                     {QStringLiteral("Target"), true},
                     {QStringLiteral("Rate in service"), true},
                     {QStringLiteral("Points"), true},
                     {QStringLiteral("Downtime"), true},
                     {QStringLiteral("Outages"), true},
                     {QStringLiteral("Failed"), true},
                     {QStringLiteral("Allowed"), true}};
    std::vector<const DeviceFigures *> missed;
    for (const DeviceFigures &device : figures.devices) {
        if (device.target && !device.target->isMet())
            missed.push_back(&device);
    }
    std::stable_sort(missed.begin(), missed.end(),
                     [](const DeviceFigures *a, const DeviceFigures *b) {
                         return a->target->margin() < b->target->margin();
                     });
    for (const DeviceFigures *device : missed) {
        if (table.rows.size() == maxRows)
            break;
        Availability counted; // what the target is about
        counted.tests = device->target->tests;
        counted.failures = device->target->failures;
        table.rows.push_back({cellOf(*device, pages),
                              {targetText(device->target->target)},
                              {rateText(counted), -1, true},
                              {pointsText(device->present, device->preceding)},
                              {durationText(device->present.downtime.seconds)},
                              {number(device->present.downtime.outages)},
                              {number(device->target->failures)},
                              {number(device->target->allowedFailures())}});
    }
    limitRows(table, missed.size(), "report.json");
    return table;
}

std::vector<PdfTable> rankings(const ReportFigures &figures, const DevicePages &pages)
{
    const auto valueOf = [](const Ranking &ranking, double value) {
        switch (ranking.by) {
        case RankedBy::Percentile95:
            return readableValue(value, ranking.unit);
        case RankedBy::Change:
            return QStringLiteral("+%1 %").arg(groupedNumber(value, 1));
        case RankedBy::Limit:
            break;
        }
        return QStringLiteral("%1 %").arg(groupedNumber(value, 1));
    };
    static const QString kinds[] = {QStringLiteral("95th percentile"),
                                    QStringLiteral("rise of the 95th percentile"),
                                    QStringLiteral("95th percentile of the limit")};
    std::vector<PdfTable> tables;
    for (const Ranking &ranking : rankingsOf(figures)) {
        const QString &kind = kinds[static_cast<int>(ranking.by)];
        PdfTable table;
        table.title = QStringLiteral("%1: %2").arg(shownName(ranking.name), kind);
        table.columns = {{QStringLiteral("Device")}, {kind, true}};
        for (const Ranking::Entry &entry : ranking.entries)
            table.rows.push_back(
                {cellOf(figures.devices[entry.device], pages), {valueOf(ranking, entry.value)}});
        tables.push_back(std::move(table));
    }
    return tables;
}

PdfTable forecasts(const ReportFigures &figures, const DevicePages &pages)
{
    PdfTable table;
    table.columns = {{QStringLiteral("Device")},           {QStringLiteral("Counter")},
                     {QStringLiteral("Limit"), true},      {QStringLiteral("Reached about"), true},
                     {QStringLiteral("Not before"), true}, {QStringLiteral("Not after"), true}};
    std::vector<std::pair<qint64, std::vector<Cell>>> rows;
    for (const DeviceFigures &device : figures.devices) {
        for (const ItemFigures &item : device.items) {
            if (!item.forecast)
                continue;
            const Forecast &forecast = *item.forecast;
            rows.push_back(
                {forecast.day,
                 {cellOf(device, pages),
                  {shownName(item.name)},
                  {readableValue(limitOf(item).value_or(0), item.unit)},
                  {dateText(forecast.day)},
                  {dateText(forecast.earliest)},
                  {forecast.latest ? dateText(*forecast.latest) : QStringLiteral("unknown")}}});
        }
    }
    std::stable_sort(rows.begin(), rows.end(),
                     [](const auto &a, const auto &b) { return a.first < b.first; });
    for (size_t i = 0; i < std::min(rows.size(), maxRows); ++i)
        table.rows.push_back(std::move(rows[i].second));
    limitRows(table, rows.size(), "report.json");
    return table;
}

} // namespace

std::vector<PdfSection> pdfSections(const ReportFigures &figures, const DevicePages &pages)
{
    std::vector<PdfSection> sections;
    const auto add = [&sections](const char *heading, std::vector<PdfTable> tables) {
        std::erase_if(tables, [](const PdfTable &table) { return table.rows.empty(); });
        if (!tables.empty())
            sections.push_back({QLatin1String(heading), std::move(tables)});
    };
    add("Incidents", {incidents(figures, pages)});
    add("Missed targets", {missedTargets(figures, pages)});
    add("Rankings", rankings(figures, pages));
    add("Forecasts", {forecasts(figures, pages)});
    return sections;
}
