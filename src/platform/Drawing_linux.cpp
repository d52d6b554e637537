#include "platform/Drawing.h"

namespace platform {

QByteArray drawingPlatform()
{
    return "offscreen";
}

QStringList spareFonts()
{
    return {};
}

} // namespace platform
