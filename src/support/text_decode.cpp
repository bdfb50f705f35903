#include "support/text_decode.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace dxfimport {
namespace {

// Windows-1252 0x80..0x9F; the five unassigned bytes keep their C1 code points.
constexpr std::array<char16_t, 32> kCp1252High = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

bool IsContinuation(unsigned char c) { return (c & 0xC0) == 0x80; }

// Length of the UTF-8 sequence starting at s[i], or 0 when it is not well-formed.
std::size_t SequenceLength(std::string_view s, std::size_t i) {
  auto c = static_cast<unsigned char>(s[i]);
  if (c < 0x80) return 1;
  std::size_t len = 0;
  char32_t min = 0;
  if ((c & 0xE0) == 0xC0)
    len = 2, min = 0x80;
  else if ((c & 0xF0) == 0xE0)
    len = 3, min = 0x800;
  else if ((c & 0xF8) == 0xF0)
    len = 4, min = 0x10000;
  else
    return 0;
  if (i + len > s.size()) return 0;
  char32_t cp = c & (0x7F >> len);
  for (std::size_t k = 1; k < len; ++k) {
    auto cc = static_cast<unsigned char>(s[i + k]);
    if (!IsContinuation(cc)) return 0;
    cp = (cp << 6) | (cc & 0x3F);
  }
  if (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return 0;
  return len;
}

char32_t DecodeAt(std::string_view s, std::size_t i, std::size_t len) {
  auto c = static_cast<unsigned char>(s[i]);
  if (len == 1) return c;
  char32_t cp = c & (0x7F >> len);
  for (std::size_t k = 1; k < len; ++k) cp = (cp << 6) | (static_cast<unsigned char>(s[i + k]) & 0x3F);
  return cp;
}

}  // namespace

bool IsAscii(std::string_view text) {
  for (char c : text)
    if (static_cast<unsigned char>(c) >= 0x80) return false;
  return true;
}

bool IsValidUtf8(std::string_view text) {
  for (std::size_t i = 0; i < text.size();) {
    std::size_t len = SequenceLength(text, i);
    if (len == 0) return false;
    i += len;
  }
  return true;
}

void AppendUtf8(std::string& out, char32_t c) {
  if (c < 0x80) {
    out += static_cast<char>(c);
  } else if (c < 0x800) {
    out += static_cast<char>(0xC0 | (c >> 6));
    out += static_cast<char>(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    out += static_cast<char>(0xE0 | (c >> 12));
    out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (c & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (c >> 18));
    out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (c & 0x3F));
  }
}

std::string DecodeText(std::string_view raw) {
  if (IsAscii(raw) || IsValidUtf8(raw)) return std::string(raw);
  std::string out;
  out.reserve(raw.size() * 2);
  for (char ch : raw) {
    auto c = static_cast<unsigned char>(ch);
    if (c >= 0x80 && c < 0xA0)
      AppendUtf8(out, kCp1252High[c - 0x80]);
    else
      AppendUtf8(out, c);
  }
  return out;
}

std::size_t CharCount(std::string_view utf8) {
  std::size_t n = 0;
  for (char c : utf8)
    if (!IsContinuation(static_cast<unsigned char>(c))) ++n;
  return n;
}

std::string_view CutChars(std::string_view utf8, std::size_t count) {
  std::size_t chars = 0;
  for (std::size_t i = 0; i < utf8.size(); ++i) {
    if (!IsContinuation(static_cast<unsigned char>(utf8[i]))) {
      if (chars == count) return utf8.substr(0, i);
      ++chars;
    }
  }
  return utf8;
}

std::string_view TrimRight(std::string_view text) {
  std::size_t end = text.find_last_not_of(' ');
  return end == std::string_view::npos ? std::string_view() : text.substr(0, end + 1);
}

std::string_view Trim(std::string_view text) {
  text = TrimRight(text);
  std::size_t begin = text.find_first_not_of(' ');
  return begin == std::string_view::npos ? std::string_view() : text.substr(begin);
}

bool SameName(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
         });
}

std::string PadToWidth(std::string_view utf8, std::size_t width) {
  std::string out(CutChars(utf8, width));
  std::size_t n = CharCount(out);
  if (n < width) out.append(width - n, ' ');
  return out;
}

std::u32string ToUtf32(std::string_view utf8) {
  std::u32string out;
  out.reserve(utf8.size());
  for (std::size_t i = 0; i < utf8.size();) {
    std::size_t len = SequenceLength(utf8, i);
    if (len == 0) {
      out += static_cast<char32_t>(static_cast<unsigned char>(utf8[i]));
      ++i;
    } else {
      out += DecodeAt(utf8, i, len);
      i += len;
    }
  }
  return out;
}

std::string ToUtf8(std::u32string_view text) {
  std::string out;
  out.reserve(text.size());
  for (char32_t c : text) AppendUtf8(out, c);
  return out;
}

}  // namespace dxfimport
