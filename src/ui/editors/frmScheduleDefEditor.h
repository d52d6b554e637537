#pragma once

#include "definitions/clsScheduleDef.h"
#include "ui/editors/EditorDialog.h"

#include <array>

class CheckListCombo;
class QButtonGroup;
class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;

/// The editor of a schedule definition, with the next five runs as they follow from each click.
class frmScheduleDefEditor : public EditorDialog
{
    Q_OBJECT

public:
    explicit frmScheduleDefEditor(QWidget *parent = nullptr);

    /// Fills the fields; from here on changes count. A list checks the entries that match in the
    /// search for the next run; "ALL" and "None" start unchecked.
    void load(const clsScheduleDef &schedule);

    /// Copies the fields into a schedule; properties that the editor does not show stay, and so
    /// does the text of a list whose checked entries are the same as before.
    void store(clsScheduleDef &schedule) const;

protected:
    QString contentText() const override;
    QStringList warnings() const override;
    QString inputError(QWidget *&field) const override;

private:
    enum Option { OptDaily, OptWeekly, OptMonthly, OptYearly, OptNotScheduled };
    static constexpr int noOption = -1;

    /// A list of a schedule beside the box that shows it.
    struct List
    {
        CheckListCombo *box;
        QString clsScheduleDef::*text;
        ListForm form;
        QStringList checked; ///< when the schedule was loaded
    };

    void InitializeSelectionCombos();
    QWidget *intervalBox();
    QWidget *listsBox();
    QWidget *runsBox();
    void setControlStates();
    void showNextRuns();
    void autoSet();
    void applyPreset(int option);

    clsScheduleDef m_loaded;
    QLineEdit *txtScheduleName;
    QButtonGroup *optSchedInterval;
    CheckListCombo *sscomboHours;
    CheckListCombo *sscomboWeekDays;
    CheckListCombo *sscomboMonthDay;
    CheckListCombo *sscomboMonths;
    QLabel *lblHours;
    QLabel *lblDays;
    QLabel *lblMonthDays;
    QLabel *lblMonths;
    QCheckBox *chkReschedule;
    QSpinBox *txtRescheduleTime;
    QLabel *lblReschedule;
    QPushButton *cmdAutoSet;
    QLabel *lblNextRuns;
    QLabel *lblHint;
    std::array<List, 4> m_lists;
};
