// The modern reading profile: a structural reader of (group code, value) pairs. Only the
// value after a group code 0 names an entity or a table entry; header variables follow a
// group code 9; codes above 80, comments and extended data are passed over. Entities are
// stored by the same store functions as in the legacy profile.
#include <algorithm>
#include <cmath>
#include <new>

#include "dxf/group_codes.h"
#include "dxf/reader.h"
#include "dxf/style_maps.h"
#include "support/log.h"
#include "support/messages.h"

namespace dxfimport {
namespace {

enum Sections : int { kInTables = 1, kInEntities = 2 };

// Header extents are taken when both are there, in order and of a sane size.
bool SaneExtents(const Drawing& d) {
  auto sane = [](float v) { return std::isfinite(v) && std::abs(v) <= 1e15f; };
  return sane(d.ExtMinX) && sane(d.ExtMinY) && sane(d.ExtMaxX) && sane(d.ExtMaxY) && d.ExtMinX <= d.ExtMaxX &&
         d.ExtMinY <= d.ExtMaxY;
}

}  // namespace

struct DXFReader::ModernKind {
  std::string_view name;
  const char* procedure;
  ReaderFn handler;
  int sections;
};

const DXFReader::ModernKind* DXFReader::FindModernKind(std::string_view name) {
  static const ModernKind kKinds[] = {
      {"LAYER", "DXFLayers", &DXFReader::ModernLayer, kInTables},
      {"LTYPE", "DXFLineTypes", &DXFReader::ModernLineType, kInTables},
      {"BLOCK", "DXFBlock", &DXFReader::StoreBlock, kInEntities},
      {"ENDBLK", "LoadDXF", &DXFReader::EndBlock, kInEntities},
      {"LINE", "DXFLine", &DXFReader::StoreLine, kInEntities},
      {"CIRCLE", "DXFCircle", &DXFReader::StoreCircle, kInEntities},
      {"ARC", "DXFCircle", &DXFReader::StoreCircle, kInEntities},
      {"SOLID", "DXFSolid", &DXFReader::StoreSolid, kInEntities},
      {"TRACE", "DXFSolid", &DXFReader::StoreSolid, kInEntities},
      {"3DFACE", "DXF3DFace", &DXFReader::Store3DFace, kInEntities},
      {"TEXT", "DXFText", &DXFReader::StoreText, kInEntities},
      {"ATTRIB", "DXFAttrib", &DXFReader::StoreAttrib, kInEntities},
      {"INSERT", "DXFInsert", &DXFReader::ModernInsert, kInEntities},
      {"DIMENSION", "DXFDimension", &DXFReader::StoreDimension, kInEntities},
      {"POLYLINE", "DXFPoly", &DXFReader::ModernPolyline, kInEntities},
      {"VERTEX", "DXFPoly", &DXFReader::ModernVertex, kInEntities},
      {"SEQEND", "DXFPoly", &DXFReader::ModernSeqEnd, kInEntities},
      {"LWPOLYLINE", "DXFLwPolyline", &DXFReader::ModernLwPolyline, kInEntities},
      {"MTEXT", "DXFMText", &DXFReader::ModernMText, kInEntities},
      {"ELLIPSE", "DXFEllipse", &DXFReader::ModernEllipse, kInEntities},
      {"SPLINE", "DXFSpline", &DXFReader::ModernSpline, kInEntities},
      {"LEADER", "DXFLeader", &DXFReader::ModernLeader, kInEntities},
      {"HATCH", "DXFHatch", &DXFReader::ModernHatch, kInEntities},
  };
  for (const ModernKind& k : kKinds)
    if (k.name == name) return &k;
  return nullptr;
}

bool DXFReader::NextPair(int& code, std::string_view& value) {
  if (havePending_) {
    havePending_ = false;
    code = pendingCode_;
    value = pendingValue_;
    return true;
  }
  if (source_.AtEnd()) return false;
  std::string_view codeLine = source_.ReadLine();
  int16_t c = 0;
  if (!PlainGroupCode(codeLine, c)) c = GeneralGroupCode(codeLine);
  code = c;
  value = source_.ReadLine();
  return true;
}

// Collects the pairs of one record (up to the next code 0, or code 9 in the header) into
// pairs_, and the last value of every code from 1 to 80 into GroupValues; an embedded
// object (from code 101 on) is passed over.
bool DXFReader::ReadRecord(bool header) {
  for (std::size_t i = 0; i < setCount_; ++i) GroupValues[setCodes_[i]] = {};
  setCount_ = 0;
  pairs_.clear();
  int code = 0;
  std::string_view value;
  bool embedded = false;  // after 101 an embedded object repeats codes with other meanings
  while (NextPair(code, value)) {
    if (code == 0 || (header && code == 9)) {
      havePending_ = true, pendingCode_ = code, pendingValue_ = value;
      return true;
    }
    embedded = embedded || code == 101;
    if (embedded) continue;
    pairs_.emplace_back(code, value);
    if (code > 0 && code <= 80) {
      if (GroupValues[code].data() == nullptr) setCodes_[setCount_++] = uint8_t(code);
      GroupValues[code] = value.data() ? value : std::string_view("", 0);
    }
  }
  return true;
}

std::string_view DXFReader::Last(int code) const {
  for (auto it = pairs_.rbegin(); it != pairs_.rend(); ++it)
    if (it->first == code) return it->second;
  return {};
}

bool DXFReader::Has(int code) const {
  return std::any_of(pairs_.begin(), pairs_.end(), [code](const auto& p) { return p.first == code; });
}

bool DXFReader::ReadModern() {
  decoder_.SetModern(true);
  drawing_.BulgesAsArcs = true;
  NoExtentsUpdate = true;  // extents come from the header or, after the load, the tables
  int code = 0;
  std::string_view value;
  bool goOn = true;
  try {
    while (goOn && (Pace(source_.Position()), NextPair(code, value))) {
      if (code == 9 && section_ == "HEADER") {
        std::string_view name = Trim(value);
        ReadRecord(true);
        ReadHeaderVariable(name);
      } else if (code == 0) {
        std::string_view name = Trim(value);
        if (name == "EOF") break;
        // A SECTION record ends at the header's first variable (code 9).
        ReadRecord(name == "SECTION" || section_ == "HEADER");
        goOn = DispatchModern(name);
      }
    }
  } catch (const RunTimeError& e) {
    goOn = ReportFailure("LoadDXF", e.number(), e.text());
    StopAt("LoadDXF");
  }
  if (!goOn && outcome_.StoppedIn.empty()) StopAt("LoadDXF");
  try {
    // Every drawing has a layer "0", even one written without a layer table.
    if (drawing_.LayerCount() == 0 && drawing_.SeqCount() > 0) drawing_.AddLayer({"0", 0, -1, 0});
    FinishModernExtents();
  } catch (const RunTimeError& e) {
    goOn = ReportFailure("LoadDXF", e.number(), e.text());
  }
  return goOn;
}

bool DXFReader::DispatchModern(std::string_view name) {
  if (name == "SECTION") return ModernSection();
  if (name == "ENDSEC") {
    section_.clear();
    return true;
  }
  const ModernKind* kind = FindModernKind(name);
  if (!kind) return true;
  bool inTables = section_ == "TABLES";
  bool inEntities = section_ == "ENTITIES" || section_ == "BLOCKS";
  if (!((kind->sections & kInTables) && inTables) && !((kind->sections & kInEntities) && inEntities)) return true;
  if (inEntities && kind->handler != &DXFReader::StoreBlock && kind->handler != &DXFReader::EndBlock) {
    // Paper space is not drawn: its entities (67 = 1) and the paper-space blocks.
    if (skipBlock_ && InBlock) return true;
    if (!InBlock && Long(67) == 1) {
      if (kind->handler == &DXFReader::ModernPolyline) inPolyline_ = false;
      if (kind->handler != &DXFReader::ModernSeqEnd) return true;
    }
  }
  bool result = Run(kind->procedure, kind->handler);
  if (!result) StopAt(kind->procedure);
  return result;
}

bool DXFReader::ModernSection() {
  section_ = std::string(Trim(Last(2)));
  return section_ == "ENTITIES" ? ResolvePendingInserts() : true;
}

void DXFReader::ReadHeaderVariable(std::string_view name) {
  if (name == "$ACADVER") {
    decoder_.SetVersion(GroupValues[1]);
  } else if (name == "$DWGCODEPAGE") {
    decoder_.SetCodePage(GroupValues[3]);
  } else if (name == "$EXTMIN" && Has(10) && Has(20)) {
    drawing_.ExtMinX = Sng(10), drawing_.ExtMinY = Sng(20);
    headerExtMin_ = true;
  } else if (name == "$EXTMAX" && Has(10) && Has(20)) {
    drawing_.ExtMaxX = Sng(10), drawing_.ExtMaxY = Sng(20);
    headerExtMax_ = true;
  } else if (name == "$LTSCALE" && Has(40)) {
    ltScale_ = Num(40);
  }
}

// A layer that is off in the file (negative colour) is off here; a true colour (420)
// wins over the colour number; the layer's line type is kept for entities drawn with
// line type "by layer".
bool DXFReader::ModernLayer() {
  LayerEntry entry;
  entry.Name = std::string(TrimRight(CutChars(Text(2), 20)));
  int16_t number = Int16(62);
  entry.Color = ColorMap(int16_t(std::abs(int(number))));
  if (Has(420)) entry.Color = TrueColor(Last(420));
  entry.IsOn = (number < 0 || BitFlag(Long(70), 0)) ? 0 : -1;
  entry.LineType = LineTypeOfName(Trim(Text(6)));
  drawing_.AddLayer(std::move(entry));
  return true;
}

// LTYPE: the name (2) and its pattern elements (49).
bool DXFReader::ModernLineType() {
  std::vector<float> elements;
  for (const auto& [code, value] : pairs_)
    if (code == 49) elements.push_back(CSng(Val(value)));
  lineTypes_[std::string(Trim(Text(2)))] = std::move(elements);
  return true;
}

bool DXFReader::ModernPolyline() {
  BeginPolyline(Long(70), Sng(40));
  inPolyline_ = true;
  return true;
}

// Vertices of a polyface mesh that only name a face (flag 128 without 64) have no place.
bool DXFReader::ModernVertex() {
  if (!inPolyline_) return true;
  int32_t flags = Long(70);
  if ((flags & 128) && !(flags & 64)) return true;
  AddVertex(Sng(10), Sng(20), Sng(42), flags);
  return true;
}

bool DXFReader::ModernSeqEnd() {
  if (inPolyline_) EndPolyline();
  inPolyline_ = false;
  return true;
}

// LWPOLYLINE: vertices 10/20 with the bulge 42 that follows its vertex, constant width
// 43, closed flag 70 bit 0.
bool DXFReader::ModernLwPolyline() {
  BeginPolyline(Long(70) & 1, Sng(43));
  struct Vertex {
    float x = 0, y = 0, bulge = 0;
  };
  std::vector<Vertex> vertices;
  for (const auto& [code, value] : pairs_) {
    if (code == 10) vertices.push_back({CSng(Val(value)), 0, 0});
    else if (vertices.empty()) continue;
    else if (code == 20) vertices.back().y = CSng(Val(value));
    else if (code == 42) vertices.back().bulge = CSng(Val(value));
  }
  for (const Vertex& v : vertices) AddVertex(v.x, v.y, v.bulge, 0);
  EndPolyline();
  return true;
}

bool DXFReader::ModernInsert() { return StoreInsert(); }

double DXFReader::CurveTolerance(double curveSize) const {
  constexpr double kReferencePixels = 2048;
  const Drawing& d = drawing_;
  double reference = curveSize;
  if (headerExtMin_ && headerExtMax_ && SaneExtents(d))
    reference = std::max(double(d.ExtMaxX) - d.ExtMinX, double(d.ExtMaxY) - d.ExtMinY);
  if (!(reference > 0) || !std::isfinite(reference)) reference = curveSize;
  return reference / kReferencePixels / 4;
}

// Header extents that are missing, inverted or absurd give way to the extents of what
// the tables hold; so do header extents that leave part of the drawing outside (a stale
// header), since everything that is drawn must be seen in the extents view.
void DXFReader::FinishModernExtents() {
  Drawing& d = drawing_;
  const bool headerSane = headerExtMin_ && headerExtMax_ && SaneExtents(d);
  struct Extents {
    float minX, minY, maxX, maxY;
  };
  const Extents header{d.ExtMinX, d.ExtMinY, d.ExtMaxX, d.ExtMaxY};
  d.ExtMinX = d.ExtMinY = 1e30f;
  d.ExtMaxX = d.ExtMaxY = -1e30f;
  auto widen = [&d](const auto& table) {
    for (const auto& row : table) d.CheckExtentsOf(row);
  };
  widen(d.Lines);
  widen(d.PolySegs);
  widen(d.Texts);
  widen(d.Attribs);
  widen(d.Arcs);
  widen(d.Solids);
  widen(d.Hatches);
  if (!headerSane) return;
  const bool nothingDrawn = d.ExtMinX > d.ExtMaxX;
  const double slack = 1e-6 * std::max(double(header.maxX) - header.minX, double(header.maxY) - header.minY);
  const bool covers = d.ExtMinX >= header.minX - slack && d.ExtMinY >= header.minY - slack &&
                      d.ExtMaxX <= header.maxX + slack && d.ExtMaxY <= header.maxY + slack;
  if (nothingDrawn || covers) {
    d.ExtMinX = header.minX, d.ExtMinY = header.minY, d.ExtMaxX = header.maxX, d.ExtMaxY = header.maxY;
  }
}

}  // namespace dxfimport
