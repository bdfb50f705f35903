// Entities of the modern profile. Each reads its groups from the record, applies its
// object coordinate system (210/220/230 with the arbitrary axis rule) where it has one,
// and stores its rows in world coordinates (or the open block's).
#include <algorithm>
#include <cmath>

#include "dxf/model/colors.h"
#include "dxf/model/curves.h"
#include "dxf/model/mtext.h"
#include "dxf/model/placement.h"
#include "dxf/model/style_maps.h"
#include "dxf/model/text_codes.h"
#include "dxf/model/text_styles.h"
#include "dxf/modern/modern_reader.h"
#include "support/numbers.h"
#include "support/text_decode.h"

namespace dxfimport {
namespace {

double Size(const std::vector<PointD>& points) {
  Box box;
  for (const PointD& p : points) box.Add(p);
  return box.Empty() ? 0 : std::max(box.maxX - box.minX, box.maxY - box.minY);
}

}  // namespace

// The points as one polyline in the entity's style (closed: back to the first point).
void ModernReader::EmitCurve(const std::vector<PointD>& points, const Style& style, bool closed) {
  std::vector<PathVertex> vertices;
  vertices.reserve(points.size());
  for (const PointD& p : points) vertices.push_back({p});
  EmitPolylinePath(vertices, closed, style, Affine());
}

// LINE: world points 10/20 and 11/21.
bool ModernReader::DXFLine() {
  const Style s = ReadStyle();
  LineEntity line{Num(10), Num(20), Num(11), Num(21), s.Layer, s.Color, s.LineType, s.LineWeight};
  Emit(Placed(line, toBlock_));
  return true;
}

// CIRCLE and ARC: centre 10/20 at elevation 30 in object coordinates, radius 40, angles
// 50/51 (a circle has none).
bool ModernReader::DXFCircle() {
  const Style s = ReadStyle();
  // Angles are kept within a turn: a value of any size reads as the direction it names.
  ArcEntity arc{
      Num(10), Num(20),    std::abs(Num(40)), std::fmod(Num(50), 360.0), std::fmod(Num(51), 360.0), s.Layer,
      s.Color, s.LineType, s.LineWeight};
  if (!Has(50) && !Has(51)) arc.StartAngle = arc.EndAngle = 0;
  PlaceInto(arc, Placement(Num(30)), [this](const auto& row) { Emit(row); });
  return true;
}

// SOLID and TRACE: corners 10, 11, 12, 13 in object coordinates (13 missing: a
// triangle). A transparent one is kept as the solid fill of its outline, whose rows carry
// an opacity (solid rows have no room for one); inside a block, one that takes its
// layer's transparency is decided when the block is inserted, on its final layer.
bool ModernReader::DXFSolid() {
  const Style s = ReadStyle();
  const PointD c1 = Point(10), c2 = Point(11), c3 = Point(12), c4 = Has(13) ? Point(13) : c3;
  const SolidEntity solid = Placed(
      SolidEntity{c1.x, c1.y, c2.x, c2.y, c4.x, c4.y, c3.x, c3.y, s.Layer, s.Color}, Placement(Num(30)));
  if (s.Alpha == kOpaque || s.Alpha == kAlphaByLayer)
    Emit(solid);
  else
    Emit(SolidFill(solid));
  return true;
}

HatchEntity ModernReader::SolidFill(const SolidEntity& solid) {
  HatchEntity fill;
  fill.Points = {{solid.X1, solid.Y1}, {solid.X2, solid.Y2}, {solid.X4, solid.Y4}, {solid.X3, solid.Y3}};
  fill.LoopStarts = {0};
  fill.Layer = solid.Layer, fill.Color = solid.Color;
  return fill;
}

// 3DFACE: its visible edges (70 bits 0..3 hide edges 1..4), corners in world
// coordinates.
bool ModernReader::DXF3DFace() {
  const Style s = ReadStyle();
  const PointD c[4] = {Point(10), Point(11), Point(12), Has(13) ? Point(13) : Point(12)};
  const int32_t hidden = Whole(70, 0, 0, 15);
  for (int i = 0; i < 4; ++i) {
    const PointD from = c[i], to = c[(i + 1) % 4];
    if ((hidden >> i) & 1 || (i == 2 && from == to)) continue;
    Emit(
        Placed(LineEntity{from.x, from.y, to.x, to.y, s.Layer, s.Color, s.LineType, s.LineWeight}, toBlock_));
  }
  return true;
}

// ELLIPSE: centre 10/20 and major axis 11/21/31 in world coordinates, minor to major
// ratio 40, parameters 41/42; the minor axis is the extrusion crossed with the major.
bool ModernReader::DXFEllipse() {
  const Style s = ReadStyle();
  Vec3 n = Extrusion();
  const double length = std::sqrt(n.x * n.x + n.y * n.y + n.z * n.z);
  if (!(length > 1e-12))
    n = {0, 0, 1};
  else
    n = {n.x / length, n.y / length, n.z / length};
  const Vec3 u{Num(11), Num(21), Num(31)};
  const double ratio = Num(40, 1);
  const PointD v{ratio * (n.y * u.z - n.z * u.y), ratio * (n.z * u.x - n.x * u.z)};
  EllipseEntity e;
  e.CenterX = Num(10), e.CenterY = Num(20);
  e.UX = u.x, e.UY = u.y, e.VX = v.x, e.VY = v.y;
  e.Start = Num(41, 0), e.End = Num(42, 2 * M_PI);
  const Sweep sweep = std::abs(e.End - e.Start) >= 2 * M_PI - 1e-12 ? Sweep{} : SweepOf(e.Start, e.End);
  e.Start = sweep.start, e.End = sweep.end;
  e.Layer = s.Layer, e.Color = s.Color, e.LineType = s.LineType, e.LineWeight = s.LineWeight;
  Emit(Placed(e, toBlock_));
  return true;
}

// SPLINE: degree 71, flags 70 (closed 1, periodic 2), knots 40, control points 10/20 with
// weights 41, fit points 11/21; world coordinates.
bool ModernReader::DXFSpline() {
  const Style s = ReadStyle();
  SplineData spline;
  spline.degree = Whole(71, 3, 1, 11);
  spline.closed = (Whole(70, 0, 0, 1 << 20) & 3) != 0;
  for (const auto& [code, value] : pairs_) {
    switch (code) {
      case 40:
        spline.knots.push_back(Val(value));
        break;
      case 41:
        spline.weights.push_back(Val(value));
        break;
      case 10:
        spline.controlPoints.push_back({Val(value), 0});
        break;
      case 20:
        if (!spline.controlPoints.empty()) spline.controlPoints.back().y = Val(value);
        break;
      case 11:
        spline.fitPoints.push_back({Val(value), 0});
        break;
      case 21:
        if (!spline.fitPoints.empty()) spline.fitPoints.back().y = Val(value);
        break;
      default:
        break;
    }
  }
  const double size = Size(spline.controlPoints.empty() ? spline.fitPoints : spline.controlPoints);
  std::vector<PointD> points = FlattenSpline(spline, CurveTolerance(size));
  for (PointD& p : points) p = toBlock_.Apply(p);
  EmitCurve(points, s);
  return true;
}

// LEADER: its vertices 10/20 as segments, with a filled arrowhead at the first vertex
// when 71 says so (its size from the dimension style 3).
bool ModernReader::DXFLeader() {
  const Style s = ReadStyle();
  std::vector<PointD> points;
  for (const auto& [code, value] : pairs_) {
    if (code == 10)
      points.push_back({Val(value), 0});
    else if (code == 20 && !points.empty())
      points.back().y = Val(value);
  }
  for (PointD& p : points) p = toBlock_.Apply(p);
  EmitCurve(points, s);
  if (Whole(71, 1, 0, 1) && points.size() >= 2) {
    const DimStyle dim = DimStyleOf(std::string(Trim(Text(3))));
    const double size = dim.arrowSize * dim.scale;
    const PointD tip = points[0], d = points[0] - points[1];
    const double l = Length(d);
    if (l > size && size > 0) {
      const PointD u = d * (1 / l), side{-u.y * size / 6, u.x * size / 6}, back = tip - u * size;
      const PointD b1 = back + side, b2 = back - side;
      Emit(SolidEntity{tip.x, tip.y, b1.x, b1.y, b2.x, b2.y, b2.x, b2.y, s.Layer, s.Color});
    }
  }
  return true;
}

// POINT: 10/20 in world coordinates, drawn in the drawing's point style. Points on the
// Defpoints layer are the definition points of dimensions: construction marks that CAD
// tools never plot, left out of the picture as a plot leaves them out.
bool ModernReader::DXFPoint() {
  const Style s = ReadStyle();
  if (SameName(drawing_.Layers[std::size_t(s.Layer - 1)].Name, "Defpoints")) return true;
  Emit(Placed(dxfimport::PointEntity{Num(10), Num(20), s.Layer, s.Color}, toBlock_));
  return true;
}

// RAY and XLINE: base 10/20, direction 11/21 (world coordinates).
bool ModernReader::DXFRay() {
  const Style s = ReadStyle();
  RayEntity ray{Num(10), Num(20), Num(11),    Num(21),     name_ == "XLINE",
                s.Layer, s.Color, s.LineType, s.LineWeight};
  if (ray.DX == 0 && ray.DY == 0) return true;
  Emit(Placed(ray, toBlock_));
  return true;
}

// WIPEOUT: its clip boundary (14/24, in image pixels from the top left; two points are a
// rectangle) filled with the background colour. The image's corner is 10/20, one
// pixel's extent 11/21 and 12/22.
bool ModernReader::DXFWipeout() {
  const Style s = ReadStyle();
  const PointD origin = Point(10), u = Point(11), v = Point(12);
  const double height = Num(23, 1);
  const std::vector<PointD> boundary = ClipBoundary(14);
  if (boundary.empty()) return true;
  HatchEntity hatch;
  hatch.Filling = HatchEntity::Fill::Background;
  hatch.Layer = s.Layer, hatch.Color = s.Color;
  hatch.LoopStarts.push_back(0);
  const PointD corner = origin + u * 0.5 - v * 0.5;
  for (const PointD& p : boundary) hatch.Points.push_back(corner + u * p.x + v * (height - p.y));
  Emit(Placed(hatch, toBlock_));
  return true;
}

}  // namespace dxfimport
