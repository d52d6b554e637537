#pragma once

#include <QByteArray>
#include <QStringList>

namespace platform {

/// The Qt platform, as QT_QPA_PLATFORM names it, on which a program draws that shows no window and
/// may have no display; one that finds the system's fonts.
QByteArray drawingPlatform();

/// Font families for windows, the best first, where the one that the system names may be missing;
/// empty where it finds another by itself.
QStringList spareFonts();

} // namespace platform
