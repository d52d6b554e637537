#pragma once

#include <QPaintDevice>
#include <QPaintEngine>
#include <QRectF>
#include <QString>

#include <vector>

/// A paint device that draws nothing and keeps where each text was drawn.
class TextProbe : public QPaintDevice
{
public:
    struct Text
    {
        QString text;
        QRectF box; ///< width as advanced; from the ascent to the descent
    };

    explicit TextProbe(const QSize &size)
        : m_size(size)
        , m_engine(*this)
    {}
    QPaintEngine *paintEngine() const override { return &m_engine; }

    std::vector<Text> texts;

protected:
    int metric(PaintDeviceMetric metric) const override
    {
        switch (metric) {
        case PdmWidth:
            return m_size.width();
        case PdmHeight:
            return m_size.height();
        case PdmDpiX:
        case PdmDpiY:
        case PdmPhysicalDpiX:
        case PdmPhysicalDpiY:
            return 96;
        case PdmDepth:
            return 32;
        case PdmDevicePixelRatio:
            return 1;
        case PdmDevicePixelRatioScaled:
            return static_cast<int>(devicePixelRatioFScale());
        default:
            return 0;
        }
    }

private:
    class Engine : public QPaintEngine
    {
    public:
        explicit Engine(TextProbe &probe)
            : QPaintEngine(AllFeatures)
            , m_probe(probe)
        {}
        bool begin(QPaintDevice *) override { return true; }
        bool end() override { return true; }
        void updateState(const QPaintEngineState &) override {}
        void drawPixmap(const QRectF &, const QPixmap &, const QRectF &) override {}
        void drawPath(const QPainterPath &) override {}
        void drawPolygon(const QPointF *, int, PolygonDrawMode) override {}
        Type type() const override { return User; }
        void drawTextItem(const QPointF &at, const QTextItem &item) override
        {
            m_probe.texts.push_back(
                {item.text(), QRectF(at.x(), at.y() - item.ascent(), item.width(),
                                     item.ascent() + item.descent())});
        }

    private:
        TextProbe &m_probe;
    };

    QSize m_size;
    mutable Engine m_engine;
};
