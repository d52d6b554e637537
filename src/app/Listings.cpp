#include "app/Listings.h"

#include "base/Files.h"
#include "base/Numbers.h"
#include "base/OneLine.h"
#include "base/TimeZone.h"
#include "config/Program.h"
#include "config/clsGrapherConfig.h"
#include "definitions/Definitions.h"
#include "report/OutputTree.h"
#include "scheduling/DueState.h"

#include <QStringList>

#include <algorithm>

namespace {

QString timeText(const QDateTime &time)
{
    return time.isValid() ? time.toString(QStringLiteral("yyyy-MM-dd HH:mm"))
                          : QStringLiteral("never");
}

/// Whether a slot is that of a report that never ran: it is at the beginning of all dates.
bool isFirst(const QDateTime &slot)
{
    return slot.isValid() && slot.date().year() < 1900;
}

QString secondsText(double seconds)
{
    return QString::number(seconds, 'f', 1) + QLatin1String(" s");
}

QString runLine(const RunRecord &run)
{
    QString line = wallTime(run.start).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")) +
                   QLatin1String("  ") + run.mode + QLatin1String(": ");
    if (run.reports.empty())
        line += QLatin1String("no report");
    else
        line += QStringLiteral("%1 report%2")
                    .arg(run.reports.size())
                    .arg(run.reports.size() == 1 ? QString() : QStringLiteral("s"));
    if (run.end == 0)
        return line + QLatin1String(", not finished: it runs still, or was broken off");
    return line + QLatin1String(", ") +
           secondsText(static_cast<double>(run.end - run.start) / 1000);
}

QString reportLine(const ReportRecord &report)
{
    QStringList parts;
    if (report.dueSince.isValid() && !isFirst(report.dueSince))
        parts.append(QLatin1String("due since ") + timeText(report.dueSince));
    if (report.start != 0) {
        parts.append(QStringLiteral("%1 charts").arg(report.charts));
        parts.append(groupedNumber(static_cast<double>(report.samples), 0) +
                     QLatin1String(" samples"));
        parts.append(secondsText(report.seconds()));
    }
    if (report.chartsWithoutImage > 0)
        parts.append(QStringLiteral("%1 without image").arg(report.chartsWithoutImage));
    if (report.mixedPages)
        parts.append(QStringLiteral("new and old pages are mixed"));
    return QStringLiteral("    %1 %2  %3")
        .arg(resultText(report.result), -10)
        .arg(report.title, parts.join(QLatin1String(", ")));
}

} // namespace

QString reportListText()
{
    QStringList lines;
    const std::vector<RunRecord> runs = runHistory().runs();
    const OutputTree tree(gConfig());
    for (const auto &report : definitions().gReportDefs) {
        const ScheduledReport scheduled = scheduledReport(*report);
        const DueState state = dueState(scheduled);
        const bool hasPages = fileExists(tree.reportPage(report->ReportID));
        lines.append(
            QStringList{
                oneLine(report->ReportID), oneLine(report->ReportTitle),
                QLatin1String("last ") + timeText(latestRun(scheduled, runs, hasPages).time),
                QLatin1String("next ") +
                    (isFirst(state.next) ? QStringLiteral("now") : timeText(state.next)),
                state.due ? QStringLiteral("due") : QStringLiteral("not due"), oneLine(state.why)}
                .join(u'\t') +
            u'\n');
    }
    return lines.join(QString());
}

QString historyText(const std::vector<RunRecord> &newestFirst)
{
    QStringList lines;
    for (auto run = newestFirst.rbegin(); run != newestFirst.rend(); ++run) {
        lines.append(runLine(*run));
        if (!run->error.isEmpty())
            lines.append(QLatin1String("    ") + run->error);
        for (const ReportRecord &report : run->reports) {
            lines.append(reportLine(report));
            if (!report.error.isEmpty())
                lines.append(QLatin1String("        ") + report.error);
            for (const QString &error : report.chartErrors)
                lines.append(QLatin1String("        ") + error);
        }
        for (const QString &mail : run->mails)
            lines.append(QLatin1String("    ") + mail);
    }
    if (lines.isEmpty())
        lines.append(QStringLiteral("No run is on record."));
    for (QString &line : lines)
        line = oneLine(line);
    return lines.join(u'\n') + u'\n';
}
