// POLYLINE (2D and 3D polylines, polyface and polygon meshes) with its VERTEX entities
// and SEQEND, and LWPOLYLINE, in the modern profile.
#include <algorithm>
#include <cmath>
#include <set>

#include "dxf/model/placement.h"
#include "dxf/modern/modern_reader.h"
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
    if (identity)
      Emit(segment);
    else
      PlaceInto(segment, place, [this](const auto& row) { Emit(row); });
  }
}

// POLYLINE: flags 70, default width 40; a 2D polyline's vertices are in the object
// coordinates of 210 at elevation 30, a 3D polyline's and a mesh's in world coordinates.
bool ModernReader::DXFPoly() {
  polyline_ = {};
  polyline_.style = ReadStyle();
  polyline_.flags = Whole(70, 0, 0, 0xFFFF);
  polyline_.startWidth = Num(40), polyline_.endWidth = Num(41, polyline_.startWidth);
  polyline_.place =
      (polyline_.flags & (kPolyline3D | kPolygonMesh | kPolyface)) ? toBlock_ : Placement(Num(30));
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
      p.faces.push_back({Whole(71, 0, -32767, 32767), Whole(72, 0, -32767, 32767),
                         Whole(73, 0, -32767, 32767), Whole(74, 0, -32767, 32767)});
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
  // The polyline's rows go where its header was read, as transparent as it is.
  output_ = polyline_.output;
  entityAlpha_ = polyline_.style.Alpha;
  if (polyline_.flags & kPolyface) return EmitPolyface();
  if (polyline_.flags & kPolygonMesh) return EmitPolygonMesh();
  EmitPolylinePath(polyline_.vertices, polyline_.flags & kClosed, polyline_.style, polyline_.place);
}

// A polyface mesh: each face's visible edges (a negative vertex number hides the edge
// that starts there).
void ModernReader::EmitPolyface() {
  const OpenPolyline& p = polyline_;
  std::vector<PointD> points;
  points.reserve(p.vertices.size());
  for (const PathVertex& v : p.vertices) points.push_back(v.point);
  std::vector<std::vector<int32_t>> faces;
  faces.reserve(p.faces.size());
  for (const auto& face : p.faces) {
    std::vector<int32_t>& corners = faces.emplace_back();
    for (int32_t number : face) {
      if (number == 0) break;
      corners.push_back(number);
    }
  }
  EmitFaceEdges(points, faces, p.style, p.place);
}

// The edges of faces given by vertex numbers from 1 (a negative number hides the edge
// from that vertex to the next), every edge once; numbers out of range are skipped.
void ModernReader::EmitFaceEdges(const std::vector<PointD>& points,
                                 const std::vector<std::vector<int32_t>>& faces, const Style& s,
                                 const Affine& place) {
  const int64_t count = int64_t(points.size());
  std::set<std::pair<int64_t, int64_t>> drawn;
  for (const auto& face : faces) {
    const std::size_t corners = face.size();
    for (std::size_t i = 0; i < corners; ++i) {
      const int64_t from = face[i], to = std::abs(int64_t(face[(i + 1) % corners]));
      if (from <= 0 || from > count || to < 1 || to > count || from == to) continue;
      if (!drawn.insert({std::min(from, to), std::max(from, to)}).second) continue;
      const PointD a = points[std::size_t(from - 1)], b = points[std::size_t(to - 1)];
      Emit(Placed(LineEntity{a.x, a.y, b.x, b.y, s.Layer, s.Color, s.LineType, s.LineWeight}, place));
    }
  }
}

// MESH: 92 vertices (10/20/30, world coordinates), then 93 the size of the face list:
// per face its corner count and the corners' vertex numbers from 0, in 90 groups. Drawn
// as the edges of its faces (the unsmoothed cage, as CAD tools show it at level 0).
bool ModernReader::DXFMesh() {
  const Style style = ReadStyle();
  std::vector<PointD> points;
  std::vector<std::vector<int32_t>> faces;
  int64_t faceValues = -1, pending = 0;
  bool inVertices = false;
  for (const auto& [code, value] : pairs_) {
    if (code == 92)
      inVertices = true;
    else if (code == 10 && inVertices)
      points.push_back({Val(value), 0});
    else if (code == 20 && inVertices && !points.empty())
      points.back().y = Val(value);
    else if (code == 93 && faceValues < 0)
      inVertices = false, faceValues = HeldWhole(Val(value), 0, INT32_MAX);
    else if (code == 90 && faceValues > 0) {
      --faceValues;
      const int64_t number = HeldWhole(Val(value), -1, INT32_MAX);
      if (pending == 0)
        pending = std::max<int64_t>(0, number), faces.emplace_back();
      else
        --pending, faces.back().push_back(int32_t(std::clamp<int64_t>(number + 1, 0, INT32_MAX)));
    } else if (code == 94)
      faceValues = 0;
  }
  EmitFaceEdges(points, faces, style, toBlock_);
  return true;
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

// MLINE: per vertex its location 11/21 and miter direction 13/23 (world coordinates),
// then per element of the style 74 parameters 41, the first of which is the element's
// offset along the miter; closed when 71 has bit 2. Each element is drawn as one path
// through its offset points (the style's caps and fill live in an object read later).
bool ModernReader::DXFMline() {
  const Style style = ReadStyle();
  struct Vertex {
    PointD at, miter;
    std::vector<double> offsets;  // per element
  };
  std::vector<Vertex> vertices;
  bool offsetNext = false;
  for (const auto& [code, value] : pairs_) {
    if (code == 11)
      vertices.push_back({{Val(value), 0}, {}, {}}), offsetNext = false;
    else if (vertices.empty())
      continue;
    else if (code == 21)
      vertices.back().at.y = Val(value);
    else if (code == 13)
      vertices.back().miter.x = Val(value);
    else if (code == 23)
      vertices.back().miter.y = Val(value);
    else if (code == 74)
      vertices.back().offsets.push_back(0), offsetNext = Val(value) > 0;
    else if (code == 41 && offsetNext)
      vertices.back().offsets.back() = Val(value), offsetNext = false;
  }
  if (vertices.empty()) return true;
  const std::size_t elements = vertices.front().offsets.size();
  for (const Vertex& v : vertices)
    if (v.offsets.size() != elements) return true;
  const bool closed = Whole(71, 0, 0, 0xFFFF) & 2;
  for (std::size_t e = 0; e < elements; ++e) {
    std::vector<PointD> path;
    path.reserve(vertices.size());
    for (const Vertex& v : vertices) path.push_back(toBlock_.Apply(v.at + v.miter * v.offsets[e]));
    EmitCurve(path, style, closed);
  }
  return true;
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
    if (code == 10)
      vertices.push_back({{Val(value), 0}, 0, width, width});
    else if (vertices.empty())
      continue;
    else if (code == 20)
      vertices.back().point.y = Val(value);
    else if (code == 42)
      vertices.back().bulge = Val(value);
    else if (code == 40 && !constant)
      vertices.back().startWidth = Val(value);
    else if (code == 41 && !constant)
      vertices.back().endWidth = Val(value);
  }
  EmitPolylinePath(vertices, Whole(70, 0, 0, 0xFFFF) & kClosed, style, Placement(Num(38)));
  return true;
}

}  // namespace dxfimport
