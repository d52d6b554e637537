#include "ui/EditorDialog.h"

#include "core/Error.h"
#include "ui/HelpViewer.h"
#include "ui/Messages.h"
#include "ui/UiState.h"

#include <QPushButton>
#include <QVBoxLayout>

EditorDialog::EditorDialog(const QString &name, const QString &helpPage, QWidget *parent)
    : QDialog(parent)
    , m_tag(QStringLiteral("CANCEL"))
    , m_content(new QWidget(this))
    , m_buttons(new QDialogButtonBox(
          QDialogButtonBox::Ok | QDialogButtonBox::Cancel | QDialogButtonBox::Help, this))
{
    setObjectName(name);
    setModal(true);
    setSizeGripEnabled(true);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_content, 1);
    layout->addWidget(m_buttons);
    m_buttons->button(QDialogButtonBox::Ok)->setObjectName(QStringLiteral("cmdOK"));
    m_buttons->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("cmdCancel"));
    connect(m_buttons, &QDialogButtonBox::accepted, this, &EditorDialog::accept);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &EditorDialog::reject);
    connect(m_buttons, &QDialogButtonBox::helpRequested, this,
            [this, helpPage] { showHelp(helpPage, this); });
    openHelpOnF1(this, helpPage);
}

void EditorDialog::markUnchanged()
{
    m_unchanged = contentText();
}

bool EditorDialog::hasChanges() const
{
    return contentText() != m_unchanged;
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
        restoreWindowState(this);
    }
    QDialog::showEvent(event);
}

void EditorDialog::done(int result)
{
    saveWindowState(this);
    QDialog::done(result);
}
