#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "dxf/model/records.h"

namespace dxfimport {

// RGB (0x00BBGGRR) of an AutoCAD Color Index number 1..255 from the standard 256-entry
// palette; 7 is kForeground (it depends on the background). Numbers outside 1..255 give
// kForeground.
int32_t AciColor(int number);

// The colour of a true colour value (group 420, 0x00RRGGBB): black is kExplicitBlack,
// and white beside colour number 7 only restates colour 7 (kForeground).
int32_t TrueColorValue(std::string_view value, int aciNumber);
int32_t TrueColorValue(uint32_t rgb, int aciNumber);

// A colour tinted towards white (tint above one half) or shaded towards black (below): 0
// black, 1 white, one half the colour itself. The second colour of a one-colour gradient.
// A colour that is no plain RGB (foreground, by layer) is taken as black.
int32_t TintedColor(int32_t color, double tint);

// Black or white, whichever stands out on `background` (0x00BBGGRR).
int32_t ContrastingColor(int32_t background);

// The RGB an entity is drawn in (modern profile): `value` is a row's Color, `layer` its
// layer row. By-layer (0) takes the layer's colour when `byLayer` (else the foreground);
// kColorOfLayer takes the colour of the layer it names; kForeground and a colour left
// "by block" are `foreground`.
int32_t EntityRgb(int32_t value, int32_t layer, const std::vector<LayerEntry>& layers, bool byLayer,
                  int32_t foreground);

}  // namespace dxfimport
