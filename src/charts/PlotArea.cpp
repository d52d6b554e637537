#include "charts/PlotArea.h"

#include <algorithm>
#include <cmath>

TimePlot::TimePlot(const QRectF &room, const DataSeries &series, int labelStep,
                   const ChartStyle &style, const AxisMaker &makeValueAxis)
    : m_style(style)
    , m_room(room)
{
    const double textHeight = std::ceil(style.label.height());
    const bool twoRows = room.height() >= textHeight * 7;
    const double footHeight = style.px(5) + textHeight * (twoRows ? 2 : 1);
    // Half a label stands above the topmost grid line.
    const double top = std::ceil(room.top() + textHeight / 2);
    const double bottom = std::floor(std::max(top + 1, room.bottom() - footHeight));

    m_values =
        makeValueAxis(std::clamp(static_cast<int>((bottom - top) / (textHeight * 2.4)), 1, 8));
    double gutter = 0;
    for (const QString &label : m_values.labels)
        gutter = std::max(gutter, style.label.width(label));
    const double left = std::ceil(room.left() + std::min(gutter, room.width() / 2) + style.px(7));
    m_area =
        QRectF(QPointF(left, top), QPointF(std::max(left + 1, std::floor(room.right())), bottom));
    m_times = timeAxis(series, labelStep, m_area.width(),
                       [&](const QString &text) { return style.label.width(text); });
    if (!twoRows) {
        for (TimeTick &tick : m_times.ticks)
            tick.context.clear();
    }
}

void TimePlot::drawGrid(QPainter &painter) const
{
    const double thickness = std::max(1.0, std::floor(m_style.scale));
    for (size_t i = 1; i < m_values.ticks.size(); ++i) {
        const double line = std::round(y(m_values.ticks[i]));
        painter.fillRect(QRectF(m_area.left(), line, m_area.width(), thickness),
                         QColor::fromRgba(ink::grid));
    }
}

void TimePlot::drawAxes(QPainter &painter) const
{
    const double thickness = std::max(1.0, std::floor(m_style.scale));
    const QColor axisColor = QColor::fromRgba(ink::axis);
    const double zero = m_values.least < 0 && m_values.greatest > 0 ? y(0) : m_area.bottom();
    painter.fillRect(QRectF(m_area.left(), std::round(zero), m_area.width(), thickness), axisColor);

    const double textHeight = m_style.label.height();
    for (size_t i = 0; i < m_values.ticks.size(); ++i)
        drawText(painter, m_style.label, ink::quietText, m_area.left() - m_style.px(7),
                 y(m_values.ticks[i]) - textHeight / 2,
                 m_style.label.elided(m_values.labels[i],
                                      m_area.left() - m_style.px(7) - m_room.left() + 0.01),
                 Qt::AlignRight);

    const double labelTop = m_area.bottom() + m_style.px(5);
    for (const TimeTick &tick : m_times.ticks) {
        const double x = m_area.left() + tick.x;
        if (tick.onEdge)
            painter.fillRect(QRectF(std::round(x), m_area.bottom(), thickness, m_style.px(4)),
                             axisColor);
        const auto place = [&](const QString &text) {
            const double half = m_style.label.width(text) / 2;
            return std::clamp(x, m_room.left() + half,
                              std::max(m_room.left() + half, m_room.right() - half));
        };
        drawText(painter, m_style.label, ink::quietText, place(tick.label), labelTop, tick.label,
                 Qt::AlignHCenter);
        drawText(painter, m_style.label, ink::text, place(tick.context),
                 labelTop + std::ceil(textHeight), tick.context, Qt::AlignHCenter);
    }
}
