#include "core/platform/Drawing.h"

namespace platform {

QByteArray drawingPlatform()
{
    return "offscreen";
}

} // namespace platform
