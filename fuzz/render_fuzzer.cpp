// Arbitrary bytes loaded with both reading profiles, then drawn into a small image at the
// extents view and at a window zoomed into its middle.
#include <QGuiApplication>

#include <cstdlib>

#include "fuzz_support.h"
#include "render/redraw.h"

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  static QGuiApplication app(*argc, *argv);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace dxfimport;
  static fuzz::Silence silence;
  std::string_view bytes(reinterpret_cast<const char*>(data), size);
  for (ReadingProfile profile : {ReadingProfile::Legacy, ReadingProfile::Modern}) {
    Drawing drawing;
    fuzz::Load(drawing, bytes, profile);
    if (drawing.SeqCount() == 0) continue;
    ImageSurface surface(64, 48);
    ZoomState zoom(drawing);
    ZoomRect extents = ExtentsOf(drawing);
    zoom.Zoom(extents, surface);
    zoom.StationaryZoom(32, 24, 400, surface);
  }
  return 0;
}
