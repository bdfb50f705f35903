// Arbitrary bytes through LoadDXF, with both reading profiles.
#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace dxfimport;
  static fuzz::Silence silence;
  std::string_view bytes(reinterpret_cast<const char*>(data), size);
  for (ReadingProfile profile : {ReadingProfile::Legacy, ReadingProfile::Modern}) {
    Drawing drawing;
    fuzz::Load(drawing, bytes, profile);
  }
  return 0;
}
