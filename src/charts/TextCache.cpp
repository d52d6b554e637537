#include "charts/TextCache.h"

#include <QFontMetricsF>
#include <QTextLayout>

namespace {

constexpr qsizetype maxShapes = 4'000; ///< a few megabytes; then the cache is emptied

thread_local TextCache *threadCache = nullptr;

/// Chart fonts differ in size, weight and smoothness only.
quint32 faceOf(const QFont &font)
{
    const bool smooth = (font.styleStrategy() & QFont::NoAntialias) == 0;
    return static_cast<quint32>(font.pixelSize()) << 16 | static_cast<quint32>(font.weight()) << 1 |
           (smooth ? 1u : 0u);
}

} // namespace

TextCache::TextCache()
{
    threadCache = this;
}

TextCache::~TextCache()
{
    threadCache = nullptr;
}

TextCache *TextCache::current()
{
    return threadCache;
}

const TextCache::Shape &TextCache::shapeOf(const QFont &font, const QString &text)
{
    if (m_count >= maxShapes) {
        m_shapes.clear();
        m_count = 0;
    }
    QHash<QString, Shape> &face = m_shapes[faceOf(font)];
    const auto known = face.constFind(text);
    if (known != face.cend())
        return *known;

    QTextLayout layout(text, font);
    layout.beginLayout();
    const QTextLine line = layout.createLine();
    layout.endLayout();
    Shape shape;
    shape.width = QFontMetricsF(font).horizontalAdvance(text);
    shape.ascent = line.isValid() ? line.ascent() : 0;
    shape.glyphs = layout.glyphRuns();
    ++m_count;
    return *face.insert(text, shape);
}

double TextCache::width(const QFont &font, const QString &text)
{
    return shapeOf(font, text).width;
}

void TextCache::draw(QPainter &painter, const QFont &font, QPointF baseline, const QString &text)
{
    const Shape &shape = shapeOf(font, text);
    for (const QGlyphRun &run : shape.glyphs)
        painter.drawGlyphRun(baseline - QPointF(0, shape.ascent), run);
}
