#include "dxf/extents.h"

#include <algorithm>
#include <cmath>

#include "support/text_decode.h"

namespace dxfimport {
namespace {

// Average advance of a character and the depth of descenders, in text heights (the
// height of a capital), for the proportional faces text is drawn in.
constexpr double kAdvance = 0.7;
constexpr double kDescent = 0.25;

Box Of(std::initializer_list<PointD> points) {
  Box b;
  for (const PointD& p : points) b.Add(p);
  return b;
}

Box Grown(Box b, double by) {
  if (b.Empty() || !(by > 0)) return b;
  return {b.minX - by, b.minY - by, b.maxX + by, b.maxY + by};
}

}  // namespace

Box RowBox(const LineEntity& r) { return Of({{r.X1, r.Y1}, {r.X2, r.Y2}}); }

Box RowBox(const PolySegment& r) {
  Box b = Of({{r.X1, r.Y1}, {r.X2, r.Y2}});
  BulgeArc arc;
  if (r.Bulge != 0 && ArcOfBulge({r.X1, r.Y1}, {r.X2, r.Y2}, r.Bulge, arc))
    b.Merge(ArcBox(arc.centre, arc.radius, arc.startDegrees, arc.endDegrees));
  return Grown(b, std::max(std::abs(r.Width), std::abs(r.EndWidth)) / 2);
}

void TextCorners(const TextEntity& t, PointD corners[4]) {
  const double h = std::abs(t.Height);
  const double width = double(CharCount(t.Text)) * kAdvance * h;
  const double along = t.HorzJustify == 1 || t.HorzJustify == 4 ? 0.5 : t.HorzJustify == 2 ? 1.0 : 0.0;
  double bottom = -kDescent * h, top = h;
  switch (t.VertJustify) {
    case 1: bottom += kDescent * h, top += kDescent * h; break;
    case 2: bottom -= h / 2, top -= h / 2; break;
    case 3: bottom -= h, top -= h; break;
    default: break;
  }
  if (t.HorzJustify == 4 && t.VertJustify == 0) bottom -= h / 2, top -= h / 2;
  const double left = -along * width, right = left + width;
  const double turn = Radians(t.Rotation), c = std::cos(turn), s = std::sin(turn);
  const PointD local[4] = {{left, bottom}, {right, bottom}, {right, top}, {left, top}};
  for (int i = 0; i < 4; ++i)
    corners[i] = {t.X + local[i].x * c - local[i].y * s, t.Y + local[i].x * s + local[i].y * c};
}

Box RowBox(const TextEntity& r) {
  PointD c[4];
  TextCorners(r, c);
  return Of({c[0], c[1], c[2], c[3]});
}

Box RowBox(const AttribEntity& r) { return RowBox(r.Text); }

Box RowBox(const ArcEntity& r) {
  return ArcBox({r.CenterX, r.CenterY}, r.Radius, r.StartAngle, r.EndAngle);
}

Box RowBox(const EllipseEntity& r) {
  return EllipseBox({r.CenterX, r.CenterY}, {r.UX, r.UY}, {r.VX, r.VY}, r.Start, r.End);
}

Box RowBox(const SolidEntity& r) { return Of({{r.X1, r.Y1}, {r.X2, r.Y2}, {r.X3, r.Y3}, {r.X4, r.Y4}}); }

Box RowBox(const HatchEntity& r) {
  Box b;
  for (const PointD& p : r.Points) b.Add(p);
  return b;
}

Box RowBox(const PointEntity& r) { return Of({{r.X, r.Y}}); }

Box RowBox(const RayEntity&) { return {}; }

Box TablesBox(const EntityTables& t) {
  Box box;
  auto widen = [&box](const auto& table) {
    for (const auto& row : table) {
      const Box b = RowBox(row);
      if (std::isfinite(b.minX) && std::isfinite(b.minY) && std::isfinite(b.maxX) && std::isfinite(b.maxY))
        box.Merge(b);
    }
  };
  widen(t.Lines);
  widen(t.PolySegs);
  widen(t.Texts);
  widen(t.Attribs);
  widen(t.Arcs);
  widen(t.Ellipses);
  widen(t.Solids);
  widen(t.Hatches);
  widen(t.Points);
  return box;
}

Box WithMargin(const Box& box) {
  if (box.Empty()) return box;
  const double span = std::max(box.maxX - box.minX, box.maxY - box.minY);
  return Grown(box, span > 0 ? span * 0.02 : 1.0);
}

}  // namespace dxfimport
