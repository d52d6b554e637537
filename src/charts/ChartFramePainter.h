#pragma once

#include "charts/ChartJob.h"
#include "charts/ChartStyle.h"

#include <QPainter>
#include <QRectF>
#include <QStringList>

#include <vector>

/// What all charts share: ground, header, legend, footer, and the texts of the axes.

/// How a legend entry is marked; the same marks as in the plot.
enum class Mark { Success, Partial, NoData, Area, Solid, Line };

struct LegendEntry
{
    Mark mark = Mark::Line;
    QString name;
    QString value; ///< set apart by its weight; may be empty
    QPen pen = {}; ///< of a line; its colour is that of a solid mark
};

/// What stands around a plot.
struct ChartSurroundings
{
    QString axisTitle; ///< above the left end of the plot
    std::vector<LegendEntry> legend;
    QStringList footers;
};

/// A chart without its margins.
QRectF insideOf(const QSizeF &size, const ChartStyle &style);

/// Draws ground, header, legend, footers and credit line, and returns the rectangle that is left
/// between them, as wide as `insideOf`. All texts stay inside the chart: titles are shortened,
/// footers wrapped.
QRectF drawSurroundings(QPainter &painter, const ChartFrame &frame, const QSizeF &size,
                        const ChartStyle &style, const ChartSurroundings &surroundings);

/// Draws a text whose ascent begins at `top`; `x` is its left end, middle or right end.
void drawText(QPainter &painter, const TypeFace &face, QRgb color, double x, double top,
              const QString &text, Qt::Alignment alignment = Qt::AlignLeft);

/// Fills a rectangle that lies on whole logical pixels (else it is rounded to them).
void fillBox(QPainter &painter, const QRectF &box, QRgb color);

/// A pen in whole or fractional logical pixels with flat ends; `dashes` in pen widths.
QPen linePen(QRgb color, double width, const QList<qreal> &dashes = {});

/// A quiet hatched area: no data.
void drawNoData(QPainter &painter, const QRectF &area, const ChartStyle &style);

/// "No data in this period" in the middle of a plot.
void drawNoDataMessage(QPainter &painter, const QRectF &plot, const ChartStyle &style);

/// "by 15 minutes", "by hour", ...
QString bucketText(const DataSeries &series);
