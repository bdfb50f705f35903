// POLYLINE (2D and 3D polylines, polyface and polygon meshes) with its VERTEX entities
// and SEQEND, and LWPOLYLINE, in the modern profile.
#include <algorithm>
#include <cmath>
#include <set>

#include "dxf/modern_reader.h"
#include "dxf/placement.h"
#include "support/numbers.h"

namespace dxfimport {
namespace {

constexpr int32_t kClosed = 1, kPolyline3D = 8, kPolygonMesh = 16, kMeshClosedN = 32, kPolyface = 64;
constexpr int32_t kFrameControlPoint = 16, kMeshVertex = 64, kFaceRecord = 128;

}  // namespace

// Segments between consecutive vertices (each with the bulge and widths of its start
// vertex), and for a closed path one from the last vertex back to the first, each mapped
// by `place` (a mirror turns its bulge, a distortion makes it an elliptic arc).
void ModernReader::EmitPolylinePath(const std::vector<PathVertex>& vertices, bool closed, const Style& style,
                                    const Affine& place) {
  const std::size_t n = vertices.size();
  if (n < 2 && !(closed && n == 1)) return;
  PolySegment segment;
  segment.Layer = style.Layer, segment.Color = style.Color;
  segment.LineType = style.LineType, segment.LineWeight = style.LineWeight;
  const bool identity = place.IsIdentity();
  const std::size_t count = closed ? n : n - 1;
  for (std::size_t i = 0; i < count; ++i) {
    const PathVertex& from = vertices[i];
    const PointD to = vertices[(i + 1) % n].point;
    segment.X1 = from.point.x, segment.Y1 = from.point.y, segment.X2 = to.x, segment.Y2 = to.y;
    segment.Bulge = from.bulge;
    segment.Width = from.startWidth, segment.EndWidth = from.endWidth;
    segment.Joined = i > 0;
    if (identity) Emit(segment);
    else PlaceInto(segment, place, [this](const auto& row) { Emit(row); });
  }
}

// POLYLINE: flags 70, default width 40; a 2D polyline's vertices are in the object
// coordinates of 210 at elevation 30, a 3D polyline's and a mesh's in world coordinates.
bool ModernReader::DXFPoly() {
  polyline_ = {};
  polyline_.style = ReadStyle();
  polyline_.flags = Whole(70, 0, 0, 0xFFFF);
  polyline_.startWidth = Num(40), polyline_.endWidth = Num(41, polyline_.startWidth);
  polyline_.place = (polyline_.flags & (kPolyline3D | kPolygonMesh | kPolyface)) ? toBlock_ : Placement(Num(30));
  polyline_.output = output_;
  polyline_.meshM = Whole(71, 0, 0, 1 << 20), polyline_.meshN = Whole(72, 0, 0, 1 << 20);
  inPolyline_ = true;
  return true;
}

// VERTEX: a location (10/20, bulge 42), or (polyface) a face naming its vertices 71..74.
// Spline frame control points are not part of the drawn path.
bool ModernReader::DXFVertex() {
  if (!inPolyline_) return true;
  const int32_t flags = Whole(70, 0, 0, 0xFFFF);
  OpenPolyline& p = polyline_;
  if (p.flags & kPolyface) {
    if ((flags & kFaceRecord) && !(flags & kMeshVertex)) {
      p.faces.push_back({Whole(71, 0, -32767, 32767), Whole(72, 0, -32767, 32767), Whole(73, 0, -32767, 32767),
                         Whole(74, 0, -32767, 32767)});
    } else {
      p.vertices.push_back({Point(10)});
    }
    return true;
  }
  if (flags & kFrameControlPoint) return true;
  const bool flat = !(p.flags & (kPolyline3D | kPolygonMesh));
  p.vertices.push_back({Point(10), flat ? Num(42) : 0.0, flat ? Num(40, p.startWidth) : 0.0,
                        flat ? Num(41, p.endWidth) : 0.0});
  return true;
}

bool ModernReader::DXFSeqEnd() {
  if (inPolyline_) FinishPolyline();
  return true;
}

void ModernReader::FinishPolyline() {
  inPolyline_ = false;
  struct Restore {
    ModernReader& r;
    int32_t output;
    Affine toBlock;
    ~Restore() { r.output_ = output, r.toBlock_ = toBlock; }
  } restore{*this, output_, toBlock_};
  // The polyline's rows go where its header was read.
  output_ = polyline_.output;
  if (polyline_.flags & kPolyface) return EmitPolyface();
  if (polyline_.flags & kPolygonMesh) return EmitPolygonMesh();
  EmitPolylinePath(polyline_.vertices, polyline_.flags & kClosed, polyline_.style, polyline_.place);
}

// A polyface mesh: each face's visible edges (a negative vertex number hides the edge
// that starts there), every edge once.
void ModernReader::EmitPolyface() {
  const OpenPolyline& p = polyline_;
  const int32_t count = int32_t(p.vertices.size());
  std::set<std::pair<int32_t, int32_t>> drawn;
  for (const auto& face : p.faces) {
    int32_t corners = 0;
    while (corners < 4 && face[std::size_t(corners)] != 0) ++corners;
    for (int32_t i = 0; i < corners; ++i) {
      const int32_t from = face[std::size_t(i)], to = std::abs(face[std::size_t((i + 1) % corners)]);
      if (from <= 0 || from > count || to < 1 || to > count || from == to) continue;
      if (!drawn.insert({std::min(from, to), std::max(from, to)}).second) continue;
      const PointD a = p.vertices[std::size_t(from - 1)].point, b = p.vertices[std::size_t(to - 1)].point;
      const Style& s = p.style;
      Emit(Placed(LineEntity{a.x, a.y, b.x, b.y, s.Layer, s.Color, s.LineType, s.LineWeight}, p.place));
    }
  }
}

// A polygon mesh of M x N vertices (row by row): its grid lines, closed in M (flag 1)
// and in N (flag 32) when the flags say so.
void ModernReader::EmitPolygonMesh() {
  const OpenPolyline& p = polyline_;
  const int64_t m = p.meshM, n = p.meshN;
  if (m < 1 || n < 1 || int64_t(p.vertices.size()) < m * n) return;
  const Style& s = p.style;
  auto at = [&](int64_t i, int64_t j) { return p.vertices[std::size_t(i * n + j)].point; };
  auto edge = [&](PointD a, PointD b) {
    Emit(Placed(LineEntity{a.x, a.y, b.x, b.y, s.Layer, s.Color, s.LineType, s.LineWeight}, p.place));
  };
  const bool closedM = p.flags & kClosed, closedN = p.flags & kMeshClosedN;
  for (int64_t i = 0; i < m; ++i) {
    for (int64_t j = 0; j + 1 < n; ++j) edge(at(i, j), at(i, j + 1));
    if (closedN && n > 2) edge(at(i, n - 1), at(i, 0));
  }
  for (int64_t j = 0; j < n; ++j) {
    for (int64_t i = 0; i + 1 < m; ++i) edge(at(i, j), at(i + 1, j));
    if (closedM && m > 2) edge(at(m - 1, j), at(0, j));
  }
}

// LWPOLYLINE: vertices 10/20 with the widths 40/41 and the bulge 42 that follow their
// vertex, constant width 43, closed flag 70 bit 0, in the object coordinates of 210 at
// elevation 38.
bool ModernReader::DXFLwPolyline() {
  const Style style = ReadStyle();
  const bool constant = Has(43);
  const double width = Num(43);
  std::vector<PathVertex> vertices;
  for (const auto& [code, value] : pairs_) {
    if (code == 10) vertices.push_back({{Val(value), 0}, 0, width, width});
    else if (vertices.empty()) continue;
    else if (code == 20) vertices.back().point.y = Val(value);
    else if (code == 42) vertices.back().bulge = Val(value);
    else if (code == 40 && !constant) vertices.back().startWidth = Val(value);
    else if (code == 41 && !constant) vertices.back().endWidth = Val(value);
  }
  EmitPolylinePath(vertices, Whole(70, 0, 0, 0xFFFF) & kClosed, style, Placement(Num(38)));
  return true;
}

}  // namespace dxfimport
