#include "ui/common/Messages.h"

#include <QCheckBox>
#include <QMessageBox>

namespace {

int ask(QWidget *parent, QMessageBox::Icon icon, const QString &title, const QString &text,
        QMessageBox::StandardButtons buttons, QMessageBox::StandardButton usual)
{
    QMessageBox box(icon, title, text, buttons, parent);
    box.setTextFormat(Qt::PlainText); // names and errors may hold markup
    box.setDefaultButton(usual);
    return box.exec();
}

} // namespace

void showInformation(QWidget *parent, const QString &title, const QString &text)
{
    ask(parent, QMessageBox::Information, title, text, QMessageBox::Ok, QMessageBox::Ok);
}

void showWarning(QWidget *parent, const QString &title, const QString &text)
{
    ask(parent, QMessageBox::Warning, title, text, QMessageBox::Ok, QMessageBox::Ok);
}

void showCritical(QWidget *parent, const QString &title, const QString &text)
{
    ask(parent, QMessageBox::Critical, title, text, QMessageBox::Ok, QMessageBox::Ok);
}

bool askYesNo(QWidget *parent, const QString &title, const QString &text)
{
    return ask(parent, QMessageBox::Question, title, text, QMessageBox::Yes | QMessageBox::No,
               QMessageBox::No) == QMessageBox::Yes;
}

bool askYesNo(QWidget *parent, const QString &title, const QString &text, const QString &option,
              bool &checked)
{
    QMessageBox box(QMessageBox::Question, title, text, QMessageBox::Yes | QMessageBox::No, parent);
    box.setTextFormat(Qt::PlainText);
    box.setDefaultButton(QMessageBox::No);
    auto *check = new QCheckBox(option);
    check->setObjectName(QStringLiteral("chkOption"));
    check->setChecked(checked);
    box.setCheckBox(check);
    const bool isYes = box.exec() == QMessageBox::Yes;
    checked = check->isChecked();
    return isYes;
}

SaveAnswer askToSave(QWidget *parent, const QString &title)
{
    switch (ask(parent, QMessageBox::Question, title,
                QStringLiteral("There are changes that are not saved."),
                QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel,
                QMessageBox::Save)) {
    case QMessageBox::Save:
        return SaveAnswer::Save;
    case QMessageBox::Discard:
        return SaveAnswer::Discard;
    default:
        return SaveAnswer::KeepEditing;
    }
}
