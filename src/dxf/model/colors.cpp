#include "dxf/model/colors.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "support/numbers.h"

namespace dxfimport {
namespace {

constexpr int32_t Bgr(int r, int g, int b) { return r | (g << 8) | (b << 16); }

// The palette: 1..9 named colours; 10..249 twenty-four hues in 15 degree steps, each in
// five shades (full, 65 %, 50 %, 30 %, 15 %) of the pure hue and of its half-white tint;
// 250..255 greys.
constexpr std::array<int32_t, 256> MakePalette() {
  std::array<int32_t, 256> p{};
  constexpr int32_t kNamed[10] = {0,
                                  Bgr(255, 0, 0),
                                  Bgr(255, 255, 0),
                                  Bgr(0, 255, 0),
                                  Bgr(0, 255, 255),
                                  Bgr(0, 0, 255),
                                  Bgr(255, 0, 255),
                                  kForeground,
                                  Bgr(128, 128, 128),
                                  Bgr(192, 192, 192)};
  for (int i = 0; i < 10; ++i) p[std::size_t(i)] = kNamed[i];
  // Hue ramp of one channel at a hue offset (degrees): full within 60 degrees, none from
  // 120 on, in quarters between.
  auto channel = [](int hue, int offset) {
    int a = ((hue - offset) % 360 + 360) % 360;
    if (a > 180) a = 360 - a;
    if (a <= 60) return 255;
    if (a >= 120) return 0;
    return (120 - a) * 255 / 60;
  };
  constexpr int kShade[5] = {255, 165, 127, 76, 38};
  for (int n = 10; n <= 249; ++n) {
    const int hue = (n - 10) / 10 * 15, variant = n % 10;
    int rgb[3] = {channel(hue, 0), channel(hue, 120), channel(hue, 240)};
    for (int& c : rgb) {
      if (variant % 2 == 1) c = 127 + (c + 1) / 2;
      c = (c * kShade[variant / 2] * 2 + 255) / (255 * 2);  // rounded
    }
    p[std::size_t(n)] = Bgr(rgb[0], rgb[1], rgb[2]);
  }
  constexpr int kGreys[6] = {51, 91, 132, 173, 214, 255};
  for (int i = 0; i < 6; ++i) p[std::size_t(250 + i)] = Bgr(kGreys[i], kGreys[i], kGreys[i]);
  return p;
}

constexpr std::array<int32_t, 256> kPalette = MakePalette();

int32_t Resolve(int32_t value, int32_t foreground) {
  if (value == kForeground || (value & kColorMarkers) == kColorByBlock) return foreground;
  return value & 0xFFFFFF;
}

}  // namespace

int32_t AciColor(int number) {
  if (number < 1 || number > 255) return kForeground;
  int32_t rgb = kPalette[std::size_t(number)];
  return rgb == 0 ? kExplicitBlack : rgb;
}

int32_t TrueColorValue(std::string_view value, int aciNumber) {
  // Writers put flags in the high byte: signed, unsigned or beyond either, only the low
  // 24 bits are the colour.
  return TrueColorValue(uint32_t(uint64_t(HeldWhole(HeldVal(value), INT32_MIN, UINT32_MAX))), aciNumber);
}

int32_t TrueColorValue(uint32_t rgb, int aciNumber) {
  rgb &= 0xFFFFFF;
  if (rgb == 0xFFFFFF && aciNumber == 7) return kForeground;
  int32_t bgr = int32_t(((rgb & 0xFF) << 16) | (rgb & 0xFF00) | (rgb >> 16));
  return bgr == 0 ? kExplicitBlack : bgr;
}

int32_t ContrastingColor(int32_t background) {
  const int r = background & 0xFF, g = (background >> 8) & 0xFF, b = (background >> 16) & 0xFF;
  return r * 299 + g * 587 + b * 114 >= 128 * 1000 ? 0x000000 : 0xFFFFFF;
}

int32_t EntityRgb(int32_t value, int32_t layer, const std::vector<LayerEntry>& layers, bool byLayer,
                  int32_t foreground) {
  if ((value & kColorMarkers) == kColorOfLayer) {
    layer = value & 0xFFFFFF;
    value = 0;
  }
  if (value == 0) {
    if (!byLayer) return foreground;
    if (layer < 1 || std::size_t(layer) > layers.size()) return foreground;
    value = layers[std::size_t(layer - 1)].Color;
    if (value == 0) return foreground;
  }
  return Resolve(value, foreground);
}

int32_t TintedColor(int32_t color, double tint) {
  const int32_t rgb = (color & kColorMarkers) ? 0 : color & 0xFFFFFF;
  const double t = std::isfinite(tint) ? std::clamp(tint, 0.0, 1.0) : 0.5;
  int32_t out = 0;
  for (int shift = 0; shift <= 16; shift += 8) {
    const double c = (rgb >> shift) & 0xFF;
    const double v = t >= 0.5 ? c + (255 - c) * (t - 0.5) * 2 : c * (1 - (0.5 - t) * 2);
    out |= int32_t(std::lround(v)) << shift;
  }
  return out == 0 ? kExplicitBlack : out;
}

}  // namespace dxfimport
