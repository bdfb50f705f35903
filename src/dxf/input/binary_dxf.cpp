#include "dxf/input/binary_dxf.h"

#include <cstdint>
#include <cstdio>
#include <cstring>

namespace dxfimport {
namespace {

constexpr std::string_view kSentinel("AutoCAD Binary DXF\r\n\x1a\0", 22);

enum class ValueType { String, Double, Int16, Int32, Int64, Bool, Binary, Unknown };

ValueType TypeOf(int code) {
  auto in = [code](int lo, int hi) { return code >= lo && code <= hi; };
  if (in(0, 9) || in(100, 109) || in(300, 309) || in(320, 369) || in(390, 399) || in(410, 419) ||
      in(430, 439) || in(470, 481) || code == 999 || in(1000, 1003) || in(1005, 1009))
    return ValueType::String;
  if (in(10, 59) || in(110, 149) || in(210, 239) || in(460, 469) || in(1010, 1059)) return ValueType::Double;
  if (in(60, 79) || in(170, 179) || in(270, 289) || in(370, 389) || in(400, 409) || in(1060, 1070))
    return ValueType::Int16;
  if (in(90, 99) || in(420, 429) || in(440, 459) || code == 1071) return ValueType::Int32;
  if (in(160, 169)) return ValueType::Int64;
  if (in(290, 299)) return ValueType::Bool;
  if (in(310, 319) || code == 1004) return ValueType::Binary;
  return ValueType::Unknown;
}

class Cursor {
 public:
  explicit Cursor(std::string_view bytes) : bytes_(bytes) {}
  bool Take(std::size_t n, const char*& at) {
    if (bytes_.size() - pos_ < n) return false;
    at = bytes_.data() + pos_;
    pos_ += n;
    return true;
  }
  template <class T>
  bool Read(T& value) {
    const char* at = nullptr;
    if (!Take(sizeof(T), at)) return false;
    std::memcpy(&value, at, sizeof(T));  // the file is little-endian, as the machine is
    return true;
  }
  bool ReadString(std::string_view& s) {
    const std::size_t end = bytes_.find('\0', pos_);
    if (end == std::string_view::npos) return false;
    s = bytes_.substr(pos_, end - pos_);
    pos_ = end + 1;
    return true;
  }
  std::size_t Position() const { return pos_; }

 private:
  std::string_view bytes_;
  std::size_t pos_ = 0;
};

// Appends one value of `type` as text; false when the file ends inside it.
bool AppendValue(Cursor& c, ValueType type, std::string& text) {
  char buffer[40];
  switch (type) {
    case ValueType::String: {
      std::string_view s;
      if (!c.ReadString(s)) return false;
      // A line end inside a value would split it into two lines.
      for (char ch : s) text += (ch == '\n' || ch == '\r') ? ' ' : ch;
      return true;
    }
    case ValueType::Double: {
      double v = 0;
      if (!c.Read(v)) return false;
      std::snprintf(buffer, sizeof buffer, "%.17g", v);
      break;
    }
    case ValueType::Int16: {
      int16_t v = 0;
      if (!c.Read(v)) return false;
      std::snprintf(buffer, sizeof buffer, "%d", int(v));
      break;
    }
    case ValueType::Int32: {
      int32_t v = 0;
      if (!c.Read(v)) return false;
      std::snprintf(buffer, sizeof buffer, "%ld", long(v));
      break;
    }
    case ValueType::Int64: {
      int64_t v = 0;
      if (!c.Read(v)) return false;
      std::snprintf(buffer, sizeof buffer, "%lld", static_cast<long long>(v));
      break;
    }
    case ValueType::Bool: {
      uint8_t v = 0;
      if (!c.Read(v)) return false;
      std::snprintf(buffer, sizeof buffer, "%d", int(v));
      break;
    }
    case ValueType::Binary: {
      uint8_t length = 0;
      const char* at = nullptr;
      if (!c.Read(length) || !c.Take(length, at)) return false;
      static constexpr char kHex[] = "0123456789ABCDEF";
      for (std::size_t i = 0; i < length; ++i) {
        const auto b = static_cast<uint8_t>(at[i]);
        text += kHex[b >> 4];
        text += kHex[b & 15];
      }
      return true;
    }
    case ValueType::Unknown:
      return false;
  }
  text += buffer;
  return true;
}

}  // namespace

bool IsBinaryDxf(std::string_view bytes) { return bytes.starts_with(kSentinel.substr(0, 18)); }

bool BinaryToAscii(std::string_view bytes, std::string& text) {
  if (!bytes.starts_with(kSentinel)) return false;
  bytes.remove_prefix(kSentinel.size());
  // Release 12 and earlier write one byte per group code (255 then two bytes for a large
  // one); later releases two bytes. The first pair is (0, "SECTION").
  const bool wideCodes = bytes.size() >= 2 && bytes[0] == 0 && bytes[1] == 0;
  text.clear();
  text.reserve(bytes.size() * 2);
  Cursor c(bytes);
  for (;;) {
    int code = 0;
    if (wideCodes) {
      int16_t wide = 0;
      if (!c.Read(wide)) break;
      code = wide;
    } else {
      uint8_t narrow = 0;
      if (!c.Read(narrow)) break;
      code = narrow;
      if (narrow == 255) {
        int16_t wide = 0;
        if (!c.Read(wide)) break;
        code = wide;
      }
    }
    const ValueType type = TypeOf(code);
    if (type == ValueType::Unknown) break;
    const std::size_t mark = text.size();
    text += std::to_string(code);
    text += '\n';
    if (!AppendValue(c, type, text)) {
      text.resize(mark);
      break;
    }
    text += '\n';
  }
  return true;
}

bool ConvertBinaryDxf(LineSource& source, std::string& text) {
  if (!BinaryToAscii(source.bytes(), text)) return false;
  source.Attach(text);
  return true;
}

}  // namespace dxfimport
