// Arbitrary bytes as an entity's proxy graphics stream.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "dxf/input/proxy_graphics.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  dxfimport::DecodeProxyGraphics(std::string_view(reinterpret_cast<const char*>(data), size), 4096);
  return 0;
}
