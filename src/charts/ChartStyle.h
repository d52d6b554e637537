#pragma once

#include <QFont>
#include <QFontMetricsF>
#include <QRgb>
#include <QSizeF>
#include <QString>

/// Colours, fonts and lengths of all charts. Safe on any thread once warmUpFonts() has run.

/// Colours. Success and failure differ in hue, lightness and position, not just by red and green.
namespace ink {
inline constexpr QRgb ground = 0xFFFFFFFF;
inline constexpr QRgb border = 0xFFD8DEE6;
inline constexpr QRgb text = 0xFF1B2733;
inline constexpr QRgb quietText = 0xFF5A6675;
inline constexpr QRgb grid = 0x18142C48; ///< translucent: drawn over areas
inline constexpr QRgb fineGrid = 0x10142C48;
inline constexpr QRgb axis = 0xFF8A95A3;

inline constexpr QRgb success = 0xFF0B6BAF; ///< edge of intervals without failures
inline constexpr QRgb successFill = 0xFFC9E1F4;
inline constexpr QRgb partialFill = 0xFFF7CD8C; ///< successes of intervals with failures
inline constexpr QRgb failure = 0xFFD4500C;
inline constexpr QRgb successBar = 0xFF6FB1DD;
inline constexpr QRgb noDataFill = 0xFFECEFF3;
inline constexpr QRgb noDataHatch = 0xFFBFC7D1;

inline constexpr QRgb someFailed = 0xFFD98500; ///< of a timeline, over successFill
inline constexpr QRgb excludedFill = 0xFFEFEDF5;
inline constexpr QRgb excludedHatch = 0xFFCBC5DC;
inline constexpr QRgb better = 0xFF0B6B3A;

inline constexpr QRgb value = 0xFF008000;
inline constexpr QRgb valueFill = 0xFFDFF0DF;
inline constexpr QRgb bandFill = 0xFFABD6AB;
inline constexpr QRgb percentile = 0xFFD4500C;
inline constexpr QRgb moving = 0xFF6A3FB5;
inline constexpr QRgb average = 0xFF1B2733;
} // namespace ink

/// A font with its metrics in logical pixels.
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

/// The fonts and lengths of one chart; they grow with its size, but more slowly.
struct ChartStyle
{
    ChartStyle(const QSizeF &logicalSize, int quality);

    /// A length at 640 by 390, scaled to whole logical pixels, at least 1.
    double px(double atNormalSize) const;
    /// Thickness of axes, grid lines and ticks.
    double hairline() const;

    double scale; ///< 1 at 640 by 390
    bool smooth;  ///< antialiased
    bool compact; ///< so low that margins and texts leave their space to the plot
    TypeFace title;
    TypeFace subtitle;
    TypeFace label;
    TypeFace strong; ///< as label, in bold
    TypeFace small;
};

/// Whether there is a font that can draw text. Without fonts charts would have no texts and no
/// error: a run has to stop with `noFontsMessage` instead.
bool fontsAvailable();
inline constexpr char16_t noFontsMessage[] =
    u"No fonts are installed, charts would have no text. Install a font package, for instance "
    u"fonts-dejavu-core.";

/// Finds and loads the fonts, the slow part of a first chart. Main thread, once, after the
/// QGuiApplication has been created.
void warmUpFonts();
