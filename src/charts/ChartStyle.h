#pragma once

#include <QFont>
#include <QFontMetricsF>
#include <QRgb>
#include <QSizeF>
#include <QString>

/// Inks, type and measures of all charts. Safe on any thread once warmUpFonts() has run.

/// Inks. Success and failure differ in hue, lightness and place, never by red and green alone.
namespace ink {
inline constexpr QRgb ground = 0xFFFFFFFF;
inline constexpr QRgb border = 0xFFD8DEE6;
inline constexpr QRgb text = 0xFF1B2733;
inline constexpr QRgb quietText = 0xFF5A6675;
inline constexpr QRgb grid = 0x18142C48; ///< laid over areas, so that it shows through them
inline constexpr QRgb fineGrid = 0x10142C48;
inline constexpr QRgb axis = 0xFF8A95A3;

inline constexpr QRgb success = 0xFF0B6BAF; ///< edge of what is wholly well
inline constexpr QRgb successFill = 0xFFC9E1F4;
inline constexpr QRgb partialFill = 0xFFF7CD8C; ///< the part that succeeded beside failures
inline constexpr QRgb failure = 0xFFD4500C;
inline constexpr QRgb successBar = 0xFF6FB1DD;
inline constexpr QRgb noDataFill = 0xFFECEFF3;
inline constexpr QRgb noDataHatch = 0xFFBFC7D1;

inline constexpr QRgb value = 0xFF008000;
inline constexpr QRgb valueFill = 0xFFDFF0DF;
inline constexpr QRgb bandFill = 0xFFABD6AB;
inline constexpr QRgb percentile = 0xFFD4500C;
inline constexpr QRgb moving = 0xFF6A3FB5;
inline constexpr QRgb average = 0xFF1B2733;
} // namespace ink

/// One kind of type with its measures in logical pixels.
class TypeFace
{
public:
    TypeFace(double pixels, QFont::Weight weight, bool smooth);

    double width(const QString &text) const;
    double ascent() const { return m_metrics.ascent(); }
    double height() const { return m_metrics.ascent() + m_metrics.descent(); }
    QString elided(const QString &text, double width) const;
    const QFont &font() const { return m_font; }

private:
    QFont m_font;
    QFontMetricsF m_metrics;
};

/// The type and the measures of one chart; they grow with its size, more slowly than it does.
struct ChartStyle
{
    ChartStyle(const QSizeF &logicalSize, int quality);

    /// A measure at 640 by 390, scaled to whole logical pixels, at least 1.
    double px(double atNormalSize) const;

    double scale; ///< 1 at 640 by 390
    bool smooth;  ///< antialiased
    bool compact; ///< so low that the plot needs the room of everything that can do with less
    TypeFace title;
    TypeFace subtitle;
    TypeFace label;
    TypeFace strong; ///< as label, for figures
    TypeFace small;
};

/// Whether there is a font that can draw text. A server without fonts draws charts without a word;
/// a run has to stop with `noFontsMessage` instead.
bool fontsAvailable();
inline constexpr char16_t noFontsMessage[] =
    u"No fonts are installed, charts would have no text. Install a font package, for instance "
    u"fonts-dejavu-core.";

/// Finds and loads the fonts, the slow part of a first chart. Main thread, once, after the
/// QGuiApplication is made.
void warmUpFonts();
