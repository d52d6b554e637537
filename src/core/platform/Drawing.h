#pragma once

#include <QByteArray>

namespace platform {

/// The Qt platform, as QT_QPA_PLATFORM names it, on which a program draws that shows no window and
/// may have no display; one that finds the system's fonts.
QByteArray drawingPlatform();

} // namespace platform
