// Arbitrary bytes loaded with both reading profiles, then drawn into a small image at the
// extents view and at a window zoomed into its middle.

#include "fuzz_support.h"
#include "render/redraw.h"

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) { return dxfimport::fuzz::StartGui(argc, argv); }

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace dxfimport;
  fuzz::LoadWithEachProfile(data, size, [](Drawing& drawing) {
    if (drawing.SeqCount() == 0) return;
    ImageSurface surface(64, 48);
    ZoomState zoom(drawing);
    zoom.Zoom(ExtentsOf(drawing), surface);
    zoom.StationaryZoom(32, 24, 400, surface);
  });
  return 0;
}
