// The modern reading profile's driver: pairs, records, sections, header variables and
// the dispatch of entities and table entries to their readers.
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

enum Sections : int { kInTables = 1, kInEntities = 2, kInObjects = 4, kInClasses = 8 };

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
      {"CLASS", "DXFClass", &ModernReader::DXFClass, kInClasses},
      {"LAYOUT", "DXFLayout", &ModernReader::DXFLayout, kInObjects},
      {"SORTENTSTABLE", "DXFSortEnts", &ModernReader::DXFSortEnts, kInObjects},
      {"MLEADERSTYLE", "DXFMultiLeader", &ModernReader::DXFMLeaderStyle, kInObjects},
      {"DICTIONARY", "DXFDictionary", &ModernReader::DXFDictionary, kInObjects},
      {"SPATIAL_FILTER", "DXFSpatialFilter", &ModernReader::DXFSpatialFilter, kInObjects},
      {"GEODATA", "DXFGeoData", &ModernReader::DXFGeoData, kInObjects},
      {"XRECORD", "DXFSpatialFilter", &ModernReader::DXFXRecord, kInObjects},
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
      {"MULTILEADER", "DXFMultiLeader", &ModernReader::DXFMultiLeader, kInEntities},
      {"MLEADER", "DXFMultiLeader", &ModernReader::DXFMultiLeader, kInEntities},
      {"HATCH", "DXFHatch", &ModernReader::DXFHatch, kInEntities},
      {"POINT", "DXFPoint", &ModernReader::DXFPoint, kInEntities},
      {"RAY", "DXFRay", &ModernReader::DXFRay, kInEntities},
      {"XLINE", "DXFRay", &ModernReader::DXFRay, kInEntities},
      {"WIPEOUT", "DXFWipeout", &ModernReader::DXFWipeout, kInEntities},
      {"IMAGE", "DXFImage", &ModernReader::DXFImage, kInEntities},
      {"PDFUNDERLAY", "DXFImage", &ModernReader::DXFUnderlay, kInEntities},
      {"DWFUNDERLAY", "DXFImage", &ModernReader::DXFUnderlay, kInEntities},
      {"DGNUNDERLAY", "DXFImage", &ModernReader::DXFUnderlay, kInEntities},
      {"IMAGEDEF", "DXFImage", &ModernReader::DXFImageDef, kInObjects},
      {"PDFDEFINITION", "DXFImage", &ModernReader::DXFImageDef, kInObjects},
      {"DWFDEFINITION", "DXFImage", &ModernReader::DXFImageDef, kInObjects},
      {"DGNDEFINITION", "DXFImage", &ModernReader::DXFImageDef, kInObjects},
      {"VIEWPORT", "DXFViewport", &ModernReader::DXFViewport, kInEntities},
  };
  for (const Kind& k : kKinds)
    if (k.name == name) return &k;
  return nullptr;
}

// Any other entity that carries proxy graphics.
const ModernReader::Kind* ModernReader::ProxyKind() {
  static const Kind kProxy{"", "DXFProxy", &ModernReader::DXFProxy, kInEntities};
  return &kProxy;
}

ModernReader::ModernReader(LoadContext& context) : ctx_(context), drawing_(context.drawing) {}

std::unique_ptr<ProfileReader> MakeModernReader(LoadContext& context) {
  return std::make_unique<ModernReader>(context);
}

bool ModernReader::NextPair(int& code, std::string_view& value) {
  if (havePending_) {
    havePending_ = false;
    code = pendingCode_;
    value = pendingValue_;
    return true;
  }
  LineSource& source = ctx_.source;
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
  LineSource& source = ctx_.source;
  recordDamaged_ = true;
  ctx_.outcome.Report.Note("unreadable group code", source.LinesRead(),
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
  return ctx_.decoder.Decode(Value(code).substr(0, LoadContext::kMaxTextBytes));
}

Affine ModernReader::PlacementOf(Vec3 extrusion, double elevation) const {
  return toBlock_ * OcsToWorld(extrusion, elevation);
}

Affine ModernReader::Placement(double elevation) const { return PlacementOf(Extrusion(), elevation); }

bool ModernReader::Read() {
  ctx_.decoder.SetModern(true);
  budget_ = ctx_.options.EntityBudget > 0 ? ctx_.options.EntityBudget : DefaultEntityBudget();
  drawing_.SetRowLimit(std::size_t(budget_));
  int code = 0;
  std::string_view value;
  bool goOn = true;
  try {
    while (goOn && (ctx_.Pace(ctx_.source.Position()), NextPair(code, value))) {
      if (code == 9 && section_ == "HEADER") {
        std::string_view name = Trim(value);
        ReadRecord(true);
        ReadHeader(name);
      } else if (code == 0) {
        std::string_view name = Trim(value);
        if (name == "EOF") break;
        recordLine_ = ctx_.source.LinesRead();
        // A SECTION record ends at the header's first variable (code 9).
        ReadRecord(name == "SECTION" || section_ == "HEADER");
        goOn = Dispatch(name);
      }
    }
  } catch (const RunTimeError& e) {
    goOn = ctx_.ReportFailure("LoadDXF", e.number(), e.text());
    ctx_.StopAt("LoadDXF");
  } catch (const LoadCancelled&) {
    Cancel();
    goOn = false;
  }
  if (!goOn && ctx_.outcome.StoppedIn.empty()) ctx_.StopAt("LoadDXF");
  try {
    if (inPolyline_) FinishPolyline();
    FinishPendingLeaders();
    ApplyClips();
    ApplyBlockOrders();
    ClipBlockContents();
    ApplyDrawOrder();
    if (!ctx_.outcome.Cancelled) ChooseLayout();
    // Every drawing has a layer "0", even one written without a layer table.
    if (drawing_.LayerCount() == 0 && drawing_.SeqCount() > 0) drawing_.AddLayer({"0", kForeground, -1, 0});
    ResolvePictures();
    FinishExtents();
  } catch (const RunTimeError& e) {
    goOn = ctx_.ReportFailure("LoadDXF", e.number(), e.text());
  } catch (const LoadCancelled&) {
    Cancel();
    goOn = false;
    FinishExtents();
  }
  return goOn;
}

// The user stopped the load: what was read stays, the expansion under way is dropped.
void ModernReader::Cancel() {
  ctx_.outcome.Cancelled = true;
  ctx_.StopAt("LoadDXF");
  expanding_.clear();
  inPolyline_ = false;
}

void ModernReader::Note(const std::string& kind, std::string notice) const {
  ctx_.outcome.Report.Note(kind, recordLine_, std::move(notice));
}

bool ModernReader::Dispatch(std::string_view name) {
  if (name == "SECTION") return Section();
  if (name == "ENDSEC") {
    if (section_ == "ENTITIES") entitiesEnd_ = drawing_.DrawSeq.size();
    section_.clear();
    return true;
  }
  const Kind* kind = FindKind(name);
  const int where = section_ == "TABLES"                             ? kInTables
                    : section_ == "ENTITIES" || section_ == "BLOCKS" ? kInEntities
                    : section_ == "OBJECTS"                          ? kInObjects
                    : section_ == "CLASSES"                          ? kInClasses
                                                                     : 0;
  if (!kind && where == kInEntities && !name.empty()) {
    if (!HasProxyGraphics()) {
      Note("entity kind not drawn: " + std::string(name.substr(0, 64)));
      return true;
    }
    kind = ProxyKind();
  }
  if (!kind) return true;
  if (!(kind->sections & where)) return true;
  // A polyline ends at its SEQEND, or at the next entity of another kind.
  if (inPolyline_ && kind->handler != &ModernReader::DXFVertex && kind->handler != &ModernReader::DXFSeqEnd)
    FinishPolyline();
  name_ = name;
  if (skippingBlock_ && kind->handler != &ModernReader::DXFEndBlock) return true;
  if (where == kInEntities && Invisible(*kind)) return true;
  // Paper-space entities of the ENTITIES section (67 = 1) go to the paper-space block.
  const bool paper = where == kInEntities && output_ == 0 && Whole(67, 0, 0, 1) == 1 &&
                     kind->handler != &ModernReader::DXFBlock && kind->handler != &ModernReader::DXFEndBlock;
  if (paper) {
    output_ = PaperSpaceBlock();
    const BlockEntry& b = drawing_.Blocks[std::size_t(output_ - 1)];
    toBlock_ = Affine::Translate(-b.BaseX, -b.BaseY);
  }
  if (section_ == "ENTITIES" || output_) NoteEntityStart(kind->handler);
  ReadOne(*kind);
  if (paper) output_ = 0, toBlock_ = {};
  return true;
}

// An entity flagged invisible (60 = 1) is neither drawn nor counted in the extents, in
// model space, paper space and every block: the copy of a dynamic block keeps the
// visibility states it does not show so. The attributes of an invisible insert, up to
// its SEQEND, go with it.
bool ModernReader::Invisible(const Kind& kind) {
  const Handler h = kind.handler;
  if (h == &ModernReader::DXFBlock || h == &ModernReader::DXFEndBlock || h == &ModernReader::DXFVertex)
    return false;
  const bool attribsHidden = hidingAttribs_;
  hidingAttribs_ = false;
  if (h == &ModernReader::DXFSeqEnd) return attribsHidden;
  if (h == &ModernReader::DXFAttrib && attribsHidden) return hidingAttribs_ = true;
  if (Whole(60, 0, -32768, 32767) != 1) return false;
  hidingAttribs_ = h == &ModernReader::DXFInsert;
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
      entityAlpha_ = kOpaque;
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
    ctx_.decoder.SetVersion(Value(1));
  } else if (name == "$DWGCODEPAGE") {
    ctx_.decoder.SetCodePage(Value(3));
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
      ctx_.outcome.Report.Note("header extents replaced: they do not hold what is drawn", 0);
  }
  if (!box.Empty()) {
    d.ExtMinX = box.minX, d.ExtMinY = box.minY, d.ExtMaxX = box.maxX, d.ExtMaxY = box.maxY;
  } else if (headerExtMin_ && headerExtMax_) {
    d.ExtMinX = headerExt_[0], d.ExtMinY = headerExt_[1], d.ExtMaxX = headerExt_[2],
    d.ExtMaxY = headerExt_[3];
  }
}

}  // namespace dxfimport
