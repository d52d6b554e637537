#pragma once

class QWidget;

/// Window layouts: placement, columns, sort order and splitters of each window as Qt saves them,
/// kept in "UISTATE.XML" in the tool's data folder, in the group "VTRGRAPHER". Main thread only.
///
/// Windows, and the header views, trees and splitters in them, are identified by objectName; those
/// without one are ignored. A file that is missing, damaged or cannot be written is not an error:
/// the windows then open in their default layout.

/// False when there is no state of the window, which then keeps its layout. Either way the window
/// is moved and shrunk to be wholly on a screen.
bool restoreWindowState(QWidget *window);

void saveWindowState(QWidget *window);
