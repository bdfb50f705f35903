#include "dxf/model/geolocation.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <string_view>

namespace dxfimport {

Affine GeoData::ToSystem() const {
  if (!Present) return {};
  const double length = std::hypot(North.x, North.y);
  const PointD north =
      length > 0 && std::isfinite(length) ? PointD{North.x / length, North.y / length} : PointD{0, 1};
  // The turn that brings the drawing's north onto the system's +y.
  const double turn = std::atan2(1.0, 0.0) - std::atan2(north.y, north.x);
  double scale = UnitScale > 0 && std::isfinite(UnitScale) ? UnitScale : 1;
  if (ScaleMethod == 2 && ScaleFactor > 0 && std::isfinite(ScaleFactor)) scale *= ScaleFactor;
  const double c = std::cos(turn) * scale, s = std::sin(turn) * scale;
  const Affine linear{c, s, -s, c, 0, 0};
  const PointD moved = linear.Apply(Design);
  return {c, s, -s, c, Reference.x - moved.x, Reference.y - moved.y};
}

int32_t GeoData::EpsgCode() const { return EpsgCodeIn(Definition); }

namespace {

// The digits at `at` (quotes and blanks before them passed over), or 0.
int32_t NumberAt(const std::string& text, std::size_t at) {
  while (at < text.size() && (text[at] == '"' || text[at] == ' ' || text[at] == ',')) ++at;
  int64_t n = 0;
  std::size_t digits = 0;
  for (; at < text.size() && std::isdigit(static_cast<unsigned char>(text[at])) && digits < 9; ++at, ++digits)
    n = n * 10 + (text[at] - '0');
  return digits ? int32_t(n) : 0;
}

}  // namespace

int32_t EpsgCodeIn(const std::string& definition) {
  // MapGuide XML: <Alias id="27700" type="CoordinateSystem"> ... <Namespace>EPSG Code.
  for (std::size_t at = definition.find("<Alias id="); at != std::string::npos;
       at = definition.find("<Alias id=", at + 1)) {
    const std::size_t end = definition.find("</Alias>", at);
    if (end == std::string::npos) break;
    const std::string alias = definition.substr(at, end - at);
    if (alias.find("type=\"CoordinateSystem\"") != std::string::npos &&
        alias.find("<Namespace>EPSG") != std::string::npos)
      return NumberAt(alias, std::string_view("<Alias id=").size());
  }
  // WKT: the AUTHORITY or ID closest to the end belongs to the outermost object.
  const std::size_t authority = definition.rfind("AUTHORITY[\"EPSG\"");
  const std::size_t id = definition.rfind("ID[\"EPSG\"");
  const std::size_t at = authority == std::string::npos ? id
                         : id == std::string::npos      ? authority
                                                        : std::max(authority, id);
  if (at == std::string::npos) return 0;
  const std::size_t close = definition.find(']', at);
  if (close == std::string::npos || definition.find_first_not_of(" ]\r\n\t", close) != std::string::npos)
    return 0;
  return NumberAt(definition, definition.find(',', at) + 1);
}

}  // namespace dxfimport
