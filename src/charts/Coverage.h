#pragma once

#include <QColor>
#include <QImage>
#include <QPainter>
#include <QPolygonF>

/// Antialiased filling of shapes with thousands of edges, on images several times as fast as by
/// QPainter; on other devices QPainter fills them.

/// Fills polygons; a pixel gets the exact share of its area that they cover. Polygons of one call
/// may only overlap if they have the same orientation.
void fillShapes(QPainter &painter, const QList<QPolygonF> &shapes, const QColor &color);

/// Draws a line through points with ascending x.
void strokeCurve(QPainter &painter, const QPolygonF &line, const QPen &pen);
