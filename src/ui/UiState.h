#pragma once

class QWidget;

/// Window layouts: placement, columns, sort order and splitters of each window as Qt saves them,
/// kept in "UISTATE.XML" in the tool's data folder, in the group "VTRGRAPHER". Of a file that
/// earlier versions wrote, in numbers, the sizes of the windows count. Main thread only.
///
/// A window is known by its objectName, the header views, trees and splitters inside it by theirs;
/// those without a name are left alone. A file that is missing or damaged, or one that cannot be
/// written, is no error: the windows then open in their usual layout.

/// False when nothing is known of the window; it then keeps its layout. Either way it comes up
/// wholly on a screen, made smaller where the screen is.
bool restoreWindowState(QWidget *window);

void saveWindowState(QWidget *window);
