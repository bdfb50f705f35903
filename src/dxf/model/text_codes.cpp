#include "dxf/model/text_codes.h"

#include "support/text_decode.h"

namespace dxfimport {

std::string SpecialChar(std::u32string_view code) {
  if (code.size() != 1) return "";
  switch (code[0]) {
    case U'c':
    case U'C':
      return "\u00D8";
    case U'd':
    case U'D':
      return "\u00B0";
    case U'p':
    case U'P':
      return "\u00B1";
    case U'u':
    case U'U':
      return "U";
    default:
      return "";
  }
}

std::string ReplaceQuote(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (char c : text) {
    if (c == '"')
      out += "''";
    else
      out += c;
  }
  return out;
}

ControlCodeResult ApplyControlCodes(std::string_view utf8) {
  ControlCodeResult result;
  if (utf8.find("%%") == std::string_view::npos) {
    result.Text = std::string(utf8);
    return result;
  }
  std::u32string text = ToUtf32(CutChars(utf8, kControlCodeScanLimit));
  for (std::size_t p = text.find(U"%%"); p != std::u32string::npos; p = text.find(U"%%")) {
    std::u32string_view code = std::u32string_view(text).substr(p + 2, 1);
    if (code == U"u" || code == U"U") {
      result.Underline = true;
      text.erase(0, 3);
    } else {
      std::u32string replacement = ToUtf32(SpecialChar(code));
      text.replace(p, 2 + code.size(), replacement);
    }
  }
  result.Text = ToUtf8(text);
  return result;
}

}  // namespace dxfimport
