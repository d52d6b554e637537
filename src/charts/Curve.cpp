#include "charts/Curve.h"

#include "charts/Coverage.h"

#include <QPolygonF>

#include <algorithm>
#include <cmath>

namespace {

using Run = std::vector<CurvePoint>;

CurvePoint pointOf(const BucketValue &bucket, double x, const TimePlot &plot)
{
    const double mean = plot.y(bucket.mean);
    CurvePoint point;
    point.x = x;
    point.high = point.low = point.first = point.last = mean;
    point.top = std::min(mean, plot.y(bucket.max));
    point.bottom = std::max(mean, plot.y(bucket.min));
    return point;
}

/// Adds a bucket's point to a pixel column.
void join(CurvePoint &column, const CurvePoint &point)
{
    column.high = std::min(column.high, point.high);
    column.low = std::max(column.low, point.low);
    column.last = point.last;
    column.top = std::min(column.top, point.top);
    column.bottom = std::max(column.bottom, point.bottom);
}

/// Ends a run, extended to the outer edges of its first and last bucket.
void finishRun(Curve &curve, Run &run, double left, double right)
{
    if (run.empty())
        return;
    CurvePoint begin = run.front();
    CurvePoint end = run.back();
    begin.x = left;
    end.x = std::max(right, left + 1);
    run.insert(run.begin(), begin);
    run.push_back(end);
    curve.runs.push_back(std::move(run));
    run.clear();
}

/// Makes adjacent columns overlap, as the line between them would.
void connectColumns(Run &run)
{
    for (size_t i = 1; i < run.size(); ++i) {
        run[i].high = std::min(run[i].high, run[i - 1].last);
        run[i].low = std::max(run[i].low, run[i - 1].last);
    }
}

QPolygonF outline(const Run &run, double CurvePoint::*upper, double CurvePoint::*lower)
{
    QPolygonF polygon;
    polygon.reserve(static_cast<qsizetype>(run.size()) * 2);
    for (const CurvePoint &point : run)
        polygon.append(QPointF(point.x, point.*upper));
    for (auto point = run.rbegin(); point != run.rend(); ++point)
        polygon.append(QPointF(point->x, (*point).*lower));
    return polygon;
}

/// Draws a dot for a narrow bucket between gaps, which a line would hardly show.
void drawLoneValue(QPainter &painter, const QPolygonF &line, const QPen &pen)
{
    const double radius = pen.widthF() * 1.8;
    const bool isLone = line.size() == 3 && line.last().x() - line.first().x() < radius * 4;
    if (!isLone)
        return;
    painter.setPen(Qt::NoPen);
    painter.setBrush(pen.color());
    painter.drawEllipse(line[1], radius, radius);
    painter.setBrush(Qt::NoBrush);
}

} // namespace

Curve curveOf(const DataSeries &series, const TimePlot &plot)
{
    Curve curve;
    const double pitch = plot.area().width() / static_cast<double>(series.buckets.size());
    curve.dense = pitch < 1.5;
    Run run;
    double runLeft = 0;
    double runRight = 0;
    for (size_t i = 0; i < series.buckets.size(); ++i) {
        const BucketValue &bucket = series.buckets[i];
        if (bucket.isEmpty()) {
            finishRun(curve, run, runLeft, runRight);
            continue;
        }
        const double left = plot.x(series.interval(i).start);
        const double right = plot.x(series.interval(i).end);
        if (run.empty())
            runLeft = left;
        runRight = right;
        const double middle = (left + right) / 2;
        const CurvePoint point =
            pointOf(bucket, curve.dense ? std::floor(middle) + 0.5 : middle, plot);
        if (!run.empty() && point.x == run.back().x)
            join(run.back(), point);
        else
            run.push_back(point);
    }
    finishRun(curve, run, runLeft, runRight);
    if (curve.dense)
        std::for_each(curve.runs.begin(), curve.runs.end(), connectColumns);
    return curve;
}

void drawArea(QPainter &painter, const Curve &curve, double base, const QColor &color)
{
    QList<QPolygonF> shapes;
    for (const Run &run : curve.runs) {
        QPolygonF polygon;
        polygon.reserve(static_cast<qsizetype>(run.size()) + 2);
        polygon.append(QPointF(run.front().x, base));
        for (const CurvePoint &point : run)
            polygon.append(QPointF(point.x, point.high));
        polygon.append(QPointF(run.back().x, base));
        shapes.append(polygon);
    }
    fillShapes(painter, shapes, color);
}

void drawBand(QPainter &painter, const Curve &curve, const QColor &color)
{
    QList<QPolygonF> shapes;
    for (const Run &run : curve.runs)
        shapes.append(outline(run, &CurvePoint::top, &CurvePoint::bottom));
    fillShapes(painter, shapes, color);
}

void drawValues(QPainter &painter, const Curve &curve, const QPen &pen)
{
    if (curve.dense) {
        // So many values form a ribbon, the columns widened by half the pen at both ends.
        const double half = pen.widthF() / 2;
        QList<QPolygonF> shapes;
        for (Run run : curve.runs) {
            for (CurvePoint &point : run) {
                point.high -= half;
                point.low += half;
            }
            shapes.append(outline(run, &CurvePoint::high, &CurvePoint::low));
        }
        fillShapes(painter, shapes, pen.color());
        return;
    }
    for (const Run &run : curve.runs) {
        QPolygonF line;
        line.reserve(static_cast<qsizetype>(run.size()));
        for (const CurvePoint &point : run)
            line.append(QPointF(point.x, point.first));
        strokeCurve(painter, line, pen);
        drawLoneValue(painter, line, pen);
    }
}

void drawPoints(QPainter &painter, const DataSeries &series,
                const std::vector<std::optional<double>> &values, const TimePlot &plot,
                const QPen &pen)
{
    QPolygonF line;
    const auto flush = [&] {
        if (line.size() > 1)
            strokeCurve(painter, line, pen);
        line.clear();
    };
    for (size_t i = 0; i < values.size(); ++i) {
        if (!values[i]) {
            flush();
            continue;
        }
        const AxisBucket &bucket = series.interval(i);
        const double x = (plot.x(bucket.start) + plot.x(bucket.end)) / 2;
        // More than a point a pixel would not show.
        if (line.isEmpty() || x - line.last().x() >= 1)
            line.append(QPointF(x, plot.y(*values[i])));
    }
    flush();
}
