// Arbitrary bytes after the binary DXF sentinel: converted to the text they stand for,
// then read by the modern profile.
#include <string>

#include "dxf/input/binary_dxf.h"
#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace dxfimport;
  const std::string file = std::string("AutoCAD Binary DXF\r\n\x1a", 21) + std::string(1, '\0') +
                           std::string(reinterpret_cast<const char*>(data), size);
  std::string text;
  BinaryToAscii(file, text);
  fuzz::LoadModern(file, [](Drawing&) {});
  return 0;
}
