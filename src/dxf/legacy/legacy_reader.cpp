#include "dxf/legacy/legacy_reader.h"

#include "dxf/input/group_codes.h"
#include "dxf/model/style_maps.h"
#include "support/numbers.h"
#include "support/runtime_error.h"
#include "support/text_decode.h"

namespace dxfimport {

struct LegacyReader::Keyword {
  std::string_view line;
  const char* procedure;
  ReaderFn reader;
  bool resultEndsLoad;  // false: the reader's result is ignored
};

// Every line of the file is compared with these, exactly and case-sensitively, so a value
// that reads like a keyword starts that reader too: the reader has always worked so.
const LegacyReader::Keyword* LegacyReader::FindKeyword(std::string_view line) {
  static const Keyword kKeywords[] = {
      {"$EXTMIN", "DXFMinExtents", &LegacyReader::DXFMinExtents, false},
      {"$EXTMAX", "DXFMaxExtents", &LegacyReader::DXFMaxExtents, false},
      {"LAYER", "DXFLayers", &LegacyReader::FirstLayer, true},
      {"BLOCK", "DXFBlock", &LegacyReader::DXFBlock, true},
      {"ENDBLK", "LoadDXF", &LegacyReader::EndBlock, false},
      {"LINE", "DXFLine", &LegacyReader::DXFLine, true},
      {"CIRCLE", "DXFCircle", &LegacyReader::DXFCircle, true},
      {"ARC", "DXFCircle", &LegacyReader::DXFCircle, true},
      {"POLYLINE", "DXFPoly", &LegacyReader::DXFPoly, true},
      {"TEXT", "DXFText", &LegacyReader::DXFText, true},
      {"SOLID", "DXFSolid", &LegacyReader::DXFSolid, true},
      {"3DFACE", "DXF3DFace", &LegacyReader::DXF3DFace, true},
      {"INSERT", "DXFInsert", &LegacyReader::DXFInsertFromFile, true},
      {"DIMENSION", "DXFDimension", &LegacyReader::DXFDimension, true},
      {"POINT", "DXFPoint", &LegacyReader::DXFPoint, false},
      {"ATTRIB", "DXFAttrib", &LegacyReader::DXFAttrib, true},
      {"ENTITIES", "DXFInsert", &LegacyReader::ResolvePendingInserts, true},
  };
  if (line.size() < 3 || line.size() > 9) return nullptr;
  for (const Keyword& k : kKeywords)
    if (k.line.size() == line.size() && k.line == line) return &k;
  return nullptr;
}

std::unique_ptr<ProfileReader> MakeLegacyReader(LoadContext& context) {
  return std::make_unique<LegacyReader>(context);
}

bool LegacyReader::Read() {
  try {
    return ReadAll();
  } catch (const LoadCancelled&) {
    ctx_.outcome.Cancelled = true;
    ctx_.StopAt("LoadDXF");
    return false;
  }
}

bool LegacyReader::ReadAll() {
  LineSource& source = ctx_.source;
  bool goOn = true;
  while (!source.AtEnd() && goOn) {
    std::size_t lineStart = source.Position();
    CurrentLine = source.ReadLine();
    ctx_.Pace(lineStart);
    if (const Keyword* k = FindKeyword(CurrentLine)) {
      bool result = Run(k->procedure, k->reader);
      if (k->resultEndsLoad && !result) {
        goOn = false;
        ctx_.StopAt(k->procedure);
      }
    }
  }
  return goOn;
}

bool LegacyReader::LoadEntity() {
  for (std::size_t i = 0; i < setCount_; ++i) GroupValues[setCodes_[i]] = {};
  setCount_ = 0;
  for (;;) {
    std::string_view codeLine = ctx_.source.ReadLine();
    std::size_t comma = std::string_view::npos;
    int16_t code = 0;
    if (!PlainGroupCode(codeLine, code)) {
      comma = codeLine.find(',');
      code = GeneralGroupCode(codeLine.substr(0, comma));
    }
    if (code == 0 || code == 9) return true;
    if (code < 0 || code > 80) throw RunTimeError(kErrSubscript);
    // After a comma the rest of the code line is the value.
    std::string_view value =
        comma == std::string_view::npos ? ctx_.source.ReadLine() : codeLine.substr(comma + 1);
    if (GroupValues[code].data() == nullptr) setCodes_[setCount_++] = uint8_t(code);
    GroupValues[code] = value.data() ? value : std::string_view("", 0);
  }
}

double LegacyReader::Num(int code) const { return Val(GroupValues[code]); }
float LegacyReader::Sng(int code) const { return CSng(Num(code)); }
int16_t LegacyReader::Int16(int code) const { return CInt(Num(code)); }
int32_t LegacyReader::Long(int code) const { return CLng(Num(code)); }
// Stored texts hold at most 100 characters (an MTEXT line 100 of its lines), so a value
// is decoded from its first kMaxTextBytes bytes only: a value line of gigabytes costs no
// copy of itself.
std::string LegacyReader::Text(int code) const {
  return ctx_.decoder.Decode(GroupValues[code].substr(0, LoadContext::kMaxTextBytes));
}

// $EXTMIN and $EXTMAX: once a header extent is read the readers stop widening the extents,
// so the header wins even over entities that lie outside it.
bool LegacyReader::ReadHeaderPoint(double& x, double& y) {
  LoadEntity();
  x = Sng(10);
  y = Sng(20);
  NoExtentsUpdate = true;
  return true;
}

bool LegacyReader::DXFMinExtents() { return ReadHeaderPoint(drawing_.ExtMinX, drawing_.ExtMinY); }
bool LegacyReader::DXFMaxExtents() { return ReadHeaderPoint(drawing_.ExtMaxX, drawing_.ExtMaxY); }

// The first LAYER line is the layer table's own name; every later one is an entry.
bool LegacyReader::FirstLayer() {
  if (firstLayer_) {
    firstLayer_ = false;
    return true;
  }
  return DXFLayers();
}

bool LegacyReader::DXFLayers() {
  LoadEntity();
  LayerEntry entry;
  entry.Name = std::string(TrimRight(CutChars(Text(2), 20)));
  entry.Color = ColorMap(Int16(62));
  // A negative colour marks a layer that is off, but ColorMap never gives a negative
  // value, so such a layer loads as on; kept as the layer table always behaved.
  entry.IsOn = entry.Color >= 0 ? (BitFlag(Long(70), 0) ? 0 : -1) : 0;
  drawing_.AddLayer(std::move(entry));
  return true;
}

}  // namespace dxfimport
