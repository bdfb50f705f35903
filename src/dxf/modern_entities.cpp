// Entities that only the modern profile reads: MTEXT, ELLIPSE, SPLINE and LEADER. Curves
// are stored as polyline segments through points close enough to be exact at the
// extents view.
#include <algorithm>
#include <cmath>

#include "dxf/curves.h"
#include "dxf/mtext.h"
#include "dxf/reader.h"
#include "dxf/style_maps.h"
#include "dxf/text_codes.h"
#include "support/numbers.h"
#include "support/text_decode.h"

namespace dxfimport {
namespace {

double Size(const std::vector<PointF>& points) {
  if (points.empty()) return 0;
  float minX = points[0].x, maxX = minX, minY = points[0].y, maxY = minY;
  for (const PointF& p : points) {
    minX = std::min(minX, p.x), maxX = std::max(maxX, p.x);
    minY = std::min(minY, p.y), maxY = std::max(maxY, p.y);
  }
  return std::max(double(maxX) - minX, double(maxY) - minY);
}

}  // namespace

// The points as one open polyline in the entity's layer and colour.
void DXFReader::EmitCurve(const std::vector<PointF>& points) {
  BeginPolyline(0, 0);
  for (const PointF& p : points) AddVertex(p.x, p.y, 0, 0);
}

// One text row per line, placed by the attachment point (71: rows top, middle, bottom;
// columns left, centre, right), turned by the direction 11/21 (or the rotation 50) and
// spaced 5/3 of the height times the line spacing factor 44.
bool DXFReader::ModernMText() {
  std::string bytes;
  for (const auto& [code, value] : pairs_)
    if ((code == 1 || code == 3) && bytes.size() < kMaxTextBytes) bytes.append(value.substr(0, kMaxTextBytes));
  const std::vector<std::string> lines = MTextLines(decoder_.Decode(bytes));
  const int attachment = std::clamp<int32_t>(Long(71), 1, 9) - 1;
  const double height = Num(40);
  const double spacing = height * 5.0 / 3.0 * (Has(44) ? Num(44) : 1.0);
  double degrees = Num(50);
  if (Num(11) != 0 || Num(21) != 0) degrees = std::atan2(Num(21), Num(11)) * 180.0 / M_PI;
  const double turn = degrees * M_PI / 180.0;
  const int n = int(lines.size());
  const double block = height + (n - 1) * spacing;
  const double firstBaseline = attachment / 3 == 0 ? -height : attachment / 3 == 1 ? block / 2 - height : (n - 1) * spacing;

  TextEntity text;
  text.Layer = EntityLayer();
  text.Color = EntityColorValue();
  text.Height = CSng(height);
  text.Rotation = CSng(degrees);
  text.HorzJustify = attachment % 3;
  FontChoice font = FontNameMap(Text(7));
  text.FontName = std::string(font.Face);
  text.FontFactor = font.Factor;
  const double x0 = Num(10), y0 = Num(20);
  for (int i = 0; i < n; ++i) {
    std::string_view line = TrimRight(lines[std::size_t(i)]);
    if (line.empty()) continue;
    double localY = firstBaseline - i * spacing;
    text.X = CSng(x0 - localY * std::sin(turn));
    text.Y = CSng(y0 + localY * std::cos(turn));
    text.Text = std::string(TrimRight(CutChars(ReplaceQuote(line), 100)));
    Store(text);
  }
  return true;
}

// ELLIPSE: centre 10/20, major axis 11/21, ratio 40, parameters 41/42; an extrusion along
// -Z (230 < 0) runs it clockwise.
bool DXFReader::ModernEllipse() {
  const PointF centre{Sng(10), Sng(20)}, major{Sng(11), Sng(21)};
  const double start = Has(41) ? Num(41) : 0, end = Has(42) ? Num(42) : 2 * M_PI;
  const bool clockwise = Val(Last(230)) < 0;
  const double size = 2 * std::hypot(double(major.x), double(major.y));
  EmitCurve(FlattenEllipse(centre, major, Num(40), start, end, clockwise, CurveTolerance(size)));
  return true;
}

// SPLINE: degree 71, flags 70 (closed 1, periodic 2), knots 40, control points 10/20 with
// weights 41, fit points 11/21.
bool DXFReader::ModernSpline() {
  SplineData spline;
  spline.degree = std::clamp<int32_t>(Long(71), 1, 11);
  spline.closed = (Long(70) & 3) != 0;
  for (const auto& [code, value] : pairs_) {
    switch (code) {
      case 40: spline.knots.push_back(Val(value)); break;
      case 41: spline.weights.push_back(Val(value)); break;
      case 10: spline.controlPoints.push_back({CSng(Val(value)), 0}); break;
      case 20: if (!spline.controlPoints.empty()) spline.controlPoints.back().y = CSng(Val(value)); break;
      case 11: spline.fitPoints.push_back({CSng(Val(value)), 0}); break;
      case 21: if (!spline.fitPoints.empty()) spline.fitPoints.back().y = CSng(Val(value)); break;
      default: break;
    }
  }
  double size = Size(spline.controlPoints.empty() ? spline.fitPoints : spline.controlPoints);
  EmitCurve(FlattenSpline(spline, CurveTolerance(size)));
  return true;
}

// LEADER: its vertices 10/20 as segments; the arrowhead is not drawn.
bool DXFReader::ModernLeader() {
  std::vector<PointF> points;
  for (const auto& [code, value] : pairs_) {
    if (code == 10) points.push_back({CSng(Val(value)), 0});
    else if (code == 20 && !points.empty()) points.back().y = CSng(Val(value));
  }
  EmitCurve(points);
  return true;
}

}  // namespace dxfimport
