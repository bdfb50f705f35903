#pragma once

#include <array>
#include <cstddef>
#include <utility>
#include <vector>

#include "dxf/model/geometry.h"
#include "dxf/model/records.h"

namespace dxfimport {

// One boundary loop of a hatch: its points [from, to) in HatchEntity::Points.
struct LoopRange {
  std::size_t from = 0, to = 0;
};
// The hatch's boundary loops, each within the points the hatch holds.
std::vector<LoopRange> HatchLoops(const HatchEntity& h);

// The lines of a pattern family are base + k * offset along `unit`. The range [lo, hi] of
// k whose lines cross the box with these corners (lo > hi: none; an offset along the
// lines themselves crosses nothing).
std::pair<double, double> FamilyRange(PointD base, PointD offset, PointD unit,
                                      const std::array<PointD, 4>& corners);

// Where the line origin + t * dir crosses the edges of the loops, sorted by t: taken in
// pairs, the runs of the line inside the boundary (even-odd).
void BoundaryCrossings(const std::vector<std::vector<PointD>>& loops, PointD origin, PointD dir,
                       std::vector<double>& crossings);

// Where a gradient runs over its hatch's boundary, in drawing units. Along the gradient's
// direction the boundary reaches from `from` to `to` (through the middle of its extent
// across); a round gradient (spherical) is centred on the middle of the boundary's extent
// moved by the shift along the axis (hemispherical: on `from`), with the radius that
// reaches the boundary's farthest corner.
struct GradientSpan {
  PointD from, to, centre;
  double radius = 0;
};
GradientSpan GradientSpanOf(const HatchEntity& h);

// The colour stops of a gradient shape: at each position along the span (0..1; for a
// round one from the centre out), how far the colour is from the gradient's From colour
// (0) towards its To colour (1).
struct GradientStop {
  double at, mix;
};
std::vector<GradientStop> GradientStops(HatchGradient::Shape shape);
// Whether a shape is drawn round, from a centre, rather than along an axis.
bool RoundGradient(HatchGradient::Shape shape);

}  // namespace dxfimport
