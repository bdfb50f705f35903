#include "dxf/model/style_maps.h"

#include <algorithm>
#include <array>

#include "dxf/model/records.h"
#include "support/numbers.h"
#include "support/text_decode.h"

namespace dxfimport {

int32_t ColorMap(int16_t n) {
  auto in = [n](int lo, int hi) { return n >= lo && n <= hi; };
  if (n == 1 || in(10, 39)) return 0x0000FF;
  if (n == 2 || in(40, 59)) return 0x00FFFF;
  if (n == 3 || in(60, 129)) return 0x00FF00;
  if (n == 4 || in(130, 149)) return 0xFFFF00;
  if (n == 5 || in(150, 189)) return 0x800000;
  if (n == 6 || in(190, 229)) return 0xFF00FF;
  if (n == 0 || n == 7) return 0x000000;
  if (n == 8 || n == 9) return 0x404040;
  if (n == 250) return 0x808080;
  if (n == 252) return 0xC0C0C0;
  if (n == 253) return 0xE0E0E0;
  if (n == 255) return 0xFFFFFF;
  return 0x000000;
}

int32_t TrueColor(std::string_view value) {
  auto rgb = uint32_t(CLng(Val(value))) & 0xFFFFFF;
  int32_t bgr = int32_t(((rgb & 0xFF) << 16) | (rgb & 0xFF00) | (rgb >> 16));
  return bgr == 0 ? kExplicitBlack : bgr;
}

int32_t LineTypeMap(std::string_view name) {
  struct Entry {
    std::string_view name;
    int32_t style;
  };
  static constexpr std::array kStyles = std::to_array<Entry>({
      {"CONTINUOUS", 0},
      {"DASHED", 1},
      {"DASHED2", 1},
      {"DASHEDX2", 1},
      {"DOT", 2},
      {"DOT2", 2},
      {"DOTX2", 2},
      {"DASHDOT", 3},
      {"DASHDOT2", 3},
      {"DASHDOTX2", 3},
      {"PHANTOM", 4},
      {"PHANTOM2", 4},
      {"PHANTOMX2", 4},
  });
  for (const Entry& e : kStyles)
    if (e.name == name) return e.style;
  return 0;
}

FontChoice FontNameMap(std::string_view styleName) {
  struct Entry {
    std::string_view style;
    FontChoice font;
  };
  static constexpr std::array kFonts = std::to_array<Entry>({
      {"STANDARD", {"Courier New", 1.4f}},
      {"ROMANC", {"Courier New", 1.4f}},
      {"MONOTXT", {"Arial", 1.0f}},
      {"TXT", {"Arial", 1.0f}},
      {"SIMPLEX", {"Arial", 1.2f}},
      {"DUPLEX", {"Arial", 1.2f}},
      {"COMPLEX", {"Arial", 1.2f}},
      {"GOTHICE", {"Arial", 1.2f}},
      {"ROMANS", {"Arial", 2.0f}},
      {"ROMANT", {"Arial", 2.0f}},
      {"CKSTANDARD", {"Arial Narrow", 1.3f}},
      {"ROMAND", {"Arial", 1.4f}},
      {"TITLE", {"Arial", 2.0f}},
  });
  std::string style(Trim(styleName));
  std::transform(style.begin(), style.end(), style.begin(),
                 [](char c) { return (c >= 'a' && c <= 'z') ? char(c - 'a' + 'A') : c; });
  for (const Entry& e : kFonts)
    if (e.style == style) return e.font;
  return {"Arial", 1.5f};
}

bool BitFlag(int32_t value, int16_t bit) {
  bool set = false;
  for (int i = 8; i >= 0; --i) {
    int32_t power = int32_t(1) << i;
    if (power <= value) {
      value -= power;
      if (i == bit) set = true;
    }
  }
  return set;
}

}  // namespace dxfimport
