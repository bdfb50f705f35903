// Arbitrary bytes read by the modern profile and drawn by its painter with smooth lines
// and line weights: the extents, a window zoomed into the middle and one far off to the
// side, where a curve's or a line's ends lie far outside the picture.
#include <string_view>

#include "fuzz_support.h"

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) { return dxfimport::fuzz::StartGui(argc, argv); }

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace dxfimport;
  fuzz::LoadModern(std::string_view(reinterpret_cast<const char*>(data), size),
                   [](Drawing& drawing) { fuzz::DrawModern(drawing); });
  return 0;
}
