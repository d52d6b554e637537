#pragma once

#include <QColor>
#include <QImage>
#include <QPainter>
#include <QPolygonF>

/// Smooth filling of shapes that have thousands of edges, several times as fast on an image as the
/// painter's own way; on other devices it is the painter that fills them.

/// Fills polygons, one pixel's share of each exactly by its area. Shapes drawn with one call must
/// not overlap but where they run in the same direction.
void fillShapes(QPainter &painter, const QList<QPolygonF> &shapes, const QColor &color);

/// Draws a line through points that ascend in x.
void strokeCurve(QPainter &painter, const QPolygonF &line, const QPen &pen);
