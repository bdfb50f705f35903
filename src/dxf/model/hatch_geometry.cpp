#include "dxf/model/hatch_geometry.h"

#include <algorithm>

namespace dxfimport {

std::vector<LoopRange> HatchLoops(const HatchEntity& h) {
  std::vector<LoopRange> loops;
  loops.reserve(h.LoopStarts.size());
  for (std::size_t l = 0; l < h.LoopStarts.size(); ++l) {
    const std::size_t from = std::min(std::size_t(h.LoopStarts[l]), h.Points.size());
    const std::size_t to = l + 1 < h.LoopStarts.size() ? std::size_t(h.LoopStarts[l + 1]) : h.Points.size();
    loops.push_back({from, std::max(from, std::min(to, h.Points.size()))});
  }
  return loops;
}

std::pair<double, double> FamilyRange(PointD base, PointD offset, PointD unit,
                                      const std::array<PointD, 4>& corners) {
  double lo = 1e300, hi = -1e300;
  for (const PointD& corner : corners) {
    const double across = ((corner.x - base.x) * unit.y - (corner.y - base.y) * unit.x);
    const double perOffset = offset.x * unit.y - offset.y * unit.x;
    if (perOffset == 0) continue;
    lo = std::min(lo, across / perOffset), hi = std::max(hi, across / perOffset);
  }
  return {lo, hi};
}

void BoundaryCrossings(const std::vector<std::vector<PointD>>& loops, PointD origin, PointD dir,
                       std::vector<double>& crossings) {
  crossings.clear();
  for (const std::vector<PointD>& loop : loops) {
    for (std::size_t i = 0, n = loop.size(); i < n; ++i) {
      const PointD p = loop[i], q = loop[(i + 1) % n];
      const PointD edge = q - p;
      const double denominator = dir.x * edge.y - dir.y * edge.x;
      if (denominator == 0) continue;
      const PointD w = p - origin;
      const double s = (w.x * dir.y - w.y * dir.x) / denominator;
      if (s < 0 || s >= 1) continue;
      crossings.push_back((w.x * edge.y - w.y * edge.x) / denominator);
    }
  }
  std::sort(crossings.begin(), crossings.end());
}

}  // namespace dxfimport
