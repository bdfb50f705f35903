#pragma once

#include <QImage>
#include <QVector>
#include <optional>
#include <string>

namespace dxfimport {

class ZoomState;

// The colour depths a picture is written in. Colors256, Colors16 and Mono diffuse the
// error over the whole picture; the line-art depths treat each pixel on its own, so a
// picture drawn a strip at a time reduces strip by strip to the same pixels.
enum class ColorDepth {
  Full,
  Colors256,  // 256 colours chosen for the picture, dithered
  Colors16,   // the 16 standard VGA colours, dithered
  Mono,       // black and white, dithered
  Palette,    // line art: the drawing's own colours exactly, every other pixel the nearest
  Threshold,  // line art: black where a pixel stands apart from the background, else white
  Grey,       // line art: 256 shades of grey
};

// The depth a --depth name stands for ("" is Full); nullopt for an unknown name.
std::optional<ColorDepth> ColorDepthNamed(const std::string& name);
// Whether the depth reduces each pixel on its own.
inline bool ReducesPixelByPixel(ColorDepth depth) {
  return depth == ColorDepth::Full || depth >= ColorDepth::Palette;
}

// What the line-art depths reduce towards: the drawing's colours (at most 256, the
// background first) and the background.
struct LineArtInks {
  QVector<QRgb> palette;
  QRgb background = 0xFFFFFFFF;
};

// What `depth` reduces towards. For Palette, the colours the drawing is drawn in at the
// current settings: the background, the foreground that stands out on it and every
// visible entity's colour, in the order first met, at most 256.
LineArtInks InksOf(const ZoomState& zoom, QColor background, ColorDepth depth);

// A copy of the picture reduced to `depth` (an indexed or one-bit picture); Full returns
// the picture as it is.
QImage ReduceColors(const QImage& picture, ColorDepth depth, const LineArtInks& inks = {});

}  // namespace dxfimport
