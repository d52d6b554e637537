#include "ui/main/ReportList.h"

#include "base/Clock.h"
#include "base/Files.h"
#include "base/TimeZone.h"
#include "config/Program.h"
#include "config/clsGrapherConfig.h"
#include "definitions/Definitions.h"
#include "scheduling/DueState.h"
#include "ui/common/Widgets.h"

#include <QApplication>
#include <QFont>
#include <QStyle>

QString timeText(const QDateTime &wall)
{
    return wall.toString(QStringLiteral("yyyy-MM-dd HH:mm"));
}

QString resultCaption(ReportResult result)
{
    QString text = resultText(result);
    text[0] = text[0].toUpper();
    return result == ReportResult::Ok ? QStringLiteral("OK") : text;
}

bool needsAttention(ReportResult result)
{
    return result == ReportResult::Failed || result == ReportResult::Partial ||
           result == ReportResult::Unfinished;
}

namespace {

/// Behind numbers, which would touch the next column's text.
constexpr QChar apart(0x2003);

QFont boldFont()
{
    QFont font = QApplication::font("QTreeView");
    font.setBold(true);
    return font;
}

QString scheduleNames(const clsReportDef &report)
{
    QStringList names;
    for (const auto &entry : report.ReportSchedules) {
        const auto schedule = definitions().gScheduleDefs.find(entry->ScheduleID);
        names.append(schedule ? schedule->ScheduleName : QStringLiteral("(missing schedule)"));
    }
    return names.isEmpty() ? QStringLiteral("None") : names.join(QLatin1String(", "));
}

QString whyOf(const ReportRecord &record)
{
    QStringList lines;
    if (!record.error.isEmpty())
        lines.append(record.error);
    if (record.chartsWithoutImage > 0)
        lines.append(QStringLiteral("%1 of %2 charts have no image")
                         .arg(record.chartsWithoutImage)
                         .arg(record.charts));
    if (record.result == ReportResult::NoData)
        lines.append(QStringLiteral("The chart's period holds no samples of the report's devices"));
    return lines.join(u'\n');
}

} // namespace

ReportList::ReportList(QObject *parent)
    : QAbstractTableModel(parent)
    , m_reportIcon(QApplication::style()->standardIcon(QStyle::SP_FileIcon))
    , m_warningIcon(QApplication::style()->standardIcon(QStyle::SP_MessageBoxWarning))
{}

ReportList::Row ReportList::rowFor(const clsReportDef &report, const std::vector<RunRecord> &runs,
                                   const OutputTree &tree)
{
    const auto chart = definitions().gChartDefs.find(report.ChartID);
    const ScheduledReport scheduled = scheduledReport(report);
    const DueState state = dueState(scheduled);
    Row row;
    row.id = report.ReportID;
    row.title = report.ReportTitle;
    row.chart = chart ? chart->ChartTitle : QStringLiteral("(missing chart)");
    row.devices = report.ReportDevices.size();
    row.hasRules = !report.Rules.empty();
    row.schedules = scheduleNames(report);
    const LatestRun last = latestRun(scheduled, runs, fileExists(tree.reportPage(report.ReportID)));
    row.lastRun = last.time;
    row.nextRun = state.next;
    row.due = state.due;
    row.whyNext = state.why;
    if (last.record) {
        row.result = last.record->result;
        row.whyResult = whyOf(*last.record);
    }
    return row;
}

void ReportList::refresh()
{
    const std::vector<RunRecord> runs = runHistory().runs();
    const OutputTree tree(gConfig());
    for (int row = static_cast<int>(m_rows.size()) - 1; row >= 0; --row) {
        if (definitions().gReportDefs.contains(reportId(row)))
            continue;
        beginRemoveRows({}, row, row);
        m_rows.erase(m_rows.begin() + row);
        endRemoveRows();
    }
    for (const auto &report : definitions().gReportDefs) {
        const int row = rowOf(report->ReportID);
        if (row >= 0) {
            m_rows[static_cast<size_t>(row)] = rowFor(*report, runs, tree);
            continue;
        }
        const int end = static_cast<int>(m_rows.size());
        beginInsertRows({}, end, end);
        m_rows.push_back(rowFor(*report, runs, tree));
        endInsertRows();
    }
    if (!m_rows.empty())
        Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, ColumnCount - 1));
}

void ReportList::takeRecord(const ReportRecord &record)
{
    const int place = rowOf(record.id);
    if (place < 0)
        return;
    Row &row = m_rows[static_cast<size_t>(place)];
    row.isRunning = record.end == 0;
    if (!row.isRunning) {
        row.lastRun = wallTime(record.end);
        row.result = record.result;
        row.whyResult = whyOf(record);
    }
    Q_EMIT dataChanged(index(place, 0), index(place, ColumnCount - 1));
}

QString ReportList::dueText(const QDateTime &look) const
{
    const Row *first = nullptr;
    qsizetype due = 0;
    for (const Row &row : m_rows) {
        if (!row.nextRun.isValid())
            continue;
        due += row.nextRun <= look ? 1 : 0;
        if (!first || row.nextRun < first->nextRun)
            first = &row;
    }
    if (!first)
        return QStringLiteral("No report is due.");
    const QString title = u'\u201c' + first->title + u'\u201d';
    if (due == 0)
        return QStringLiteral("Next due: %1, %2.").arg(title, timeText(first->nextRun));
    return due == 1 ? QStringLiteral("Due then: %1.").arg(title)
                    : QStringLiteral("Due then: %1 and %2 more.").arg(title).arg(due - 1);
}

int ReportList::rowOf(const QString &reportId) const
{
    for (size_t row = 0; row < m_rows.size(); ++row) {
        if (m_rows[row].id.compare(reportId, Qt::CaseInsensitive) == 0)
            return static_cast<int>(row);
    }
    return -1;
}

int ReportList::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int ReportList::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QString ReportList::text(const Row &row, int column)
{
    switch (column) {
    case Title:
        return row.title;
    case Chart:
        return row.chart;
    case Devices:
        if (row.hasRules)
            return row.devices == 0
                       ? QLatin1String("by rule") + apart
                       : QStringLiteral("%1, by rule").arg(QLocale().toString(row.devices)) + apart;
        return QLocale().toString(row.devices) + apart;
    case Schedules:
        return row.schedules;
    case LastRun:
        return row.lastRun.isValid() ? timeText(row.lastRun) : QStringLiteral("Never");
    case Result:
        if (row.isRunning)
            return QStringLiteral("Running…");
        return row.result ? resultCaption(*row.result) : QString();
    default:
        if (!row.nextRun.isValid())
            return QStringLiteral("Not scheduled");
        return row.due || row.nextRun <= now() ? QStringLiteral("Due now") : timeText(row.nextRun);
    }
}

QVariant ReportList::sortKey(const Row &row, int column)
{
    // Those that never ran come first, those that never will come last.
    static const QDateTime first(QDate(1, 1, 1), QTime(0, 0), Qt::UTC);
    static const QDateTime last(QDate(9999, 12, 31), QTime(0, 0), Qt::UTC);
    switch (column) {
    case Devices:
        return row.devices;
    case LastRun:
        return row.lastRun.isValid() ? row.lastRun : first;
    case NextRun:
        return row.nextRun.isValid() ? row.nextRun : last;
    default:
        return text(row, column);
    }
}

QString ReportList::toolTip(const Row &row, int column)
{
    if (column == Result)
        return row.whyResult;
    return column == NextRun ? row.whyNext : QString();
}

QVariant ReportList::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    const Row &row = m_rows[static_cast<size_t>(index.row())];
    switch (role) {
    case Qt::DisplayRole:
        return text(row, index.column());
    case SortRole:
        return sortKey(row, index.column());
    case Qt::ToolTipRole: {
        const QString tip = wrappingToolTip(toolTip(row, index.column()));
        return tip.isEmpty() ? QVariant() : tip;
    }
    case Qt::FontRole:
        return row.isRunning ? QVariant(boldFont()) : QVariant();
    case Qt::TextAlignmentRole:
        return index.column() == Devices ? QVariant(Qt::AlignRight | Qt::AlignVCenter) : QVariant();
    case Qt::DecorationRole:
        if (index.column() == Title)
            return m_reportIcon;
        return index.column() == Result && row.result && needsAttention(*row.result)
                   ? QVariant(m_warningIcon)
                   : QVariant();
    default:
        return {};
    }
}

QVariant ReportList::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role == Qt::TextAlignmentRole && section == Devices)
        return QVariant(Qt::AlignRight | Qt::AlignVCenter);
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    switch (section) {
    case Title:
        return QStringLiteral("Report");
    case Chart:
        return QStringLiteral("Chart");
    case Devices:
        return QString(QLatin1String("Devices") + apart);
    case Schedules:
        return QStringLiteral("Schedules");
    case LastRun:
        return QStringLiteral("Last Run");
    case Result:
        return QStringLiteral("Result");
    default:
        return QStringLiteral("Next Run");
    }
}
