#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "dxf/records.h"

namespace dxfimport {

// Heterogeneous lookup by string_view in the name indexes.
struct NameHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view s) const { return std::hash<std::string_view>{}(s); }
};
using NameIndex = std::unordered_map<std::string, int32_t, NameHash, std::equal_to<>>;

// The one loaded drawing: flat entity tables, the draw sequence in file order, the layer
// and block tables and the extents. Rows are numbered from 1 in every reference (SeqEntry
// Index, Layer); the vectors hold row n at position n - 1.
class Drawing {
 public:
  // Upper bound on stored rows (tables and block records together), so that a drawing
  // whose blocks multiply without end is stopped with the out-of-memory error.
  static constexpr std::size_t kRowLimit = 30'000'000;
  void SetRowLimit(std::size_t limit) { rowLimit_ = limit; }

  std::vector<LineEntity> Lines;
  std::vector<PolySegment> PolySegs;
  std::vector<TextEntity> Texts;
  std::vector<ArcEntity> Arcs;
  std::vector<SolidEntity> Solids;
  std::vector<AttribEntity> Attribs;
  std::vector<HatchEntity> Hatches;
  std::vector<LayerEntry> Layers;
  std::vector<BlockEntry> Blocks;
  std::vector<SeqEntry> DrawSeq;
  std::vector<PendingInsert> PendingInserts;

  // Polyline bulges are drawn as arcs (modern profile); the legacy redraw draws every
  // segment straight.
  bool BulgesAsArcs = false;

  // Dash patterns of line types from the LTYPE table (modern profile), in drawing units:
  // positive a dash, negative a gap, 0 a dot. Pen style kFirstDashPattern + i draws
  // pattern i.
  static constexpr int32_t kFirstDashPattern = 16;
  std::vector<std::vector<float>> DashPatterns;

  float ExtMinX = 1e30f, ExtMinY = 1e30f, ExtMaxX = -1e30f, ExtMaxY = -1e30f;

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

  // Widens the extents to take in both points.
  void CheckExtents(double x1, double y1, double x2, double y2);
  // Widens the extents to take in an entity: a segment's ends, a text's point, a circle's
  // box, a solid's corners, a hatch's points.
  void CheckExtentsOf(const LineEntity& e) { CheckExtents(e.X1, e.Y1, e.X2, e.Y2); }
  void CheckExtentsOf(const PolySegment& e) { CheckExtents(e.X1, e.Y1, e.X2, e.Y2); }
  void CheckExtentsOf(const TextEntity& e) { CheckExtents(e.X, e.Y, e.X, e.Y); }
  void CheckExtentsOf(const AttribEntity& e) { CheckExtentsOf(e.Text); }
  void CheckExtentsOf(const ArcEntity& e);
  void CheckExtentsOf(const SolidEntity& e);
  void CheckExtentsOf(const HatchEntity& e);

  // Append one row to its table and its entry to the draw sequence.
  void AddLine(const LineEntity& row);
  void AddPolySegment(const PolySegment& row);
  void AddText(const TextEntity& row);
  void AddArc(const ArcEntity& row);
  void AddSolid(const SolidEntity& row);
  void AddAttrib(const AttribEntity& row);
  void AddHatch(const HatchEntity& row);

  // Appends a layer entry; its name becomes findable by LayerIndex.
  void AddLayer(LayerEntry entry);
  // Row of the first layer whose trimmed name equals `name` exactly; 1 when none does.
  // Names are compared and stored back trimmed, as the layer table always did. The row
  // is a 16-bit number: searching past row 32767 raises the Overflow error.
  int32_t LayerIndex(std::string_view name);
  // IsOn of layer row `index`; Subscript out of range for a row that does not exist.
  int32_t LayerState(int32_t index) const;

  // Appends a block entry; returns its row.
  int32_t AddBlock(BlockEntry entry);
  // Row of the first block named exactly `name`; 0 when there is none.
  int32_t FindBlock(std::string_view name) const;
  // Appends a record to a block definition.
  void AddBlockRecord(int32_t block, BlockRecord record);

 private:
  void CountRow();

  NameIndex layerRows_;
  NameIndex blockRows_;
  std::size_t layersTrimmed_ = 0;  // layer names 1..n already stored trimmed
  std::size_t storedRows_ = 0;
  std::size_t rowLimit_ = kRowLimit;
};

}  // namespace dxfimport
