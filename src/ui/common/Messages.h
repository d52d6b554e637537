#pragma once

#include <QString>

class QWidget;

/// Message boxes in the system's forms. Each waits for the user's answer.

void showInformation(QWidget *parent, const QString &title, const QString &text);
void showWarning(QWidget *parent, const QString &title, const QString &text);
void showCritical(QWidget *parent, const QString &title, const QString &text);

/// Yes and No with the question icon; No is the default. True for Yes.
bool askYesNo(QWidget *parent, const QString &title, const QString &text);

/// The same with a check box, whose mark is `checked` before and after.
bool askYesNo(QWidget *parent, const QString &title, const QString &text, const QString &option,
              bool &checked);

enum class SaveAnswer { Save, Discard, KeepEditing };

/// What to do with the changes of an editor that is about to close.
SaveAnswer askToSave(QWidget *parent, const QString &title);
