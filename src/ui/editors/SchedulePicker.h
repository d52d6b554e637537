#pragma once

#include "definitions/clsReportDef.h"

#include <QWidget>

class QListWidget;
class QListWidgetItem;
class QPushButton;
class clsScheduleDef;

/// Chooses the schedules of a report from gScheduleDefs, with the next five runs of all chosen ones
/// together. Schedules can be added and changed; they are saved at once.
///
/// A schedule that is chosen but no longer defined stays in the list, marked.
class SchedulePicker : public QWidget
{
    Q_OBJECT

public:
    explicit SchedulePicker(QWidget *parent = nullptr);

    /// `reportId`: of the report whose schedules they are.
    void setSelection(const Collection<clsReportSchedule> &schedules, const QString &reportId);

    /// The chosen schedules. Those of setSelection keep their LastRunDate; newly chosen ones get
    /// the current time: without a last run they would be overdue by a century and run at the next
    /// check, whatever their hours.
    Collection<clsReportSchedule> selection() const;

    /// The ids of the chosen schedules as a text that does not depend on their order.
    QString selectionText() const;

Q_SIGNALS:
    /// By the user or by setSelection.
    void changed();

private:
    void fill(const QStringList &checked, const QString &current);
    void addRow(const QString &id, const QString &name, bool checked);
    QString currentId() const;
    QStringList checkedIds() const;
    void add();
    void change();
    void edit(const clsScheduleDef &schedule);
    void showRuns();

    QString m_reportId;
    Collection<clsReportSchedule> m_former;
    QListWidget *lvSchedules;
    QPushButton *cmdScheduleModify;
    QListWidget *lvNextRuns;
};
