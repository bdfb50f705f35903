#include "dxf/model/rotation.h"

#include <cmath>

#include "support/messages.h"
#include "support/numbers.h"
#include "support/runtime_error.h"

namespace dxfimport {
namespace {

constexpr const char* kEngineModule = "dxfengvb";

double Theta(float angle) {
  float doubled = angle + angle;
  return double(float(double(doubled) * 3.14159 / 360.0));
}

void Rotate(float& x, float& y, double theta) {
  double c = std::cos(theta), s = std::sin(theta);
  double ox = x, oy = y;
  x = CSng(ox * c - oy * s);
  y = CSng(ox * s + oy * c);
}

}  // namespace

int RotatePointNormal(PointF& p, float angle) {
  return RunReported("RotatePointNormal", kEngineModule, [&] { Rotate(p.x, p.y, Theta(angle)); }) ? 1 : 0;
}

int RotateRectNormal(PointPair& r, float angle) {
  return RunReported("RotateRectNormal", kEngineModule,
                     [&] {
                       double theta = Theta(angle);
                       Rotate(r.x1, r.y1, theta);
                       Rotate(r.x2, r.y2, theta);
                     })
             ? 1
             : 0;
}

}  // namespace dxfimport
