#pragma once

#include <cstdint>
#include <vector>

#include "dxf/model/drawing.h"
#include "dxf/model/geometry.h"

namespace dxfimport {

// Where the entries of a drawing's draw sequence lie, for drawing only what a view can
// see: a packed R-tree over the entries' boxes (what each draws, in drawing units, texts
// widened by their own size), built once per load. Entries without a box of their own
// (rays, construction lines, points drawn at a size in pixels, viewport clip marks) are
// always in.
class SpatialIndex {
 public:
  // Indexes the drawing's draw sequence as it is now.
  explicit SpatialIndex(const Drawing& drawing);

  // The positions (from 0) in the draw sequence of the entries whose box meets `window`,
  // in draw-sequence order, into `out` (cleared first). `marks` is the caller's working
  // memory (a bit per entry), kept between queries so that it is allocated once; the
  // index itself is not changed, so queries with buffers of their own may run at once.
  void Query(const Box& window, std::vector<int32_t>& out, std::vector<uint64_t>& marks) const;

  std::size_t size() const { return items_.size() + always_.size(); }
  // The box an entry is indexed by; empty for an entry that is always in.
  static Box EntryBox(const Drawing& drawing, const SeqEntry& entry);
  // The generation of the drawing it was built from.
  uint64_t generation() const { return generation_; }

 private:
  struct Item {  // a box rounded outwards to single precision, and its entry
    float minX, minY, maxX, maxY;
    int32_t entry;
  };
  struct Node {  // a box over `count` children from `first` on the level below
    float minX, minY, maxX, maxY;
    uint32_t first, count;
  };
  static bool Meets(const Item& a, const Box& w) {
    return a.maxX >= w.minX && a.minX <= w.maxX && a.maxY >= w.minY && a.minY <= w.maxY;
  }
  static bool Meets(const Node& a, const Box& w) {
    return a.maxX >= w.minX && a.minX <= w.maxX && a.maxY >= w.minY && a.minY <= w.maxY;
  }
  void Build();
  void Collect(std::size_t level, uint32_t node, const Box& window, std::vector<uint64_t>& marks) const;

  std::vector<Item> items_;                // in leaf order
  std::vector<std::vector<Node>> levels_;  // levels_[0] the leaves' parents ... back() the root
  std::vector<int32_t> always_;
  uint64_t generation_ = 0;
  std::size_t entries_ = 0;  // the draw sequence's length
};

}  // namespace dxfimport
