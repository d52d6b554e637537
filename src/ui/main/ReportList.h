#pragma once

#include "definitions/clsReportDef.h"
#include "report/OutputTree.h"
#include "scheduling/RunHistory.h"

#include <QAbstractTableModel>
#include <QDateTime>
#include <QIcon>

#include <optional>

/// "2026-11-22 06:00", and "OK", "No data" for a result, as the windows show them.
QString timeText(const QDateTime &wall);
QString resultCaption(ReportResult result);
/// Whether somebody should look at a result.
bool needsAttention(ReportResult result);

/// The rows of lvReports: one for each report definition, keyed by its ReportID. A row shows what
/// the definitions, the schedules and the run history said at the last refresh().
class ReportList : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { Title, Chart, Devices, Schedules, LastRun, Result, NextRun, ColumnCount };

    /// The role of a cell's sort key.
    static constexpr int SortRole = Qt::UserRole;

    explicit ReportList(QObject *parent = nullptr);

    /// Updates the rows from gReportDefs, gChartDefs, gScheduleDefs and the run history; rows of
    /// reports that stay keep their position, and with it their selection.
    void refresh();

    /// Shows what a run says of a report: it is being made, or how it ended.
    void takeRecord(const ReportRecord &record);

    QString reportId(int row) const { return m_rows[static_cast<size_t>(row)].id; }
    /// What is due next by the rows, in a sentence: at `look` (wall time) or after it.
    QString dueText(const QDateTime &look) const;
    /// -1 when there is none.
    int rowOf(const QString &reportId) const;

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    struct Row
    {
        QString id;
        QString title;
        QString chart;
        qsizetype devices = 0;
        bool hasRules = false;
        QString schedules;
        QDateTime lastRun; ///< wall times; invalid: none
        QDateTime nextRun;
        bool due = false;
        QString whyNext;
        std::optional<ReportResult> result;
        QString whyResult;
        bool isRunning = false;
    };

    static Row rowFor(const clsReportDef &report, const std::vector<RunRecord> &runs,
                      const OutputTree &tree);
    static QString text(const Row &row, int column);
    static QVariant sortKey(const Row &row, int column);
    static QString toolTip(const Row &row, int column);

    std::vector<Row> m_rows;
    QIcon m_reportIcon;
    QIcon m_warningIcon;
};
