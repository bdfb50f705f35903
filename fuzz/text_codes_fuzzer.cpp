// Arbitrary bytes as a TEXT or ATTRIB value: decoded in a code page the first byte
// chooses (with the \U+ and \M+ escapes), the %% codes of the legacy reader resolved, and
// the markup of the modern one parsed as its layout parses it.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "dxf/input/text_decoder.h"
#include "dxf/model/mtext.h"
#include "dxf/model/text_codes.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace dxfimport;
  if (size == 0) return 0;
  static constexpr const char* kCodePages[] = {"ANSI_1252", "ANSI_932",  "ANSI_936", "ANSI_949",
                                               "ANSI_950",  "ANSI_1251", "ANSI_874", "UTF8"};
  const std::string_view value(reinterpret_cast<const char*>(data) + 1, size - 1);
  TextDecoder decoder;
  decoder.SetModern(data[0] & 1);
  decoder.SetVersion((data[0] & 2) ? "AC1021" : "AC1015");
  decoder.SetCodePage(kCodePages[(data[0] >> 2) & 7]);
  const std::string text = decoder.Decode(value);
  ApplyControlCodes(text);
  ParseMText(TextMarkup(text), 2.5);
  return 0;
}
