#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "dxf/drawing.h"
#include "render/canvas.h"
#include "render/engine.h"
#include "render/surface.h"

class QPaintDevice;
class QPagedPaintDevice;

namespace dxfimport {

// The drawing's extents as a window.
ZoomRect ExtentsOf(const Drawing& drawing);

// The redraw of the whole drawing and the zoom state around it. Every picture of the
// program (viewer, command line, automation) is drawn by Zoom.
class ZoomState {
 public:
  explicit ZoomState(Drawing& drawing) : drawing_(drawing) {}

  DXFEngine Engine;                 // the viewport; Engine.CurrentZoom is the window drawn
  ZoomRect NextZoom;                // the window StationaryZoom computed
  std::array<ZoomRect, 5> PrevZoom{};  // newest first; slots 0..3 used, 4 never written
  ZoomRect ExtentsZoom;             // the drawing's extents
  bool ColorByLayer = true;         // entities of colour 0 take their layer's colour
  bool AttributesVisible = true;    // attributes are drawn
  bool MonochromePrint = false;     // the printer draws every entity in colour 0
  std::string FileName;             // named in the print border's caption
  QPagedPaintDevice* Printer = nullptr;  // the printer target (a PDF writer)

  const ZoomRect& CurrentZoom() const { return Engine.CurrentZoom; }

  // Draws the drawing for `window` (drawing units) into the surface, or into `metafile`
  // (sized as the surface) when one is given, or onto the printer page when `toPrinter`.
  // The window is first grown (upwards or to the right, never at its left or bottom) to
  // the target's aspect; the result becomes CurrentZoom. False with message 1051 when
  // there is nothing to draw, 1052 when the window has no width, and after a reported
  // run-time error; a bad entity's conversion or primitive error is reported without
  // stopping the redraw.
  bool Zoom(const ZoomRect& window, Surface& surface, QPaintDevice* metafile = nullptr, bool toPrinter = false);

  // The colour an entity is drawn in: 0 on a monochrome printer; its layer's colour when
  // ColorByLayer and its own colour is 0; else its own colour.
  int32_t EntityColor(int32_t layer, int32_t color, bool toPrinter) const;

  // Zooms by `percent` about the surface pixel (x, y), keeping the drawing point under
  // it, and redraws. Returns true (reported errors included).
  bool StationaryZoom(float x, float y, int16_t percent, Surface& surface);

  void AddToPrevZoomStack(const ZoomRect& r);

 private:
  struct Pass;
  void DrawEntity(Pass& pass, const SeqEntry& entry);
  void DrawTextEntity(Pass& pass, TextEntity& text);
  void DrawArcEntity(Pass& pass, const ArcEntity& arc);
  void DrawBulgedSegment(Pass& pass, const PolySegment& s, int32_t color, int32_t penWidth);
  void DrawHatchEntity(Pass& pass, const HatchEntity& h);
  bool Visible(const RECT& device) const;
  bool LayerOn(int32_t layer) const { return drawing_.LayerState(layer) != 0; }
  void AddPrintBorder(Canvas& canvas, int32_t lineHeight);
  bool DrawPass(const ZoomRect& window, Surface& surface, QPaintDevice* metafile, bool toPrinter);

  Drawing& drawing_;
};

}  // namespace dxfimport
