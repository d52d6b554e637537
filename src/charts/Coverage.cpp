#include "charts/Coverage.h"

#include "charts/PerThread.h"

#include <QPaintEngine>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <vector>

namespace {

/// The share of each pixel of a rectangle that shapes cover. Each edge adds, to the pixels that it
/// crosses, the change of the share of everything to their right; the running sums along the rows
/// are then the shares. The cost is the sum of the edges' heights plus one pass over the pixels.
class CoverageMask
{
public:
    CoverageMask(const QRect &bounds)
        : m_bounds(bounds)
        , m_stride(static_cast<size_t>(bounds.width()) + 2)
        , m_changes(scratch())
    {
        m_changes.assign(m_stride * static_cast<size_t>(bounds.height()), 0.0F);
    }

    void add(const QPolygonF &polygon)
    {
        for (qsizetype i = 0; i < polygon.size(); ++i)
            addEdge(polygon[i], polygon[i + 1 < polygon.size() ? i + 1 : 0]);
    }

    /// The shapes in a colour. The image is valid until the thread's next mask.
    QImage image(const QColor &color) const
    {
        std::array<QRgb, 256> inks;
        for (size_t i = 0; i < inks.size(); ++i) {
            QColor ink = color;
            ink.setAlphaF(color.alphaF() * static_cast<float>(i) / 255.0F);
            inks[i] = qPremultiply(ink.rgba());
        }
        auto &pixels = perThread<std::vector<QRgb>, CoverageMask>(); // half a megabyte
        pixels.resize(static_cast<size_t>(m_bounds.width()) *
                      static_cast<size_t>(m_bounds.height()));
        QRgb *pixel = pixels.data();
        for (int y = 0; y < m_bounds.height(); ++y) {
            const float *change = m_changes.data() + static_cast<size_t>(y) * m_stride;
            float share = 0;
            QRgb ink = inks[0];
            for (const QRgb *end = pixel + m_bounds.width(); pixel != end;) {
                if (end - pixel >= stretch && isFlat(change)) {
                    pixel = std::fill_n(pixel, stretch, ink);
                    change += stretch;
                    continue;
                }
                share += *change++;
                const float covered = std::min(std::abs(share), 1.0F) * 255; // never negative
                ink = inks[static_cast<size_t>(covered + 0.5F)];             // NOLINT(*-roundings)
                *pixel++ = ink;
            }
        }
        return QImage(reinterpret_cast<const uchar *>(pixels.data()), m_bounds.width(),
                      m_bounds.height(), QImage::Format_ARGB32_Premultiplied);
    }

private:
    /// Pixels that are handled together: most are inside or outside all shapes.
    static constexpr int stretch = 4;
    static bool isFlat(const float *change)
    {
        std::array<quint64, 2> bits;
        std::memcpy(bits.data(), change, stretch * sizeof *change);
        return (bits[0] | bits[1]) == 0;
    }

    static std::vector<float> &scratch() { return perThread<std::vector<float>, CoverageMask>(); }

    void addEdge(QPointF from, QPointF to)
    {
        from -= m_bounds.topLeft();
        to -= m_bounds.topLeft();
        if (from.y() == to.y())
            return;
        const float direction = from.y() < to.y() ? 1.0F : -1.0F;
        if (direction < 0)
            std::swap(from, to);
        const double slope = (to.x() - from.x()) / (to.y() - from.y());
        const double top = std::max(from.y(), 0.0);
        const double bottom = std::min(to.y(), static_cast<double>(m_bounds.height()));
        double x = from.x() + (top - from.y()) * slope;
        for (int row = static_cast<int>(top); row < bottom; ++row) {
            const double low = std::max(top, static_cast<double>(row));
            const double high = std::min(bottom, row + 1.0);
            const double next = x + (high - low) * slope;
            addPiece(row, std::min(x, next), std::max(x, next),
                     direction * static_cast<float>(high - low));
            x = next;
        }
    }

    /// Part of an edge in one row, from `left` to `right`; the sign of `height` is its direction.
    void addPiece(int row, double left, double right, float height)
    {
        float *change = m_changes.data() + static_cast<size_t>(row) * m_stride;
        if (left < 0) {
            // The part left of the first pixel changes all pixels equally.
            const double outside = right <= 0 ? 1 : left / (left - right);
            change[0] += height * static_cast<float>(outside);
            height *= static_cast<float>(1 - outside);
            left = 0;
        }
        const double end = m_bounds.width();
        if (right > end) {
            if (left >= end)
                return;
            height *= static_cast<float>((end - left) / (right - left));
            right = end;
        }
        if (right < left)
            return;
        const int first = static_cast<int>(left);
        const int last = static_cast<int>(std::ceil(right));
        if (last <= first + 1) {
            const auto middle = static_cast<float>((left + right) / 2 - first);
            change[first] += height * (1 - middle);
            change[first + 1] += height * middle;
            return;
        }
        // The share grows quadratically in the first and the last pixel, linearly between them.
        const auto perPixel = static_cast<float>(1 / (right - left));
        const auto inFirst = static_cast<float>(first + 1 - left);
        const auto inLast = static_cast<float>(right - (last - 1));
        float done = 0.5F * perPixel * inFirst * inFirst;
        change[first] += height * done;
        float before = done;
        for (int x = first + 1; x < last - 1; ++x) {
            const float now = perPixel * (inFirst + static_cast<float>(x - first) - 0.5F);
            change[x] += height * (now - before);
            before = now;
        }
        const float whole = 1 - 0.5F * perPixel * inLast * inLast;
        change[last - 1] += height * (whole - before);
        change[last] += height * (1 - whole);
    }

    QRect m_bounds;
    size_t m_stride;
    std::vector<float> &m_changes;
};

/// Whether the shapes can be drawn as a mask of the device's pixels.
bool takesMasks(const QPainter &painter)
{
    return painter.testRenderHint(QPainter::Antialiasing) &&
           painter.paintEngine()->type() == QPaintEngine::Raster &&
           painter.deviceTransform().type() <= QTransform::TxScale;
}

void drawMask(QPainter &painter, const QList<QPolygonF> &shapes, const QColor &color)
{
    const QTransform toDevice = painter.deviceTransform();
    QList<QPolygonF> placed;
    QRectF bounds;
    for (const QPolygonF &shape : shapes) {
        placed.append(toDevice.map(shape));
        bounds |= placed.last().boundingRect();
    }
    const QRect device(0, 0, painter.device()->width(), painter.device()->height());
    const double ratio = painter.device()->devicePixelRatioF();
    const QRect all = QTransform::fromScale(ratio, ratio).mapRect(device);
    const QRect pixels = bounds.toAlignedRect().intersected(all);
    if (pixels.isEmpty())
        return;
    CoverageMask mask(pixels);
    for (const QPolygonF &shape : placed)
        mask.add(shape);
    painter.save();
    painter.setTransform(painter.transform() * painter.deviceTransform().inverted());
    painter.drawImage(pixels.topLeft(), mask.image(color));
    painter.restore();
}

/// The outlines of a line's segments, all with the same orientation.
QList<QPolygonF> segments(const QPolygonF &line, double width)
{
    QList<QPolygonF> shapes;
    shapes.reserve(line.size());
    for (qsizetype i = 1; i < line.size(); ++i) {
        const QPointF way = line[i] - line[i - 1];
        const double length = std::hypot(way.x(), way.y());
        if (length == 0)
            continue;
        const QPointF side(-way.y() / length * width / 2, way.x() / length * width / 2);
        shapes.append(
            QPolygonF({line[i - 1] + side, line[i] + side, line[i] - side, line[i - 1] - side}));
    }
    return shapes;
}

} // namespace

void fillShapes(QPainter &painter, const QList<QPolygonF> &shapes, const QColor &color)
{
    if (takesMasks(painter)) {
        drawMask(painter, shapes, color);
        return;
    }
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    for (const QPolygonF &shape : shapes)
        painter.drawPolygon(shape, Qt::WindingFill);
    painter.setBrush(Qt::NoBrush);
}

void strokeCurve(QPainter &painter, const QPolygonF &line, const QPen &pen)
{
    if (takesMasks(painter)) {
        drawMask(painter, segments(line, pen.widthF()), pen.color());
        return;
    }
    painter.setPen(pen);
    painter.drawPolyline(line);
}
