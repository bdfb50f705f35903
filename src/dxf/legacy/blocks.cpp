// BLOCK definitions, INSERTs (with the pending ones) and DIMENSIONs of the legacy
// profile. Blocks are expanded while reading: the drawing holds no references, only the
// entities every INSERT adds.
#include <algorithm>
#include <cmath>
#include <new>

#include "dxf/legacy/legacy_reader.h"
#include "dxf/model/rotation.h"
#include "dxf/model/style_maps.h"
#include "support/log.h"
#include "support/numbers.h"
#include "support/runtime_error.h"
#include "support/text_decode.h"

namespace dxfimport {
namespace {

// Where one point of a block lands for an insert: scaled, turned about the block origin,
// then moved to the insertion point; single precision at every step.
struct Placement {
  double sx = 1, sy = 1;
  float rotation = 0;
  double dx = 0, dy = 0;

  void Place(double& x, double& y) const {
    PointF p{CSng(x * sx), CSng(y * sy)};
    if (rotation != 0) RotatePointNormal(p, rotation);
    x = CSng(p.x + dx), y = CSng(p.y + dy);
  }
  template <class Segment>
  void PlaceSegment(Segment& s) const {
    PointPair p{CSng(s.X1 * sx), CSng(s.Y1 * sy), CSng(s.X2 * sx), CSng(s.Y2 * sy)};
    if (rotation != 0) RotateRectNormal(p, rotation);
    s.X1 = CSng(p.x1 + dx), s.Y1 = CSng(p.y1 + dy);
    s.X2 = CSng(p.x2 + dx), s.Y2 = CSng(p.y2 + dy);
  }
};

// Scales, turns and moves every point of a record; sizes and angles follow the scale
// and the rotation (mirrored arcs swap and reflect their angles).
void PlaceRecord(LineEntity& e, const Placement& m) { m.PlaceSegment(e); }
void PlaceRecord(PolySegment& e, const Placement& m) {
  m.PlaceSegment(e);
  e.Width = CSng(e.Width * std::abs(m.sx));
}
void PlaceRecord(TextEntity& e, const Placement& m) {
  m.Place(e.X, e.Y);
  e.Height = CSng(e.Height * m.sx);
  e.Rotation = CSng(e.Rotation + m.rotation);
}
void PlaceRecord(ArcEntity& e, const Placement& m) {
  m.Place(e.CenterX, e.CenterY);
  e.Radius = CSng(e.Radius * std::abs(m.sx));
  float start = float(e.StartAngle), end = float(e.EndAngle);
  if (m.sx < 0) start = CSng(180.0 - e.EndAngle), end = CSng(180.0 - e.StartAngle);
  if (m.sy < 0) std::tie(start, end) = std::pair(-end, -start);
  e.StartAngle = CSng(double(start) + m.rotation);
  e.EndAngle = CSng(double(end) + m.rotation);
}
void PlaceRecord(SolidEntity& e, const Placement& m) {
  m.Place(e.X1, e.Y1);
  m.Place(e.X2, e.Y2);
  m.Place(e.X3, e.Y3);
  m.Place(e.X4, e.Y4);
}

// The extents an added row widens: a segment's ends, a text's point, a circle's box, a
// solid's corners.
void Widen(Drawing& d, const LineEntity& e) { d.CheckExtents(e.X1, e.Y1, e.X2, e.Y2); }
void Widen(Drawing& d, const PolySegment& e) { d.CheckExtents(e.X1, e.Y1, e.X2, e.Y2); }
void Widen(Drawing& d, const TextEntity& e) { d.CheckExtents(e.X, e.Y, e.X, e.Y); }
void Widen(Drawing& d, const ArcEntity& e) {
  double r = e.Radius;
  d.CheckExtents(e.CenterX - r, e.CenterY - r, e.CenterX + r, e.CenterY + r);
}
void Widen(Drawing& d, const SolidEntity& e) {
  d.CheckExtents(e.X1, e.Y1, e.X2, e.Y2);
  d.CheckExtents(e.X4, e.Y4, e.X3, e.Y3);
}

}  // namespace

template <class Row>
void LegacyReader::Store(Row record) {
  if (InBlock) {
    const BlockEntry& base = drawing_.Blocks[currentBlock_ - 1];
    PlaceRecord(record, {1, 1, 0, -base.BaseX, -base.BaseY});
  }
  Emit(record);
}

template <class Row>
void LegacyReader::Emit(const Row& record) {
  if (InBlock)
    drawing_.AddBlockRecord(outputBlock_, record);
  else
    drawing_.Add(record);
}

template void LegacyReader::Store(LineEntity);
template void LegacyReader::Store(PolySegment);
template void LegacyReader::Store(TextEntity);
template void LegacyReader::Store(ArcEntity);
template void LegacyReader::Store(SolidEntity);

bool LegacyReader::DXFBlock() {
  LoadEntity();
  BlockEntry block;
  block.Name = std::string(Trim(CutChars(Text(2), 50)));
  block.BaseX = Sng(10);
  block.BaseY = Sng(20);
  currentBlock_ = outputBlock_ = drawing_.AddBlock(std::move(block));
  InBlock = true;
  return true;
}

bool LegacyReader::EndBlock() {
  InBlock = false;
  outputBlock_ = 0;
  return true;
}

bool LegacyReader::DXFInsertFromFile() { return DXFInsert(0); }

// Index 0 reads an INSERT from the file; index i > 0 resolves pending insert i into the
// block it was met in.
bool LegacyReader::DXFInsert(int32_t index) {
  if (index > 0) {
    const PendingInsert pending = drawing_.PendingInserts[std::size_t(index - 1)];
    InBlock = true;
    outputBlock_ = pending.Container;
    struct EndOfReplay {
      LegacyReader& r;
      ~EndOfReplay() { r.InBlock = false, r.outputBlock_ = 0; }
    } endOfReplay{*this};
    int32_t block = drawing_.FindBlock(pending.BlockName);
    if (block && pending.Container && PendingInsertAllowed(block)) {
      Replay(block,
             {pending.X, pending.Y, float(pending.Rotation), pending.ScaleX, pending.ScaleY, pending.Layer});
    }
    return true;
  }

  LoadEntity();
  std::string name = Text(2);
  InsertTransform t;
  t.Layer = currentInsertLayer_ = drawing_.LayerIndex(GroupValues[8]);
  t.X = Sng(10);
  t.Y = Sng(20);
  t.Rotation = Sng(50);
  float scaleX = Sng(41), scaleY = Sng(42);
  t.ScaleX = scaleX == 0 ? 1.0f : scaleX;
  t.ScaleY = scaleY == 0 ? 1.0f : scaleY;

  if (int32_t block = drawing_.FindBlock(name)) {
    if (InBlock) {
      t.X = CSng(RelX(t.X));
      t.Y = CSng(RelY(t.Y));
    }
    Replay(block, t);
    return true;
  }
  PendingInsert pending;
  pending.Container = currentBlock_;
  pending.BlockName = std::string(CutChars(name, 50));
  pending.Layer = t.Layer;
  pending.X = t.X, pending.Y = t.Y;
  pending.Rotation = t.Rotation;
  pending.ScaleX = t.ScaleX, pending.ScaleY = t.ScaleY;
  drawing_.PendingInserts.push_back(std::move(pending));
  return true;
}

// At the ENTITIES line every pending insert not yet resolved is replayed, in order.
bool LegacyReader::ResolvePendingInserts() {
  bool goOn = true;
  for (; pendingResolved_ < drawing_.PendingInsertCount(); ++pendingResolved_) {
    goOn = ctx_.Run("DXFInsert", [this] { return DXFInsert(pendingResolved_ + 1); });
  }
  return goOn;
}

// A dimension is drawn from its anonymous block, lines and texts only, where the block
// was defined: the records are relative to its base point, which is added back.
bool LegacyReader::DXFDimension() {
  LoadEntity();
  std::string name = Text(2);
  ColorMap(Int16(62));
  InsertTransform t;
  t.Layer = drawing_.LayerIndex(GroupValues[8]);
  Num(12), Num(22), Long(70);
  int32_t block = drawing_.FindBlock(name);
  if (!block) {
    LogCritical(
        std::string(Trim(name)) +
        " has been referenced in the DXF file but a definition of this block was not found in the header.");
    return true;
  }
  t.X = drawing_.Blocks[block - 1].BaseX;
  t.Y = drawing_.Blocks[block - 1].BaseY;
  if (InBlock) {
    t.X = RelX(t.X);
    t.Y = RelY(t.Y);
  }
  Replay(block, t, ReplayKinds::LinesAndTexts);
  return true;
}

// A pending insert may not insert the block it is resolved into, nor nest deeper than
// 32 levels; such an insert is logged and skipped.
bool LegacyReader::PendingInsertAllowed(int32_t block) {
  constexpr int32_t kMaxDepth = 32;
  BlockEntry& inserted = drawing_.Blocks[std::size_t(block - 1)];
  if (block == outputBlock_) {
    LogCritical("Block " + inserted.Name + " inserts itself; the insert is skipped.");
    return false;
  }
  if (inserted.Depth + 1 > kMaxDepth) {
    LogCritical("Block " + inserted.Name + " is nested more than 32 levels deep; the insert is skipped.");
    return false;
  }
  int32_t& depth = drawing_.Blocks[std::size_t(outputBlock_ - 1)].Depth;
  depth = std::max(depth, inserted.Depth + 1);
  return true;
}

void LegacyReader::Replay(int32_t block, const InsertTransform& t, ReplayKinds kinds) {
  const std::size_t count = drawing_.Blocks[block - 1].Content.DrawSeq.size();
  for (std::size_t k = 0; k < count; ++k) {
    const SeqEntry entry = drawing_.Blocks[block - 1].Content.DrawSeq[k];
    if (kinds == ReplayKinds::LinesAndTexts && entry.Kind != kKindLine && entry.Kind != kKindText) continue;
    // A copy: the block may be the one being written (a block that inserts itself).
    VisitRow(drawing_.Blocks[block - 1].Content, entry, [&](const auto& stored) {
      using Row = std::decay_t<decltype(stored)>;
      if constexpr (std::is_same_v<Row, LineEntity> || std::is_same_v<Row, PolySegment> ||
                    std::is_same_v<Row, TextEntity> || std::is_same_v<Row, ArcEntity> ||
                    std::is_same_v<Row, SolidEntity>) {
        Row record = stored;
        PlaceRecord(record, {t.ScaleX, t.ScaleY, t.Rotation, t.X, t.Y});
        if (record.Layer == 1) record.Layer = t.Layer;
        if (!InBlock && !NoExtentsUpdate) Widen(drawing_, record);
        Emit(record);
      }
    });
  }
}

}  // namespace dxfimport
