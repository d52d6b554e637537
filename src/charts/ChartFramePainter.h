#pragma once

#include "charts/ChartJob.h"
#include "charts/ChartStyle.h"

#include <QPainter>
#include <QRectF>
#include <QStringList>

#include <vector>

/// What all charts share: background, header, legend, footer, and the texts of the axes.

/// The symbol of a legend entry; drawn as in the plot.
enum class LegendMark { Success, Partial, SomeFailed, NoData, Excluded, Area, Solid, Line };

struct LegendEntry
{
    LegendMark mark = LegendMark::Line;
    QString name;
    QString value; ///< in bold after the name; may be empty
    QPen pen = {}; ///< of a line; its colour is that of a solid mark
};

/// The texts around a plot.
struct ChartSurroundings
{
    QString axisTitle; ///< above the left end of the plot
    std::vector<LegendEntry> legend;
    QStringList footers;
};

/// A chart without its margins.
QRectF insideOf(const QSizeF &size, const ChartStyle &style);

/// Draws background, header, legend, footers and credit line, and returns the rectangle that is
/// left between them, as wide as `insideOf`. All texts stay inside the chart: titles are elided,
/// footers wrapped.
QRectF drawSurroundings(QPainter &painter, const ChartFrame &frame, const QSizeF &size,
                        const ChartStyle &style, const ChartSurroundings &surroundings);

/// Breaks a text between words into lines no wider than `width`; a wider word gets a line of its
/// own, elided.
QStringList wrappedText(const QString &text, const TypeFace &face, double width);

/// Draws a text with its top at `top`; `x` is its left end, middle or right end.
void drawText(QPainter &painter, const TypeFace &face, QRgb color, double x, double top,
              const QString &text, Qt::Alignment alignment = Qt::AlignLeft);

/// Fills a rectangle, rounded to whole logical pixels.
void fillBox(QPainter &painter, const QRectF &box, QRgb color);

/// A pen in whole or fractional logical pixels with flat ends; `dashes` in pen widths.
QPen linePen(QRgb color, double width, const QList<qreal> &dashes = {});

/// A hatched area: no data.
void drawNoData(QPainter &painter, const QRectF &area, const ChartStyle &style);

/// A hatched area the other way: time that does not count.
void drawExcluded(QPainter &painter, const QRectF &area, const ChartStyle &style);

/// "No data in this period" in the middle of a plot.
void drawNoDataMessage(QPainter &painter, const QRectF &plot, const ChartStyle &style);

/// "by 15 minutes", "by hour", ...
QString bucketText(const DataSeries &series);
