#include "charts/ChartStyle.h"

#include "charts/TextCache.h"

#include <QFontDatabase>
#include <QRawFont>

#include <algorithm>
#include <cmath>

namespace {

QFont chartFont(double pixels, QFont::Weight weight, bool smooth)
{
    QFont font;
    font.setFamilies({QStringLiteral("Inter"), QStringLiteral("Segoe UI"),
                      QStringLiteral("Open Sans"), QStringLiteral("Noto Sans"),
                      QStringLiteral("Liberation Sans"), QStringLiteral("DejaVu Sans"),
                      QStringLiteral("Arial")});
    font.setPixelSize(std::max(1, static_cast<int>(std::lround(pixels))));
    font.setWeight(weight);
    // Widths that do not depend on the device, and no coloured edges: a chart looks the same on
    // every screen and in every file.
    font.setHintingPreference(QFont::PreferNoHinting);
    font.setStyleStrategy(smooth ? QFont::NoSubpixelAntialias : QFont::NoAntialias);
    font.setKerning(false);
    return font;
}

double scaleFor(const QSizeF &size)
{
    const double ratio = std::min(size.width() / 640, size.height() / 390);
    return std::clamp(std::sqrt(std::max(ratio, 0.0)), 0.85, 2.4);
}

} // namespace

TypeFace::TypeFace(double pixels, QFont::Weight weight, bool isSmooth)
    : m_font(chartFont(pixels, weight, isSmooth))
    , m_metrics(m_font)
{}

double TypeFace::width(const QString &text) const
{
    if (TextCache *cache = TextCache::current())
        return cache->width(m_font, text);
    return m_metrics.horizontalAdvance(text);
}

QString TypeFace::elided(const QString &text, double available) const
{
    if (width(text) <= available)
        return text;
    const QString shortened = m_metrics.elidedText(text, Qt::ElideRight, std::floor(available));
    return width(shortened) <= available ? shortened : QString();
}

ChartStyle::ChartStyle(const QSizeF &logicalSize, int quality)
    : scale(scaleFor(logicalSize))
    , smooth(quality >= 2)
    , compact(logicalSize.height() < 280)
    , title(15 * scale, QFont::DemiBold, quality >= 1)
    , subtitle(12 * scale, QFont::Normal, quality >= 1)
    , label(11 * scale, QFont::Normal, quality >= 1)
    , strong(11 * scale, QFont::DemiBold, quality >= 1)
    , small(10 * scale, QFont::Normal, quality >= 1)
{}

double ChartStyle::px(double atNormalSize) const
{
    return std::max(1.0, std::round(atNormalSize * scale));
}

double ChartStyle::hairline() const
{
    return std::max(1.0, std::floor(scale));
}

bool fontsAvailable()
{
    if (QFontDatabase::families().isEmpty())
        return false;
    const QRawFont raw = QRawFont::fromFont(chartFont(11, QFont::Normal, true));
    return raw.isValid() && raw.supportsCharacter(u'0') && raw.supportsCharacter(u'A');
}

void warmUpFonts()
{
    const ChartStyle style(QSizeF(640, 390), 2);
    for (const TypeFace *face : {&style.title, &style.subtitle, &style.label, &style.strong})
        face->width(QStringLiteral("0123456789 %"));
}
