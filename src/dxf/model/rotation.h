#pragma once

namespace dxfimport {

struct PointF {
  float x = 0, y = 0;
};

struct PointPair {
  float x1 = 0, y1 = 0, x2 = 0, y2 = 0;
};

// Turns a point about the drawing origin by `angle` degrees, in place. The angle becomes
// radians through the constant 3.14159, not the full value of pi, so that block geometry
// lands where it always did. Returns 1; a result outside the single range is reported
// (module "dxfengvb") and 0 returned with the point as far as it got.
int RotatePointNormal(PointF& p, float angle);

// Both points of the pair, each with its own old coordinates. Returns 1 (0 on error).
int RotateRectNormal(PointPair& r, float angle);

}  // namespace dxfimport
