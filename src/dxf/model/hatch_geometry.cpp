#include "dxf/model/hatch_geometry.h"

#include <algorithm>
#include <cmath>

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

GradientSpan GradientSpanOf(const HatchEntity& h) {
  GradientSpan span;
  const double length = Length(h.Gradient.Direction);
  const PointD u = length > 0 ? h.Gradient.Direction * (1 / length) : PointD{1, 0}, v{-u.y, u.x};
  double lowU = 1e300, highU = -1e300, lowV = 1e300, highV = -1e300;
  for (const PointD& p : h.Points) {
    const double along = p.x * u.x + p.y * u.y, across = p.x * v.x + p.y * v.y;
    lowU = std::min(lowU, along), highU = std::max(highU, along);
    lowV = std::min(lowV, across), highV = std::max(highV, across);
  }
  if (h.Points.empty()) return span;
  const double midV = (lowV + highV) / 2, shift = std::clamp(h.Gradient.Shift, -1.0, 1.0);
  span.from = u * lowU + v * midV;
  span.to = u * highU + v * midV;
  const double midU = (lowU + highU) / 2 + shift * (highU - lowU) / 2;
  const bool hemi = h.Gradient.Kind == HatchGradient::Shape::Hemispherical ||
                    h.Gradient.Kind == HatchGradient::Shape::InvHemispherical;
  span.centre = hemi ? span.from : u * midU + v * midV;
  const double reachU = std::max(highU - (hemi ? lowU : midU), (hemi ? lowU : midU) - lowU);
  span.radius = std::hypot(reachU, (highV - lowV) / 2);
  return span;
}

bool RoundGradient(HatchGradient::Shape shape) {
  using S = HatchGradient::Shape;
  return shape == S::Spherical || shape == S::InvSpherical || shape == S::Hemispherical ||
         shape == S::InvHemispherical;
}

std::vector<GradientStop> GradientStops(HatchGradient::Shape shape) {
  using S = HatchGradient::Shape;
  switch (shape) {
    case S::Linear:
      return {{0, 0}, {1, 1}};
    case S::Cylinder:
      return {{0, 0}, {0.5, 1}, {1, 0}};
    case S::InvCylinder:
      return {{0, 1}, {0.5, 0}, {1, 1}};
    case S::Spherical:
    case S::Hemispherical:
      return {{0, 1}, {1, 0}};
    case S::InvSpherical:
    case S::InvHemispherical:
      return {{0, 0}, {1, 1}};
    case S::Curved:
    case S::InvCurved: {
      // A curved gradient turns from its light side along a parabola.
      std::vector<GradientStop> stops;
      for (int k = 0; k <= 8; ++k) {
        const double at = k / 8.0, mix = 1 - at * at;
        stops.push_back({at, shape == S::Curved ? mix : 1 - mix});
      }
      return stops;
    }
  }
  return {{0, 0}, {1, 1}};
}

}  // namespace dxfimport
