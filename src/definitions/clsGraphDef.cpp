#include "definitions/clsGraphDef.h"

#include "base/Error.h"
#include "base/Xml.h"
#include "config/Status.h"
#include "definitions/TemplateFile.h"

#include <algorithm>

namespace {

constexpr qint64 minute = 60'000; // milliseconds
constexpr qint64 hour = 60 * minute;
constexpr qint64 day = 24 * hour;

QDate sundayOfWeek(const QDate &date)
{
    return date.addDays(-(date.dayOfWeek() % 7));
}

QDate mondayOfWeek(const QDate &date)
{
    return date.addDays(1 - date.dayOfWeek());
}

QDate firstOfQuarter(const QDate &date)
{
    return QDate(date.year(), (date.month() - 1) / 3 * 3 + 1, 1);
}

DateRange wholeQuarter(const QDate &date)
{
    return wholeDays(firstOfQuarter(date), firstOfQuarter(date).addMonths(3).addDays(-1));
}

QDate firstOfMonth(const QDate &date)
{
    return QDate(date.year(), date.month(), 1);
}

DateRange wholeMonth(const QDate &date)
{
    return wholeDays(firstOfMonth(date), firstOfMonth(date).addMonths(1).addDays(-1));
}

DateRange wholeYear(int year)
{
    return wholeDays(QDate(year, 1, 1), QDate(year, 12, 31));
}

/// The calendar period of a duration code; `otherwise` for other codes.
DateRange fixedPeriod(ChartDurationCode duration, const QDate &today, const DateRange &otherwise)
{
    switch (duration) {
    case Today:
        return wholeDays(today, today);
    case ThisWeek:
        return wholeDays(sundayOfWeek(today), sundayOfWeek(today).addDays(6));
    case ThisMonth:
        return wholeMonth(today);
    case ThisYear:
        return wholeYear(today.year());
    case Yesterday:
        return wholeDays(today.addDays(-1), today.addDays(-1));
    case LastWeek:
        return wholeDays(sundayOfWeek(today).addDays(-7), sundayOfWeek(today).addDays(-1));
    case LastMonth:
        return wholeMonth(firstOfMonth(today).addDays(-1));
    case LastYear:
        return wholeYear(today.year() - 1);
    case ThisMondayWeek:
        return wholeDays(mondayOfWeek(today), mondayOfWeek(today).addDays(6));
    case LastMondayWeek:
        return wholeDays(mondayOfWeek(today).addDays(-7), mondayOfWeek(today).addDays(-1));
    case Last7Days:
        return wholeDays(today.addDays(-7), today.addDays(-1));
    case ThisQuarter:
        return wholeQuarter(today);
    case LastQuarter:
        return wholeQuarter(firstOfQuarter(today).addDays(-1));
    default:
        return otherwise;
    }
}

/// A day from which a calendar period's duration code leads to the period before.
QDate dayInPeriodBefore(qint32 duration, const QDate &today)
{
    switch (duration) {
    case ThisWeek:
    case LastWeek:
    case ThisMondayWeek:
    case LastMondayWeek:
    case Last7Days:
        return today.addDays(-7);
    case ThisQuarter:
    case LastQuarter:
        return firstOfQuarter(today).addDays(-1);
    case ThisMonth:
    case LastMonth:
        return firstOfMonth(today).addDays(-1);
    case ThisYear:
    case LastYear:
        return firstOfMonth(today).addYears(-1);
    default:
        return today.addDays(-1);
    }
}

/// `from` less `count` units of time, limited to the years 100 to 9999.
QDateTime earlier(const QDateTime &from, qint64 count, qint64 unit)
{
    const qint64 first = wallDateTime(QDate(100, 1, 1)).toMSecsSinceEpoch();
    const qint64 last = wholeYear(9999).end.toMSecsSinceEpoch();
    const qint64 farthest = (last - first) / unit + 1; // enough units to leave that range
    const qint64 moved = from.toMSecsSinceEpoch() - qBound(-farthest, count, farthest) * unit;
    return QDateTime::fromMSecsSinceEpoch(qBound(first, moved, last), Qt::UTC);
}

/// Steps back one calendar month or year at a time. A day that the new month lacks rolls over into
/// the next one, from where the next step continues.
QDateTime earlierByCalendar(const QDateTime &from, qint32 count, int years, int months)
{
    if (count <= 0)
        return from;
    QDate date = from.date();
    const QDate first(100, 1, 1);
    for (qint32 i = 0; i < count; ++i) {
        if (date.year() - years < first.year() || date.addMonths(-months) < first)
            return wallDateTime(first);
        date = dateSerial(date.year() - years, date.month() - months, date.day());
    }
    return wallDateTime(date);
}

/// The start of the last intervals before `end`.
QDateTime startOfLastIntervals(const clsGraphDef &chart)
{
    const qint32 count = chart.IntervalCount;
    switch (chart.ChartFrequency) {
    case ByMinute:
        return earlier(chart.EndTime, qint64(std::max(chart.MinuteInterval, 0)) * count, minute);
    case ByHour:
        return earlier(chart.EndTime, count, hour);
    case ByDay:
        return earlier(chart.EndTime, count, day);
    case ByMonth:
        return earlierByCalendar(chart.EndTime, count, 0, 1);
    case ByYear:
        return earlierByCalendar(chart.EndTime, count, 1, 0);
    default:
        return chart.StartTime;
    }
}

/// The text of a template in a chart definition; empty when it cannot be read.
QString templateText(const QString &name)
{
    if (name.isEmpty())
        return QString();
    const QString path = chartTemplatePath(name);
    try {
        return readTemplate(path);
    } catch (const Error &error) {
        ShowStatus(QStringLiteral("Error reading chart template '%1' ").arg(path) +
                   errorTail(error));
        return QString();
    }
}

} // namespace

void clsGraphDef::SetStart(const QDate &today)
{
    if (SubFrequency == FixedPeriod) {
        const DateRange period = fixedPeriod(ChartDuration, today, {StartTime, EndTime});
        StartTime = period.start;
        EndTime = period.end;
    } else if (SubFrequency == LastIntervals) {
        StartTime = startOfLastIntervals(*this);
    }

    LabelStep = 1;
    if (ChartFrequency == ByMinute && IntervalCount > 30)
        LabelStep = IntervalCount <= 60 ? 2 : 5;
}

DateRange clsGraphDef::precedingPeriod(const QDateTime &run) const
{
    const QDateTime end = std::min(EndTime, run);
    const qint64 elapsed = StartTime.secsTo(end);
    const bool isCalendar = SubFrequency == FixedPeriod && ChartDuration >= Today &&
                            ChartDuration < AfterLastDuration && ChartDuration != CustomRange;
    if (!isCalendar)
        return {StartTime.addSecs(-elapsed), StartTime.addSecs(-1)};
    DateRange period = fixedPeriod(ChartDuration, dayInPeriodBefore(ChartDuration, run.date()), {});
    if (end < EndTime)
        period.end = std::min(period.end, period.start.addSecs(elapsed));
    return period;
}

pugi::xml_node clsGraphDef::XMLConfigEL(pugi::xml_node parent) const
{
    pugi::xml_node element = parent.append_child("CHART");
    setAttr(element, "ChartID", ChartID);
    setAttr(element, "Title", ChartTitle);
    setAttr(element, "SampleLabel", SampleLabel);
    setAttr(element, "Frequency", ChartFrequency);
    setAttr(element, "SubFreq", SubFrequency);
    setAttr(element, "MinuteInterval", MinuteInterval);
    setAttr(element, "IntervalCount", IntervalCount);
    setAttr(element, "ChartDuration", ChartDuration);
    setAttr(element, "StateFile", StateTemplateFile);
    setAttr(element, "CountFile", CountTemplateFile);
    setAttr(element, "Details", xmlBoolean(Details));
    setAttr(element, "DetailCount", DetailCount);
    setAttr(element, "StartTime", DateToXML(StartTime));
    setAttr(element, "EndTime", DateToXML(EndTime));
    setAttr(element, "ChartQuality", ChartQuality);
    return element;
}

QString clsGraphDef::XMLConfig() const
{
    pugi::xml_document document;
    return elementText(XMLConfigEL(document));
}

void clsGraphDef::SetXMLConfig(const QString &text)
{
    pugi::xml_document document;
    parseXml(document, text);
    readElement(document.document_element());
}

void clsGraphDef::readElement(const pugi::xml_node &element)
{
    readAttributes(element);
    StateTemplateData = templateText(StateTemplateFile);
    CountTemplateData = templateText(CountTemplateFile);
}

void clsGraphDef::readAttributes(const pugi::xml_node &element)
{
    ChartID = GetAttr(element, "ChartID", NewID());
    ChartTitle = GetAttr(element, "Title", QStringLiteral("Un Named Chart"));
    SampleLabel = GetAttr(element, "SampleLabel", QStringLiteral("Un Named Data"));
    ChartFrequency = codeAttr(element, "Frequency", ByMinute);
    SubFrequency = codeAttr(element, "SubFreq", LastIntervals);
    MinuteInterval = integerAttr(element, "MinuteInterval", 5);
    IntervalCount = integerAttr(element, "IntervalCount", 24);
    ChartDuration = codeAttr(element, "ChartDuration", Today);
    StateTemplateFile = GetAttr(element, "StateFile", QStringLiteral("StateChart.HTML"));
    CountTemplateFile = GetAttr(element, "CountFile", QStringLiteral("CountChart.HTML"));
    Details = xmlBoolean(GetAttr(element, "Details", QStringLiteral("0")));
    DetailCount = integerAttr(element, "DetailCount", 0);
    StartTime = dateAttr(element, "StartTime");
    EndTime = dateAttr(element, "EndTime");
    ChartQuality = integerAttr(element, "ChartQuality", ChartQuality);
}

clsGraphDef chartOfRun(clsGraphDef chart, const QDateTime &runTime)
{
    if (chart.ChartDuration != CustomRange)
        chart.EndTime = runTime;
    chart.SetStart(runTime.date());
    return chart;
}
