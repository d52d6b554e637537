#pragma once

#include "definitions/clsReportDef.h"
#include "report/TargetPreview.h"
#include "ui/common/Background.h"

#include <QWidget>

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;
class QTableWidget;

/// What a report is held against, and what is made of it beside its pages: target, service hours,
/// maintenance, comparison, PDF and archive. Shows what they would have made of the last week.
class TargetEditor : public QWidget
{
    Q_OBJECT

public:
    explicit TargetEditor(QWidget *parent = nullptr);

    void load(const clsReportDef &report);
    /// Where inputError() is empty.
    void store(clsReportDef &report) const;
    QString contentText() const;
    QString inputError(QWidget *&field) const;

    /// Where the whole report as it stands comes from, for the effect.
    void setReportSource(std::function<clsReportDef()> report) { m_report = std::move(report); }

Q_SIGNALS:
    void changed();

private:
    QWidget *makeTargets();
    QWidget *makeMaintenance();
    QWidget *makeEffect();
    void addMaintenance(const QString &from, const QString &to, const QString &reason);
    void removeMaintenance();
    std::vector<ReportMaintenance> maintenance() const;
    void change();
    void tryOrStop();
    void showEffect(const TargetPreview &preview);

    std::function<clsReportDef()> m_report;
    QLineEdit *txtTarget;
    QLineEdit *txtHours;
    QCheckBox *chkCompare;
    QCheckBox *chkPdf;
    QSpinBox *spnKeep;
    QTableWidget *tblMaintenance;
    QPushButton *cmdEffect;
    QLabel *lblEffect;
    Background m_effect;
};
