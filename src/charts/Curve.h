#pragma once

#include "charts/PlotArea.h"
#include "data/DataSeries.h"

#include <QPen>

#include <optional>
#include <vector>

/// Values over time as places in a plot. Where buckets are narrower than a pixel they are reduced
/// to what one pixel column can show; nothing that stands out is lost.

/// One place of a curve, in logical pixels from top to bottom.
struct CurvePoint
{
    double x = 0;
    double high = 0;  ///< the highest mean
    double low = 0;   ///< the lowest mean
    double first = 0; ///< the means at the place's two ends
    double last = 0;
    double top = 0; ///< of the band from least to greatest
    double bottom = 0;
};

/// The runs of a series between its gaps, each with at least two points: a run reaches from the
/// begin of its first bucket to the end of its last one.
struct Curve
{
    std::vector<std::vector<CurvePoint>> runs;
    bool dense = false; ///< points are pixel columns
};

Curve curveOf(const DataSeries &series, const TimePlot &plot);

/// Fills between the curve and `base`, and between least and greatest.
void drawArea(QPainter &painter, const Curve &curve, double base, const QColor &color);
void drawBand(QPainter &painter, const Curve &curve, const QColor &color);

/// Draws the curve as a line.
void drawValues(QPainter &painter, const Curve &curve, const QPen &pen);

/// Draws a further line through values given per bucket, in the buckets' middles; it breaks at
/// buckets without a value.
void drawPoints(QPainter &painter, const DataSeries &series,
                const std::vector<std::optional<double>> &values, const TimePlot &plot,
                const QPen &pen);
