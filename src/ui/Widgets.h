#pragma once

#include <QString>

class QLabel;
class QPushButton;
class QWidget;

/// A label for texts of any origin and length: plain, wrapped, to be copied with the mouse. It
/// keeps room for `lines` lines, however many it shows.
QLabel *newTextLabel(const QString &name, int lines = 0);
QLabel *newTextLabel(const QString &name, const QString &text);

/// The system's warning sign, as small as beside a text.
QLabel *newWarningIcon();

QPushButton *newButton(const QString &name, const QString &text, const QString &toolTip = {});

/// A tool tip that wraps, for texts of any length, such as errors, names and paths: plain ones
/// become as wide as their longest line. Empty for an empty text.
QString wrappingToolTip(const QString &text);

/// Makes `window` the active one again whenever the last modal window above it closes. A window
/// manager that gives the keyboard to the parent of what closes gives it to nobody where a dialog
/// goes together with its message box.
void activateAfterDialogs(QWidget *window);
