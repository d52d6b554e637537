#pragma once

#include <QString>

class QWidget;

/// Help pages: HTML files in the folder "Help" beside the factory files, one for each window.
/// Main thread only.

inline const QString helpContents = QStringLiteral("index.html");

/// Opens the help viewer on a page ("schedules.html"), or brings the open one there. `from` is the
/// window that asked; the viewer can be used beside it even where it is modal.
void showHelp(const QString &page, QWidget *from);

/// F1 in `window` opens the page.
void openHelpOnF1(QWidget *window, const QString &page);
