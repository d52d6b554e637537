#pragma once

#include <QByteArray>
#include <QStringList>

namespace platform {

/// The Qt platform (a value of QT_QPA_PLATFORM) for a program that draws without windows and
/// perhaps without a display, and that finds the system's fonts.
QByteArray drawingPlatform();

/// Font families for windows, in order of preference, where the system's default may be missing;
/// empty where Qt finds a substitute.
QStringList spareFonts();

} // namespace platform
