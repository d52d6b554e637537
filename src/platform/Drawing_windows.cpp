#include "platform/Drawing.h"

namespace platform {

QByteArray drawingPlatform()
{
    // Qt's offscreen platform has no fonts here. This one needs no display either, and with
    // FreeType charts look as on other systems.
    return "windows:fontengine=freetype";
}

QStringList spareFonts()
{
    return {QStringLiteral("Segoe UI"), QStringLiteral("Tahoma"), QStringLiteral("DejaVu Sans"),
            QStringLiteral("Arial")};
}

} // namespace platform
