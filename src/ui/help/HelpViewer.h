#pragma once

#include <QString>

class QWidget;

/// Help pages: HTML files in the folder "Help" beside the factory files, one for each window.
/// Main thread only.

inline const QString helpContents = QStringLiteral("index.html");

/// Shows a page ("schedules.html") in the help viewer. `from` is the window that asked; the viewer
/// can be used beside it even if it is modal.
void showHelp(const QString &page, QWidget *from);

/// Opens the page on F1 in `window`.
void openHelpOnF1(QWidget *window, const QString &page);
