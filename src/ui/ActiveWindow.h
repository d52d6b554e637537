#pragma once

class QWidget;

/// Makes `window` the active one again whenever the last modal window above it closes. A window
/// manager that gives the keyboard to the parent of what closes gives it to nobody where a dialog
/// goes together with its message box.
void activateAfterDialogs(QWidget *window);
