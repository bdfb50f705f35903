#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace dxfimport {

// RGB (0x00BBGGRR) for a DXF colour number. Negative numbers (a layer that is off), 256
// (by layer) and every number without an entry of its own map to black.
int32_t ColorMap(int16_t colorNumber);

// RGB (0x00BBGGRR) of a true colour (group 420, 0x00RRGGBB); black is kExplicitBlack.
int32_t TrueColor(std::string_view value);

// Pen style 0..4 (solid, dash, dot, dash-dot, dash-dot-dot) for a line-type name, compared
// exactly and case-sensitively; unknown names are solid.
int32_t LineTypeMap(std::string_view name);

// Font face and size factor for a text-style name (compared upper-cased and trimmed).
struct FontChoice {
  std::string_view Face;
  float Factor;
};
FontChoice FontNameMap(std::string_view styleName);

// Whether bit `bit` is set in `value`. Only bits 0..8 are examined by reducing the value
// from 256 down; from 512 up the value is never reduced below 256, so every low bit reads
// as set. Kept as the layer and polyline flags have always been read.
bool BitFlag(int32_t value, int16_t bit);

}  // namespace dxfimport
