#pragma once

#include <cstdint>

#include "dxf/model/rotation.h"

namespace dxfimport {

// A window on the drawing in drawing units; top > bottom. The legacy profile keeps
// single-precision values in it and computes with them in single precision.
struct ZoomRect {
  double left = 0, top = 0, right = 0, bottom = 0;
};

// Device pixels; filled with an entity's two end points x1, y1, x2, y2, not normalised.
struct RECT {
  int32_t left = 0, top = 0, right = 0, bottom = 0;
};

// The one viewport through which the drawing is seen, and the conversions from drawing
// coordinates (y up) to device pixels (y down) for the current target. The redraw sets
// it once per picture with Initialize. A conversion that fails (a coordinate far outside
// the window, a zero or absurd scale) is reported through the error routine (module
// "dxfengvb") and gives 0.
class DXFEngine {
 public:
  int32_t DeviceWidth = 0;
  int32_t DeviceHeight = 0;
  double OriginX = 0;    // drawing x at device x = 0
  double OriginY = 0;    // drawing y at device y = DeviceHeight
  double ViewScale = 0;  // pixels per drawing unit
  int32_t ViewWindowHandle = 0;
  double ViewAspect = 0;
  ZoomRect CurrentZoom;

  // Stores the viewport; returns 1.
  int Initialize(int32_t deviceHeight, double originX, double originY, double scale, int32_t windowHandle);

  // round((x - OriginX) * ViewScale), ties to even.
  int32_t CvtX(double x) const;
  // round(DeviceHeight - (y - OriginY) * ViewScale): the window's bottom edge maps to
  // DeviceHeight, one row below the last pixel.
  int32_t CvtY(double y) const;
  // round(height * factor * ViewScale): a text height in pixels.
  int32_t CvtTxtHt(double height, double factor) const;

  // The device position of a drawing point, unrounded (modern profile).
  double DeviceX(double x) const { return (x - OriginX) * ViewScale; }
  double DeviceY(double y) const { return double(DeviceHeight) - (y - OriginY) * ViewScale; }

  // The rectangle for the visibility test: left and top moved in by one pixel, except
  // that a one-pixel-wide (or -high) entity moves out instead so that it never yields an
  // empty rectangle. Nothing else is normalised. Reported as module "Dxfin275".
  static bool MakeTestRect(const RECT& src, RECT& dst);

  static int RotatePointNormal(PointF& p, float angle) { return dxfimport::RotatePointNormal(p, angle); }
  static int RotateRectNormal(PointPair& r, float angle) { return dxfimport::RotateRectNormal(r, angle); }
};

}  // namespace dxfimport
