#include "dxf/model/curves.h"

#include <algorithm>
#include <cmath>

#include "support/numbers.h"

namespace dxfimport {
namespace {

constexpr int kMinChords = 4;
constexpr int kMaxChords = 4096;

double Distance(PointD a, PointD b) { return std::hypot(a.x - b.x, a.y - b.y); }

// A clamped uniform knot vector for `count` control points of `degree`.
std::vector<double> ClampedKnots(std::size_t count, int degree) {
  std::vector<double> knots;
  const std::size_t inner = count > std::size_t(degree) + 1 ? count - std::size_t(degree) - 1 : 0;
  for (int i = 0; i <= degree; ++i) knots.push_back(0);
  for (std::size_t i = 1; i <= inner; ++i) knots.push_back(double(i) / double(inner + 1));
  for (int i = 0; i <= degree; ++i) knots.push_back(1);
  return knots;
}

// De Boor's evaluation in homogeneous coordinates at parameter u.
PointD EvaluateAt(const SplineData& s, const std::vector<double>& knots, double u) {
  const int p = s.degree;
  const std::size_t n = s.controlPoints.size();
  // The knot span that holds u, between p and n - 1.
  auto above = std::upper_bound(knots.begin() + p + 1, knots.begin() + std::ptrdiff_t(n), u);
  std::size_t k = std::size_t(above - knots.begin()) - 1;
  struct H {
    double x, y, w;
  };
  std::vector<H> d(std::size_t(p) + 1);
  for (int j = 0; j <= p; ++j) {
    std::size_t i = k - std::size_t(p) + std::size_t(j);
    double w = s.weights.size() == n ? s.weights[i] : 1.0;
    d[std::size_t(j)] = {s.controlPoints[i].x * w, s.controlPoints[i].y * w, w};
  }
  for (int r = 1; r <= p; ++r) {
    for (int j = p; j >= r; --j) {
      std::size_t i = k - std::size_t(p) + std::size_t(j);
      double denominator = knots[i + std::size_t(p) + 1 - std::size_t(r)] - knots[i];
      double a = denominator == 0 ? 0 : (u - knots[i]) / denominator;
      H& cur = d[std::size_t(j)];
      const H& prev = d[std::size_t(j) - 1];
      cur = {(1 - a) * prev.x + a * cur.x, (1 - a) * prev.y + a * cur.y, (1 - a) * prev.w + a * cur.w};
    }
  }
  const H& h = d[std::size_t(p)];
  double w = h.w == 0 ? 1 : h.w;
  return {h.x / w, h.y / w};
}

}  // namespace

int ChordCount(double radius, double sweep, double tolerance) {
  radius = std::abs(radius);
  sweep = std::abs(sweep);
  if (!(tolerance > 0) || !(radius > tolerance) || !std::isfinite(radius * sweep)) return kMinChords;
  double step = 2 * std::acos(1 - tolerance / radius);
  double chords = std::ceil(sweep / step);
  if (!(chords >= kMinChords)) return kMinChords;
  return int(std::min(chords, double(kMaxChords)));
}

std::vector<PointD> FlattenEllipse(PointD c, PointD major, double ratio, double start, double end,
                                   bool clockwise, double tolerance) {
  if (end <= start) end += 2 * M_PI;
  const double side = clockwise ? -1 : 1;
  const double minorX = -major.y * ratio * side, minorY = major.x * ratio * side;
  const int chords = ChordCount(std::hypot(major.x, major.y), end - start, tolerance);
  std::vector<PointD> points;
  points.reserve(std::size_t(chords) + 1);
  for (int i = 0; i <= chords; ++i) {
    double t = start + (end - start) * i / chords;
    points.push_back({c.x + major.x * std::cos(t) + minorX * std::sin(t),
                      c.y + major.y * std::cos(t) + minorY * std::sin(t)});
  }
  return points;
}

std::vector<PointD> FlattenSpline(const SplineData& s, double tolerance) {
  const std::size_t n = s.controlPoints.size();
  if (n < 2 || s.degree < 1 || std::size_t(s.degree) >= n) {
    std::vector<PointD> points = n >= 2 ? s.controlPoints : s.fitPoints;
    if (s.closed && points.size() > 2) points.push_back(points.front());
    return points;
  }
  std::vector<double> knots = s.knots;
  bool ordered = std::is_sorted(knots.begin(), knots.end());
  if (knots.size() != n + std::size_t(s.degree) + 1 || !ordered || knots.front() == knots.back())
    knots = ClampedKnots(n, s.degree);
  double length = 0;
  for (std::size_t i = 1; i < n; ++i) length += Distance(s.controlPoints[i - 1], s.controlPoints[i]);
  double chords = tolerance > 0 ? std::ceil(1.5 * std::sqrt(length / tolerance)) : kMinChords;
  const int count = int(std::clamp(std::isfinite(chords) ? chords : double(kMinChords), double(kMinChords),
                                   double(kMaxChords)));
  const double u0 = knots[std::size_t(s.degree)], u1 = knots[n];
  std::vector<PointD> points;
  points.reserve(std::size_t(count) + 1);
  for (int i = 0; i <= count; ++i) points.push_back(EvaluateAt(s, knots, u0 + (u1 - u0) * i / count));
  return points;
}

}  // namespace dxfimport
