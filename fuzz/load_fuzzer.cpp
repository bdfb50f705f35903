// Arbitrary bytes through LoadDXF, with both reading profiles.
#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  dxfimport::fuzz::LoadWithEachProfile(data, size, [](dxfimport::Drawing&) {});
  return 0;
}
