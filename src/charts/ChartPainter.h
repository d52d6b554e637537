#pragma once

#include "charts/ChartJob.h"

#include <QImage>
#include <QPainter>
#include <QSizeF>

/// Drawing of charts. Any thread, any paint device (image, widget, printer); the same chart looks
/// the same every time. Needs a QGuiApplication and warmUpFonts().

/// Draws a chart from (0, 0) in the painter's logical coordinates; restores the painter's state.
void paintChart(QPainter &painter, const Chart &chart, const QSizeF &logicalSize);

/// The size of a chart in logical pixels: the frame's, but at least 160 by 120, at most 16,000 by
/// 8,000, and high enough for a row a device.
QSize chartSize(const Chart &chart);

/// The chart as an image of chartSize(); at quality 3 with twice the pixels in each direction.
/// Throws Error when there is not enough memory.
QImage drawChart(const Chart &chart);

/// Draws a chart into an image file of a format of charts/ImageFile.h, under exactly this name.
/// Throws Error.
void saveChart(const Chart &chart, const QString &path, const QString &format);

// One painter for each kind; called by paintChart.
void paintStateChart(QPainter &painter, const StateChart &chart, const QSizeF &size);
void paintCounterChart(QPainter &painter, const CounterChart &chart, const QSizeF &size);
void paintDeviceRateChart(QPainter &painter, const DeviceRateChart &chart, const QSizeF &size);

void paintTimelineChart(QPainter &painter, const TimelineChart &chart, const QSizeF &size);

/// The height at which every device has a readable row.
int deviceRateChartHeight(const DeviceRateChart &chart);
int timelineChartHeight(const TimelineChart &chart);
