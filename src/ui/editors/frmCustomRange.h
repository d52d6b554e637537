#pragma once

#include "definitions/clsGraphDef.h"
#include "ui/editors/EditorDialog.h"

#include <QWidget>

class QDateTimeEdit;
class QLabel;
class QMenu;

/// Two date-times with calendars, and a menu of usual ranges. Wall times, to the minute: the start
/// is its minute's first second and the end its last one. A time that nobody changes keeps its
/// seconds.
class RangeEdit : public QWidget
{
    Q_OBJECT

public:
    explicit RangeEdit(QWidget *parent = nullptr);

    void setRange(const QDateTime &start, const QDateTime &end);
    QDateTime start() const { return m_start; }
    QDateTime end() const { return m_end; }

Q_SIGNALS:
    /// By the user, not by setRange.
    void edited();

private:
    void addPreset(QMenu *menu, const QString &text, int preset);

    QDateTime m_start;
    QDateTime m_end;
    QDateTimeEdit *txtStart;
    QDateTimeEdit *txtEnd;
};

/// Usual ranges, all of whole days.
enum RangePreset { LastSevenDays, WholeLastMonth, WholeLastQuarter, WholeThisYear };
/// `today`: the current date. The seven days are those before it.
DateRange presetRange(RangePreset preset, const QDate &today);

/// The dialog in which the range of a run is entered; use editCustomRange.
class frmCustomRange : public EditorDialog
{
    Q_OBJECT

public:
    frmCustomRange(const clsGraphDef &chart, const QStringList &reportTitles,
                   QWidget *parent = nullptr);

    QDateTime start() const { return m_range->start(); }
    QDateTime end() const { return m_range->end(); }

protected:
    QString contentText() const override;
    QString inputError(QWidget *&field) const override;

private:
    void showLength();

    clsGraphDef m_chart;
    RangeEdit *m_range;
    QLabel *lblPeriod;
};

/// The custom-range dialog of a run: shows the chart's StartTime and EndTime (the last seven days
/// if they are not a valid range) and sets them; false when it was closed without OK. Shows the
/// reports that the range is for.
bool editCustomRange(clsGraphDef &chart, const QStringList &reportTitles, QWidget *parent);
