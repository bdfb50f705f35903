#pragma once

#include <vector>

#include "dxf/model/geometry.h"

namespace dxfimport {

// Curves of the modern profile, flattened into points. `tolerance` is the largest
// distance (drawing units) allowed between the curve and the chords through its points.
// A point beyond the single range raises the Overflow error.

// An ellipse or elliptic arc: centre, major-axis end point relative to the centre, minor
// to major ratio, start and end parameters (radians; the end below the start wraps once).
// `clockwise` runs it the other way round (an extrusion along -Z).
std::vector<PointD> FlattenEllipse(PointD centre, PointD majorAxis, double ratio, double start, double end,
                                   bool clockwise, double tolerance);

struct SplineData {
  int degree = 3;
  std::vector<double> knots;
  std::vector<PointD> controlPoints;
  std::vector<double> weights;  // empty: all 1
  std::vector<PointD> fitPoints;
  bool closed = false;
};

// A B-spline (rational when weights are given) through its control points; without
// control points, the polyline through its fit points. Knot vectors that do not fit the
// control points are replaced by clamped uniform ones.
std::vector<PointD> FlattenSpline(const SplineData& spline, double tolerance);

// The number of chords that keep an arc of `radius` swept through `sweep` radians within
// `tolerance`, between 4 and 4096.
int ChordCount(double radius, double sweep, double tolerance);

}  // namespace dxfimport
