#include "ui/main/DefinitionManager.h"

#include "base/Error.h"
#include "definitions/Definitions.h"
#include "ui/common/Messages.h"
#include "ui/common/UiState.h"
#include "ui/common/Widgets.h"
#include "ui/editors/EditorDialog.h"
#include "ui/help/HelpViewer.h"
#include "ui/main/UndoSteps.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QShortcut>
#include <QTreeView>
#include <QVBoxLayout>

namespace {

enum Column { Title, What, UsedBy, ColumnCount };
constexpr int idRole = Qt::UserRole;
constexpr int keyRole = Qt::UserRole + 1; ///< by which rows are sorted

QStandardItem *newCell(const QString &text, const QVariant &key)
{
    auto *cell = new QStandardItem(text);
    cell->setData(key, keyRole);
    cell->setEditable(false);
    return cell;
}

/// Asks for another title.
class frmRename : public EditorDialog
{
public:
    using Fault = std::function<QString(const QString &title)>;

    frmRename(const QString &title, const QString &helpPage, Fault fault, QWidget *parent)
        : EditorDialog(QStringLiteral("frmRename"), helpPage, parent)
        , m_fault(std::move(fault))
        , txtTitle(new QLineEdit(title))
    {
        setWindowTitle(QStringLiteral("Rename"));
        txtTitle->setObjectName(QStringLiteral("txtTitle"));
        txtTitle->selectAll();
        auto *form = new QFormLayout(content());
        form->setContentsMargins(0, 0, 0, 0);
        form->addRow(QStringLiteral("New &title:"), txtTitle);
        markUnchanged();
        resize(60 * fontMetrics().averageCharWidth(), sizeHint().height());
    }

    QString title() const { return txtTitle->text().trimmed(); }

protected:
    QString contentText() const override { return title(); }
    QString inputError(QWidget *&field) const override
    {
        field = txtTitle;
        return m_fault(title());
    }

private:
    Fault m_fault;
    QLineEdit *txtTitle;
};

} // namespace

DefinitionManager::DefinitionManager(const QString &name, const QString &helpPage,
                                     const QString &kind, UndoSteps &undo, QWidget *parent)
    : QDialog(parent)
    , m_helpPage(helpPage)
    , m_kind(kind)
    , m_undo(undo)
    , lvDefinitions(new QTreeView)
    , lblUsage(newTextLabel(QStringLiteral("lblUsage"), 2))
{
    setObjectName(name);
    setModal(true);
    setSizeGripEnabled(true);
    m_sorted.setSourceModel(&m_model);
    m_sorted.setSortRole(keyRole);
    lvDefinitions->setObjectName(QStringLiteral("lvDefinitions"));
    lvDefinitions->setAccessibleName(QStringLiteral("All %1s").arg(kind));
    lvDefinitions->setModel(&m_sorted);
    lvDefinitions->setRootIsDecorated(false);
    lvDefinitions->setUniformRowHeights(true);
    lvDefinitions->setAllColumnsShowFocus(true);
    lvDefinitions->setAlternatingRowColors(true);
    lvDefinitions->setSortingEnabled(true);
    lvDefinitions->setTabKeyNavigation(false);
    lvDefinitions->sortByColumn(Title, Qt::AscendingOrder);

    const auto command = [this](const char *id, const QString &text, const QString &tip,
                                void (DefinitionManager::*handler)()) {
        QPushButton *button = newButton(QLatin1String(id), text, tip);
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, handler);
        return button;
    };
    cmdAdd = command("cmdAdd", QStringLiteral("&Add…"),
                     QStringLiteral("Defines a new %1").arg(kind), &DefinitionManager::add);
    cmdChange = command("cmdChange", QStringLiteral("Chan&ge…"),
                        QStringLiteral("Changes the %1 for all reports that use it").arg(kind),
                        &DefinitionManager::change);
    cmdDuplicate =
        command("cmdDuplicate", QStringLiteral("&Duplicate"),
                QStringLiteral("Makes a copy under another title"), &DefinitionManager::duplicate);
    cmdRename = command("cmdRename", QStringLiteral("Re&name…"),
                        QStringLiteral("Gives the %1 another title (F2)").arg(kind),
                        &DefinitionManager::askTitle);
    cmdRemove = command(
        "cmdRemove", QStringLiteral("&Remove…"),
        QStringLiteral("Removes the %1; reports that use it get another one (Del)").arg(kind),
        &DefinitionManager::askRemoval);
    cmdUndo = command("cmdUndo", QStringLiteral("&Undo"), {}, &DefinitionManager::undoLast);

    auto *commands = new QVBoxLayout;
    for (QPushButton *button : {cmdAdd, cmdChange, cmdDuplicate, cmdRename, cmdRemove, cmdUndo})
        commands->addWidget(button);
    commands->addStretch();
    auto *middle = new QHBoxLayout;
    middle->addWidget(lvDefinitions, 1);
    middle->addLayout(commands);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close | QDialogButtonBox::Help);
    buttons->button(QDialogButtonBox::Close)->setObjectName(QStringLiteral("cmdClose"));
    buttons->button(QDialogButtonBox::Help)->setObjectName(QStringLiteral("cmdHelp"));
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(middle, 1);
    layout->addWidget(lblUsage);
    layout->addWidget(buttons);

    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(buttons, &QDialogButtonBox::helpRequested, this,
            [this] { showHelp(m_helpPage, this); });
    openHelpOnF1(this, helpPage);
    activateAfterDialogs(this);
    connect(lvDefinitions, &QAbstractItemView::activated, this, &DefinitionManager::change);
    connect(lvDefinitions->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &DefinitionManager::updateCommands);
    connect(&m_undo, &UndoSteps::changed, this, &DefinitionManager::updateCommands);
    const auto key = [this](const QKeySequence &keys, QWidget *where,
                            void (DefinitionManager::*handler)()) {
        connect(new QShortcut(keys, where, nullptr, nullptr, Qt::WidgetShortcut),
                &QShortcut::activated, this, handler);
    };
    key(Qt::Key_F2, lvDefinitions, &DefinitionManager::askTitle);
    key(QKeySequence::Delete, lvDefinitions, &DefinitionManager::askRemoval);
    connect(new QShortcut(QKeySequence::Undo, this), &QShortcut::activated, this,
            &DefinitionManager::undoLast);
    resize(100 * fontMetrics().averageCharWidth(), 24 * fontMetrics().lineSpacing());
}

void DefinitionManager::fill(const QString &selected)
{
    const QString wanted = selected.isEmpty() ? currentId() : selected;
    m_model.clear();
    m_model.setHorizontalHeaderLabels({m_kind.at(0).toUpper() + m_kind.mid(1),
                                       QStringLiteral("What It Is"), QStringLiteral("Used By")});
    for (const Entry &entry : entries()) {
        const auto uses = static_cast<int>(users(entry.id).size());
        QList<QStandardItem *> row = {newCell(entry.title, entry.title),
                                      newCell(entry.what, entry.what),
                                      newCell(uses == 0   ? QStringLiteral("No report")
                                              : uses == 1 ? QStringLiteral("1 report")
                                                          : QStringLiteral("%1 reports").arg(uses),
                                              uses)};
        row[Title]->setData(entry.id, idRole);
        m_model.appendRow(row);
    }
    const int character = fontMetrics().averageCharWidth();
    if (!m_placed) {
        lvDefinitions->setColumnWidth(Title, 28 * character);
        lvDefinitions->setColumnWidth(What, 34 * character);
    }
    QModelIndex current = m_sorted.index(0, Title);
    for (int row = 0; row < m_sorted.rowCount(); ++row) {
        if (m_sorted.index(row, Title).data(idRole).toString() == wanted)
            current = m_sorted.index(row, Title);
    }
    lvDefinitions->setCurrentIndex(current);
    updateCommands();
}

QString DefinitionManager::currentId() const
{
    return lvDefinitions->currentIndex().siblingAtColumn(Title).data(idRole).toString();
}

QString DefinitionManager::titleOf(const QString &id) const
{
    for (const Entry &entry : entries()) {
        if (entry.id == id)
            return entry.title;
    }
    return {};
}

void DefinitionManager::updateCommands()
{
    const QString id = currentId();
    for (QPushButton *button : {cmdChange, cmdDuplicate, cmdRename, cmdRemove})
        button->setEnabled(!id.isEmpty());
    QString usage = id.isEmpty() ? QString() : usageText(users(id));
    if (!usage.isEmpty())
        usage = usage.at(0).toUpper() + usage.mid(1) + u'.';
    lblUsage->setText(usage);
    const QString step = m_undo.next();
    cmdUndo->setEnabled(!step.isEmpty());
    cmdUndo->setToolTip(step.isEmpty() ? QStringLiteral("Takes back what was changed (Ctrl+Z)")
                                       : QStringLiteral("Takes back: %1 (Ctrl+Z)").arg(step));
}

template <typename Command>
void DefinitionManager::perform(const char *verb, const QString &title, Command command)
{
    const qsizetype before = definitions().changeCount();
    QString selected;
    try {
        selected = command();
    } catch (const Error &error) {
        showCritical(this, QStringLiteral("Not Saved"),
                     QStringLiteral("The change could not be saved.") + QLatin1String("\n\n") +
                         errorTail(error));
    }
    m_undo.add(QStringLiteral("%1 of \u201c%2\u201d")
                   .arg(QLatin1String(verb), title.isEmpty() ? titleOf(selected) : title),
               before);
    fill(selected);
}

void DefinitionManager::add()
{
    perform("addition", {}, [this] { return edit({}); });
}

void DefinitionManager::change()
{
    const QString id = currentId();
    if (!id.isEmpty())
        perform("change", titleOf(id), [this, &id] { return edit(id); });
}

void DefinitionManager::duplicate()
{
    const QString id = currentId();
    perform("copy", titleOf(id), [this, &id] { return duplicateOf(id); });
}

void DefinitionManager::askTitle()
{
    const QString id = currentId();
    if (id.isEmpty())
        return;
    const qsizetype before = definitions().changeCount();
    const QString title = titleOf(id);
    frmRename dialog(
        title, m_helpPage, [this, &id](const QString &wanted) { return faultOf(id, wanted); },
        this);
    dialog.setSaveAction([this, &id, &dialog] { rename(id, dialog.title()); });
    dialog.exec();
    m_undo.add(QStringLiteral("renaming of \u201c%1\u201d").arg(title), before);
    fill(id);
}

void DefinitionManager::askRemoval()
{
    const QString id = currentId();
    if (id.isEmpty())
        return;
    const QString title = titleOf(id);
    QString replacement;
    if (!users(id).empty()) {
        replacement = askReplacement(id);
        if (replacement.isEmpty())
            return;
    } else if (!askYesNo(this, QStringLiteral("Remove"),
                         QStringLiteral("No report uses the %1 \u201c%2\u201d.\nRemove it?")
                             .arg(m_kind, title))) {
        return;
    }
    perform("removal", title, [&] {
        if (!replacement.isEmpty())
            replace(id, replacement);
        remove(id);
        return replacement;
    });
}

/// The id of what reports are to use instead; empty: nothing is to be removed.
QString DefinitionManager::askReplacement(const QString &id)
{
    const QString usage = QStringLiteral("The %1 \u201c%2\u201d is %3.")
                              .arg(m_kind, titleOf(id), usageText(users(id)));
    QDialog dialog(this);
    dialog.setObjectName(QStringLiteral("frmReplace"));
    dialog.setWindowTitle(QStringLiteral("Remove"));
    auto *cboReplacement = new QComboBox;
    cboReplacement->setObjectName(QStringLiteral("cboReplacement"));
    cboReplacement->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    cboReplacement->setMinimumContentsLength(30);
    for (int row = 0; row < m_sorted.rowCount(); ++row) {
        const QModelIndex index = m_sorted.index(row, Title);
        if (index.data(idRole).toString() != id)
            cboReplacement->addItem(index.data().toString(), index.data(idRole));
    }
    if (cboReplacement->count() == 0) {
        delete cboReplacement;
        showInformation(this, QStringLiteral("Remove"),
                        usage + QStringLiteral("\nThere is no other one that could take its "
                                               "place. Add one first."));
        return {};
    }
    auto *form = new QFormLayout(&dialog);
    form->addRow(newTextLabel(QStringLiteral("lblUsage"), usage));
    form->addRow(QStringLiteral("They use &instead:"), cboReplacement);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
    QPushButton *cmdReplace =
        newButton(QStringLiteral("cmdReplace"), QStringLiteral("&Replace and Remove"));
    buttons->addButton(cmdReplace, QDialogButtonBox::AcceptRole);
    buttons->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("cmdCancel"));
    form->addRow(buttons);
    connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    openHelpOnF1(&dialog, m_helpPage);
    dialog.resize(70 * fontMetrics().averageCharWidth(), dialog.sizeHint().height());
    return dialog.exec() == QDialog::Accepted ? cboReplacement->currentData().toString()
                                              : QString();
}

void DefinitionManager::undoLast()
{
    try {
        m_undo.undo();
    } catch (const Error &error) {
        showCritical(this, QStringLiteral("Not Undone"), errorTail(error));
    }
    fill();
}

void DefinitionManager::showEvent(QShowEvent *event)
{
    if (!m_placed) {
        m_placed = true;
        restoreWindowState(this);
        lvDefinitions->setFocus();
    }
    QDialog::showEvent(event);
}

void DefinitionManager::done(int result)
{
    saveWindowState(this);
    QDialog::done(result);
}
