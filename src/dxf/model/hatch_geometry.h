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

}  // namespace dxfimport
