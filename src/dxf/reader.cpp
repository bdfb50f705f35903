#include "dxf/reader.h"

#include <algorithm>
#include <new>

#include "dxf/binary_dxf.h"
#include "dxf/group_codes.h"
#include "dxf/modern_reader.h"
#include "dxf/style_maps.h"
#include "support/messages.h"
#include "support/numbers.h"
#include "support/runtime_error.h"
#include "support/text_decode.h"
#include "support/texts.h"

namespace dxfimport {

const char* const kReaderModule = "Dxfin275";
constexpr std::size_t kReleaseStep = 8u << 20;  // hand back mapped pages every 8 MiB
constexpr std::size_t kPollStep = 1u << 20;     // let window messages run every MiB read

struct DXFReader::Keyword {
  std::string_view line;
  const char* procedure;
  ReaderFn reader;
  bool resultEndsLoad;  // false: the reader's result is ignored
};

// Every line of the file is compared with these, exactly and case-sensitively, so a value
// that reads like a keyword starts that reader too: the reader has always worked so.
const DXFReader::Keyword* DXFReader::FindKeyword(std::string_view line) {
  static const Keyword kKeywords[] = {
      {"$EXTMIN", "DXFMinExtents", &DXFReader::DXFMinExtents, false},
      {"$EXTMAX", "DXFMaxExtents", &DXFReader::DXFMaxExtents, false},
      {"LAYER", "DXFLayers", &DXFReader::FirstLayer, true},
      {"BLOCK", "DXFBlock", &DXFReader::DXFBlock, true},
      {"ENDBLK", "LoadDXF", &DXFReader::EndBlock, false},
      {"LINE", "DXFLine", &DXFReader::DXFLine, true},
      {"CIRCLE", "DXFCircle", &DXFReader::DXFCircle, true},
      {"ARC", "DXFCircle", &DXFReader::DXFCircle, true},
      {"POLYLINE", "DXFPoly", &DXFReader::DXFPoly, true},
      {"TEXT", "DXFText", &DXFReader::DXFText, true},
      {"SOLID", "DXFSolid", &DXFReader::DXFSolid, true},
      {"3DFACE", "DXF3DFace", &DXFReader::DXF3DFace, true},
      {"INSERT", "DXFInsert", &DXFReader::DXFInsertFromFile, true},
      {"DIMENSION", "DXFDimension", &DXFReader::DXFDimension, true},
      {"POINT", "DXFPoint", &DXFReader::DXFPoint, false},
      {"ATTRIB", "DXFAttrib", &DXFReader::DXFAttrib, true},
      {"ENTITIES", "DXFInsert", &DXFReader::ResolvePendingInserts, true},
  };
  if (line.size() < 3 || line.size() > 9) return nullptr;
  for (const Keyword& k : kKeywords)
    if (k.line.size() == line.size() && k.line == line) return &k;
  return nullptr;
}

bool DXFReader::LocateSection(std::string_view bytes) {
  while (!bytes.empty())
    if (Trim(NextLine(bytes)) == "SECTION") return true;
  return false;
}

// The validity scan over the open file, handing back the pages it has looked at.
bool DXFReader::SectionInSource() {
  const std::string_view bytes = source_.bytes();
  std::size_t nextRelease = kReleaseStep;
  for (std::size_t start = 0; start < bytes.size();) {
    std::size_t end = source_.FindLineEnd(start);
    std::string_view line = bytes.substr(start, end - start);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (Trim(line) == "SECTION") return true;
    start = end + 1;
    if (start >= nextRelease) {
      source_.ReleaseBefore(start);
      nextRelease = start + kReleaseStep;
    }
  }
  return false;
}

bool DXFReader::LocateSection(const std::string& fileName) {
  LineSource source;
  try {
    source.Open(fileName);
  } catch (const RunTimeError&) {
    return false;
  }
  return LocateSection(source.bytes());
}

bool DXFReader::LoadDXF(const std::string& fileName, LoadProgress* progress) {
  outcome_ = {};
  try {
    source_.Open(fileName);
  } catch (const RunTimeError& e) {
    ReportError("LoadDXF", kReaderModule, e.text(), e.number());
    StopAt("LoadDXF");
    return false;
  }
  bool loaded = ReadAll(progress);
  source_.Close();
  return loaded;
}

bool DXFReader::LoadDXFBytes(std::string_view bytes, LoadProgress* progress) {
  outcome_ = {};
  source_.Attach(bytes);
  bool loaded = ReadAll(progress);
  source_.Close();
  return loaded;
}

DXFReader::~DXFReader() = default;

bool DXFReader::ReadAll(LoadProgress* progress) {
  const bool modern = profile_ == ReadingProfile::Modern;
  // Binary DXF: the modern profile reads it as the text it stands for.
  if (IsBinaryDxf(source_.bytes()) && modern && !ConvertBinaryDxf(source_, converted_)) {
    ShowMessage(MessageIcon::Information, LoadResText(1050));
    return false;
  }
  if (IsBinaryDxf(source_.bytes()) || !SectionInSource()) {
    ShowMessage(MessageIcon::Information, LoadResText(1050));
    return false;
  }
  outcome_.Recognised = true;
  drawing_.SetRules(ProfileRules::Of(profile_));
  drawing_.ExtMinX = drawing_.ExtMinY = 1e30f;
  drawing_.ExtMaxX = drawing_.ExtMaxY = -1e30f;
  firstLayer_ = true;
  StartPacer(progress);
  if (modern) {
    outcome_.Complete = ModernReader(*this).Read();
  } else {
    try {
      outcome_.Complete = ReadLegacy();
    } catch (const LoadCancelled&) {
      outcome_.Cancelled = true;
      StopAt("LoadDXF");
    }
  }
  InBlock = false;
  if (progress) progress->Hide();
  return true;
}

void DXFReader::StartPacer(LoadProgress* progress) {
  progress_ = progress;
  pacer_ = {};
  pacer_.length = double(source_.Length());
  pacer_.nextStepAt = std::size_t(pacer_.nextStep / 100.0 * pacer_.length) + 1;
  pacer_.nextRelease = kReleaseStep;
  pacer_.nextPoll = kPollStep;
  if (progress_) progress_->Show();
}

void DXFReader::Poll() {
  if (!progress_) return;
  progress_->Poll();
  if (progress_->Cancelled()) throw LoadCancelled{};
}

// The progress bar moves when the position passes the next 5 % step (one step per line);
// the mapped pages behind the reading position are handed back every few megabytes.
void DXFReader::Pace(std::size_t lineStart) {
  Pacer& p = pacer_;
  std::size_t position = source_.Position();
  if (position >= p.nextStepAt) {
    float percent = std::min(100.0f, float(double(position) / p.length * 100.0));
    if (percent > p.nextStep) {
      if (progress_) progress_->SetValue(int(percent));
      p.nextStep += 5;
      // A row takes at least a dozen bytes of the file.
      drawing_.Anticipate(double(position) / p.length, std::size_t(p.length - double(position)) / 12);
    }
    p.nextStepAt = percent > p.nextStep ? position : std::size_t(double(p.nextStep) / 100.0 * p.length) + 1;
  }
  if (lineStart >= p.nextRelease) {
    source_.ReleaseBefore(lineStart);
    p.nextRelease = lineStart + kReleaseStep;
  }
  if (position >= p.nextPoll) {
    p.nextPoll = position + kPollStep;
    Poll();
  }
}

bool DXFReader::ReadLegacy() {
  bool goOn = true;
  while (!source_.AtEnd() && goOn) {
    std::size_t lineStart = source_.Position();
    CurrentLine = source_.ReadLine();
    Pace(lineStart);
    if (const Keyword* k = FindKeyword(CurrentLine)) {
      bool result = Run(k->procedure, k->reader);
      if (k->resultEndsLoad && !result) {
        goOn = false;
        StopAt(k->procedure);
      }
    }
  }
  return goOn;
}

void DXFReader::StopAt(const char* procedure) {
  outcome_.StoppedIn = procedure;
  outcome_.StopLine = source_.LineNumberAt(source_.Position() ? source_.Position() - 1 : 0);
}

bool DXFReader::ReportFailure(const char* procedure, int number, const std::string& text) {
  ReportError(procedure, kReaderModule, text, number);
  return false;
}

bool DXFReader::LoadEntity() {
  for (std::size_t i = 0; i < setCount_; ++i) GroupValues[setCodes_[i]] = {};
  setCount_ = 0;
  for (;;) {
    std::string_view codeLine = source_.ReadLine();
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
        comma == std::string_view::npos ? source_.ReadLine() : codeLine.substr(comma + 1);
    if (GroupValues[code].data() == nullptr) setCodes_[setCount_++] = uint8_t(code);
    GroupValues[code] = value.data() ? value : std::string_view("", 0);
  }
}

double DXFReader::Num(int code) const { return Val(GroupValues[code]); }
float DXFReader::Sng(int code) const { return CSng(Num(code)); }
int16_t DXFReader::Int16(int code) const { return CInt(Num(code)); }
int32_t DXFReader::Long(int code) const { return CLng(Num(code)); }
// Stored texts hold at most 100 characters (an MTEXT line 100 of its lines), so a value
// is decoded from its first kMaxTextBytes bytes only: a value line of gigabytes costs no
// copy of itself.
std::string DXFReader::Text(int code) const {
  return decoder_.Decode(GroupValues[code].substr(0, kMaxTextBytes));
}

// $EXTMIN and $EXTMAX: once a header extent is read the readers stop widening the extents,
// so the header wins even over entities that lie outside it.
bool DXFReader::ReadHeaderPoint(double& x, double& y) {
  LoadEntity();
  x = Sng(10);
  y = Sng(20);
  NoExtentsUpdate = true;
  return true;
}

bool DXFReader::DXFMinExtents() { return ReadHeaderPoint(drawing_.ExtMinX, drawing_.ExtMinY); }
bool DXFReader::DXFMaxExtents() { return ReadHeaderPoint(drawing_.ExtMaxX, drawing_.ExtMaxY); }

// The first LAYER line is the layer table's own name; every later one is an entry.
bool DXFReader::FirstLayer() {
  if (firstLayer_) {
    firstLayer_ = false;
    return true;
  }
  return DXFLayers();
}

bool DXFReader::DXFLayers() {
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
