#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "dxf/model/drawing.h"
#include "render/canvas.h"
#include "render/engine.h"
#include "render/surface.h"
#include "render/zoom_view.h"

class QPaintDevice;
class QPagedPaintDevice;

namespace dxfimport {

class RedrawJob;

// The redraw of the whole drawing and the zoom state around it: the view, the drawing's
// caches, and a RedrawJob for each picture drawn. Every picture of the program (viewer,
// command line, automation) is drawn by Zoom.
class ZoomState : public ZoomView {
 public:
  explicit ZoomState(Drawing& drawing);
  ~ZoomState();

  DrawingCaches Caches;
  // Asked at the redraw's refresh points, at most every 50 ms: lets the window run its
  // messages; false stops the redraw there, keeping what was drawn (Interrupted is then
  // true until the next redraw).
  std::function<bool()> KeepDrawing;
  bool Interrupted = false;
  bool DrewInBands = false;  // the last redraw drew its picture in two bands of rows at once

  // True while Zoom draws (KeepDrawing runs window messages then).
  bool InProgress() const { return inProgress_; }
  const Drawing& drawing() const { return drawing_; }

  // Draws the drawing for `window` (drawing units) into the surface, or into `metafile`
  // (sized as the surface) when one is given, or onto the printer page when `toPrinter`.
  // The window is first grown (upwards or to the right, never at its left or bottom) to
  // the target's aspect; the result becomes CurrentZoom. False with message 1051 when
  // there is nothing to draw, 1052 when the window has no width, and after a reported
  // run-time error; a bad entity's conversion or primitive error is reported without
  // stopping the redraw. Never entered while it runs: a second call is refused.
  bool Zoom(const ZoomRect& window, Surface& surface, QPaintDevice* metafile = nullptr,
            bool toPrinter = false);

  // The colour an entity is drawn in by the legacy redraw (InkOf of the legacy profile).
  int32_t EntityColor(int32_t layer, int32_t color, bool toPrinter) const;

  // Zooms by `percent` about the surface pixel (x, y), keeping the drawing point under
  // it, and redraws. Returns true (reported errors included).
  bool StationaryZoom(float x, float y, int16_t percent, Surface& surface);
  // The window of the device rectangle from (minX, minY) to (maxX, maxY) of the current
  // view (`height` the surface's height), in the profile's precision.
  ZoomRect WindowOfPixels(int minX, int minY, int maxX, int maxY, int height) const;

  // Sets the viewport for `window` on a picture of width x height pixels as Zoom would,
  // without drawing. False (message 1052) when the window has no width.
  bool PlaceView(const ZoomRect& window, int32_t width, int32_t height);
  // Draws the device rows from `top` on (as many as `strip` has) of the view PlaceView set
  // into `strip`, cleared first to `background`: the same pixels that a whole picture of
  // the view has in those rows. False after a reported run-time error.
  bool DrawStrip(QImage& strip, int32_t top, QColor background);

  // The drawing point under the device pixel (x, y) of the current view.
  PointD DrawingPoint(double x, double y) const { return DrawingPointOf(Engine, x, y); }
  // The current window made `factor` times smaller (larger for a factor below 1) about the
  // device pixel (x, y), whose drawing point stays under it; its aspect is the view's.
  ZoomRect ZoomedAbout(double x, double y, double factor) const;
  // The current window moved so that the drawing follows a drag of (dx, dy) pixels.
  ZoomRect Panned(double dx, double dy) const;

 private:
  void AddPrintBorder(Canvas& canvas, int32_t lineHeight);
  bool DrawPass(const ZoomRect& window, Surface& surface, QPaintDevice* metafile, bool toPrinter);
  template <class Real>
  bool FitWindow(const ZoomRect& window);
  // Keeps how a redraw job ended.
  void KeepOutcome(const RedrawJob& job);

  Drawing& drawing_;
  bool inProgress_ = false;
};

// `window` made `factor` times smaller (larger below 1) about the drawing point `at`,
// which keeps its place in the picture.
ZoomRect ZoomedWindow(const ZoomRect& window, PointD at, double factor);
// `window` moved so that the drawing follows a drag of (dx, dy) pixels, at `scale`
// pixels a drawing unit.
ZoomRect PannedWindow(const ZoomRect& window, double scale, double dx, double dy);

}  // namespace dxfimport
