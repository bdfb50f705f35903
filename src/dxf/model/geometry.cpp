#include "dxf/model/geometry.h"

#include <algorithm>

namespace dxfimport {

Affine Affine::operator*(const Affine& m) const {
  return {a * m.a + c * m.b, b * m.a + d * m.b,     a * m.c + c * m.d,
          b * m.c + d * m.d, a * m.e + c * m.f + e, b * m.e + d * m.f + f};
}

bool Affine::IsSimilarity() const {
  const double scale = std::max({std::abs(a), std::abs(b), std::abs(c), std::abs(d)});
  const double tolerance = 1e-9 * scale;
  const bool turning = std::abs(a - d) <= tolerance && std::abs(b + c) <= tolerance;
  const bool mirroring = std::abs(a + d) <= tolerance && std::abs(b - c) <= tolerance;
  return scale > 0 && (turning || mirroring);
}

double Affine::MapAngle(double degrees) const {
  const double t = Radians(degrees);
  const PointD v = ApplyVector({std::cos(t), std::sin(t)});
  return Degrees(std::atan2(v.y, v.x));
}

bool Affine::IsFinite() const {
  return std::isfinite(a) && std::isfinite(b) && std::isfinite(c) && std::isfinite(d) && std::isfinite(e) &&
         std::isfinite(f);
}

Affine Affine::Rotate(double degrees) {
  // Quarter turns exactly, so that a turned block keeps its axis-parallel lines straight.
  double turns = degrees / 90.0;
  if (turns == std::floor(turns)) {
    static constexpr double kCos[] = {1, 0, -1, 0}, kSin[] = {0, 1, 0, -1};
    const int q = int(std::fmod(std::fmod(turns, 4.0) + 4.0, 4.0));
    return {kCos[q], kSin[q], -kSin[q], kCos[q], 0, 0};
  }
  const double t = Radians(degrees), cs = std::cos(t), sn = std::sin(t);
  return {cs, sn, -sn, cs, 0, 0};
}

bool IsWorldExtrusion(Vec3 n) {
  const double length = std::sqrt(n.x * n.x + n.y * n.y + n.z * n.z);
  if (!(length > 1e-12) || !std::isfinite(length)) return true;
  return n.x == 0 && n.y == 0 && n.z > 0;
}

Affine OcsToWorld(Vec3 n, double elevation) {
  if (IsWorldExtrusion(n)) return Affine::Translate(0, 0);
  const double length = std::sqrt(n.x * n.x + n.y * n.y + n.z * n.z);
  n = {n.x / length, n.y / length, n.z / length};
  // Ax is world Y (near the Z axis) or world Z crossed with the normal, made unit.
  constexpr double kLimit = 1.0 / 64.0;
  Vec3 ax = (std::abs(n.x) < kLimit && std::abs(n.y) < kLimit) ? Vec3{n.z, 0, -n.x} : Vec3{-n.y, n.x, 0};
  const double axLength = std::sqrt(ax.x * ax.x + ax.y * ax.y + ax.z * ax.z);
  ax = {ax.x / axLength, ax.y / axLength, ax.z / axLength};
  const Vec3 ay{n.y * ax.z - n.z * ax.y, n.z * ax.x - n.x * ax.z, n.x * ax.y - n.y * ax.x};
  return {ax.x, ax.y, ay.x, ay.y, n.x * elevation, n.y * elevation};
}

Sweep SweepOf(double start, double end) {
  constexpr double kTurn = 2 * M_PI;
  if (!std::isfinite(start) || !std::isfinite(end)) return {};
  double from = std::fmod(start, kTurn);
  if (from < 0) from += kTurn;
  double span = std::fmod(end - start, kTurn);
  if (!std::isfinite(span)) return {from, from + kTurn};
  if (span <= 0) span += kTurn;
  return {from, from + span};
}

void Box::Add(PointD p) {
  minX = std::min(minX, p.x), maxX = std::max(maxX, p.x);
  minY = std::min(minY, p.y), maxY = std::max(maxY, p.y);
}

void Box::Merge(const Box& b) {
  if (b.Empty()) return;
  Add({b.minX, b.minY});
  Add({b.maxX, b.maxY});
}

Box ArcBox(PointD centre, double radius, double startDegrees, double endDegrees) {
  const double r = std::abs(radius);
  Box box;
  if (startDegrees == endDegrees) {
    box.Add({centre.x - r, centre.y - r});
    box.Add({centre.x + r, centre.y + r});
    return box;
  }
  // The ends, and each axis direction that the counter-clockwise sweep passes.
  double sweep = std::fmod(endDegrees - startDegrees, 360.0);
  if (sweep <= 0) sweep += 360;
  for (double a : {startDegrees, endDegrees})
    box.Add(centre + PointD{std::cos(Radians(a)), std::sin(Radians(a))} * r);
  static constexpr PointD kAxes[4] = {{1, 0}, {0, 1}, {-1, 0}, {0, -1}};
  for (int k = 0; k < 4; ++k) {
    double past = std::fmod(k * 90.0 - startDegrees, 360.0);
    if (past < 0) past += 360;
    if (past <= sweep) box.Add(centre + kAxes[k] * r);
  }
  return box;
}

Box EllipseBox(PointD centre, PointD u, PointD v, double start, double end) {
  Box box;
  auto at = [&](double t) { return centre + u * std::cos(t) + v * std::sin(t); };
  if (!(end > start)) end = start + 2 * M_PI;
  if (end - start > 2 * M_PI) end = start + 2 * M_PI;
  box.Add(at(start));
  box.Add(at(end));
  // Where x (or y) is extreme: tan t = v.x / u.x (v.y / u.y), and the opposite point.
  for (double t0 : {std::atan2(v.x, u.x), std::atan2(v.y, u.y)}) {
    for (double t : {t0, t0 + M_PI}) {
      const double k = std::ceil((start - t) / (2 * M_PI));
      const double inside = t + k * 2 * M_PI;
      if (inside <= end) box.Add(at(inside));
    }
  }
  return box;
}

bool ArcOfBulge(PointD from, PointD to, double bulge, BulgeArc& arc) {
  const PointD chord = to - from;
  const double length = Length(chord);
  if (length == 0 || bulge == 0 || !std::isfinite(bulge)) return false;
  const double k = (1 - bulge * bulge) / (4 * bulge);
  arc.centre = {from.x + chord.x / 2 - chord.y * k, from.y + chord.y / 2 + chord.x * k};
  arc.radius = length * (1 + bulge * bulge) / (4 * std::abs(bulge));
  const double a0 = Degrees(std::atan2(from.y - arc.centre.y, from.x - arc.centre.x));
  const double a1 = Degrees(std::atan2(to.y - arc.centre.y, to.x - arc.centre.x));
  arc.startDegrees = bulge > 0 ? a0 : a1;
  arc.endDegrees = bulge > 0 ? a1 : a0;
  return std::isfinite(arc.radius) && std::isfinite(arc.centre.x) && std::isfinite(arc.centre.y);
}

}  // namespace dxfimport
