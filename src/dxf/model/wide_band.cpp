#include "dxf/model/wide_band.h"

#include <algorithm>
#include <cmath>

namespace dxfimport {
namespace {

// Moves a band's corners at `vertex` (its sides offset by `w` along `n` from the line
// along `u`) to where they meet the sides of the straight wide `neighbour` (half width
// `nw` there), as long as that stays within a few widths of the vertex.
void JoinSides(const PolySegment& neighbour, double nw, PointD vertex, PointD u, PointD n, double w,
               PointD& left, PointD& right) {
  if (neighbour.Bulge != 0 || (neighbour.Width == 0 && neighbour.EndWidth == 0)) return;
  const PointD nd{neighbour.X2 - neighbour.X1, neighbour.Y2 - neighbour.Y1};
  const double length = Length(nd);
  const double det = u.x * nd.y - u.y * nd.x;
  if (length == 0 || std::abs(det) < 1e-9 * length) return;
  const PointD nu = nd * (1 / length), nn{-nu.y, nu.x};
  auto meet = [&](double side, PointD& corner) {
    const PointD a = vertex + n * (side * w), b = vertex + nn * (side * nw);
    const PointD gap = b - a;
    const PointD at = a + u * ((gap.x * nu.y - gap.y * nu.x) / (u.x * nu.y - u.y * nu.x));
    if (Length(at - vertex) <= 40 * std::max(w, nw)) corner = at;
  };
  meet(1, left);
  meet(-1, right);
}

// The band along the arc of a bulge: the outer side forwards, then the inner side back.
std::vector<PointD> ArcBand(const BulgeArc& arc, PointD p1, PointD p2, double bulge, double w0, double w1,
                            double pixelsPerUnit) {
  const double a0 = std::atan2(p1.y - arc.centre.y, p1.x - arc.centre.x);
  const double a1 = std::atan2(p2.y - arc.centre.y, p2.x - arc.centre.x);
  const Sweep ccw = bulge > 0 ? SweepOf(a0, a1) : SweepOf(a1, a0);
  const double sweep = bulge > 0 ? ccw.end - ccw.start : ccw.start - ccw.end;
  const double pixels = (arc.radius + std::max(w0, w1)) * pixelsPerUnit;
  const int chords =
      int(std::clamp(std::ceil(std::abs(sweep) * std::sqrt(std::max(pixels, 1.0))), 4.0, 4096.0));
  std::vector<PointD> band(std::size_t(2 * (chords + 1)));
  for (int i = 0; i <= chords; ++i) {
    const double f = double(i) / chords, t = a0 + sweep * f, w = w0 + (w1 - w0) * f;
    const PointD u{std::cos(t), std::sin(t)};
    band[std::size_t(i)] = arc.centre + u * (arc.radius + w);
    band[band.size() - 1 - std::size_t(i)] = arc.centre + u * std::max(0.0, arc.radius - w);
  }
  return band;
}

}  // namespace

std::vector<PointD> WideBand(const Drawing& drawing, const PolySegment& s, int32_t row,
                             double pixelsPerUnit) {
  const PointD p1{s.X1, s.Y1}, p2{s.X2, s.Y2};
  const double w0 = std::abs(s.Width) / 2, w1 = std::abs(s.EndWidth) / 2;
  BulgeArc arc;
  if (s.Bulge != 0 && ArcOfBulge(p1, p2, s.Bulge, arc))
    return ArcBand(arc, p1, p2, s.Bulge, w0, w1, pixelsPerUnit);
  const PointD d = p2 - p1;
  const double length = Length(d);
  if (length == 0) return {};
  const PointD u = d * (1 / length), n{-u.y, u.x};
  PointD left0 = p1 + n * w0, right0 = p1 - n * w0, left1 = p2 + n * w1, right1 = p2 - n * w1;
  const auto& segs = drawing.PolySegs;
  const PolySegment* previous = s.Joined && row >= 2 ? &segs[std::size_t(row - 2)] : nullptr;
  const PolySegment* next =
      std::size_t(row) < segs.size() && segs[std::size_t(row)].Joined ? &segs[std::size_t(row)] : nullptr;
  if (previous && previous->X2 == s.X1 && previous->Y2 == s.Y1)
    JoinSides(*previous, std::abs(previous->EndWidth) / 2, p1, u, n, w0, left0, right0);
  if (next && next->X1 == s.X2 && next->Y1 == s.Y2)
    JoinSides(*next, std::abs(next->Width) / 2, p2, u, n, w1, left1, right1);
  return {left0, left1, right1, right0};
}

}  // namespace dxfimport
