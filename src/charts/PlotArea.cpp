#include "charts/PlotArea.h"

#include <algorithm>
#include <cmath>

namespace {

/// Between the plot and the labels below it: half of the lowest label at its left reaches into it.
double labelGap(const ChartStyle &style)
{
    return std::ceil(style.label.height() / 2);
}

} // namespace

TimePlot::TimePlot(const QRectF &room, const DataSeries &series, int labelStep,
                   const ChartStyle &style, const AxisMaker &makeValueAxis)
    : m_style(style)
    , m_room(room)
{
    const double textHeight = std::ceil(style.label.height());
    const bool twoRows = room.height() >= textHeight * 7;
    const double footHeight = labelGap(style) + textHeight * (twoRows ? 2 : 1);
    // Half a label is above the topmost grid line.
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
    for (size_t i = 1; i < m_values.ticks.size(); ++i) {
        const double line = std::round(y(m_values.ticks[i]));
        fillBox(painter, QRectF(m_area.left(), line, m_area.width(), m_style.hairline()),
                ink::grid);
    }
    const double zero = m_values.min < 0 && m_values.max > 0 ? y(0) : m_area.bottom();
    fillBox(painter, QRectF(m_area.left(), std::round(zero), m_area.width(), m_style.hairline()),
            ink::axis);
}

void TimePlot::drawTimeGrid(QPainter &painter) const
{
    for (const TimeTick &tick : m_times.ticks) {
        if (tick.onEdge && tick.x >= 1)
            fillBox(painter,
                    QRectF(std::round(m_area.left() + tick.x), m_area.top(), m_style.hairline(),
                           m_area.height()),
                    ink::fineGrid);
    }
}

void TimePlot::drawLevel(QPainter &painter, double value, const QPen &pen) const
{
    const double level = std::round(y(value)) + 0.5;
    painter.setPen(pen);
    painter.drawLine(QPointF(m_area.left(), level), QPointF(m_area.right(), level));
}

void TimePlot::drawValues(QPainter &painter) const
{
    const double right = m_area.left() - m_style.px(7);
    for (size_t i = 0; i < m_values.ticks.size(); ++i)
        drawText(painter, m_style.label, ink::quietText, right,
                 y(m_values.ticks[i]) - m_style.label.height() / 2,
                 m_style.label.elided(m_values.labels[i], right - m_room.left() + 0.01),
                 Qt::AlignRight);
}

void TimePlot::drawTimes(QPainter &painter) const
{
    const double labelTop = m_area.bottom() + labelGap(m_style);
    for (const TimeTick &tick : m_times.ticks) {
        const double x = m_area.left() + tick.x;
        if (tick.onEdge)
            fillBox(painter,
                    QRectF(std::round(x), m_area.bottom(), m_style.hairline(), m_style.px(4)),
                    ink::axis);
        const auto middle = [&](const QString &text) { // kept inside the room
            const double half = m_style.label.width(text) / 2;
            const double min = m_room.left() + half;
            return std::clamp(x, min, std::max(min, m_room.right() - half));
        };
        drawText(painter, m_style.label, ink::quietText, middle(tick.label), labelTop, tick.label,
                 Qt::AlignHCenter);
        drawText(painter, m_style.label, ink::text, middle(tick.context),
                 labelTop + std::ceil(m_style.label.height()), tick.context, Qt::AlignHCenter);
    }
}
