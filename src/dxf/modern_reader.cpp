// The modern reading profile's driver: pairs, sections, header variables, table entries
// and the dispatch of entities to their readers.
#include "dxf/modern_reader.h"

#include <algorithm>
#include <cmath>

#include "dxf/colors.h"
#include "dxf/extents.h"
#include "dxf/group_codes.h"
#include "dxf/style_maps.h"
#include "dxf/text_styles.h"
#include "support/log.h"
#include "support/numbers.h"
#include "support/text_decode.h"

namespace dxfimport {
namespace {

enum Sections : int { kInTables = 1, kInEntities = 2, kInObjects = 4 };

}  // namespace

struct ModernReader::Kind {
  std::string_view name;
  const char* procedure;
  Handler handler;
  int sections;
};

// Entity and table-entry names, each with its reader and where it is read.
const ModernReader::Kind* ModernReader::FindKind(std::string_view name) {
  static const Kind kKinds[] = {
      {"LAYER", "DXFLayers", &ModernReader::DXFLayers, kInTables},
      {"LTYPE", "DXFLineTypes", &ModernReader::DXFLineTypes, kInTables},
      {"DIMSTYLE", "DXFDimStyle", &ModernReader::DXFDimStyle, kInTables},
      {"STYLE", "DXFStyle", &ModernReader::DXFStyle, kInTables},
      {"BLOCK_RECORD", "DXFBlock", &ModernReader::DXFBlockRecord, kInTables},
      {"LAYOUT", "DXFLayout", &ModernReader::DXFLayout, kInObjects},
      {"BLOCK", "DXFBlock", &ModernReader::DXFBlock, kInEntities},
      {"ENDBLK", "LoadDXF", &ModernReader::DXFEndBlock, kInEntities},
      {"LINE", "DXFLine", &ModernReader::DXFLine, kInEntities},
      {"CIRCLE", "DXFCircle", &ModernReader::DXFCircle, kInEntities},
      {"ARC", "DXFCircle", &ModernReader::DXFCircle, kInEntities},
      {"SOLID", "DXFSolid", &ModernReader::DXFSolid, kInEntities},
      {"TRACE", "DXFSolid", &ModernReader::DXFSolid, kInEntities},
      {"3DFACE", "DXF3DFace", &ModernReader::DXF3DFace, kInEntities},
      {"TEXT", "DXFText", &ModernReader::DXFText, kInEntities},
      {"ATTRIB", "DXFAttrib", &ModernReader::DXFAttrib, kInEntities},
      {"ATTDEF", "DXFAttrib", &ModernReader::DXFAttDef, kInEntities},
      {"INSERT", "DXFInsert", &ModernReader::DXFInsert, kInEntities},
      {"DIMENSION", "DXFDimension", &ModernReader::DXFDimension, kInEntities},
      {"ARC_DIMENSION", "DXFDimension", &ModernReader::DXFDimension, kInEntities},
      {"LARGE_RADIAL_DIMENSION", "DXFDimension", &ModernReader::DXFDimension, kInEntities},
      {"ACAD_TABLE", "DXFTable", &ModernReader::DXFTable, kInEntities},
      {"POLYLINE", "DXFPoly", &ModernReader::DXFPoly, kInEntities},
      {"VERTEX", "DXFPoly", &ModernReader::DXFVertex, kInEntities},
      {"SEQEND", "DXFPoly", &ModernReader::DXFSeqEnd, kInEntities},
      {"LWPOLYLINE", "DXFLwPolyline", &ModernReader::DXFLwPolyline, kInEntities},
      {"MESH", "DXFMesh", &ModernReader::DXFMesh, kInEntities},
      {"MLINE", "DXFMline", &ModernReader::DXFMline, kInEntities},
      {"MTEXT", "DXFMText", &ModernReader::DXFMText, kInEntities},
      {"ELLIPSE", "DXFEllipse", &ModernReader::DXFEllipse, kInEntities},
      {"SPLINE", "DXFSpline", &ModernReader::DXFSpline, kInEntities},
      {"LEADER", "DXFLeader", &ModernReader::DXFLeader, kInEntities},
      {"HATCH", "DXFHatch", &ModernReader::DXFHatch, kInEntities},
      {"POINT", "DXFPoint", &ModernReader::DXFPoint, kInEntities},
      {"RAY", "DXFRay", &ModernReader::DXFRay, kInEntities},
      {"XLINE", "DXFRay", &ModernReader::DXFRay, kInEntities},
      {"WIPEOUT", "DXFWipeout", &ModernReader::DXFWipeout, kInEntities},
      {"VIEWPORT", "DXFViewport", &ModernReader::DXFViewport, kInEntities},
  };
  for (const Kind& k : kKinds)
    if (k.name == name) return &k;
  return nullptr;
}

ModernReader::ModernReader(DXFReader& owner) : r_(owner), drawing_(owner.drawing_) {}

bool ModernReader::NextPair(int& code, std::string_view& value) {
  if (havePending_) {
    havePending_ = false;
    code = pendingCode_;
    value = pendingValue_;
    return true;
  }
  LineSource& source = r_.source_;
  if (source.AtEnd()) return false;
  std::string_view codeLine = source.ReadLine();
  int16_t c = 0;
  if (PlainGroupCode(codeLine, c)) {
    code = c;
  } else if (Trim(codeLine).empty()) {
    code = 0;  // a blank code line reads as 0, as it always has
  } else {
    const double number = HasLeadingNumber(codeLine) ? RoundHalfEven(HeldVal(codeLine)) : 1e9;
    if (!(number >= -32768 && number <= 32767)) {
      code = Resynchronise(codeLine, value);
      return code == 0;
    }
    code = int(number);
  }
  value = source.ReadLine();
  return true;
}

int ModernReader::Resynchronise(std::string_view codeLine, std::string_view& value) {
  LineSource& source = r_.source_;
  recordDamaged_ = true;
  r_.outcome_.Report.Note("unreadable group code", source.LinesRead(),
                          "Line " + std::to_string(source.LinesRead()) + " holds no group code (\"" +
                              std::string(CutChars(codeLine, 32)) +
                              "\"): reading goes on at the next entity");
  // A code 0 is a line "0" followed by a name (a value 0 is followed by a code).
  auto isName = [](std::string_view line) {
    line = Trim(line);
    return !line.empty() &&
           std::any_of(line.begin(), line.end(), [](char c) { return c >= 'A' && c <= 'Z'; }) &&
           line.find(' ') == std::string_view::npos;
  };
  if (source.AtEnd()) return -1;
  std::string_view line = source.ReadLine();
  while (!source.AtEnd()) {
    const bool zero = Trim(line) == "0";
    line = source.ReadLine();
    if (zero && isName(line)) {
      value = line;
      return 0;
    }
  }
  return -1;
}

// Collects the pairs of one record (up to the next code 0, or code 9 in the header) into
// pairs_, and the last value of every code below 1000 into last_; an embedded object
// (from code 101 on) is passed over.
void ModernReader::ReadRecord(bool header) {
  for (int16_t code : setCodes_) last_[std::size_t(code)] = {};
  setCodes_.clear();
  recordDamaged_ = false;
  pairs_.clear();
  embedded_.clear();
  int code = 0;
  std::string_view value;
  bool embedded = false;  // after 101 an embedded object repeats codes with other meanings
  while (NextPair(code, value)) {
    if (code == 0 || (header && code == 9)) {
      havePending_ = true, pendingCode_ = code, pendingValue_ = value;
      return;
    }
    embedded = embedded || code == 101;
    if (embedded) {
      if (embedded_.size() < 4096) embedded_.emplace_back(code, value);
      continue;
    }
    pairs_.emplace_back(code, value);
    if (code > 0 && code < 1000) {
      if (last_[std::size_t(code)].data() == nullptr) setCodes_.push_back(int16_t(code));
      last_[std::size_t(code)] = value.data() ? value : std::string_view("", 0);
    }
  }
}

std::string_view ModernReader::Value(int code) const {
  return code > 0 && code < 1000 ? last_[std::size_t(code)] : std::string_view();
}

double ModernReader::Num(int code, double fallback) const {
  std::string_view v = Value(code);
  if (!v.data()) return fallback;
  double value = Val(v);
  return std::isfinite(value) ? value : fallback;
}

int32_t ModernReader::Whole(int code, int32_t fallback, int32_t lo, int32_t hi) const {
  std::string_view text = Value(code);
  double v = text.data() ? HeldVal(text) : fallback;
  if (!std::isfinite(v)) v = fallback;
  if (v >= lo && v <= hi) return int32_t(std::lround(v));
  if (Has(code)) Note("number out of range, held at its bound: group " + std::to_string(code));
  return v >= lo ? hi : lo;
}

std::string ModernReader::Text(int code) const {
  return r_.decoder_.Decode(Value(code).substr(0, DXFReader::kMaxTextBytes));
}

Affine ModernReader::PlacementOf(Vec3 extrusion, double elevation) const {
  return toBlock_ * OcsToWorld(extrusion, elevation);
}

Affine ModernReader::Placement(double elevation) const { return PlacementOf(Extrusion(), elevation); }

bool ModernReader::Read() {
  r_.decoder_.SetModern(true);
  r_.NoExtentsUpdate = true;  // extents come from what the tables hold, after the load
  budget_ = r_.options_.EntityBudget > 0 ? r_.options_.EntityBudget : DefaultEntityBudget();
  drawing_.SetRowLimit(std::size_t(budget_));
  int code = 0;
  std::string_view value;
  bool goOn = true;
  try {
    while (goOn && (r_.Pace(r_.source_.Position()), NextPair(code, value))) {
      if (code == 9 && section_ == "HEADER") {
        std::string_view name = Trim(value);
        ReadRecord(true);
        ReadHeader(name);
      } else if (code == 0) {
        std::string_view name = Trim(value);
        if (name == "EOF") break;
        recordLine_ = r_.source_.LinesRead();
        // A SECTION record ends at the header's first variable (code 9).
        ReadRecord(name == "SECTION" || section_ == "HEADER");
        goOn = Dispatch(name);
      }
    }
  } catch (const RunTimeError& e) {
    goOn = r_.ReportFailure("LoadDXF", e.number(), e.text());
    r_.StopAt("LoadDXF");
  } catch (const LoadCancelled&) {
    Cancel();
    goOn = false;
  }
  if (!goOn && r_.outcome_.StoppedIn.empty()) r_.StopAt("LoadDXF");
  try {
    if (inPolyline_) FinishPolyline();
    if (!r_.outcome_.Cancelled) ChooseLayout();
    // Every drawing has a layer "0", even one written without a layer table.
    if (drawing_.LayerCount() == 0 && drawing_.SeqCount() > 0) drawing_.AddLayer({"0", kForeground, -1, 0});
    FinishExtents();
  } catch (const RunTimeError& e) {
    goOn = r_.ReportFailure("LoadDXF", e.number(), e.text());
  } catch (const LoadCancelled&) {
    Cancel();
    goOn = false;
    FinishExtents();
  }
  return goOn;
}

// The user stopped the load: what was read stays, the expansion under way is dropped.
void ModernReader::Cancel() {
  r_.outcome_.Cancelled = true;
  r_.StopAt("LoadDXF");
  expanding_.clear();
  inPolyline_ = false;
}

void ModernReader::Note(const std::string& kind, std::string notice) const {
  r_.outcome_.Report.Note(kind, recordLine_, std::move(notice));
}

bool ModernReader::Dispatch(std::string_view name) {
  if (name == "SECTION") return Section();
  if (name == "ENDSEC") {
    section_.clear();
    return true;
  }
  const Kind* kind = FindKind(name);
  const int where = section_ == "TABLES"                             ? kInTables
                    : section_ == "ENTITIES" || section_ == "BLOCKS" ? kInEntities
                    : section_ == "OBJECTS"                          ? kInObjects
                                                                     : 0;
  if (!kind) {
    if (where == kInEntities && !name.empty())
      Note("entity kind not drawn: " + std::string(name.substr(0, 64)));
    return true;
  }
  if (!(kind->sections & where)) return true;
  // A polyline ends at its SEQEND, or at the next entity of another kind.
  if (inPolyline_ && kind->handler != &ModernReader::DXFVertex && kind->handler != &ModernReader::DXFSeqEnd)
    FinishPolyline();
  name_ = name;
  if (skippingBlock_ && kind->handler != &ModernReader::DXFEndBlock) return true;
  // Paper-space entities of the ENTITIES section (67 = 1) go to the paper-space block.
  const bool paper = where == kInEntities && output_ == 0 && Whole(67, 0, 0, 1) == 1 &&
                     kind->handler != &ModernReader::DXFBlock && kind->handler != &ModernReader::DXFEndBlock;
  if (paper) {
    output_ = PaperSpaceBlock();
    const BlockEntry& b = drawing_.Blocks[std::size_t(output_ - 1)];
    toBlock_ = Affine::Translate(-b.BaseX, -b.BaseY);
  }
  ReadOne(*kind);
  if (paper) output_ = 0, toBlock_ = {};
  return true;
}

// Reads one record. A record that cannot be read (a number beyond any range, a count
// beyond memory, a group code line that is no number) costs that record alone: it is
// left out, named in the load report with its line, and the load goes on. A block
// definition that cannot be opened is left out with everything up to its ENDBLK.
void ModernReader::ReadOne(const Kind& kind) {
  std::string why;
  if (recordDamaged_) {
    why = "a group code line that is no number";
  } else {
    try {
      (this->*kind.handler)();
      return;
    } catch (const RunTimeError& e) {
      why = e.text();
    } catch (const std::bad_alloc&) {
      why = RunTimeText(kErrOutOfMemory);
    }
  }
  expanding_.clear();
  const std::string name(name_.substr(0, 64));
  if (kind.handler == &ModernReader::DXFBlock) {
    skippingBlock_ = true;
    Note("block definition left out: " + std::string(Trim(Value(2)).substr(0, 64)),
         "A block definition at line " + std::to_string(recordLine_) + " left out: " + why);
    return;
  }
  if (kind.handler == &ModernReader::DXFPoly) inPolyline_ = false;
  const bool entry = (kind.sections & kInEntities) == 0;
  Note((entry ? "table entry left out: " : "entity left out: ") + name,
       name + " at line " + std::to_string(recordLine_) + " left out: " + why);
}

bool ModernReader::Section() {
  section_ = std::string(Trim(Value(2)));
  return true;
}

// A header variable that cannot be read keeps its default; the report names it.
void ModernReader::ReadHeader(std::string_view name) {
  try {
    ReadHeaderVariable(name);
  } catch (const RunTimeError& e) {
    const std::string variable(name.substr(0, 64));
    Note("header variable left out: " + variable, variable + " left out: " + e.text());
  }
}

void ModernReader::ReadHeaderVariable(std::string_view name) {
  if (name == "$ACADVER") {
    r_.decoder_.SetVersion(Value(1));
  } else if (name == "$DWGCODEPAGE") {
    r_.decoder_.SetCodePage(Value(3));
  } else if ((name == "$EXTMIN" || name == "$EXTMAX") && Has(10) && Has(20)) {
    const bool min = name == "$EXTMIN";
    headerExt_[min ? 0 : 2] = Num(10), headerExt_[min ? 1 : 3] = Num(20);
    (min ? headerExtMin_ : headerExtMax_) = true;
  } else if (name == "$LTSCALE" && Has(40)) {
    ltScale_ = Num(40, 1);
  } else if (name.starts_with("$DIM")) {
    ReadDimVariable(headerDimStyle_, name.substr(1));
  } else if (name == "$PDMODE") {
    drawing_.PointDisplay.Mode = Whole(70, 0, 0, 255);
  } else if (name == "$PDSIZE") {
    drawing_.PointDisplay.Size = Num(40);
  } else if (name == "$INSUNITS") {
    drawing_.InsUnits = int16_t(Whole(70, 0, 0, 24));
  } else if (name == "$LWDEFAULT") {
    drawing_.DefaultLineWeight = int16_t(Whole(370, 25, 0, 211));
  }
}

// A layer that is off in the file (negative colour) is off here; a true colour (420)
// wins over the colour number; the layer's line type and line weight are kept for
// entities drawn "by layer".
bool ModernReader::DXFLayers() {
  dxfimport::LayerEntry entry;
  entry.Name = std::string(Trim(CutChars(Text(2), kMaxNameChars)));
  if (drawing_.FindLayer(entry.Name)) return true;  // a second entry of one name adds nothing
  const int number = Whole(62, 7, -32768, 32767);
  entry.Color = AciColor(std::abs(number));
  if (Has(420)) entry.Color = TrueColorValue(Value(420), std::abs(number));
  entry.IsOn = (number < 0 || (Whole(70, 0, 0, 1 << 30) & 1)) ? 0 : -1;
  entry.LineType = LineTypeOfName(Trim(Text(6)));
  entry.LineWeight = int16_t(Whole(370, kWeightDefault, kWeightDefault, 211));
  if (entry.LineWeight < 0) entry.LineWeight = kWeightDefault;
  drawing_.AddLayer(std::move(entry));
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
  lineTypes_[std::string(Trim(Text(2)))] = std::move(elements);
  return true;
}

// BLOCK_RECORD: its handle (5) and name (2), to find a layout's block.
bool ModernReader::DXFBlockRecord() {
  blockRecords_[std::string(Trim(Value(5)))] = std::string(Trim(Text(2)));
  return true;
}

// LAYOUT object: its name (1) and its block record (330, the last of the record).
bool ModernReader::DXFLayout() {
  std::string_view owner;
  for (const auto& [code, value] : pairs_)
    if (code == 330) owner = value;
  layouts_.emplace_back(std::string(Trim(Text(1))), std::string(Trim(owner)));
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
  return style;
}

// The layer row of a name, trimmed as layer names are stored; a layer that the table
// does not hold is added (on, in the foreground colour), as CAD tools do.
int32_t ModernReader::LayerRow(std::string_view raw) {
  if (raw.empty() || !raw.data()) raw = "0";
  if (raw.size() <= 64 && IsAscii(raw) && Trim(raw).size() == raw.size()) {
    if (int32_t row = drawing_.FindLayer(raw)) return row;
  }
  std::string name(
      Trim(CutChars(r_.decoder_.Decode(raw.substr(0, DXFReader::kMaxTextBytes)), kMaxNameChars)));
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
      family = r_.decoder_.Decode(value);
  }
  TextStyle style;
  style.Name = std::string(Trim(Text(2)));
  const FaceChoice face = FaceOfFont(Text(3), family);
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

double ModernReader::CurveTolerance(double curveSize) const {
  constexpr double kReferencePixels = 2048;
  double reference = curveSize;
  if (headerExtMin_ && headerExtMax_) {
    double span = std::max(headerExt_[2] - headerExt_[0], headerExt_[3] - headerExt_[1]);
    if (span > 0 && span < 1e15) reference = std::min(span, std::max(curveSize, span / 64));
  }
  if (!(reference > 0) || !std::isfinite(reference)) reference = curveSize > 0 ? curveSize : 1;
  return reference / kReferencePixels / 4;
}

// The extents hold what is drawn, with a small margin; the header's extents are taken
// only for a drawing that draws nothing.
void ModernReader::FinishExtents() {
  Drawing& d = drawing_;
  const Box drawn = layoutBox_.Empty() ? TablesBox(d) : layoutBox_;
  const Box box = layoutBox_.Empty() ? WithMargin(drawn) : layoutBox_;
  if (!box.Empty() && headerExtMin_ && headerExtMax_) {
    const double slack = 0.01 * std::max(drawn.maxX - drawn.minX, drawn.maxY - drawn.minY);
    if (drawn.minX < headerExt_[0] - slack || drawn.minY < headerExt_[1] - slack ||
        drawn.maxX > headerExt_[2] + slack || drawn.maxY > headerExt_[3] + slack)
      r_.outcome_.Report.Note("header extents replaced: they do not hold what is drawn", 0);
  }
  if (!box.Empty()) {
    d.ExtMinX = box.minX, d.ExtMinY = box.minY, d.ExtMaxX = box.maxX, d.ExtMaxY = box.maxY;
  } else if (headerExtMin_ && headerExtMax_) {
    d.ExtMinX = headerExt_[0], d.ExtMinY = headerExt_[1], d.ExtMaxX = headerExt_[2],
    d.ExtMaxY = headerExt_[3];
  }
}

}  // namespace dxfimport
