#pragma once

#include <QColor>
#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include "dxf/model/drawing.h"
#include "render/engine.h"
#include "render/picture_cache.h"
#include "render/spatial_index.h"
#include "render/text_layout.h"

class QPagedPaintDevice;

namespace dxfimport {

// The drawing's extents as a window.
ZoomRect ExtentsOf(const Drawing& drawing);

// How the modern profile's pictures are drawn, beyond what the legacy redraw knows.
struct DisplayOptions {
  bool LineWeights = false;  // line weights (group 370) drawn as pen widths, as CAD tools offer
  double Dpi = 96;           // the picture's resolution, for line weights in millimetres
  bool Antialias = false;    // lines and fills drawn with smoothed edges
  // The look of a background (as CAD tools show an underlay): every ink moved this many
  // percent of the way to the background colour; every ink one colour (0x00BBGGRR, -1:
  // their own), hatches and fills included, their transparency kept.
  int32_t Fade = 0;
  int32_t Monochrome = -1;
};

// Draws one item of the drawing order into a canvas; one per profile.
class EntityPainter {
 public:
  virtual ~EntityPainter() = default;
  virtual void Draw(const SeqEntry& entry) = 0;
};

// The drawing point under the device pixel (x, y) of the viewport `e`.
PointD DrawingPointOf(const DXFEngine& e, double x, double y);

// What the user looks at and how: the window drawn, its history and the display options.
struct ZoomView {
  DXFEngine Engine;                      // the viewport; Engine.CurrentZoom is the window drawn
  ZoomRect NextZoom;                     // the window StationaryZoom computed
  std::array<ZoomRect, 5> PrevZoom{};    // newest first; slots 0..3 used, 4 never written
  ZoomRect ExtentsZoom;                  // the drawing's extents
  bool ColorByLayer = true;              // entities of colour 0 take their layer's colour
  bool AttributesVisible = true;         // attributes are drawn
  bool MonochromePrint = false;          // the printer draws every entity in colour 0
  DisplayOptions Display;                // modern profile
  std::string FileName;                  // named in the print border's caption
  QPagedPaintDevice* Printer = nullptr;  // the printer target (a PDF writer)

  const ZoomRect& CurrentZoom() const { return Engine.CurrentZoom; }
  void AddToPrevZoomStack(const ZoomRect& r);

  // The colour an entity of `layer` whose own colour is `value` is drawn in (a BGR
  // value), by the profile's colour rule. Legacy: 0 on a monochrome printer; its layer's
  // colour when ColorByLayer and its own colour is 0; else its own colour. Modern: black
  // on a monochrome printer; else its true colour, colour number, "by layer" or
  // foreground colour resolved (EntityRgb).
  int32_t InkOf(const Drawing& drawing, int32_t layer, int32_t value, int32_t foreground,
                bool toPrinter) const;
};

// What a drawing keeps between its redraws: built from the drawing, only read while
// drawing (texts are laid out under TextLayouts::Fonts()).
struct DrawingCaches {
  TextLayouts Texts;                    // the texts laid out
  PictureCache Pictures;                // the raster images read
  std::unique_ptr<SpatialIndex> Index;  // built at the first redraw of part of the drawing

  // Whether the index is built, and from the drawing as it is now.
  bool IndexCurrent(const Drawing& drawing) const {
    return Index && Index->generation() == drawing.Generation();
  }
  // The index of the drawing as it is now, built first when it is not.
  const SpatialIndex& IndexOf(const Drawing& drawing);
};

}  // namespace dxfimport
