#include "dxf/drawing.h"

#include "support/numbers.h"
#include "support/runtime_error.h"
#include "support/text_decode.h"

namespace dxfimport {

bool Drawing::InitDrawing(bool clearAll) {
  if (clearAll) {
    Lines = {};
    PolySegs = {};
    Texts = {};
    Arcs = {};
    Solids = {};
    Attribs = {};
    Hatches = {};
    DashPatterns = {};
    BulgesAsArcs = false;
    Layers = {};
    DrawSeq = {};
    PendingInserts = {};
    layerRows_.clear();
    layersTrimmed_ = 0;
    storedRows_ = 0;
  }
  Blocks = {};
  blockRows_.clear();
  return true;
}

void Drawing::CheckExtents(double x1, double y1, double x2, double y2) {
  auto lower = [](float& extent, double v) { if (v < extent) extent = CSng(v); };
  auto raise = [](float& extent, double v) { if (v > extent) extent = CSng(v); };
  lower(ExtMinX, x1);
  lower(ExtMinX, x2);
  raise(ExtMaxX, x1);
  raise(ExtMaxX, x2);
  lower(ExtMinY, y1);
  lower(ExtMinY, y2);
  raise(ExtMaxY, y1);
  raise(ExtMaxY, y2);
}

void Drawing::CheckExtentsOf(const ArcEntity& e) {
  double r = e.Radius;
  CheckExtents(e.CenterX - r, e.CenterY - r, e.CenterX + r, e.CenterY + r);
}

void Drawing::CheckExtentsOf(const SolidEntity& e) {
  CheckExtents(e.X1, e.Y1, e.X2, e.Y2);
  CheckExtents(e.X4, e.Y4, e.X3, e.Y3);
}

void Drawing::CheckExtentsOf(const HatchEntity& e) {
  for (const PointF& p : e.Points) CheckExtents(p.x, p.y, p.x, p.y);
}

void Drawing::CountRow() {
  if (++storedRows_ > rowLimit_) throw RunTimeError(kErrOutOfMemory);
}

namespace {

template <class Row>
void AppendRow(std::vector<Row>& table, std::vector<SeqEntry>& seq, int32_t kind, const Row& row) {
  table.push_back(row);
  seq.push_back({kind, int32_t(table.size())});
}

}  // namespace

void Drawing::AddLine(const LineEntity& row) { CountRow(); AppendRow(Lines, DrawSeq, kKindLine, row); }
void Drawing::AddPolySegment(const PolySegment& row) { CountRow(); AppendRow(PolySegs, DrawSeq, kKindPolySeg, row); }
void Drawing::AddText(const TextEntity& row) { CountRow(); AppendRow(Texts, DrawSeq, kKindText, row); }
void Drawing::AddArc(const ArcEntity& row) { CountRow(); AppendRow(Arcs, DrawSeq, kKindArc, row); }
void Drawing::AddSolid(const SolidEntity& row) { CountRow(); AppendRow(Solids, DrawSeq, kKindSolid, row); }
void Drawing::AddAttrib(const AttribEntity& row) { CountRow(); AppendRow(Attribs, DrawSeq, kKindAttrib, row); }
void Drawing::AddHatch(const HatchEntity& row) { CountRow(); AppendRow(Hatches, DrawSeq, kKindHatch, row); }

void Drawing::AddLayer(LayerEntry entry) {
  CountRow();
  layerRows_.try_emplace(std::string(Trim(entry.Name)), int32_t(Layers.size() + 1));
  Layers.push_back(std::move(entry));
}

int32_t Drawing::LayerIndex(std::string_view name) {
  constexpr std::size_t kLastRow = 32767;  // the search counts rows in 16 bits
  auto found = layerRows_.find(name);
  std::size_t row = found != layerRows_.end() ? std::size_t(found->second) : 0;
  std::size_t searched = row ? row : Layers.size();
  for (; layersTrimmed_ < std::min(searched, kLastRow); ++layersTrimmed_) {
    std::string& stored = Layers[layersTrimmed_].Name;
    stored = std::string(Trim(stored));
  }
  if (row && row <= kLastRow) return int32_t(row);
  if (Layers.size() > kLastRow) throw RunTimeError(kErrOverflow);
  return 1;
}

int32_t Drawing::LayerState(int32_t index) const {
  if (index < 1 || index > LayerCount()) throw RunTimeError(kErrSubscript);
  return Layers[index - 1].IsOn;
}

int32_t Drawing::AddBlock(BlockEntry entry) {
  CountRow();
  int32_t row = int32_t(Blocks.size() + 1);
  blockRows_.try_emplace(entry.Name, row);
  Blocks.push_back(std::move(entry));
  return row;
}

int32_t Drawing::FindBlock(std::string_view name) const {
  auto found = blockRows_.find(name);
  return found == blockRows_.end() ? 0 : found->second;
}

void Drawing::AddBlockRecord(int32_t block, BlockRecord record) {
  CountRow();
  Blocks.at(std::size_t(block - 1)).Records.push_back(std::move(record));
}

}  // namespace dxfimport
