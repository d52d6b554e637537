#pragma once

#include "database/Inventory.h"
#include "definitions/SelectionRule.h"
#include "ui/common/Background.h"

#include <QWidget>

#include <vector>

class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QTimer;

/// The rules of a report, one a row, with a form for the current one and a list of what they find
/// in the database now. That is found on another thread.
class RuleEditor : public QWidget
{
    Q_OBJECT

public:
    explicit RuleEditor(QWidget *parent = nullptr);

    void setRules(const std::vector<SelectionRule> &rules);
    /// Each once.
    std::vector<SelectionRule> rules() const;
    /// A text that is equal for equal rules.
    QString rulesText() const;

    /// What the rules choose from; null where it cannot be read, for the reason given.
    void setInventory(std::shared_ptr<const Inventory> inventory, const QString &why = {});

Q_SIGNALS:
    void changed();

private:
    QWidget *makeList();
    QWidget *makeForm();
    QWidget *makeFound();
    QComboBox *newChoice(const char *name, const QString &label, const QString &example);
    void addRule(bool isException);
    void removeRule();
    void showCurrent();
    void takeForm();
    void showRows();
    void findSoon();
    void find();
    SelectionRule *current();

    std::vector<SelectionRule> m_rules;
    std::vector<QString> m_counts; ///< what each finds, in words; empty: not known yet
    std::shared_ptr<const Inventory> m_inventory;
    QString m_whyNone;
    bool m_isShowing = false;
    QListWidget *lstRules;
    QPushButton *cmdRuleRemove;
    QWidget *m_form;
    QLineEdit *txtRuleDevice;
    QComboBox *cboRuleGroup;
    QLineEdit *txtRuleDescription;
    QComboBox *cboRuleItem;
    QComboBox *cboRuleUnit;
    QComboBox *cboRuleKind;
    QLabel *lblFound;
    QListWidget *lstFound;
    QTimer *m_findSoon;
    Background m_finding;
};
