// Table entries of the modern profile (layers, line types, text and dimension styles,
// block records) and the properties every entity takes from them.
#include <algorithm>
#include <cmath>

#include "dxf/input/group_codes.h"
#include "dxf/model/colors.h"
#include "dxf/model/extents.h"
#include "dxf/model/style_maps.h"
#include "dxf/model/text_styles.h"
#include "dxf/modern/modern_reader.h"
#include "support/log.h"
#include "support/numbers.h"
#include "support/text_decode.h"

namespace dxfimport {

namespace {

// A transparency value (440, or 1071 of a layer's AcCmTransparency): bit 24 "by block",
// bit 25 an opacity in the low byte; anything else is "by layer".
enum class Transparency { ByLayer, ByBlock, Own };
Transparency TransparencyKind(int64_t value) {
  if (value & 0x01000000) return Transparency::ByBlock;
  if (value & 0x02000000) return Transparency::Own;
  return Transparency::ByLayer;
}
uint8_t OpacityOf(int64_t value) { return uint8_t(std::max<int64_t>(kLeastAlpha, value & 0xFF)); }

}  // namespace

// A layer that is off in the file (negative colour) is off here; a true colour (420)
// wins over the colour number; the layer's line type and line weight are kept for
// entities drawn "by layer".
bool ModernReader::DXFLayers() {
  dxfimport::LayerEntry entry;
  entry.Name = std::string(Trim(CutChars(Text(2), kMaxNameChars)));
  if (const int32_t row = drawing_.FindLayer(entry.Name)) {  // a second entry of one name adds nothing
    tableLayers_.push_back(row);
    return true;
  }
  const int number = Whole(62, 7, -32768, 32767);
  entry.Color = AciColor(std::abs(number));
  if (Has(420)) entry.Color = TrueColorValue(Value(420), std::abs(number));
  entry.IsOn = (number < 0 || (Whole(70, 0, 0, 1 << 30) & 1)) ? 0 : -1;
  entry.LineType = LineTypeOfName(Trim(Text(6)));
  entry.LineWeight = int16_t(Whole(370, kWeightDefault, kWeightDefault, 211));
  if (entry.LineWeight < 0) entry.LineWeight = kWeightDefault;
  // Its transparency: the 1071 of the extended data of AcCmTransparency.
  bool transparency = false;
  for (const auto& [code, value] : pairs_) {
    if (code == 1001) transparency = Trim(value) == "AcCmTransparency";
    if (code == 1071 && transparency && TransparencyKind(int64_t(Val(value))) == Transparency::Own)
      entry.Alpha = OpacityOf(int64_t(Val(value)));
  }
  drawing_.AddLayer(std::move(entry));
  tableLayers_.push_back(drawing_.LayerCount());
  return true;
}

// LTYPE: the name (2) and its pattern elements (49).
bool ModernReader::DXFLineTypes() {
  std::vector<double> elements;
  bool shapes = false;
  for (const auto& [code, value] : pairs_) {
    if (code == 49)
      elements.push_back(Val(value));
    else if (code == 74)
      shapes |= (HeldWhole(Val(value), 0, 0xFFFF) & 4) != 0;
  }
  // The shapes of a complex line type come from a shape file that is not here; its
  // dashes alone would leave dots where CAD tools draw a figure, so it is drawn solid.
  if (shapes) elements.clear();
  tableLineTypes_.push_back(std::string(Trim(Text(2)).substr(0, kMaxNameChars)));
  lineTypes_[tableLineTypes_.back()] = std::move(elements);
  return true;
}

// BLOCK_RECORD: its handle (5) and name (2), to find a layout's block.
bool ModernReader::DXFBlockRecord() {
  const std::string name(Trim(Text(2)));
  blockRecords_[std::string(Trim(Value(5)))] = name;
  if (Has(360)) sortableRecords_.insert(std::string(Trim(Value(5))));
  if (SameName(name, "*Model_Space")) {
    modelRecord_ = std::string(Trim(Value(5)));
    keepStarts_ = Has(360);  // its extension dictionary
  }
  return true;
}

// Pen style of a line-type name: the LTYPE table's pattern (in drawing units, scaled by
// $LTSCALE and `scale`), else the legacy map's pen style for the name, else solid.
int32_t ModernReader::LineTypeOfName(std::string_view name, double scale) {
  auto found = lineTypes_.find(std::string(name));
  if (found == lineTypes_.end() || found->second.size() < 2) return LineTypeMap(name);
  auto key = std::pair(found->first, scale);
  auto known = patternStyles_.find(key);
  if (known != patternStyles_.end()) return known->second;
  std::vector<double> pattern;
  for (double element : found->second) pattern.push_back(element * ltScale_ * scale);
  drawing_.DashPatterns.push_back(std::move(pattern));
  int32_t patternStyle = Drawing::kFirstDashPattern + int32_t(drawing_.DashPatterns.size()) - 1;
  patternStyles_.emplace(key, patternStyle);
  return patternStyle;
}

ModernReader::Style ModernReader::ReadStyle() {
  Style style;
  style.Layer = LayerRow(Value(8));
  style.Color = ColorValue();
  style.LineType = LineTypeValue(style.Layer);
  style.LineWeight = LineWeightValue(style.Layer);
  style.Alpha = entityAlpha_ = AlphaValue(style.Layer);
  return style;
}

// The opacity of the entity being read (440), or the marker that an insert resolves.
uint8_t ModernReader::AlphaValue(int32_t layer) const {
  const int64_t value = Has(440) ? Whole(440, 0, INT32_MIN, INT32_MAX) : 0;
  switch (TransparencyKind(value)) {
    case Transparency::Own:
      return OpacityOf(value);
    case Transparency::ByBlock:
      return output_ ? kAlphaByBlock : kOpaque;
    case Transparency::ByLayer:
      break;
  }
  if (output_) return kAlphaByLayer;
  return layer >= 1 && layer <= drawing_.LayerCount() ? drawing_.Layers[std::size_t(layer - 1)].Alpha
                                                      : kOpaque;
}

// The layer row of a name, trimmed as layer names are stored; a layer that the table
// does not hold is added (on, in the foreground colour), as CAD tools do.
int32_t ModernReader::LayerRow(std::string_view raw) {
  if (raw.empty() || !raw.data()) raw = "0";
  if (raw.size() <= 64 && IsAscii(raw) && Trim(raw).size() == raw.size()) {
    if (int32_t row = drawing_.FindLayer(raw)) return row;
  }
  std::string name(
      Trim(CutChars(ctx_.decoder.Decode(raw.substr(0, LoadContext::kMaxTextBytes)), kMaxNameChars)));
  if (name.empty()) name = "0";
  if (int32_t row = drawing_.FindLayer(name)) return row;
  dxfimport::LayerEntry entry;
  entry.Name = name;
  entry.Color = kForeground;
  drawing_.AddLayer(std::move(entry));
  return drawing_.LayerCount();
}

int32_t ModernReader::LayerZero() {
  if (!layerZero_) layerZero_ = LayerRow("0");
  return layerZero_;
}

// STYLE: a text style's font (3, or the family in the extended data of ACAD), fixed
// height 40, width factor 41, oblique angle 50, mirror flags 71 and vertical flag (70
// bit 2). Shape files (70 bit 0) are not text styles.
bool ModernReader::DXFStyle() {
  const int32_t flags = Whole(70, 0, 0, 0xFFFF);
  if (flags & 1) return true;
  std::string family;
  bool acad = false;
  for (const auto& [code, value] : pairs_) {
    if (code == 1001)
      acad = Trim(value) == "ACAD";
    else if (code == 1000 && acad && family.empty())
      family = ctx_.decoder.Decode(value);
  }
  TextStyle style;
  style.Name = std::string(Trim(Text(2)));
  style.Font = std::string(Trim(Text(3)));
  const FaceChoice face = FaceOfFont(style.Font, family);
  style.Face = face.face;
  style.Stroke = face.stroke;
  style.FixedHeight = Num(40);
  style.WidthFactor = Num(41, 1) > 0 ? Num(41, 1) : 1;
  style.Oblique = Num(50);
  style.Mirror = Whole(71, 0, 0, 6) & (kTextBackward | kTextUpsideDown);
  style.Vertical = (flags & 4) != 0;
  drawing_.TextStyles.push_back(std::move(style));
  return true;
}

// The row of a text style by name (case does not matter), or 0.
int32_t ModernReader::StyleRow(std::string_view name) const {
  name = Trim(name);
  if (name.empty()) name = "Standard";
  const auto& styles = drawing_.TextStyles;
  for (std::size_t i = 0; i < styles.size(); ++i) {
    if (SameName(styles[i].Name, name)) return int32_t(i + 1);
  }
  return 0;
}

// DIMSTYLE: the dimension variables by their group codes, over the header's.
bool ModernReader::DXFDimStyle() {
  DimStyle style = headerDimStyle_;
  for (const auto& [code, value] : pairs_) {
    const double v = Val(value);
    switch (code) {
      case 40:
        if (v > 0) style.scale = v;
        break;
      case 41:
        style.arrowSize = v;
        break;
      case 42:
        style.extOffset = v;
        break;
      case 44:
        style.extExtend = v;
        break;
      case 140:
        style.textHeight = v;
        break;
      case 147:
        style.gap = v;
        break;
      case 271:
        style.decimals = int(std::clamp(v, 0.0, 8.0));
        break;
      default:
        break;
    }
  }
  dimStyles_[std::string(Trim(Text(2)))] = style;
  return true;
}

// A header dimension variable ($DIMxxx) of the default style.
void ModernReader::ReadDimVariable(DimStyle& style, std::string_view name) {
  struct Variable {
    std::string_view name;
    int code;
    double DimStyle::*field;
  };
  static constexpr Variable kVariables[] = {
      {"DIMSCALE", 40, &DimStyle::scale},    {"DIMASZ", 40, &DimStyle::arrowSize},
      {"DIMEXO", 40, &DimStyle::extOffset},  {"DIMEXE", 40, &DimStyle::extExtend},
      {"DIMTXT", 40, &DimStyle::textHeight}, {"DIMGAP", 40, &DimStyle::gap},
  };
  for (const Variable& v : kVariables)
    if (name == v.name && Has(v.code)) style.*v.field = Num(v.code);
  if (name == "DIMDEC") style.decimals = Whole(70, 4, 0, 8);
  if (!(style.scale > 0)) style.scale = 1;
}

// A true colour (420) wins; 256 or none is "by layer" (0); 0 is "by block" inside a
// definition and the foreground colour elsewhere; 7 is the foreground colour.
int32_t ModernReader::ColorValue() const {
  const int number = Whole(62, 256, -32768, 32767);
  if (Has(420)) return TrueColorValue(Value(420), number);
  if (number == 256) return 0;
  if (number == 0) return output_ ? kColorByBlock : kForeground;
  return AciColor(std::abs(number));
}

// "By layer" (or none) takes the layer's, "by block" the insert's (inside a definition).
int32_t ModernReader::LineTypeValue(int32_t layer) {
  std::string_view name = Trim(Value(6));
  auto upper = [](std::string_view s) {
    std::string u(s);
    for (char& c : u) c = char(std::toupper(static_cast<unsigned char>(c)));
    return u;
  };
  const std::string key = upper(name);
  if (key.empty() || key == "BYLAYER") {
    if (output_) return kLineTypeByLayer;
    return layer >= 1 && layer <= drawing_.LayerCount() ? drawing_.Layers[std::size_t(layer - 1)].LineType
                                                        : 0;
  }
  if (key == "BYBLOCK") return output_ ? kLineTypeByBlock : 0;
  return LineTypeOfName(name, Num(48, 1));
}

int16_t ModernReader::LineWeightValue(int32_t layer) const {
  int16_t weight = int16_t(Whole(370, kWeightByLayer, kWeightDefault, 211));
  if (output_ || weight >= 0 || weight == kWeightDefault) return weight;
  if (weight == kWeightByBlock) return kWeightDefault;
  return layer >= 1 && layer <= drawing_.LayerCount() ? drawing_.Layers[std::size_t(layer - 1)].LineWeight
                                                      : kWeightDefault;
}

}  // namespace dxfimport
