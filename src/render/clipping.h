#pragma once

#include <QPainter>
#include <QPolygonF>
#include <QRectF>
#include <vector>

namespace dxfimport {

// Narrows the parameter range [t0, t1] of the line base + t * dir to the part inside
// `rect`; false when no part is inside.
bool ClipLineRange(QPointF base, QPointF dir, const QRectF& rect, double& t0, double& t1);

// Cuts the segment from a to b down to its part inside `rect`; false when none is.
bool ClipSegment(QPointF& a, QPointF& b, const QRectF& rect);

// The polygon's part inside `rect` (Sutherland-Hodgman). A polygon already inside is
// returned as it is.
QPolygonF ClipPolygon(const QPolygonF& polygon, const QRectF& rect);

// Draws the line origin + t * dir for t from t0 to t1 with the pen on the painter,
// dashed by `dashes` (in units of t: a dash positive, a gap negative, a dot 0; none is a
// solid line), the pattern starting at t = 0. Only the part inside `view` is drawn; a
// pattern too fine to see is drawn solid.
void DashRun(QPainter& painter, QPointF origin, QPointF dir, double t0, double t1,
             const std::vector<double>& dashes, const QRectF& view);

}  // namespace dxfimport
