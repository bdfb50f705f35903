#include "render/zoom_view.h"

#include "dxf/model/colors.h"
#include "support/runtime_error.h"

namespace dxfimport {

ZoomRect ExtentsOf(const Drawing& d) { return {d.ExtMinX, d.ExtMaxY, d.ExtMaxX, d.ExtMinY}; }

PointD DrawingPointOf(const DXFEngine& e, double x, double y) {
  if (e.ViewScale == 0) return {};
  return {e.CurrentZoom.left + x / e.ViewScale, e.CurrentZoom.bottom + (e.DeviceHeight - y) / e.ViewScale};
}

// The oldest of four windows falls off; the fifth slot is never written.
void ZoomView::AddToPrevZoomStack(const ZoomRect& r) {
  for (int i = 3; i >= 1; --i) PrevZoom[std::size_t(i)] = PrevZoom[std::size_t(i - 1)];
  PrevZoom[0] = r;
}

int32_t ZoomView::InkOf(const Drawing& d, int32_t layer, int32_t value, int32_t foreground,
                        bool toPrinter) const {
  if (d.Rules().LegacyPainter) {
    if (MonochromePrint && toPrinter) return 0;
    if (ColorByLayer && value == 0) {
      if (layer < 1 || layer > d.LayerCount()) throw RunTimeError(kErrSubscript);
      return d.Layers[std::size_t(layer - 1)].Color;
    }
    return value;
  }
  if (toPrinter && MonochromePrint) return 0;
  return EntityRgb(value, layer, d.Layers, ColorByLayer, foreground);
}

const SpatialIndex& DrawingCaches::IndexOf(const Drawing& drawing) {
  if (!IndexCurrent(drawing)) Index = std::make_unique<SpatialIndex>(drawing);
  return *Index;
}

}  // namespace dxfimport
