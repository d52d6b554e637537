#pragma once

#include <QImage>
#include <QPaintEngine>

#include <vector>

/// An image on which nothing is drawn; it keeps where each text would stand.
class TextProbe : public QImage
{
public:
    struct Text
    {
        QString text;
        QRectF box; ///< width as advanced; from the ascent to the descent
    };

    explicit TextProbe(const QSize &size)
        : QImage(size, QImage::Format_RGB32)
    {}
    QPaintEngine *paintEngine() const override { return &m_engine; }

    const std::vector<Text> &texts() const { return m_engine.texts; }

private:
    class Engine : public QPaintEngine
    {
    public:
        Engine()
            : QPaintEngine(AllFeatures)
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
            const qreal height = item.ascent() + item.descent();
            texts.push_back(
                {item.text(), QRectF(at.x(), at.y() - item.ascent(), item.width(), height)});
        }

        std::vector<Text> texts;
    };

    mutable Engine m_engine;
};
