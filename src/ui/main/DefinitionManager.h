#pragma once

#include "definitions/Usage.h"
#include "ui/common/NaturalSort.h"

#include <QDialog>
#include <QStandardItemModel>

class QDialogButtonBox;
class QLabel;
class QPushButton;
class QTreeView;
class UndoSteps;

/// Base of the windows in which all charts, or all schedules, are at home: a list of them with what
/// each is, and commands to add, change, duplicate, rename and remove. Each command saves at once,
/// and is a step of the undo. What reports still use is removed only with a replacement for them.
class DefinitionManager : public QDialog
{
    Q_OBJECT

public:
    /// `name`: as EditorDialog's. `kind`: "chart", in texts.
    DefinitionManager(const QString &name, const QString &helpPage, const QString &kind,
                      UndoSteps &undo, QWidget *parent);

protected:
    /// A definition in the list.
    struct Entry
    {
        QString id;
        QString title;
        QString what; ///< in a few words
    };
    virtual std::vector<Entry> entries() const = 0;
    virtual Reports users(const QString &id) const = 0;
    /// Opens the editor on a definition, or on a new one where the id is empty. Returns the id of
    /// what was saved; empty: nothing.
    virtual QString edit(const QString &id) = 0;
    /// Save at once, and throw Error: a copy, whose id is returned; a new title; a removal.
    virtual QString duplicateOf(const QString &id) = 0;
    virtual void rename(const QString &id, const QString &title) = 0;
    virtual void remove(const QString &id) = 0;
    /// Has reports use another definition in place of this one.
    virtual void replace(const QString &id, const QString &replacement) = 0;
    /// Why a definition cannot have that title; empty when it can.
    virtual QString faultOf(const QString &id, const QString &title) const = 0;

    /// Shows all entries, and selects one. Called by the constructors of derived classes.
    void fill(const QString &selected = {});

    void showEvent(QShowEvent *event) override;
    void done(int result) override;

private:
    void add();
    void change();
    void duplicate();
    void askTitle();
    void askRemoval();
    void undoLast();
    void updateCommands();
    QString currentId() const;
    QString titleOf(const QString &id) const;
    QString askReplacement(const QString &id);
    /// Runs a command, which returns the id of what is to be selected; says what failed. `verb`:
    /// "removal", for the step's name; `title`: empty for that of the result.
    template <typename Command>
    void perform(const char *verb, const QString &title, Command command);

    QString m_helpPage;
    QString m_kind;
    UndoSteps &m_undo;
    QStandardItemModel m_model;
    NaturalSortModel m_sorted;
    QTreeView *lvDefinitions;
    QLabel *lblUsage;
    QPushButton *cmdAdd;
    QPushButton *cmdChange;
    QPushButton *cmdDuplicate;
    QPushButton *cmdRename;
    QPushButton *cmdRemove;
    QPushButton *cmdUndo;
    bool m_placed = false;
};

/// All charts.
class frmChartManager : public DefinitionManager
{
    Q_OBJECT

public:
    explicit frmChartManager(UndoSteps &undo, QWidget *parent = nullptr);

private:
    std::vector<Entry> entries() const override;
    Reports users(const QString &id) const override;
    QString edit(const QString &id) override;
    QString duplicateOf(const QString &id) override;
    void rename(const QString &id, const QString &title) override;
    void remove(const QString &id) override;
    void replace(const QString &id, const QString &replacement) override;
    QString faultOf(const QString &id, const QString &title) const override;
};

/// All schedules.
class frmScheduleManager : public DefinitionManager
{
    Q_OBJECT

public:
    explicit frmScheduleManager(UndoSteps &undo, QWidget *parent = nullptr);

private:
    std::vector<Entry> entries() const override;
    Reports users(const QString &id) const override;
    QString edit(const QString &id) override;
    QString duplicateOf(const QString &id) override;
    void rename(const QString &id, const QString &title) override;
    void remove(const QString &id) override;
    void replace(const QString &id, const QString &replacement) override;
    QString faultOf(const QString &id, const QString &title) const override;
};
