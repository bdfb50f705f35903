#pragma once

#include <QImage>

namespace dxfimport {

enum class ColorDepth { Full, Colors256, Colors16, Mono };

// A copy of the picture reduced to 256 colours, the 16 standard VGA colours or black and
// white, with error-diffusion dithering; Full returns the picture as it is.
QImage ReduceColors(const QImage& picture, ColorDepth depth);

}  // namespace dxfimport
