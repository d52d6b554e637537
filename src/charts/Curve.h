#pragma once

#include "charts/PlotArea.h"
#include "series/DataSeries.h"

#include <QPen>

#include <optional>
#include <vector>

/// Values over time as points in a plot. Buckets narrower than a pixel are reduced to one point a
/// pixel column, which keeps all peaks.

/// One point of a curve, in logical pixels; y grows downwards.
struct CurvePoint
{
    double x = 0;
    double high = 0;  ///< the highest mean
    double low = 0;   ///< the lowest mean
    double first = 0; ///< the first and the last mean
    double last = 0;
    double top = 0; ///< of the band from min to max
    double bottom = 0;
};

/// The runs of a series between its gaps, each from the start of its first bucket to the end of its
/// last one, with at least two points.
struct Curve
{
    std::vector<std::vector<CurvePoint>> runs;
    bool dense = false; ///< points are pixel columns
};

Curve curveOf(const DataSeries &series, const TimePlot &plot);

/// Fills between the curve and `base`, and between min and max.
void drawArea(QPainter &painter, const Curve &curve, double base, const QColor &color);
void drawBand(QPainter &painter, const Curve &curve, const QColor &color);

/// Draws the curve as a line.
void drawValues(QPainter &painter, const Curve &curve, const QPen &pen);

/// Draws a line through values given by bucket, at the middle of each; it has gaps at buckets
/// without a value.
void drawPoints(QPainter &painter, const DataSeries &series,
                const std::vector<std::optional<double>> &values, const TimePlot &plot,
                const QPen &pen);
