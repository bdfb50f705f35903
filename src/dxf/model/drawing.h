#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "dxf/model/geolocation.h"
#include "dxf/model/profile.h"
#include "dxf/model/records.h"
#include "support/runtime_error.h"

namespace dxfimport {

// Heterogeneous lookup by string_view in the name indexes.
struct NameHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view s) const { return std::hash<std::string_view>{}(s); }
};
using NameIndex = std::unordered_map<std::string, int32_t, NameHash, std::equal_to<>>;

// Entity tables in drawing order: the drawing's own, and each block definition's. Rows
// are numbered from 1 in every reference (SeqEntry Index, Layer); the vectors hold row n
// at position n - 1.
struct EntityTables {
  std::vector<LineEntity> Lines;
  std::vector<PolySegment> PolySegs;
  std::vector<TextEntity> Texts;
  std::vector<ArcEntity> Arcs;
  std::vector<SolidEntity> Solids;
  std::vector<AttribEntity> Attribs;
  std::vector<HatchEntity> Hatches;
  std::vector<EllipseEntity> Ellipses;
  std::vector<PointEntity> Points;
  std::vector<RayEntity> Rays;
  std::vector<MTextEntity> MTexts;
  std::vector<ImageEntity> Images;
  std::vector<InsertRef> Inserts;
  std::vector<SeqEntry> DrawSeq;

  // Appends a row to its table and its entry to the drawing order.
  void Append(const LineEntity& r) { Push(Lines, kKindLine, r); }
  void Append(const PolySegment& r) { Push(PolySegs, kKindPolySeg, r); }
  void Append(const TextEntity& r) { Push(Texts, kKindText, r); }
  void Append(const ArcEntity& r) { Push(Arcs, kKindArc, r); }
  void Append(const SolidEntity& r) { Push(Solids, kKindSolid, r); }
  void Append(const AttribEntity& r) { Push(Attribs, kKindAttrib, r); }
  void Append(const HatchEntity& r) { Push(Hatches, kKindHatch, r); }
  void Append(const EllipseEntity& r) { Push(Ellipses, kKindEllipse, r); }
  void Append(const PointEntity& r) { Push(Points, kKindPoint, r); }
  void Append(const RayEntity& r) { Push(Rays, kKindRay, r); }
  void Append(const MTextEntity& r) { Push(MTexts, kKindMText, r); }
  void Append(const ImageEntity& r) { Push(Images, kKindImage, r); }
  void Append(const InsertRef& r) { Push(Inserts, kKindInsert, r); }

  void Clear() { *this = EntityTables(); }

  // Grows each table's capacity to what the whole file will likely need, judged from the
  // share of it read so far (`readShare`, 0..1), so that the tables are not copied over
  // and over while they grow. At most `rowsLeft` more rows are expected. Capacity that is
  // never filled is never touched, so it costs no memory.
  void Anticipate(double readShare, std::size_t rowsLeft);

 private:
  template <class Row>
  void Push(std::vector<Row>& table, int32_t kind, const Row& row) {
    table.push_back(row);
    DrawSeq.push_back({kind, int32_t(table.size())});
  }
};

// Row `index` (1-based) of a table; Subscript out of range when there is none.
template <class Row>
Row& RowOf(std::vector<Row>& table, int32_t index) {
  if (index < 1 || std::size_t(index) > table.size()) throw RunTimeError(kErrSubscript);
  return table[std::size_t(index - 1)];
}
template <class Row>
const Row& RowOf(const std::vector<Row>& table, int32_t index) {
  if (index < 1 || std::size_t(index) > table.size()) throw RunTimeError(kErrSubscript);
  return table[std::size_t(index - 1)];
}

// Calls f with the row that a drawing-order entry names; kinds without a table call
// nothing and give false.
template <class Tables, class F>
bool VisitRow(Tables& t, const SeqEntry& e, F&& f) {
  switch (e.Kind) {
    case kKindLine:
      f(RowOf(t.Lines, e.Index));
      return true;
    case kKindPolySeg:
      f(RowOf(t.PolySegs, e.Index));
      return true;
    case kKindText:
      f(RowOf(t.Texts, e.Index));
      return true;
    case kKindArc:
      f(RowOf(t.Arcs, e.Index));
      return true;
    case kKindSolid:
      f(RowOf(t.Solids, e.Index));
      return true;
    case kKindAttrib:
      f(RowOf(t.Attribs, e.Index));
      return true;
    case kKindHatch:
      f(RowOf(t.Hatches, e.Index));
      return true;
    case kKindEllipse:
      f(RowOf(t.Ellipses, e.Index));
      return true;
    case kKindPoint:
      f(RowOf(t.Points, e.Index));
      return true;
    case kKindRay:
      f(RowOf(t.Rays, e.Index));
      return true;
    case kKindMText:
      f(RowOf(t.MTexts, e.Index));
      return true;
    case kKindImage:
      f(RowOf(t.Images, e.Index));
      return true;
    case kKindInsert:
      f(RowOf(t.Inserts, e.Index));
      return true;
    default:
      return false;
  }
}

struct BlockEntry {
  double BaseX = 0, BaseY = 0;  // groups 10, 20 of the BLOCK
  std::string Name;             // group 2, trimmed, at most 50 characters
  EntityTables Content;         // relative to the base point
  int32_t Depth = 0;            // levels of inserts expanded into it (legacy replay)
  // Modern profile:
  bool Defined = false;       // its BLOCK was read (an insert may name it before)
  int64_t ExpandedRows = -1;  // rows one insert of it adds (-1: not yet counted)
  int32_t Height = 0;         // levels of inserts nested in it
  bool Counting = false;      // being counted (a block that inserts itself)
  bool Refused = false;       // an insert of it was skipped (logged once)
  // The regions of the kKindClip entries of Content, in its coordinates: clipped block
  // references inside it, and the clips an external reference brought.
  std::vector<ClipRegion> Clips;
};

// An INSERT met inside a block definition before its block was defined.
struct PendingInsert {
  int32_t Container = 0;  // row of the block that was being defined (0: none)
  std::string BlockName;  // group 2, at most 50 characters
  int32_t Layer = 0;
  double X = 0, Y = 0;
  double Rotation = 0;
  double ScaleX = 1, ScaleY = 1;
};

// How points are drawn (modern profile): $PDMODE and $PDSIZE.
struct PointStyle {
  int32_t Mode = 0;  // 0 dot, 1 nothing, 2 plus, 3 cross, 4 tick; +32 circle, +64 square
  double Size = 0;   // drawing units; 0 means 5 % of the view's height, negative a percentage
};

// The one loaded drawing: flat entity tables, the draw sequence in file order, the layer
// and block tables and the extents.
class Drawing : public EntityTables {
 public:
  // Upper bound on stored rows (tables and block records together), so that a drawing
  // whose blocks multiply without end is stopped with the out-of-memory error.
  static constexpr std::size_t kRowLimit = 30'000'000;
  void SetRowLimit(std::size_t limit) { rowLimit_ = limit; }
  std::size_t RowLimit() const { return rowLimit_; }
  // Rows stored so far (tables and block records together).
  std::size_t StoredRows() const { return storedRows_; }
  // What a stored row costs on average with its draw-sequence entry and the tables'
  // spare capacity, for budgets in rows.
  static constexpr int64_t kBytesPerRow = 96;

  std::vector<LayerEntry> Layers;
  std::vector<BlockEntry> Blocks;
  std::vector<TextStyle> TextStyles;  // modern profile
  std::vector<PictureFile> Pictures;  // modern profile: the files of IMAGE rows
  std::vector<PendingInsert> PendingInserts;

  // Dash patterns of line types from the LTYPE table (modern profile), in drawing units:
  // positive a dash, negative a gap, 0 a dot. Pen style kFirstDashPattern + i draws
  // pattern i.
  static constexpr int32_t kFirstDashPattern = 16;
  std::vector<std::vector<double>> DashPatterns;
  PointStyle PointDisplay;
  // The regions that the rows after a kKindClip entry are clipped to, until
  // the entry that ends it: the viewports of a paper-space layout that show model space,
  // and the spatial filters of clipped block references. Clips nest.
  std::vector<ClipRegion> Clips;
  GeoData Geo;                     // model space's geographic location (modern profile)
  int16_t DefaultLineWeight = 25;  // $LWDEFAULT
  int16_t InsUnits = 0;            // $INSUNITS: the drawing unit (0: not said)

  double ExtMinX = 1e30f, ExtMinY = 1e30f, ExtMaxX = -1e30f, ExtMaxY = -1e30f;

  // Counts the loads into this drawing, so that what was derived from one load (text
  // layouts) is not taken for the next.
  uint64_t Generation() const { return generation_; }

  // The reading profile the tables were read with.
  const ProfileRules& Rules() const { return *rules_; }
  void SetRules(const ProfileRules& rules) { rules_ = &rules; }

  int32_t LineCount() const { return int32_t(Lines.size()); }
  int32_t PolySegCount() const { return int32_t(PolySegs.size()); }
  int32_t TextCount() const { return int32_t(Texts.size()); }
  int32_t ArcCount() const { return int32_t(Arcs.size()); }
  int32_t SolidCount() const { return int32_t(Solids.size()); }
  int32_t AttribCount() const { return int32_t(Attribs.size()); }
  int32_t HatchCount() const { return int32_t(Hatches.size()); }
  int32_t LayerCount() const { return int32_t(Layers.size()); }
  int32_t BlockCount() const { return int32_t(Blocks.size()); }
  int32_t SeqCount() const { return int32_t(DrawSeq.size()); }
  int32_t PendingInsertCount() const { return int32_t(PendingInserts.size()); }

  // Empties the drawing. With clearAll every table goes; without it only the blocks.
  // Returns true.
  bool InitDrawing(bool clearAll);

  // Widens the extents to take in both points (stored in single precision by the legacy
  // profile).
  void CheckExtents(double x1, double y1, double x2, double y2);

  // Append one row to its table and its entry to the draw sequence.
  template <class Row>
  void Add(const Row& row) {
    CountRow(RowWeight(row));
    Append(row);
  }
  void AddLine(const LineEntity& row) { Add(row); }
  void AddPolySegment(const PolySegment& row) { Add(row); }
  void AddText(const TextEntity& row) { Add(row); }
  void AddArc(const ArcEntity& row) { Add(row); }
  void AddSolid(const SolidEntity& row) { Add(row); }
  void AddAttrib(const AttribEntity& row) { Add(row); }
  void AddHatch(const HatchEntity& row) { Add(row); }

  // Appends a layer entry; its name becomes findable by LayerIndex.
  void AddLayer(LayerEntry entry);
  // Row of the first layer whose trimmed name equals `name` exactly; 1 when none does.
  // Names are compared and stored back trimmed, as the layer table always did. The row
  // is a 16-bit number: searching past row 32767 raises the Overflow error.
  int32_t LayerIndex(std::string_view name);
  // Row of the layer named exactly `name`, or 0 (no side effects).
  int32_t FindLayer(std::string_view name) const;
  // IsOn of layer row `index`; Subscript out of range for a row that does not exist.
  int32_t LayerState(int32_t index) const;

  // Appends a block entry; returns its row.
  int32_t AddBlock(BlockEntry entry);
  // Row of the first block named exactly `name`; 0 when there is none.
  int32_t FindBlock(std::string_view name) const;
  // Appends a record to a block definition.
  template <class Row>
  void AddBlockRecord(int32_t block, const Row& row) {
    CountRow(RowWeight(row));
    Blocks.at(std::size_t(block - 1)).Content.Append(row);
  }

 private:
  // Counts rows against the row limit; Out of memory past it.
  void CountRow(std::size_t rows = 1);
  // The rows a record counts for: a hatch's boundary points take a row's memory every
  // four.
  template <class Row>
  static std::size_t RowWeight(const Row&) {
    return 1;
  }
  static std::size_t RowWeight(const HatchEntity& hatch) { return 1 + hatch.Points.size() / 4; }
  static std::size_t RowWeight(const ImageEntity& image) { return 1 + image.Clip.size() / 4; }

  const ProfileRules* rules_ = &ProfileRules::Of(ReadingProfile::Legacy);  // until a reader sets it
  NameIndex layerRows_;
  NameIndex blockRows_;
  std::size_t layersTrimmed_ = 0;  // layer names 1..n already stored trimmed
  std::size_t storedRows_ = 0;
  std::size_t rowLimit_ = kRowLimit;
  uint64_t generation_ = 0;
};

}  // namespace dxfimport
