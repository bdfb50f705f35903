// GEODATA: where model space lies on the earth. The definition of its coordinate system
// comes in chunks (303 ... then 301), with line ends written as ^J; the mesh of a
// custom transform as pairs of points (13/23 on the drawing side, 14/24 the other).
#include "dxf/modern/modern_reader.h"
#include "support/numbers.h"
#include "support/text_decode.h"

namespace dxfimport {
namespace {

constexpr std::size_t kMaxDefinition = 1 << 20;  // bytes of a coordinate system definition
constexpr std::size_t kMaxMeshPoints = 100000;

// DXF's control characters: ^J a line end, ^I a tab, "^ " a caret.
std::string WithControls(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '^' && i + 1 < text.size()) {
      const char next = text[++i];
      out += next == ' ' ? '^' : char(next >= '@' && next <= '_' ? next - '@' : next);
    } else {
      out += text[i];
    }
  }
  return out;
}

}  // namespace

bool ModernReader::DXFGeoData() {
  const std::string owner(Trim(Value(330)));
  if (drawing_.Geo.Present || (!modelRecord_.empty() && !owner.empty() && owner != modelRecord_)) return true;
  GeoData geo;
  geo.Present = true;
  geo.CoordinateType = Whole(70, 0, 0, 3);
  geo.Design = Point(10);
  geo.Reference = Point(11);
  geo.UnitScale = Num(40, 1);
  geo.Units = Whole(91, 0, 0, 255);
  geo.North = {Num(12, 0), Num(22, 1)};
  geo.ScaleMethod = Whole(95, 1, 1, 4);
  geo.ScaleFactor = Num(141, 1);
  std::string definition;
  for (const auto& [code, value] : pairs_) {
    if ((code == 303 || code == 301) && definition.size() < kMaxDefinition) definition += value;
    if (code == 13 && geo.MeshFrom.size() < kMaxMeshPoints) geo.MeshFrom.push_back({Val(value), 0});
    if (code == 23 && !geo.MeshFrom.empty()) geo.MeshFrom.back().y = Val(value);
    if (code == 14 && geo.MeshTo.size() < kMaxMeshPoints) geo.MeshTo.push_back({Val(value), 0});
    if (code == 24 && !geo.MeshTo.empty()) geo.MeshTo.back().y = Val(value);
  }
  geo.Definition = WithControls(ctx_.decoder.Decode(definition.substr(0, kMaxDefinition)));
  if (!geo.ToSystem().IsFinite()) {
    Note("GEODATA that places the drawing nowhere",
         "The drawing's geographic location was left out: its numbers do not place it");
    return true;
  }
  drawing_.Geo = std::move(geo);
  return true;
}

}  // namespace dxfimport
