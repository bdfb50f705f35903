#include "render/clipping.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace dxfimport {

namespace {

// Liang-Barsky: narrows [t0, t1] and says which side of the rectangle (0 left, 1 right,
// 2 top, 3 bottom; -1 none) each end was cut at.
bool ClipRange(QPointF base, QPointF dir, const QRectF& rect, double& t0, double& t1, int& side0,
               int& side1) {
  const double p[4] = {-dir.x(), dir.x(), -dir.y(), dir.y()};
  const double q[4] = {base.x() - rect.left(), rect.right() - base.x(), base.y() - rect.top(),
                       rect.bottom() - base.y()};
  side0 = side1 = -1;
  for (int i = 0; i < 4; ++i) {
    if (p[i] == 0) {
      if (q[i] < 0) return false;
      continue;
    }
    const double r = q[i] / p[i];
    if (p[i] < 0 && r > t0)
      t0 = r, side0 = i;
    else if (p[i] > 0 && r < t1)
      t1 = r, side1 = i;
  }
  return t0 <= t1 && std::isfinite(t0) && std::isfinite(t1);
}

// Where the line from `a` along `d` crosses a side of the rectangle. The coordinate
// across that side is the side's own, exactly: a point far outside the picture (a line
// 1e20 long) would otherwise lose the position of the cut to rounding.
QPointF OnSide(QPointF a, QPointF d, const QRectF& rect, int side) {
  using Wide = long double;
  if (side <= 1) {
    const double x = side == 0 ? rect.left() : rect.right();
    return {x, double(Wide(a.y()) + (Wide(x) - Wide(a.x())) * (Wide(d.y()) / Wide(d.x())))};
  }
  const double y = side == 2 ? rect.top() : rect.bottom();
  return {double(Wide(a.x()) + (Wide(y) - Wide(a.y())) * (Wide(d.x()) / Wide(d.y()))), y};
}

}  // namespace

bool ClipLineRange(QPointF base, QPointF dir, const QRectF& rect, double& t0, double& t1) {
  int side0 = -1, side1 = -1;
  return ClipRange(base, dir, rect, t0, t1, side0, side1);
}

bool ClipSegment(QPointF& a, QPointF& b, const QRectF& rect) {
  double t0 = 0, t1 = 1;
  int side0 = -1, side1 = -1;
  const QPointF d = b - a;
  if (!ClipRange(a, d, rect, t0, t1, side0, side1)) return false;
  const QPointF start = a;
  if (side1 >= 0) b = OnSide(start, d, rect, side1);
  if (side0 >= 0) a = OnSide(start, d, rect, side0);
  return true;
}

QPolygonF ClipPolygon(const QPolygonF& polygon, const QRectF& rect) {
  if (rect.contains(polygon.boundingRect())) return polygon;
  QPolygonF current = polygon;
  // Each edge of the rectangle keeps the points on its inner side.
  auto clipEdge = [&current](auto inside, auto cross) {
    QPolygonF out;
    const int n = int(current.size());
    for (int i = 0; i < n; ++i) {
      const QPointF p = current[i], q = current[(i + 1) % n];
      const bool pin = inside(p), qin = inside(q);
      if (pin) out << p;
      if (pin != qin) out << cross(p, q);
    }
    current = out;
  };
  auto at = [](QPointF p, QPointF q, double t) { return p + (q - p) * t; };
  const double l = rect.left(), r = rect.right(), t = rect.top(), b = rect.bottom();
  clipEdge([l](QPointF p) { return p.x() >= l; },
           [&](QPointF p, QPointF q) { return at(p, q, (l - p.x()) / (q.x() - p.x())); });
  clipEdge([r](QPointF p) { return p.x() <= r; },
           [&](QPointF p, QPointF q) { return at(p, q, (r - p.x()) / (q.x() - p.x())); });
  clipEdge([t](QPointF p) { return p.y() >= t; },
           [&](QPointF p, QPointF q) { return at(p, q, (t - p.y()) / (q.y() - p.y())); });
  clipEdge([b](QPointF p) { return p.y() <= b; },
           [&](QPointF p, QPointF q) { return at(p, q, (b - p.y()) / (q.y() - p.y())); });
  return current;
}

void DashRun(QPainter& painter, QPointF origin, QPointF dir, double t0, double t1,
             const std::vector<double>& dashes, const QRectF& view) {
  if (!ClipLineRange(origin, dir, view, t0, t1)) return;
  double period = 0;
  for (double d : dashes) period += std::abs(d);
  const double pixelsPerUnit = std::hypot(dir.x(), dir.y());
  const bool solid =
      dashes.empty() || !(period * pixelsPerUnit >= 2) || (t1 - t0) / period * double(dashes.size()) > 4000;
  if (solid) {
    painter.drawLine(QLineF(origin + dir * t0, origin + dir * t1));
    return;
  }
  // Periods counted by a whole number: far from the line's origin adding a period to a
  // large position may not move it.
  const double first = std::floor(t0 / period) * period;
  const double span = std::ceil((t1 - first) / period);
  if (!(span >= 0)) return;
  const auto periods = int64_t(std::min(span, 2002.0));
  for (int64_t k = 0; k < periods; ++k) {
    double at = first + double(k) * period;
    for (double d : dashes) {
      const double end = at + std::abs(d);
      if (d > 0 && end > t0 && at < t1) {
        painter.drawLine(QLineF(origin + dir * std::max(at, t0), origin + dir * std::min(end, t1)));
      } else if (d == 0 && at >= t0 && at <= t1) {
        painter.drawPoint(origin + dir * at);
      }
      at = end;
    }
  }
}

}  // namespace dxfimport
