#include "fuzz_support.h"

#include <QGuiApplication>
#include <cstdlib>

#include "render/redraw.h"

namespace dxfimport::fuzz {

int StartGui(int* argc, char*** argv) {
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  static QGuiApplication app(*argc, *argv);
  return 0;
}

void DrawModern(Drawing& drawing) {
  if (drawing.SeqCount() == 0) return;
  ImageSurface surface(64, 48);
  ZoomState zoom(drawing);
  zoom.Display.Antialias = true;
  zoom.Display.LineWeights = true;
  const ZoomRect extents = ExtentsOf(drawing);
  zoom.Zoom(extents, surface);
  zoom.StationaryZoom(32, 24, 400, surface);
  const double w = extents.right - extents.left, h = extents.top - extents.bottom;
  zoom.Zoom({extents.left + 3 * w, extents.top + h, extents.left + 3.01 * w, extents.top + 0.99 * h},
            surface);
}

}  // namespace dxfimport::fuzz
