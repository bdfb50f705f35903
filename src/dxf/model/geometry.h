#pragma once

#include <cmath>

namespace dxfimport {

// A point or vector in drawing units (double precision: drawings at survey coordinates
// need millimetres at 10^7).
struct PointD {
  double x = 0, y = 0;
  bool operator==(const PointD&) const = default;
};

inline PointD operator+(PointD a, PointD b) { return {a.x + b.x, a.y + b.y}; }
inline PointD operator-(PointD a, PointD b) { return {a.x - b.x, a.y - b.y}; }
inline PointD operator*(PointD a, double k) { return {a.x * k, a.y * k}; }
inline double Length(PointD v) { return std::hypot(v.x, v.y); }

struct Vec3 {
  double x = 0, y = 0, z = 1;
};

// A plane affine map: x' = a x + c y + e, y' = b x + d y + f. Block inserts, object
// coordinate systems and their nesting compose into one of these.
struct Affine {
  double a = 1, b = 0, c = 0, d = 1, e = 0, f = 0;

  PointD Apply(PointD p) const { return {a * p.x + c * p.y + e, b * p.x + d * p.y + f}; }
  // The linear part only (directions, axis vectors).
  PointD ApplyVector(PointD v) const { return {a * v.x + c * v.y, b * v.x + d * v.y}; }
  // This map after `inner`: (this * inner)(p) = this(inner(p)).
  Affine operator*(const Affine& inner) const;
  double Det() const { return a * d - b * c; }
  bool IsIdentity() const { return a == 1 && b == 0 && c == 0 && d == 1 && e == 0 && f == 0; }
  // True when the map keeps shapes (rotation, uniform scale, mirror, move): a circle stays
  // a circle.
  bool IsSimilarity() const;
  // The factor by which lengths grow under a similarity (the root of |det| otherwise).
  double Scale() const { return std::sqrt(std::abs(Det())); }
  // Angle in degrees of the image of the direction `degrees`.
  double MapAngle(double degrees) const;
  bool IsFinite() const;

  static Affine Translate(double dx, double dy) { return {1, 0, 0, 1, dx, dy}; }
  static Affine Rotate(double degrees);
  static Affine Scaling(double sx, double sy) { return {sx, 0, 0, sy, 0, 0}; }
};

// The arbitrary axis rule: the object coordinate system of a planar entity with the
// extrusion direction `n` (groups 210/220/230), as the map from its (x, y) at elevation
// `z` to world x and y (the world z is dropped: the picture is the plan view).
Affine OcsToWorld(Vec3 n, double elevation = 0);

// True for the extrusion (0, 0, 1) (or one too short to be a direction), where object
// and world coordinates are the same.
bool IsWorldExtrusion(Vec3 n);

// Degrees and radians with the full value of pi (the modern profile's arithmetic).
inline double Radians(double degrees) { return degrees * M_PI / 180.0; }
inline double Degrees(double radians) { return radians * 180.0 / M_PI; }

// A counter-clockwise sweep from `start` to `end` radians as CAD tools read it: the start
// taken modulo a turn into [0, 2 pi), the end the same angle at most a turn after it
// (an end on the start is a whole turn). Any value a file holds, 1e20 or NaN included,
// gives a sweep within one turn; a start or end that is no number gives the whole turn.
struct Sweep {
  double start = 0, end = 2 * M_PI;
};
Sweep SweepOf(double start, double end);

// The box around a circular arc from `start` to `end` degrees (counter-clockwise).
struct Box {
  double minX = 1e300, minY = 1e300, maxX = -1e300, maxY = -1e300;
  void Add(PointD p);
  void Merge(const Box& b);
  bool Empty() const { return minX > maxX; }
  bool Meets(const Box& b) const {
    return maxX >= b.minX && minX <= b.maxX && maxY >= b.minY && minY <= b.maxY;
  }
};
Box ArcBox(PointD centre, double radius, double startDegrees, double endDegrees);

// The box around an elliptic arc P(t) = centre + u cos t + v sin t for t from `start`
// to `end` radians (u and v conjugate semi-axes, not necessarily perpendicular).
Box EllipseBox(PointD centre, PointD u, PointD v, double start, double end);

// A bulged polyline segment as its arc: bulge = tan(included angle / 4), positive
// counter-clockwise from `from` to `to`. False when the segment has no length.
struct BulgeArc {
  PointD centre;
  double radius = 0;
  double startDegrees = 0, endDegrees = 0;  // counter-clockwise from start to end
};
bool ArcOfBulge(PointD from, PointD to, double bulge, BulgeArc& arc);

}  // namespace dxfimport
