// HATCH (modern profile): a solid fill becomes a filled polygon of its boundary loops; a
// pattern fill is drawn as its boundary.
#include <algorithm>
#include <cmath>

#include "dxf/curves.h"
#include "dxf/reader.h"
#include "support/numbers.h"

namespace dxfimport {
namespace {

// Walks the pairs of a HATCH in order; every read looks ahead for the code it wants, so
// an unexpected pair is stepped over rather than taken for another field.
class PairCursor {
 public:
  PairCursor(const std::vector<std::pair<int, std::string_view>>& pairs, std::size_t from)
      : pairs_(pairs), at_(from) {}
  bool Next(int code, double& value, std::size_t window = 8) {
    for (std::size_t i = at_; i < pairs_.size() && i < at_ + window; ++i) {
      if (pairs_[i].first == code) {
        value = Val(pairs_[i].second);
        at_ = i + 1;
        return true;
      }
    }
    return false;
  }
  double Get(int code, double fallback = 0) {
    double v = fallback;
    Next(code, v);
    return v;
  }
  std::size_t at() const { return at_; }

 private:
  const std::vector<std::pair<int, std::string_view>>& pairs_;
  std::size_t at_;
};

constexpr int kMaxCount = 1 << 20;

// A value as a whole number within [lo, hi]; anything outside (or not a number) is held
// at the nearer bound.
int Whole(double value, int lo, int hi) {
  if (!(value >= lo)) return lo;
  if (!(value <= hi)) return hi;
  return int(value);
}

int Count(PairCursor& c, int code) { return Whole(c.Get(code), 0, kMaxCount); }

PointF Point(PairCursor& c, int xCode) { return {CSng(c.Get(xCode)), CSng(c.Get(xCode + 10))}; }

// The points of an arc from `a0` to `a1` degrees about a centre, counter-clockwise unless
// `clockwise`.
void AppendArc(std::vector<PointF>& out, PointF centre, double radius, double a0, double a1, bool clockwise,
               double tolerance) {
  double sweep = clockwise ? a0 - a1 : a1 - a0;
  sweep = std::fmod(std::fmod(sweep, 360.0) + 360.0, 360.0);
  if (sweep == 0) sweep = 360;
  int chords = ChordCount(radius, sweep * M_PI / 180.0, tolerance);
  for (int i = 0; i <= chords; ++i) {
    double a = (a0 + (clockwise ? -sweep : sweep) * i / chords) * M_PI / 180.0;
    out.push_back({CSng(centre.x + radius * std::cos(a)), CSng(centre.y + radius * std::sin(a))});
  }
}

// A polyline boundary: vertices 10/20 with bulges 42 when 72 says so.
void ReadPolylinePath(PairCursor& c, std::vector<PointF>& loop, double tolerance) {
  const bool bulges = c.Get(72) != 0;
  c.Get(73);
  const int vertices = Count(c, 93);
  std::vector<std::pair<PointF, double>> v;
  for (int i = 0; i < vertices; ++i) {
    PointF p = Point(c, 10);
    double bulge = 0;
    if (bulges) c.Next(42, bulge, 2);
    v.emplace_back(p, bulge);
  }
  for (std::size_t i = 0; i < v.size(); ++i) {
    const auto& [p, bulge] = v[i];
    loop.push_back(p);
    if (bulge == 0) continue;
    const PointF q = v[(i + 1) % v.size()].first;
    double dx = double(q.x) - p.x, dy = double(q.y) - p.y, d = std::hypot(dx, dy);
    if (d == 0) continue;
    double k = (1 - bulge * bulge) / (4 * bulge);
    PointF centre{CSng(p.x + dx / 2 - dy * k), CSng(p.y + dy / 2 + dx * k)};
    double radius = d * (1 + bulge * bulge) / (4 * std::abs(bulge));
    double a0 = std::atan2(p.y - centre.y, p.x - centre.x) * 180 / M_PI;
    double a1 = std::atan2(q.y - centre.y, q.x - centre.x) * 180 / M_PI;
    AppendArc(loop, centre, radius, a0, a1, bulge < 0, tolerance);
  }
}

// An edge boundary: lines, circular and elliptic arcs and splines.
void ReadEdgePath(PairCursor& c, std::vector<PointF>& loop, double tolerance) {
  const int edges = Count(c, 93);
  for (int e = 0; e < edges; ++e) {
    switch (Whole(c.Get(72), 0, 5)) {
      case 1: {
        loop.push_back(Point(c, 10));
        loop.push_back(Point(c, 11));
        break;
      }
      case 2: {
        PointF centre = Point(c, 10);
        double radius = c.Get(40), a0 = c.Get(50), a1 = c.Get(51);
        bool ccw = c.Get(73, 1) != 0;
        if (!ccw) a0 = -a0, a1 = -a1;
        AppendArc(loop, centre, radius, a0, a1, !ccw, tolerance);
        break;
      }
      case 3: {
        PointF centre = Point(c, 10), major = Point(c, 11);
        double ratio = c.Get(40), a0 = c.Get(50) * M_PI / 180, a1 = c.Get(51) * M_PI / 180;
        bool ccw = c.Get(73, 1) != 0;
        if (!ccw) std::swap(a0, a1), a0 = 2 * M_PI - a0, a1 = 2 * M_PI - a1;
        std::vector<PointF> arc = FlattenEllipse(centre, major, ratio, a0, a1, !ccw, tolerance);
        loop.insert(loop.end(), arc.begin(), arc.end());
        break;
      }
      case 4: {
        SplineData s;
        s.degree = Whole(c.Get(94, 3), 1, 11);
        const bool rational = c.Get(73) != 0;
        c.Get(74);
        const int knots = Count(c, 95), points = Count(c, 96);
        for (int i = 0; i < knots; ++i) s.knots.push_back(c.Get(40));
        for (int i = 0; i < points; ++i) {
          s.controlPoints.push_back(Point(c, 10));
          double w = 1;
          if (rational) c.Next(42, w, 2);
          s.weights.push_back(w);
        }
        std::vector<PointF> curve = FlattenSpline(s, tolerance);
        loop.insert(loop.end(), curve.begin(), curve.end());
        break;
      }
      default:
        return;  // an edge of no known type: the rest of this path cannot be read
    }
  }
}

}  // namespace

bool DXFReader::ModernHatch() {
  HatchEntity hatch;
  hatch.Layer = EntityLayer();
  hatch.Color = EntityColorValue();
  const bool solid = Long(70) == 1 || Has(450);
  std::size_t start = 0;
  while (start < pairs_.size() && pairs_[start].first != 91) ++start;
  PairCursor c(pairs_, start);
  const int paths = Count(c, 91);
  double tolerance = CurveTolerance(0);
  for (int p = 0; p < paths; ++p) {
    double flags = 0;
    if (!c.Next(92, flags, pairs_.size())) break;
    std::vector<PointF> loop;
    if (Whole(flags, 0, 1 << 30) & 2) ReadPolylinePath(c, loop, tolerance);
    else ReadEdgePath(c, loop, tolerance);
    int sources = Count(c, 97);
    for (int i = 0; i < sources; ++i) c.Get(330);
    if (loop.size() < 2) continue;
    if (solid) {
      hatch.LoopStarts.push_back(int32_t(hatch.Points.size()));
      hatch.Points.insert(hatch.Points.end(), loop.begin(), loop.end());
    } else {
      loop.push_back(loop.front());
      EmitCurve(loop);
    }
  }
  if (solid && !hatch.Points.empty()) Store(std::move(hatch));
  return true;
}

}  // namespace dxfimport
