#include "scheduling/Metrics.h"

#include "base/Files.h"
#include "platform/EventLog.h"

#include <QSet>

namespace {

/// A label's value as the format wants it.
QString escaped(QString text)
{
    return text.replace(u'\\', QLatin1String("\\\\"))
        .replace(u'"', QLatin1String("\\\""))
        .replace(u'\n', QLatin1String("\\n"));
}

class MetricsText
{
public:
    /// Begins a metric; its samples follow.
    void begin(const char *name, const char *help)
    {
        m_name = QLatin1String("vantrel_") + QLatin1String(name);
        m_text +=
            QStringLiteral("# HELP %1 %2\n# TYPE %1 gauge\n").arg(m_name, QLatin1String(help));
    }
    void sample(const QString &labels, const QString &value)
    {
        m_text += m_name + labels + u' ' + value + u'\n';
    }
    void single(const char *name, const char *help, const QString &value)
    {
        begin(name, help);
        sample({}, value);
    }
    QByteArray bytes() const { return m_text.toUtf8(); }

private:
    QString m_name;
    QString m_text;
};

QString seconds(qint64 instant)
{
    return QString::number(static_cast<double>(instant) / 1000, 'f', 3);
}

/// The last record of each report, by the order in which the newest runs name them.
std::vector<const ReportRecord *> lastRecords(const std::vector<RunRecord> &runs)
{
    std::vector<const ReportRecord *> records;
    QSet<QString> seen;
    for (const RunRecord &run : runs) {
        for (const ReportRecord &report : run.reports) {
            const QString id = report.id.toLower();
            if (report.start == 0 || seen.contains(id))
                continue;
            seen.insert(id);
            records.push_back(&report);
        }
    }
    return records;
}

bool isGood(const ReportRecord &report)
{
    return report.result == ReportResult::Ok;
}

} // namespace

QByteArray metricsText(const std::vector<RunRecord> &runs, const RunState &state)
{
    MetricsText text;
    text.single("run_status", "Exit status of the last run: 0 is done.",
                QString::number(state.status));
    if (!runs.empty()) {
        text.single("run_start_timestamp_seconds", "When the last run began.",
                    seconds(runs.front().start));
        text.single("run_end_timestamp_seconds", "When the last run ended; 0 if it has not.",
                    seconds(runs.front().end));
    }
    text.single("outbox_messages", "Mails that wait to be sent.",
                QString::number(state.waitingMessages));

    struct Metric
    {
        const char *name;
        const char *help;
        QString (*value)(const ReportRecord &);
    };
    const Metric metrics[] = {
        {"report_ok", "1 if the report's last run made all its pages and charts from samples.",
         [](const ReportRecord &report) { return QString::number(isGood(report) ? 1 : 0); }},
        {"report_end_timestamp_seconds", "When the report's last run ended; 0 if it has not.",
         [](const ReportRecord &report) { return seconds(report.end); }},
        {"report_seconds", "How long the report's last run took.",
         [](const ReportRecord &report) { return QString::number(report.seconds(), 'f', 3); }},
        {"report_charts", "Charts of the report's last run.",
         [](const ReportRecord &report) { return QString::number(report.charts); }},
        {"report_samples", "Samples in these charts.",
         [](const ReportRecord &report) { return QString::number(report.samples); }},
    };
    const std::vector<const ReportRecord *> records = lastRecords(runs);
    const auto labels = [](const ReportRecord &report) {
        return QStringLiteral("report=\"%1\",id=\"%2\"")
            .arg(escaped(report.title), escaped(report.id));
    };
    for (const Metric &metric : metrics) {
        text.begin(metric.name, metric.help);
        for (const ReportRecord *report : records)
            text.sample(u'{' + labels(*report) + u'}', metric.value(*report));
    }
    text.begin("report_result", "The result of the report's last run, always 1.");
    for (const ReportRecord *report : records)
        text.sample(
            QStringLiteral("{%1,result=\"%2\"}").arg(labels(*report), resultText(report->result)),
            QStringLiteral("1"));
    return text.bytes();
}

bool saveMetrics(const QString &path, const RunHistory &history, const RunState &state,
                 QString *error)
{
    if (path.isEmpty())
        return true;
    try {
        saveFile(path, metricsText(history.runs(), state));
        return true;
    } catch (const Error &fault) {
        const QString text = QLatin1String("Error saving metrics ") + errorTail(fault);
        LogEvent(runEvent, EventError, text);
        if (error)
            *error = text;
        return false;
    }
}
