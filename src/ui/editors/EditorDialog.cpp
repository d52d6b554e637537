#include "ui/editors/EditorDialog.h"

#include "base/Error.h"
#include "ui/common/Messages.h"
#include "ui/common/ScrollPane.h"
#include "ui/common/UiState.h"
#include "ui/common/Widgets.h"
#include "ui/help/HelpViewer.h"

#include <QButtonGroup>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

EditorDialog::EditorDialog(const QString &name, const QString &helpPage, QWidget *parent)
    : QDialog(parent)
    , m_tag(QStringLiteral("CANCEL"))
    , m_content(new QWidget)
    , lblNote(newTextLabel(QStringLiteral("lblNote")))
    , m_warningRow(new QWidget)
    , lblWarnings(newTextLabel(QStringLiteral("lblWarnings"), 1))
    , m_buttons(new QDialogButtonBox(
          QDialogButtonBox::Ok | QDialogButtonBox::Cancel | QDialogButtonBox::Help, this))
{
    setObjectName(name);
    setModal(true);
    setSizeGripEnabled(true);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(lblNote);
    lblNote->hide();
    layout->addWidget(new ScrollPane(m_content), 1);
    layout->addWidget(m_warningRow);
    layout->addWidget(m_buttons);
    auto *warnings = new QHBoxLayout(m_warningRow);
    warnings->setContentsMargins(0, 0, 0, 0);
    warnings->addWidget(newWarningIcon());
    warnings->addWidget(lblWarnings, 1);
    m_warningRow->hide();
    m_buttons->button(QDialogButtonBox::Ok)->setObjectName(QStringLiteral("cmdOK"));
    m_buttons->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("cmdCancel"));
    m_buttons->button(QDialogButtonBox::Help)->setObjectName(QStringLiteral("cmdHelp"));
    connect(m_buttons, &QDialogButtonBox::accepted, this, &EditorDialog::accept);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &EditorDialog::reject);
    connect(m_buttons, &QDialogButtonBox::helpRequested, this,
            [this, helpPage] { showHelp(helpPage, this); });
    openHelpOnF1(this, helpPage);
    activateAfterDialogs(this);
}

void EditorDialog::setNote(const QString &note)
{
    lblNote->setText(note);
    lblNote->setHidden(note.isEmpty());
}

void EditorDialog::markUnchanged()
{
    m_unchanged = contentText();
    m_knownWarnings = warnings();
}

bool EditorDialog::hasChanges() const
{
    return contentText() != m_unchanged;
}

QStringList EditorDialog::warnings() const
{
    return {};
}

QStringList EditorDialog::sentences(QStringList advice)
{
    advice.removeAll(QString());
    for (QString &text : advice)
        text = text.at(0).toUpper() + text.mid(1) + u'.';
    return advice;
}

void EditorDialog::showWarnings()
{
    QSizePolicy keepsPlace = m_warningRow->sizePolicy();
    keepsPlace.setRetainSizeWhenHidden(true);
    m_warningRow->setSizePolicy(keepsPlace);
    const QStringList shown = warnings();
    lblWarnings->setText(shown.join(u'\n'));
    m_warningRow->setVisible(!shown.isEmpty());
}

bool EditorDialog::acceptsNewWarnings()
{
    QStringList added = warnings();
    added.removeIf([this](const QString &warning) { return m_knownWarnings.contains(warning); });
    return added.isEmpty() ||
           askYesNo(this, QStringLiteral("Please Check"),
                    added.join(u'\n') + QLatin1String("\n\nSave it all the same?"));
}

QString EditorDialog::inputError(QWidget *&) const
{
    return {};
}

void EditorDialog::accept()
{
    QWidget *field = nullptr;
    if (const QString error = inputError(field); !error.isEmpty()) {
        showCritical(this, QStringLiteral("Invalid Entry"), error);
        if (field)
            field->setFocus(Qt::OtherFocusReason);
        return;
    }
    if (!acceptsNewWarnings())
        return;
    try {
        if (m_save)
            m_save();
    } catch (const Error &error) {
        showCritical(this, QStringLiteral("Not Saved"),
                     QStringLiteral("The changes could not be saved. Nothing is lost: the editor "
                                    "stays open and the old file is as it was.") +
                         QLatin1String("\n\n") + errorTail(error));
        return;
    }
    m_tag = QStringLiteral("SAVE");
    QDialog::accept();
}

void EditorDialog::reject()
{
    if (hasChanges()) {
        switch (askToSave(this, windowTitle())) {
        case SaveAnswer::Save:
            accept();
            return;
        case SaveAnswer::KeepEditing:
            return;
        case SaveAnswer::Discard:
            try {
                discard();
            } catch (const Error &error) {
                showCritical(this, QStringLiteral("Not Taken Back"),
                             QStringLiteral("The changes could not be taken back. They are saved, "
                                            "and the editor stays open.") +
                                 QLatin1String("\n\n") + errorTail(error));
                return;
            }
            break;
        }
    }
    m_tag = QStringLiteral("CANCEL");
    QDialog::reject();
}

void EditorDialog::showEvent(QShowEvent *event)
{
    if (!m_placed) {
        m_placed = true;
        for (QPushButton *button : m_content->findChildren<QPushButton *>())
            button->setAutoDefault(false); // Return is OK
        tabToChosenOptions();
        orderTabs();
        restoreWindowState(this);
    }
    QDialog::showEvent(event);
}

/// Lets Tab go to the checked option button, not to the first one.
void EditorDialog::tabToChosenOptions()
{
    for (const auto *option : m_content->findChildren<QRadioButton *>()) {
        if (!option->isChecked())
            continue;
        const auto others = option->group()
                                ? option->group()->buttons()
                                : option->parentWidget()->findChildren<QAbstractButton *>(
                                      Qt::FindDirectChildrenOnly);
        for (QAbstractButton *other : others) {
            if (other != option && qobject_cast<QRadioButton *>(other))
                other->setFocusPolicy(Qt::ClickFocus); // until it is checked
        }
    }
}

/// The keyboard starts at the first field, and comes to OK, Cancel and Help after the last one,
/// although they were created before the fields.
void EditorDialog::orderTabs()
{
    const auto isField = [](const QWidget *widget) {
        return (widget->focusPolicy() & Qt::TabFocus) != 0 &&
               !widget->objectName().startsWith(QLatin1String("qt_")); // part of a field
    };
    QWidget *first = nextInFocusChain();
    while (first != this && !(isField(first) && m_content->isAncestorOf(first)))
        first = first->nextInFocusChain();
    if (!focusWidget())
        first->setFocus();
    QWidget *last = previousInFocusChain();
    while (last != this && !isField(last))
        last = last->previousInFocusChain();
    for (const auto which :
         {QDialogButtonBox::Ok, QDialogButtonBox::Cancel, QDialogButtonBox::Help}) {
        setTabOrder(last, m_buttons->button(which));
        last = m_buttons->button(which);
    }
}

void EditorDialog::done(int result)
{
    saveWindowState(this);
    QDialog::done(result);
}
