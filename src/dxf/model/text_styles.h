#pragma once

#include <string>
#include <string_view>

namespace dxfimport {

// The face that texts in SHX fonts are drawn in: SHX fonts are CAD's own single-stroke
// vector fonts, which no Debian package ships; this sans face has their proportions.
inline constexpr std::string_view kStrokeStandIn = "DejaVu Sans";

// The family a text style's font is drawn in: the TrueType family that the style's
// extended data names, else the family of its font file (arial.ttf is Arial); for an SHX
// font (or none) the stand-in face, with `stroke` set.
struct FaceChoice {
  std::string face;
  bool stroke = false;
  bool bold = false, italic = false;
};
FaceChoice FaceOfFont(std::string_view fontFile, std::string_view family);

}  // namespace dxfimport
