// Blocks, inserts, dimensions, tables and layouts of the modern profile. A block
// definition keeps its own rows and references to the blocks it inserts; an insert in
// model space expands the whole tree with one composed transform, resolving "by block"
// and layer 0 at every level.
#include <algorithm>
#include <cctype>
#include <cmath>

#include "dxf/model/colors.h"
#include "dxf/model/dimension_drawing.h"
#include "dxf/model/extents.h"
#include "dxf/model/mtext.h"
#include "dxf/model/placement.h"
#include "dxf/modern/modern_reader.h"
#include "support/log.h"
#include "support/numbers.h"
#include "support/text_decode.h"

namespace dxfimport {
namespace {

constexpr int kMaxDepth = 32;

int64_t SaturatingAdd(int64_t a, int64_t b) {
  int64_t sum = 0;
  return __builtin_add_overflow(a, b, &sum) ? INT64_MAX : sum;
}

int64_t SaturatingMul(int64_t a, int64_t b) {
  int64_t product = 0;
  return __builtin_mul_overflow(a, b, &product) ? INT64_MAX : product;
}

// The transform of copy (column, row) of an insert's grid.
Affine CopyTransform(const InsertRef& ref, int32_t column, int32_t row) {
  return ref.Frame * Affine::Translate(column * ref.ColumnSpacing, row * ref.RowSpacing) * ref.Local;
}

template <class Row>
int32_t& LayerField(Row& row) {
  if constexpr (std::is_same_v<Row, AttribEntity>)
    return row.Text.Layer;
  else
    return row.Layer;
}

template <class Row>
int32_t& ColorField(Row& row) {
  if constexpr (std::is_same_v<Row, AttribEntity>)
    return row.Text.Color;
  else
    return row.Color;
}

// The row's opacity, or null for kinds that have none.
template <class Row>
uint8_t* AlphaField(Row& row) {
  if constexpr (std::is_same_v<Row, AttribEntity>)
    return &row.Text.Alpha;
  else if constexpr (requires { row.Alpha; })
    return &row.Alpha;
  else
    return nullptr;
}

}  // namespace

// A block's row as its insert draws it: layer 0 becomes the insert's layer; "by block"
// the insert's colour, line type and line weight; "by layer" the line type and weight of
// the row's final layer.
template <class Row>
void ModernReader::Restyle(Row& row, const Style& inherited) {
  int32_t& layer = LayerField(row);
  if (layer == LayerZero()) layer = inherited.Layer;
  int32_t& color = ColorField(row);
  if (color == kColorByBlock) color = inherited.Color;
  const dxfimport::LayerEntry* own =
      layer >= 1 && layer <= drawing_.LayerCount() ? &drawing_.Layers[std::size_t(layer - 1)] : nullptr;
  if constexpr (requires { row.LineType; }) {
    if (row.LineType == kLineTypeByBlock)
      row.LineType = inherited.LineType;
    else if (row.LineType == kLineTypeByLayer)
      row.LineType = own ? own->LineType : 0;
  }
  if constexpr (requires { row.LineWeight; }) {
    if (row.LineWeight == kWeightByBlock)
      row.LineWeight = inherited.LineWeight;
    else if (row.LineWeight == kWeightByLayer)
      row.LineWeight = own ? own->LineWeight : kWeightDefault;
  }
  uint8_t* alpha = AlphaField(row);
  if (alpha && *alpha == kAlphaByBlock)
    *alpha = inherited.Alpha;
  else if (alpha && *alpha == kAlphaByLayer)
    *alpha = own ? own->Alpha : kOpaque;
}

template <class Row>
void ModernReader::Emit(const Row& row) {
  // A row of a transparent entity is stored with the entity's opacity (a copy only then).
  if constexpr (std::is_same_v<Row, AttribEntity> || requires { row.Alpha; }) {
    if (entityAlpha_ != kOpaque) {
      Row withAlpha = row;
      *AlphaField(withAlpha) = entityAlpha_;
      return Store(withAlpha);
    }
  }
  Store(row);
}

template <class Row>
void ModernReader::Store(const Row& row) {
  if (output_)
    drawing_.AddBlockRecord(output_, row);
  else
    drawing_.Add(row);
}

template void ModernReader::Emit(const LineEntity&);
template void ModernReader::Emit(const PolySegment&);
template void ModernReader::Emit(const TextEntity&);
template void ModernReader::Emit(const ArcEntity&);
template void ModernReader::Emit(const SolidEntity&);
template void ModernReader::Emit(const AttribEntity&);
template void ModernReader::Emit(const HatchEntity&);
template void ModernReader::Emit(const EllipseEntity&);
template void ModernReader::Emit(const PointEntity&);
template void ModernReader::Emit(const ImageEntity&);
template void ModernReader::Emit(const RayEntity&);
template void ModernReader::Emit(const MTextEntity&);
template void ModernReader::Emit(const InsertRef&);

// A BLOCK starts a definition; an insert met earlier may have made its row already.
bool ModernReader::DXFBlock() {
  std::string name(Trim(CutChars(Text(2), 50)));
  int32_t row = drawing_.FindBlock(name);
  if (!row || drawing_.Blocks[std::size_t(row - 1)].Defined) {
    BlockEntry entry;
    entry.Name = name;
    row = drawing_.AddBlock(std::move(entry));
  }
  BlockEntry& block = drawing_.Blocks[std::size_t(row - 1)];
  block.Defined = true;
  block.BaseX = Num(10), block.BaseY = Num(20);
  NoteSortableBlock(row);
  block_ = output_ = row;
  toBlock_ = Affine::Translate(-block.BaseX, -block.BaseY);
  // An external reference (bit 2; an overlay, bit 3, is drawn the same): its drawing's
  // model space is the content.
  if (Whole(70, 0, 0, 0xFFFF) & 4) LoadExternalReference(row, std::string(Trim(Text(1)).substr(0, 4096)));
  return true;
}

bool ModernReader::DXFEndBlock() {
  skippingBlock_ = false;
  block_ = output_ = 0;
  toBlock_ = {};
  return true;
}

// The row of a block named by an insert; an insert of a block not yet defined makes the
// row that the definition fills later.
int32_t ModernReader::BlockRow(std::string_view name) {
  std::string key(Trim(CutChars(name, 50)));
  if (int32_t row = drawing_.FindBlock(key)) return row;
  BlockEntry entry;
  entry.Name = key;
  return drawing_.AddBlock(std::move(entry));
}

// INSERT (and MINSERT): the block 2 at 10/20/30 in the object coordinates of 210, turned
// by 50, scaled by 41/42, with 70 columns and 71 rows spaced 44 and 45 apart.
InsertRef ModernReader::ReadInsertRef(int32_t block, const Style& style) {
  InsertRef ref;
  ref.Block = block;
  const double sx = Num(41, 1), sy = Num(42, 1);
  ref.Frame =
      OcsToWorld(Extrusion(), Num(30)) * Affine::Translate(Num(10), Num(20)) * Affine::Rotate(Num(50));
  ref.Local = Affine::Scaling(sx == 0 ? 1 : sx, sy == 0 ? 1 : sy);
  ref.Columns = Whole(70, 1, 1, 32767), ref.Rows = Whole(71, 1, 1, 32767);
  ref.ColumnSpacing = Num(44), ref.RowSpacing = Num(45);
  ref.Layer = style.Layer, ref.Color = style.Color;
  ref.LineType = style.LineType, ref.LineWeight = style.LineWeight;
  ref.Alpha = style.Alpha;
  return ref;
}

bool ModernReader::DXFInsert() {
  const Style style = ReadStyle();
  attribOwner_ = style;
  InsertRef ref = ReadInsertRef(BlockRow(Text(2)), style);
  if (!ref.Frame.IsFinite() || !ref.Local.IsFinite()) return true;
  const std::size_t first = drawing_.DrawSeq.size();
  PlaceInsert(ref);
  NoteClippable(ref, first);
  return true;
}

// An insert inside a definition is kept as a reference; one in model space (or paper
// space) is expanded now.
void ModernReader::PlaceInsert(const InsertRef& ref) {
  if (output_) {
    Emit(Placed(ref, toBlock_));
    return;
  }
  if (!InsertAllowed(ref.Block) || MeasureBlock(ref.Block, 0).rows == 0 || !WithinBudget(ref)) return;
  Style inherited{ref.Layer, ref.Color == 0 ? (kColorOfLayer | ref.Layer) : ref.Color, ref.LineType,
                  ref.LineWeight, ref.Alpha};
  for (int32_t r = 0; r < ref.Rows; ++r)
    for (int32_t c = 0; c < ref.Columns; ++c) ExpandBlock(ref.Block, CopyTransform(ref, c, r), inherited, 1);
}

// A block may not be inserted into itself (through any chain of inserts), nor be nested
// deeper than 32 levels; such an insert is logged (once per block) and skipped.
bool ModernReader::InsertAllowed(int32_t block) {
  BlockEntry& inserted = drawing_.Blocks[std::size_t(block - 1)];
  auto refuse = [&](const std::string& why) {
    if (!inserted.Refused) LogCritical("Block " + inserted.Name + why);
    inserted.Refused = true;
    Note(why.starts_with(" inserts itself") ? "block that inserts itself: " + inserted.Name
                                            : "block nested more than 32 levels: " + inserted.Name);
    return false;
  };
  if (std::find(expanding_.begin(), expanding_.end(), block) != expanding_.end())
    return refuse(" inserts itself; the insert is skipped.");
  if (int(expanding_.size()) + MeasureBlock(block, 0).height >= kMaxDepth)
    return refuse(" is nested more than 32 levels deep; the insert is skipped.");
  return true;
}

// Whether the rows an insert adds (every copy of its grid, every nested insert) keep the
// drawing within its entity budget; an insert that would not is left out whole, named in
// the log and the load report.
bool ModernReader::WithinBudget(const InsertRef& ref) {
  const int64_t adds = SaturatingMul(int64_t(ref.Columns) * ref.Rows, MeasureBlock(ref.Block, 0).rows);
  if (adds <= budget_ - int64_t(drawing_.StoredRows())) return true;
  const std::string& name = drawing_.Blocks[std::size_t(ref.Block - 1)].Name;
  const std::string layer = ref.Layer >= 1 && ref.Layer <= drawing_.LayerCount()
                                ? drawing_.Layers[std::size_t(ref.Layer - 1)].Name
                                : std::string("0");
  const std::string kind = "insert over the entity budget: " + name;
  const bool first = std::none_of(ctx_.outcome.Report.Entries().begin(), ctx_.outcome.Report.Entries().end(),
                                  [&](const ReportEntry& e) { return e.Kind == kind; });
  const std::string notice = "Block " + name + " on layer " + layer + " (" + CountText(adds) +
                             " entities) left out: over the entity budget";
  if (first) LogCritical(notice);
  Note(kind, notice);
  return false;
}

// The rows one insert of a block adds and the depth of its nesting, counted once per
// block. A block met again while it is being counted closes a cycle and counts nothing
// there (its expansion skips that insert too).
ModernReader::Measure ModernReader::MeasureBlock(int32_t block, int depth) {
  BlockEntry& b = drawing_.Blocks[std::size_t(block - 1)];
  if (b.ExpandedRows >= 0) return {b.ExpandedRows, b.Height};
  if (b.Counting) return {};
  if (depth > kMaxDepth) return {0, kMaxDepth + 1};
  b.Counting = true;
  Measure m;
  m.rows = int64_t(b.Content.DrawSeq.size() - b.Content.Inserts.size());
  for (const InsertRef& ref : b.Content.Inserts) {
    const Measure child = MeasureBlock(ref.Block, depth + 1);
    m.rows = SaturatingAdd(m.rows, SaturatingMul(int64_t(ref.Columns) * ref.Rows, child.rows));
    m.height = std::max(m.height, child.height + 1);
  }
  BlockEntry& again = drawing_.Blocks[std::size_t(block - 1)];
  again.Counting = false;
  if (m.height <= kMaxDepth) again.ExpandedRows = m.rows, again.Height = m.height;
  return m;
}

// A row of a block placed into the drawing's tables.
template <class Row>
void ModernReader::ExpandRow(const Row& row, const Affine& place) {
  PlaceInto(row, place, [this](const auto& placed) { drawing_.Add(placed); });
  Tick();
}

// Copies the block's rows into the drawing's tables through `m`: layer 0 takes the
// insert's layer, "by block" the insert's colour, line type and line weight, "by layer"
// the line type and line weight of the row's (final) layer.
void ModernReader::ExpandBlock(int32_t block, const Affine& m, const Style& inherited, int depth) {
  const BlockEntry& b = drawing_.Blocks[std::size_t(block - 1)];
  const Affine& place = m;  // the rows are relative to the block's base point already
  expanding_.push_back(block);
  const EntityTables& content = b.Content;
  const std::size_t expansion = BeginExpansion(block);
  std::size_t at = 0;
  for (const SeqEntry& entry : content.DrawSeq) {
    if (expansion != kNoExpansion) NoteExpansion(expansion, at++);
    if (entry.Kind == kKindClip) {
      PlaceClip(b.Clips, entry.Index, place);
      continue;
    }
    VisitRow(content, entry, [&](const auto& stored) {
      using Row = std::decay_t<decltype(stored)>;
      if constexpr (std::is_same_v<Row, InsertRef>) {
        if (depth >= kMaxDepth || !InsertAllowed(stored.Block) || MeasureBlock(stored.Block, 0).rows == 0 ||
            !WithinBudget(stored))
          return;
        InsertRef ref = stored;
        Restyle(ref, inherited);
        Style child{ref.Layer, ref.Color == 0 ? (kColorOfLayer | ref.Layer) : ref.Color, ref.LineType,
                    ref.LineWeight, ref.Alpha};
        // A clipped insert expanded before its clip is known: its rows are noted.
        const uint64_t clip = clipsResolved_ ? 0 : NestedClip(block, entry.Index);
        for (int32_t r = 0; r < ref.Rows; ++r)
          for (int32_t c = 0; c < ref.Columns; ++c) {
            const std::size_t from = drawing_.DrawSeq.size();
            const Affine copy = place * CopyTransform(ref, c, r);
            ExpandBlock(ref.Block, copy, child, depth + 1);
            if (clip && drawing_.DrawSeq.size() > from) {
              const BlockEntry& inner = drawing_.Blocks[std::size_t(ref.Block - 1)];
              clippable_.push_back({clip, copy * Affine::Translate(-inner.BaseX, -inner.BaseY), from,
                                    drawing_.DrawSeq.size()});
            }
          }
      } else {
        Row row = stored;
        Restyle(row, inherited);
        if constexpr (std::is_same_v<Row, SolidEntity>) {
          const uint8_t alpha = row.Layer >= 1 && row.Layer <= drawing_.LayerCount()
                                    ? drawing_.Layers[std::size_t(row.Layer - 1)].Alpha
                                    : kOpaque;
          if (alpha != kOpaque) {
            HatchEntity fill = SolidFill(row);
            fill.Alpha = alpha;
            return ExpandRow(fill, place);
          }
        }
        ExpandRow(row, place);
      }
    });
  }
  if (expansion != kNoExpansion) expansions_[expansion].end = drawing_.DrawSeq.size();
  expanding_.pop_back();
}

// DIMENSION: its anonymous block (2) as an insert at the origin; a dimension without a
// block is drawn from its definition points.
bool ModernReader::DXFDimension() {
  const Style style = ReadStyle();
  const int32_t block = drawing_.FindBlock(std::string(Trim(CutChars(Text(2), 50))));
  if (block && drawing_.Blocks[std::size_t(block - 1)].Defined &&
      !drawing_.Blocks[std::size_t(block - 1)].Content.DrawSeq.empty()) {
    InsertRef ref;
    ref.Block = block;
    ref.Layer = style.Layer, ref.Color = style.Color, ref.LineType = style.LineType,
    ref.LineWeight = style.LineWeight;
    PlaceInsert(ref);
    return true;
  }
  EmitDimension(DrawDimension(ReadDimensionInput(), DimStyleOf(std::string(Trim(Text(3))))), style);
  return true;
}

// The definition points of a DIMENSION, each from the first pair of its codes.
DimensionInput ModernReader::ReadDimensionInput() const {
  DimensionInput in;
  const int32_t flags = Whole(70, 0, 0, 255);
  in.type = flags & 7;
  in.ordinateX = (flags & 64) != 0;
  in.rotation = Num(50);
  in.text = Text(1);
  PointD* points[7] = {&in.p10, &in.p11, nullptr, &in.p13, &in.p14, &in.p15, &in.p16};
  bool seen[7][2] = {};
  for (const auto& [code, value] : pairs_) {
    const int axis = code >= 20 && code <= 26 ? 1 : code >= 10 && code <= 16 ? 0 : -1;
    if (axis < 0) continue;
    const int which = code % 10;
    PointD* point = points[which];
    if (!point || seen[which][axis]) continue;
    seen[which][axis] = true;
    (axis ? point->y : point->x) = Val(value);
  }
  return in;
}

// A dimension style by name: the header's dimension variables, then the entry's own.
DimStyle ModernReader::DimStyleOf(const std::string& name) const {
  auto found = dimStyles_.find(name);
  return found != dimStyles_.end() ? found->second : headerDimStyle_;
}

void ModernReader::EmitDimension(const DimensionPicture& picture, const Style& style) {
  for (const auto& [from, to] : picture.lines)
    Emit(Placed(
        LineEntity{from.x, from.y, to.x, to.y, style.Layer, style.Color, style.LineType, style.LineWeight},
        toBlock_));
  for (const DimensionPicture::Arc& a : picture.arcs) {
    ArcEntity arc{a.centre.x,  a.centre.y,  a.radius,       a.startDegrees,  a.endDegrees,
                  style.Layer, style.Color, style.LineType, style.LineWeight};
    PlaceInto(arc, toBlock_, [this](const auto& row) { Emit(row); });
  }
  for (const auto& t : picture.arrows) {
    SolidEntity solid{t[0].x, t[0].y, t[1].x, t[1].y,      t[2].x,
                      t[2].y, t[2].x, t[2].y, style.Layer, style.Color};
    Emit(Placed(solid, toBlock_));
  }
  if (picture.text.empty() || !(picture.textHeight > 0)) return;
  TextEntity text = StyledText(TextMarkup(picture.text), picture.textHeight, style, StyleRow(""));
  const double turn = Radians(picture.textRotation);
  text.X = picture.textAt.x + std::sin(turn) * picture.textHeight / 2;
  text.Y = picture.textAt.y - std::cos(turn) * picture.textHeight / 2;
  text.Rotation = picture.textRotation;
  text.HorzJustify = 1;
  Emit(Placed(text, toBlock_));
}

// ACAD_TABLE: its anonymous block (2) at the insertion point (10/20), along the
// direction 11/21.
bool ModernReader::DXFTable() {
  const Style style = ReadStyle();
  std::string_view name;
  PointD at, direction{1, 0};
  bool haveAt = false, haveDirection = false;
  for (const auto& [code, value] : pairs_) {
    if (code == 2 && name.empty())
      name = value;
    else if (code == 10 && !haveAt)
      at.x = Val(value);
    else if (code == 20 && !haveAt)
      at.y = Val(value), haveAt = true;
    else if (code == 11 && !haveDirection)
      direction.x = Val(value);
    else if (code == 21 && !haveDirection)
      direction.y = Val(value), haveDirection = true;
  }
  if (name.empty()) return true;
  InsertRef ref;
  ref.Block = BlockRow(ctx_.decoder.Decode(name));
  ref.Frame = Affine::Translate(at.x, at.y) * Affine::Rotate(Degrees(std::atan2(direction.y, direction.x)));
  ref.Layer = style.Layer, ref.Color = style.Color, ref.LineType = style.LineType,
  ref.LineWeight = style.LineWeight;
  if (ref.Frame.IsFinite()) PlaceInsert(ref);
  return true;
}

}  // namespace dxfimport
