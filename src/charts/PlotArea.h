#pragma once

#include "charts/ChartFramePainter.h"
#include "charts/TimeAxis.h"
#include "charts/ValueAxis.h"

#include <functional>

/// A plot over time: the rectangle of the data, with a value axis at its left and the time axis at
/// its bottom.
class TimePlot
{
public:
    using AxisMaker = std::function<ValueAxis(int maxSteps)>;

    /// Lays the axes out in `room`; `series` has at least one bucket.
    TimePlot(const QRectF &room, const DataSeries &series, int labelStep, const ChartStyle &style,
             const AxisMaker &makeValueAxis);

    const QRectF &area() const { return m_area; } ///< on whole logical pixels
    const ValueAxis &values() const { return m_values; }
    double x(qint64 instant) const { return m_area.left() + m_times.x(instant); }
    double y(double value) const
    {
        return m_area.bottom() - m_values.position(value) * m_area.height();
    }

    /// Base line and grid lines, the latter translucent.
    void drawGrid(QPainter &painter) const;
    void drawTimeGrid(QPainter &painter) const;
    /// A line across the plot at a value.
    void drawLevel(QPainter &painter, double value, const QPen &pen) const;
    /// Labels of the value axis.
    void drawValues(QPainter &painter) const;
    /// Tick marks and labels of the time axis.
    void drawTimes(QPainter &painter) const;

private:
    const ChartStyle &m_style;
    QRectF m_room;
    QRectF m_area;
    ValueAxis m_values;
    TimeAxis m_times;
};
