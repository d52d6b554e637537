#pragma once

#include <QFont>
#include <QGlyphRun>
#include <QHash>
#include <QPainter>
#include <QString>

/// Shaped texts, kept for reuse. The charts of a run repeat most of their texts (axis labels,
/// legend, period, credit), and shaping is half the cost of a small chart. One cache serves one
/// thread; charts look the same with and without it.
class TextCache
{
public:
    /// Makes this the cache of the calling thread until it is destroyed.
    TextCache();
    ~TextCache();
    TextCache(const TextCache &) = delete;
    TextCache &operator=(const TextCache &) = delete;

    /// The thread's cache; null when it has none.
    static TextCache *current();

    double width(const QFont &font, const QString &text);
    /// Draws with the painter's pen; `baseline` is the left end.
    void draw(QPainter &painter, const QFont &font, QPointF baseline, const QString &text);

private:
    struct Shape
    {
        double width = 0;
        double ascent = 0;
        QList<QGlyphRun> glyphs;
    };
    const Shape &shapeOf(const QFont &font, const QString &text);

    QHash<quint32, QHash<QString, Shape>> m_shapes; ///< by face, then by text
    qsizetype m_count = 0;
};
