#include "mail/ReportMailTables.h"

#include "base/Durations.h"
#include "base/Numbers.h"
#include "report/ReportStory.h"

#include <QJsonArray>

#include <algorithm>

namespace {

constexpr size_t mostDevices = 10;

/// "no data" where there is none.
QString percentText(const QJsonValue &percent)
{
    return percent.isDouble() ? fixedNumber(percent.toDouble(), 2) + QLatin1String(" %")
                              : QStringLiteral("no data");
}

/// The success rate of a report or device.
QString rateOf(const QJsonObject &object)
{
    Availability availability;
    availability.tests = object[QLatin1String("tests")].toInteger();
    availability.failures = object[QLatin1String("failures")].toInteger();
    return rateText(availability);
}

qint64 secondsOf(const QJsonObject &object, QLatin1String name)
{
    return object[name].toInteger();
}

QString countText(double count)
{
    return groupedNumber(count, 0);
}

/// "1 outage", "2 outages"
QString counted(double count, const QString &what)
{
    return countText(count) + u' ' + what + (count == 1 ? QString() : QStringLiteral("s"));
}

QString comparedRate(const QJsonObject &comparison)
{
    if (!comparison[QLatin1String("comparable")].toBool())
        return QString();
    const double points = comparison[QLatin1String("ratePoints")].toDouble();
    const QString before = percentText(comparison[QLatin1String("precedingRate")]);
    const QString size = trimmedNumber(qAbs(points), 2);
    if (size == u"0")
        return QStringLiteral("as in the period before");
    return QStringLiteral("%1 points %2 than in the period before (%3)")
        .arg(size, points < 0 ? QStringLiteral("less") : QStringLiteral("more"), before);
}

QString comparedDowntime(const QJsonObject &comparison)
{
    return comparison[QLatin1String("comparable")].toBool()
               ? durationText(secondsOf(comparison, QLatin1String("precedingDowntimeSeconds"))) +
                     QLatin1String(" in the period before")
               : QString();
}

QString incidentNote(const QJsonObject &report)
{
    const int brief = report[QLatin1String("briefIncidents")].toInt();
    return brief == 0 ? QString() : QStringLiteral("and %1 brief").arg(countText(brief));
}

std::vector<MailRow> figureRows(const QJsonObject &report)
{
    const QJsonObject comparison = report[QLatin1String("comparison")].toObject();
    std::vector<MailRow> rows = {
        {QStringLiteral("Success rate"), rateOf(report), comparedRate(comparison)}};
    if (const int withTarget = report[QLatin1String("devicesWithTarget")].toInt())
        rows.push_back({QStringLiteral("Target missed"),
                        QStringLiteral("%1 of %2 devices")
                            .arg(report[QLatin1String("devicesMissedTarget")].toInt())
                            .arg(withTarget)});
    rows.push_back({QStringLiteral("Downtime of all devices"),
                    durationText(secondsOf(report, QLatin1String("downtimeSeconds"))),
                    comparedDowntime(comparison)});
    rows.push_back(
        {QStringLiteral("Incidents"),
         countText(static_cast<double>(report[QLatin1String("incidents")].toArray().size())),
         incidentNote(report)});
    const QJsonValue coverage = report[QLatin1String("coverage")];
    if (coverage.isDouble() && coverage.toDouble() < 0.995)
        rows.push_back({QStringLiteral("Coverage"), percentText(coverage.toDouble() * 100),
                        QStringLiteral("the monitor has no data of the rest")});
    return rows;
}

struct Device
{
    MailRow row;
    double missedBy; ///< points; 0: its target was met, or it has none
    double rate;
};

Device deviceOf(const QJsonObject &object)
{
    Device device{{object[QLatin1String("name")].toString(), rateOf(object)},
                  0,
                  object[QLatin1String("rate")].toDouble()};
    QStringList notes;
    const QJsonObject target = object[QLatin1String("target")].toObject();
    if (!target.isEmpty() && !target[QLatin1String("met")].toBool()) {
        device.missedBy = qAbs(target[QLatin1String("marginPoints")].toDouble());
        notes.append(QStringLiteral("target %1 missed")
                         .arg(targetText(target[QLatin1String("percent")].toDouble())));
    }
    const double outages = object[QLatin1String("outages")].toDouble();
    if (outages > 0)
        notes.append(counted(outages, QStringLiteral("outage")) + QLatin1String(", down ") +
                     durationText(secondsOf(object, QLatin1String("downtimeSeconds"))));
    device.row.note = notes.join(QLatin1String("; "));
    return device;
}

std::vector<MailRow> deviceRows(const QJsonArray &objects)
{
    std::vector<Device> devices;
    for (const QJsonValue object : objects) {
        Device device = deviceOf(object.toObject());
        if (object[QLatin1String("failures")].toDouble() > 0 || device.missedBy > 0)
            devices.push_back(std::move(device));
    }
    std::stable_sort(devices.begin(), devices.end(), [](const Device &a, const Device &b) {
        return std::pair(-a.missedBy, a.rate) < std::pair(-b.missedBy, b.rate);
    });
    std::vector<MailRow> rows;
    for (size_t i = 0; i < std::min(mostDevices, devices.size()); ++i)
        rows.push_back(devices[i].row);
    if (devices.size() > mostDevices)
        rows.push_back(
            {QStringLiteral("and %1 more").arg(devices.size() - mostDevices), QString()});
    return rows;
}

/// The same where the report's writer has left no words of its own.
QString verdictOf(const QJsonObject &report)
{
    QString verdict = rateOf(report);
    const int withTarget = report[QLatin1String("devicesWithTarget")].toInt();
    const int missed = report[QLatin1String("devicesMissedTarget")].toInt();
    if (missed > 0)
        verdict +=
            QStringLiteral(", %1 of %2 devices missed their target").arg(missed).arg(withTarget);
    return verdict;
}

QString testsSentence(const QJsonObject &report)
{
    const double tests = report[QLatin1String("tests")].toDouble();
    if (tests == 0)
        return QStringLiteral("There are no tests in this period.");
    return QStringLiteral("%1 of %2 tests failed.")
        .arg(countText(report[QLatin1String("failures")].toDouble()), countText(tests));
}

} // namespace

void tellFigures(MailContent &content, const QJsonObject &report)
{
    const QString verdict = report[QLatin1String("verdict")].toString();
    content.verdict = verdict.isEmpty() ? verdictOf(report) : verdict;
    if (report[QLatin1String("devicesMissedTarget")].toInt() > 0)
        content.tone = MailTone::Bad;
    else if (report[QLatin1String("devicesWithTarget")].toInt() > 0 &&
             content.tone != MailTone::Bad)
        content.tone = MailTone::Good;
    const QJsonArray sentences = report[QLatin1String("sentences")].toArray();
    for (const QJsonValue sentence : sentences)
        content.sentences.append(sentence.toString());
    if (sentences.isEmpty())
        content.sentences.append(testsSentence(report));
    content.figures = figureRows(report);
    content.devices = deviceRows(report[QLatin1String("devices")].toArray());
}
