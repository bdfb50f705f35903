#pragma once

#include <string>
#include <string_view>

namespace dxfimport {

// Turns the text bytes of a drawing into UTF-8.
//  Legacy: valid UTF-8 is kept, anything else is taken as Windows-1252.
//  Modern: files from AC1021 on are UTF-8; older files use the code page of their
//    $DWGCODEPAGE (ANSI_874, ANSI_932, ANSI_936, ANSI_949, ANSI_950, ANSI_1250..1258),
//    except that bytes that are valid UTF-8 are taken as UTF-8 whatever the header says.
//    The escapes \U+XXXX (a Unicode character) and \M+nXXXX (a double-byte character of
//    code page n: 1 Japanese, 2 traditional Chinese, 3 and 4 Korean, 5 simplified
//    Chinese) are resolved.
class TextDecoder {
 public:
  void SetModern(bool modern) { modern_ = modern; }
  // From $ACADVER: AC1021 and later write UTF-8.
  void SetVersion(std::string_view acadver);
  // From $DWGCODEPAGE; an unknown name leaves Windows-1252.
  void SetCodePage(std::string_view dwgcodepage);

  std::string Decode(std::string_view raw) const;

  // The code-page name for Qt's decoders ("windows-1252", "Shift_JIS", ...).
  const std::string& codePage() const { return codePage_; }

 private:
  std::string ResolveEscapes(std::string text) const;

  bool modern_ = false;
  bool utf8File_ = false;
  std::string codePage_ = "windows-1252";
};

// Bytes in a named code page as UTF-8 (Windows-1252 when Qt does not know the name).
std::string DecodeCodePage(std::string_view bytes, const std::string& codePage);

}  // namespace dxfimport
