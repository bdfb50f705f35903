#include "dxf/input/text_decoder.h"

#include <QByteArray>
#include <QStringDecoder>
#include <algorithm>
#include <array>
#include <cctype>

#include "support/text_decode.h"

namespace dxfimport {
namespace {

int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// The value of four hex digits at `text[at]`, or -1.
int Hex4(std::string_view text, std::size_t at) {
  if (at + 4 > text.size()) return -1;
  int value = 0;
  for (std::size_t i = at; i < at + 4; ++i) {
    int digit = HexValue(text[i]);
    if (digit < 0) return -1;
    value = value * 16 + digit;
  }
  return value;
}

const char* MultiByteCodePage(char n) {
  switch (n) {
    case '1':
      return "Shift_JIS";
    case '2':
      return "Big5";
    case '3':
    case '4':
      return "CP949";
    case '5':
      return "GBK";
    default:
      return nullptr;
  }
}

}  // namespace

std::string DecodeCodePage(std::string_view bytes, const std::string& codePage) {
  QStringDecoder decoder(codePage.c_str());
  if (!decoder.isValid()) return DecodeText(bytes);
  QString text = decoder.decode(QByteArrayView(bytes.data(), qsizetype(bytes.size())));
  return text.toStdString();
}

void TextDecoder::SetVersion(std::string_view acadver) {
  std::string_view v = Trim(acadver);
  // AC1021 (AutoCAD 2007) and every later version write UTF-8.
  utf8File_ = v.size() == 6 && v.starts_with("AC") && v.substr(2) >= "1021";
}

void TextDecoder::SetCodePage(std::string_view dwgcodepage) {
  std::string name(Trim(dwgcodepage));
  std::transform(name.begin(), name.end(), name.begin(),
                 [](unsigned char c) { return char(std::toupper(c)); });
  static const std::array<std::pair<std::string_view, const char*>, 13> kPages = {{
      {"ANSI_874", "windows-874"},
      {"ANSI_932", "Shift_JIS"},
      {"ANSI_936", "GBK"},
      {"ANSI_949", "CP949"},
      {"ANSI_950", "Big5"},
      {"ANSI_1250", "windows-1250"},
      {"ANSI_1251", "windows-1251"},
      {"ANSI_1252", "windows-1252"},
      {"ANSI_1253", "windows-1253"},
      {"ANSI_1254", "windows-1254"},
      {"ANSI_1255", "windows-1255"},
      {"ANSI_1256", "windows-1256"},
      {"ANSI_1257", "windows-1257"},
  }};
  if (name == "ANSI_1258") codePage_ = "windows-1258";
  for (const auto& [dxfName, qtName] : kPages)
    if (name == dxfName) codePage_ = qtName;
}

std::string TextDecoder::Decode(std::string_view raw) const {
  if (!modern_) return DecodeText(raw);
  bool ascii = IsAscii(raw);
  if (ascii && raw.find('\\') == std::string_view::npos) return std::string(raw);
  std::string text;
  if (ascii || IsValidUtf8(raw))
    text = std::string(raw);
  else
    text = DecodeCodePage(raw, utf8File_ ? std::string("windows-1252") : codePage_);
  return text.find('\\') == std::string::npos ? text : ResolveEscapes(std::move(text));
}

std::string TextDecoder::ResolveEscapes(std::string text) const {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\\' && i + 2 < text.size() && text[i + 2] == '+') {
      char kind = char(std::toupper(static_cast<unsigned char>(text[i + 1])));
      if (kind == 'U') {
        int code = Hex4(text, i + 3);
        if (code >= 0) {
          AppendUtf8(out, char32_t(code));
          i += 6;
          continue;
        }
      } else if (kind == 'M' && i + 3 < text.size()) {
        const char* page = MultiByteCodePage(text[i + 3]);
        int code = Hex4(text, i + 4);
        if (page && code >= 0) {
          const char bytes[2] = {char(code >> 8), char(code & 0xFF)};
          out += DecodeCodePage(std::string_view(bytes, 2), page);
          i += 7;
          continue;
        }
      }
    }
    out += text[i];
  }
  return out;
}

}  // namespace dxfimport
