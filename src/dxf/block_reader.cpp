// BLOCK definitions, INSERTs (with the pending ones) and DIMENSIONs. Blocks are expanded
// while reading: the drawing holds no references, only the entities every INSERT adds.
#include <algorithm>
#include <cctype>
#include <cmath>
#include <new>

#include "dxf/reader.h"
#include "dxf/rotation.h"
#include "dxf/style_maps.h"
#include "support/log.h"
#include "support/numbers.h"
#include "support/runtime_error.h"
#include "support/text_decode.h"

namespace dxfimport {
namespace {

template <class... Fs>
struct Overloaded : Fs... {
  using Fs::operator()...;
};
template <class... Fs>
Overloaded(Fs...) -> Overloaded<Fs...>;

// Where one point of a block lands for an insert: scaled, turned about the block origin,
// then moved to the insertion point.
PointF PlacePoint(float x, float y, double sx, double sy, float rotation, double dx, double dy) {
  PointF p{CSng(x * sx), CSng(y * sy)};
  if (rotation != 0) RotatePointNormal(p, rotation);
  return {CSng(p.x + dx), CSng(p.y + dy)};
}

template <class Segment>
void PlaceSegment(Segment& s, double sx, double sy, float rotation, double dx, double dy) {
  PointPair p{CSng(s.X1 * sx), CSng(s.Y1 * sy), CSng(s.X2 * sx), CSng(s.Y2 * sy)};
  if (rotation != 0) RotateRectNormal(p, rotation);
  s.X1 = CSng(p.x1 + dx), s.Y1 = CSng(p.y1 + dy);
  s.X2 = CSng(p.x2 + dx), s.Y2 = CSng(p.y2 + dy);
}

int32_t& LayerOf(BlockRecord& r) {
  return std::visit([](auto& e) -> int32_t& { return e.Layer; }, r);
}

int32_t& ColorOf(BlockRecord& r) {
  return std::visit([](auto& e) -> int32_t& { return e.Color; }, r);
}

struct Placement {
  double sx = 1, sy = 1;
  float rotation = 0;
  double dx = 0, dy = 0;
};

// Scales, turns and moves every point of a record; sizes and angles follow the scale
// and the rotation (mirrored arcs swap and reflect their angles).
void PlaceRecord(BlockRecord& record, const Placement& m) {
  auto place = [&m](float& x, float& y) {
    PointF p = PlacePoint(x, y, m.sx, m.sy, m.rotation, m.dx, m.dy);
    x = p.x, y = p.y;
  };
  std::visit(Overloaded{
                 [&](LineEntity& e) { PlaceSegment(e, m.sx, m.sy, m.rotation, m.dx, m.dy); },
                 [&](PolySegment& e) {
                   PlaceSegment(e, m.sx, m.sy, m.rotation, m.dx, m.dy);
                   e.Width = CSng(e.Width * std::abs(m.sx));
                   if (m.sx * m.sy < 0 && e.Bulge != 0) e.Bulge = -e.Bulge;  // a mirror turns the arc
                 },
                 [&](TextEntity& e) {
                   place(e.X, e.Y);
                   e.Height = CSng(e.Height * m.sx);
                   e.Rotation = CSng(double(e.Rotation) + m.rotation);
                 },
                 [&](ArcEntity& e) {
                   place(e.CenterX, e.CenterY);
                   e.Radius = CSng(e.Radius * std::abs(m.sx));
                   float start = e.StartAngle, end = e.EndAngle;
                   if (m.sx < 0) start = CSng(180.0 - e.EndAngle), end = CSng(180.0 - e.StartAngle);
                   if (m.sy < 0) std::tie(start, end) = std::pair(-end, -start);
                   e.StartAngle = CSng(double(start) + m.rotation);
                   e.EndAngle = CSng(double(end) + m.rotation);
                 },
                 [&](SolidEntity& e) {
                   place(e.X1, e.Y1);
                   place(e.X2, e.Y2);
                   place(e.X3, e.Y3);
                   place(e.X4, e.Y4);
                 },
                 [&](HatchEntity& e) {
                   for (PointF& p : e.Points) place(p.x, p.y);
                 },
             },
             record);
}

}  // namespace

void DXFReader::Store(BlockRecord record) {
  if (InBlock) {
    const BlockEntry& base = drawing_.Blocks[currentBlock_ - 1];
    PlaceRecord(record, {1, 1, 0, -double(base.BaseX), -double(base.BaseY)});
  }
  Emit(std::move(record));
}

void DXFReader::Emit(BlockRecord record) {
  if (InBlock) {
    drawing_.AddBlockRecord(outputBlock_, std::move(record));
    return;
  }
  std::visit(Overloaded{
                 [&](LineEntity& e) { drawing_.AddLine(e); },
                 [&](PolySegment& e) { drawing_.AddPolySegment(e); },
                 [&](TextEntity& e) { drawing_.AddText(e); },
                 [&](ArcEntity& e) { drawing_.AddArc(e); },
                 [&](SolidEntity& e) { drawing_.AddSolid(e); },
                 [&](HatchEntity& e) { drawing_.AddHatch(e); },
             },
             record);
}

void DXFReader::ExtendBy(const BlockRecord& record) {
  std::visit([this](const auto& e) { drawing_.CheckExtentsOf(e); }, record);
}

bool DXFReader::DXFBlock() {
  LoadEntity();
  return StoreBlock();
}

bool DXFReader::StoreBlock() {
  BlockEntry block;
  block.Name = std::string(Trim(CutChars(Text(2), 50)));
  block.BaseX = Sng(10);
  block.BaseY = Sng(20);
  // Paper-space layouts are not drawn: their blocks keep no entities (modern profile).
  std::string upper = block.Name;
  std::transform(upper.begin(), upper.end(), upper.begin(), [](unsigned char c) { return char(std::toupper(c)); });
  skipBlock_ = profile_ == ReadingProfile::Modern && upper.starts_with("*PAPER_SPACE");
  currentBlock_ = outputBlock_ = drawing_.AddBlock(std::move(block));
  InBlock = true;
  return true;
}

bool DXFReader::EndBlock() {
  InBlock = false;
  skipBlock_ = false;
  outputBlock_ = 0;
  return true;
}

bool DXFReader::DXFInsertFromFile() { return DXFInsert(0); }

// Index 0 reads an INSERT from the file; index i > 0 resolves pending insert i into the
// block it was met in.
bool DXFReader::DXFInsert(int32_t index) {
  if (index > 0) {
    const PendingInsert pending = drawing_.PendingInserts[std::size_t(index - 1)];
    InBlock = true;
    outputBlock_ = pending.Container;
    struct EndOfReplay {
      DXFReader& r;
      ~EndOfReplay() { r.InBlock = false, r.outputBlock_ = 0; }
    } endOfReplay{*this};
    int32_t block = drawing_.FindBlock(pending.BlockName);
    if (block && pending.Container && InsertAllowed(block)) {
      Replay(block, {pending.X, pending.Y, pending.Rotation, pending.ScaleX, pending.ScaleY, pending.Layer,
                     pending.Color});
    }
    return true;
  }

  LoadEntity();
  return StoreInsert();
}

bool DXFReader::StoreInsert() {
  std::string name = Text(2);
  InsertTransform t;
  t.Layer = currentInsertLayer_ = EntityLayer();
  t.X = Sng(10);
  t.Y = Sng(20);
  t.Rotation = Sng(50);
  float scaleX = Sng(41), scaleY = Sng(42);
  t.ScaleX = scaleX == 0 ? 1.0f : scaleX;
  t.ScaleY = scaleY == 0 ? 1.0f : scaleY;
  if (profile_ == ReadingProfile::Modern) t.Color = EntityColorValue();

  if (int32_t block = drawing_.FindBlock(name)) {
    if (profile_ == ReadingProfile::Modern && !InsertAllowed(block)) return true;
    if (InBlock) {
      t.X = CSng(RelX(t.X));
      t.Y = CSng(RelY(t.Y));
    }
    if (profile_ == ReadingProfile::Legacy) {
      Replay(block, t);
      return true;
    }
    // Modern: an INSERT with columns (70) and rows (71) is a MINSERT; its copies stand
    // 44 apart along the insert's turned X axis and 45 apart along its Y axis.
    const int32_t columns = std::clamp<int32_t>(Int16(70), 1, 1000), rows = std::clamp<int32_t>(Int16(71), 1, 1000);
    const double dx = Num(44), dy = Num(45), turn = t.Rotation * M_PI / 180.0;
    const double baseX = t.X, baseY = t.Y;
    for (int32_t r = 0; r < rows; ++r) {
      for (int32_t c = 0; c < columns; ++c) {
        double ox = c * dx, oy = r * dy;
        t.X = baseX + ox * std::cos(turn) - oy * std::sin(turn);
        t.Y = baseY + ox * std::sin(turn) + oy * std::cos(turn);
        Replay(block, t);
      }
    }
    return true;
  }
  PendingInsert pending;
  pending.Container = currentBlock_;
  pending.BlockName = std::string(CutChars(name, 50));
  pending.Layer = t.Layer;
  pending.X = float(t.X), pending.Y = float(t.Y);
  pending.Rotation = t.Rotation;
  pending.ScaleX = float(t.ScaleX), pending.ScaleY = float(t.ScaleY);
  pending.Color = t.Color;
  drawing_.PendingInserts.push_back(std::move(pending));
  return true;
}

// At the ENTITIES line every pending insert not yet resolved is replayed, in order.
bool DXFReader::ResolvePendingInserts() {
  bool goOn = true;
  for (; pendingResolved_ < drawing_.PendingInsertCount(); ++pendingResolved_) {
    try {
      goOn = DXFInsert(pendingResolved_ + 1);
    } catch (const RunTimeError& e) {
      goOn = ReportFailure("DXFInsert", e.number(), e.text());
    } catch (const std::bad_alloc&) {
      goOn = ReportFailure("DXFInsert", kErrOutOfMemory, RunTimeText(kErrOutOfMemory));
    }
  }
  return goOn;
}

// A dimension is drawn from its anonymous block, lines and texts only, where the block
// was defined: the records are relative to its base point, which is added back.
bool DXFReader::DXFDimension() {
  LoadEntity();
  return StoreDimension();
}

bool DXFReader::StoreDimension() {
  std::string name = Text(2);
  EntityColorValue();
  InsertTransform t;
  t.Layer = EntityLayer();
  Num(12), Num(22), Long(70);
  int32_t block = drawing_.FindBlock(name);
  if (!block) {
    LogCritical(std::string(Trim(name)) +
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

// Modern profile: a block may not be inserted into itself, nor nested deeper than 32
// levels; such an insert is logged and skipped.
bool DXFReader::InsertAllowed(int32_t block) {
  constexpr int32_t kMaxDepth = 32;
  BlockEntry& inserted = drawing_.Blocks[std::size_t(block - 1)];
  if (InBlock && block == outputBlock_) {
    LogCritical("Block " + inserted.Name + " inserts itself; the insert is skipped.");
    return false;
  }
  if (inserted.Depth + 1 > kMaxDepth) {
    LogCritical("Block " + inserted.Name + " is nested more than 32 levels deep; the insert is skipped.");
    return false;
  }
  if (InBlock && outputBlock_) {
    int32_t& depth = drawing_.Blocks[std::size_t(outputBlock_ - 1)].Depth;
    depth = std::max(depth, inserted.Depth + 1);
  }
  return true;
}

void DXFReader::Replay(int32_t block, const InsertTransform& t, ReplayKinds kinds) {
  const std::size_t count = drawing_.Blocks[block - 1].Records.size();
  for (std::size_t k = 0; k < count; ++k) {
    // A copy: the block may be the one being written (a block that inserts itself).
    BlockRecord record = drawing_.Blocks[block - 1].Records[k];
    if (kinds == ReplayKinds::LinesAndTexts && record.index() != 0 && record.index() != 2) continue;
    PlaceRecord(record, {t.ScaleX, t.ScaleY, t.Rotation, t.X, t.Y});
    int32_t& layer = LayerOf(record);
    if (layer == 1) layer = t.Layer;
    int32_t& color = ColorOf(record);
    if (color == kColorByBlock) color = t.Color;
    if (!InBlock && !NoExtentsUpdate) ExtendBy(record);
    Emit(std::move(record));
  }
}

}  // namespace dxfimport
