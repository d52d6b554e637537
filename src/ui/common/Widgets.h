#pragma once

#include <QString>

class QLabel;
class QPushButton;
class QWidget;

/// A label for untrusted texts of any length: plain, wrapped, selectable with the mouse. It
/// reserves space for `lines` lines.
QLabel *newTextLabel(const QString &name, int lines = 0);
QLabel *newTextLabel(const QString &name, const QString &text);

/// The system's warning sign in the size of a text's icon.
QLabel *newWarningIcon();

QPushButton *newButton(const QString &name, const QString &text, const QString &toolTip = {});

/// A tool tip that wraps, for long texts such as errors, names and paths: plain tool tips do not.
/// Empty for an empty text.
QString wrappingToolTip(const QString &text);

/// Activates `window` again whenever the last modal window above it closes. Window managers that
/// activate a closing window's parent activate none if a dialog closes together with its message
/// box.
void activateAfterDialogs(QWidget *window);
