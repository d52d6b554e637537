#pragma once

#include "charts/ChartJob.h"

#include <QImage>
#include <QPainter>
#include <QSizeF>

/// Drawing of charts. Any thread, any paint device (image, widget, paged vector device); the same
/// chart gives the same picture every time. Needs a QGuiApplication and warmUpFonts().

/// Draws a chart into the rectangle from (0, 0) of the painter's logical coordinates. The painter's
/// state is restored.
void paintChart(QPainter &painter, const Chart &chart, const QSizeF &logicalSize);

/// The size that a chart is drawn at, in logical pixels: the frame's, but at least 160 by 120, and
/// higher for a chart of many devices, up to 8,000 pixels.
QSize chartSize(const Chart &chart);

/// The chart as an image of chartSize(); with quality 3 of twice the pixels in each direction.
/// Throws Error when there is no memory for it.
QImage drawChart(const Chart &chart);

/// Draws a chart into an image file of the given format (see charts/ImageFile.h), under exactly
/// this name. Throws Error.
void saveChart(const Chart &chart, const QString &path, const QString &format);

// One painter for each kind; called by paintChart.
void paintStateChart(QPainter &painter, const StateChart &chart, const QSizeF &size);
void paintCounterChart(QPainter &painter, const CounterChart &chart, const QSizeF &size);
void paintDeviceRateChart(QPainter &painter, const DeviceRateChart &chart, const QSizeF &size);

/// Height at which every device of the chart has a legible row.
int deviceRateChartHeight(const DeviceRateChart &chart);
