#include "render/clipping.h"

#include <cmath>

namespace dxfimport {

bool ClipLineRange(QPointF base, QPointF dir, const QRectF& rect, double& t0, double& t1) {
  const double p[4] = {-dir.x(), dir.x(), -dir.y(), dir.y()};
  const double q[4] = {base.x() - rect.left(), rect.right() - base.x(), base.y() - rect.top(),
                       rect.bottom() - base.y()};
  for (int i = 0; i < 4; ++i) {
    if (p[i] == 0) {
      if (q[i] < 0) return false;
      continue;
    }
    const double r = q[i] / p[i];
    if (p[i] < 0) t0 = std::max(t0, r);
    else t1 = std::min(t1, r);
  }
  return t0 <= t1 && std::isfinite(t0) && std::isfinite(t1);
}

bool ClipSegment(QPointF& a, QPointF& b, const QRectF& rect) {
  double t0 = 0, t1 = 1;
  const QPointF d = b - a;
  if (!ClipLineRange(a, d, rect, t0, t1)) return false;
  const QPointF start = a;
  if (t1 < 1) b = start + d * t1;
  if (t0 > 0) a = start + d * t0;
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
  clipEdge([l](QPointF p) { return p.x() >= l; }, [&](QPointF p, QPointF q) { return at(p, q, (l - p.x()) / (q.x() - p.x())); });
  clipEdge([r](QPointF p) { return p.x() <= r; }, [&](QPointF p, QPointF q) { return at(p, q, (r - p.x()) / (q.x() - p.x())); });
  clipEdge([t](QPointF p) { return p.y() >= t; }, [&](QPointF p, QPointF q) { return at(p, q, (t - p.y()) / (q.y() - p.y())); });
  clipEdge([b](QPointF p) { return p.y() <= b; }, [&](QPointF p, QPointF q) { return at(p, q, (b - p.y()) / (q.y() - p.y())); });
  return current;
}

void DashRun(QPainter& painter, QPointF origin, QPointF dir, double t0, double t1, const std::vector<double>& dashes,
             const QRectF& view) {
  if (!ClipLineRange(origin, dir, view, t0, t1)) return;
  double period = 0;
  for (double d : dashes) period += std::abs(d);
  const double pixelsPerUnit = std::hypot(dir.x(), dir.y());
  const bool solid = dashes.empty() || !(period * pixelsPerUnit >= 2) || (t1 - t0) / period > 2000;
  if (solid) {
    painter.drawLine(QLineF(origin + dir * t0, origin + dir * t1));
    return;
  }
  for (double start = std::floor(t0 / period) * period; start < t1; start += period) {
    double at = start;
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
