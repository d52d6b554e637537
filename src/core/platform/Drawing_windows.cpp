#include "core/platform/Drawing.h"

namespace platform {

QByteArray drawingPlatform()
{
    // Qt's platform without a display knows no font here. This one needs none either, and with the
    // fonts drawn by FreeType the charts look as they do on other systems.
    return "windows:fontengine=freetype";
}

QStringList spareFonts()
{
    return {QStringLiteral("Segoe UI"), QStringLiteral("Tahoma"), QStringLiteral("DejaVu Sans"),
            QStringLiteral("Arial")};
}

} // namespace platform
