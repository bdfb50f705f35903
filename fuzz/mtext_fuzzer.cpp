// Arbitrary bytes as MTEXT content: the inline-code parser, and the plain text made of it.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "dxf/model/mtext.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view content(reinterpret_cast<const char*>(data), size);
  // The first byte chooses the text height that absolute \H values are taken against.
  const double height = size > 0 ? double(data[0]) / 16.0 : 1.0;
  dxfimport::ParseMText(content, height);
  dxfimport::PlainText(content);
  return 0;
}
