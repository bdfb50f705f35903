// HATCH (modern profile): the boundary loops as polygons in object coordinates, filled
// solid or with the hatch's pattern lines (already scaled and turned in the file).
#include <algorithm>
#include <cmath>

#include "dxf/model/colors.h"
#include "dxf/model/curves.h"
#include "dxf/model/placement.h"
#include "dxf/modern/modern_reader.h"
#include "support/numbers.h"
#include "support/text_decode.h"

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
  std::size_t remaining() const { return pairs_.size() - std::min(at_, pairs_.size()); }

 private:
  const std::vector<std::pair<int, std::string_view>>& pairs_;
  std::size_t at_;
};

constexpr int kMaxCount = 1 << 20;
// The points a hatch's boundary may hold (16 MB): the arcs and splines of its edges are
// flattened, so a few pairs can stand for thousands of points.
constexpr std::size_t kMaxBoundaryPoints = std::size_t(1) << 20;

// A value as a whole number within [lo, hi]; anything outside (or not a number) is held
// at the nearer bound.
int Bounded(double value, int lo, int hi) {
  if (!(value >= lo)) return lo;
  if (!(value <= hi)) return hi;
  return int(value);
}

// A count of items that follow: each takes at least one pair, so no count is more than
// the pairs left.
int Count(PairCursor& c, int code) {
  const double value = c.Get(code);
  return Bounded(value, 0, int(std::min<std::size_t>(kMaxCount, c.remaining())));
}

PointD Point(PairCursor& c, int xCode) { return {c.Get(xCode), c.Get(xCode + 10)}; }

// The points of an arc from `a0` to `a1` degrees about a centre, counter-clockwise unless
// `clockwise`.
void AppendArc(std::vector<PointD>& out, PointD centre, double radius, double a0, double a1, bool clockwise,
               double tolerance) {
  double sweep = clockwise ? a0 - a1 : a1 - a0;
  sweep = std::fmod(std::fmod(sweep, 360.0) + 360.0, 360.0);
  if (sweep == 0) sweep = 360;
  int chords = ChordCount(radius, sweep * M_PI / 180.0, tolerance);
  for (int i = 0; i <= chords; ++i) {
    double a = (a0 + (clockwise ? -sweep : sweep) * i / chords) * M_PI / 180.0;
    out.push_back({centre.x + radius * std::cos(a), centre.y + radius * std::sin(a)});
  }
}

// A polyline boundary: vertices 10/20 with bulges 42 when 72 says so; at most about
// `room` points.
void ReadPolylinePath(PairCursor& c, std::vector<PointD>& loop, double tolerance, std::size_t room) {
  const bool bulges = c.Get(72) != 0;
  c.Get(73);
  const int vertices = Count(c, 93);
  std::vector<std::pair<PointD, double>> v;
  for (int i = 0; i < vertices; ++i) {
    PointD p = Point(c, 10);
    double bulge = 0;
    if (bulges) c.Next(42, bulge, 2);
    v.emplace_back(p, bulge);
  }
  for (std::size_t i = 0; i < v.size() && loop.size() < room; ++i) {
    const auto& [p, bulge] = v[i];
    loop.push_back(p);
    if (bulge == 0) continue;
    const PointD q = v[(i + 1) % v.size()].first;
    BulgeArc arc;
    if (!ArcOfBulge(p, q, bulge, arc)) continue;
    const double a0 = bulge > 0 ? arc.startDegrees : arc.endDegrees,
                 a1 = bulge > 0 ? arc.endDegrees : arc.startDegrees;
    AppendArc(loop, arc.centre, arc.radius, a0, a1, bulge < 0, tolerance);
  }
}

// An edge boundary: lines, circular and elliptic arcs and splines; at most about `room`
// points.
void ReadEdgePath(PairCursor& c, std::vector<PointD>& loop, double tolerance, std::size_t room) {
  const int edges = Count(c, 93);
  for (int e = 0; e < edges && loop.size() < room; ++e) {
    switch (Bounded(c.Get(72), 0, 5)) {
      case 1: {
        loop.push_back(Point(c, 10));
        loop.push_back(Point(c, 11));
        break;
      }
      case 2: {
        PointD centre = Point(c, 10);
        double radius = c.Get(40), a0 = c.Get(50), a1 = c.Get(51);
        bool ccw = c.Get(73, 1) != 0;
        if (!ccw) a0 = -a0, a1 = -a1;
        AppendArc(loop, centre, radius, a0, a1, !ccw, tolerance);
        break;
      }
      case 3: {
        PointD centre = Point(c, 10), major = Point(c, 11);
        double ratio = c.Get(40), a0 = c.Get(50) * M_PI / 180, a1 = c.Get(51) * M_PI / 180;
        bool ccw = c.Get(73, 1) != 0;
        if (!ccw) std::swap(a0, a1), a0 = 2 * M_PI - a0, a1 = 2 * M_PI - a1;
        std::vector<PointD> arc = FlattenEllipse(centre, major, ratio, a0, a1, !ccw, tolerance);
        loop.insert(loop.end(), arc.begin(), arc.end());
        break;
      }
      case 4: {
        SplineData s;
        s.degree = Bounded(c.Get(94, 3), 1, 11);
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
        std::vector<PointD> curve = FlattenSpline(s, tolerance);
        loop.insert(loop.end(), curve.begin(), curve.end());
        break;
      }
      default:
        return;  // an edge of no known type: the rest of this path cannot be read
    }
  }
}

// The pattern definition lines that follow the boundary: angle 53, base point 43/44,
// offset 45/46 and dashes 49, for each of 78 lines.
std::vector<PatternLine> ReadPattern(PairCursor& c, std::size_t end) {
  std::vector<PatternLine> pattern;
  double count = 0;
  if (!c.Next(78, count, end)) return pattern;
  const int lines = Bounded(count, 0, int(std::min<std::size_t>(1024, c.remaining())));
  for (int i = 0; i < lines; ++i) {
    PatternLine line;
    const double angle = Radians(c.Get(53));
    line.Direction = {std::cos(angle), std::sin(angle)};
    line.Base = {c.Get(43), c.Get(44)};
    line.Offset = {c.Get(45), c.Get(46)};
    const int dashes = Bounded(c.Get(79), 0, int(std::min<std::size_t>(1024, c.remaining())));
    for (int d = 0; d < dashes; ++d) line.Dashes.push_back(c.Get(49));
    pattern.push_back(std::move(line));
  }
  return pattern;
}

}  // namespace

bool ModernReader::DXFHatch() {
  HatchEntity hatch;
  const Style style = ReadStyle();
  hatch.Layer = style.Layer;
  hatch.Color = style.Color;
  const bool gradient = Whole(450, 0, 0, 1) == 1;
  const bool solid = Whole(70, 0, 0, 1) == 1 || gradient;
  hatch.Filling = gradient ? HatchEntity::Fill::Gradient
                  : solid  ? HatchEntity::Fill::Solid
                           : HatchEntity::Fill::Pattern;
  if (gradient) hatch.Gradient = ReadGradient(style.Color);
  std::size_t start = 0;
  while (start < pairs_.size() && pairs_[start].first != 91) ++start;
  PairCursor c(pairs_, start);
  const int paths = Count(c, 91);
  const double tolerance = CurveTolerance(0);
  for (int p = 0; p < paths; ++p) {
    double flags = 0;
    if (!c.Next(92, flags, pairs_.size())) break;
    std::vector<PointD> loop;
    const std::size_t room = kMaxBoundaryPoints - std::min(kMaxBoundaryPoints, hatch.Points.size());
    if (Bounded(flags, 0, 1 << 30) & 2)
      ReadPolylinePath(c, loop, tolerance, room);
    else
      ReadEdgePath(c, loop, tolerance, room);
    const bool full = loop.size() >= room;
    if (full) Note("hatch boundary held at its bound: 1,048,576 points");
    const int sources = Count(c, 97);
    for (int i = 0; i < sources; ++i) c.Get(330);
    if (loop.size() < 2) continue;
    hatch.LoopStarts.push_back(int32_t(hatch.Points.size()));
    hatch.Points.insert(hatch.Points.end(), loop.begin(), loop.end());
    if (full) break;
  }
  if (!solid) hatch.Pattern = ReadPattern(c, pairs_.size());
  if (hatch.Points.empty() || (!solid && hatch.Pattern.empty())) return true;
  Emit(Placed(hatch, Placement(Num(30))));
  return true;
}

// The gradient of a HATCH: its shape by name (470; linear when unknown), its angle in
// radians (460) and shift (461), and its colours after their count (453): each a colour
// number (63) that a true colour (421) may replace. A one-colour gradient (452 = 1), or
// one that names a single colour, runs from its colour to that colour tinted (462: 0
// darkest, 1 lightest, one half the colour itself).
HatchGradient ModernReader::ReadGradient(int32_t ownColor) const {
  static const std::pair<std::string_view, HatchGradient::Shape> kShapes[] = {
      {"LINEAR", HatchGradient::Shape::Linear},
      {"CYLINDER", HatchGradient::Shape::Cylinder},
      {"INVCYLINDER", HatchGradient::Shape::InvCylinder},
      {"SPHERICAL", HatchGradient::Shape::Spherical},
      {"INVSPHERICAL", HatchGradient::Shape::InvSpherical},
      {"HEMISPHERICAL", HatchGradient::Shape::Hemispherical},
      {"INVHEMISPHERICAL", HatchGradient::Shape::InvHemispherical},
      {"CURVED", HatchGradient::Shape::Curved},
      {"INVCURVED", HatchGradient::Shape::InvCurved},
  };
  HatchGradient g;
  const std::string name(Trim(Text(470)));
  for (const auto& [shapeName, shape] : kShapes)
    if (SameName(name, shapeName)) g.Kind = shape;
  const double angle = std::fmod(Num(460), 2 * M_PI);
  g.Direction = std::isfinite(angle) ? PointD{std::cos(angle), std::sin(angle)} : PointD{1, 0};
  g.Shift = std::isfinite(Num(461)) ? std::clamp(Num(461), -1.0, 1.0) : 0;
  std::vector<int32_t> colors;
  int aci = 7;
  bool listed = false;
  for (const auto& [code, value] : pairs_) {
    listed = listed || code == 453;
    if (!listed || colors.size() > 2) continue;
    if (code == 463) {
      colors.push_back(ownColor);
    } else if (code == 63 && !colors.empty()) {
      const double number = HeldVal(value);
      aci = std::isfinite(number) ? int(std::clamp(number, 0.0, 256.0)) : 7;
      colors.back() = AciColor(aci);
    } else if (code == 421 && !colors.empty()) {
      colors.back() = TrueColorValue(value, aci);
    }
  }
  g.From = colors.empty() ? ownColor : colors[0];
  const bool oneColor = Whole(452, 0, 0, 1) == 1 || colors.size() < 2;
  g.To = oneColor ? TintedColor(g.From, Num(462, 0.5)) : colors[1];
  return g;
}

}  // namespace dxfimport
