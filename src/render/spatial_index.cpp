#include "render/spatial_index.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>

#include "dxf/model/extents.h"

namespace dxfimport {
namespace {

constexpr uint32_t kFanOut = 16;

float Down(double v) {
  float f = float(v);
  return double(f) > v ? std::nextafter(f, -std::numeric_limits<float>::infinity()) : f;
}

float Up(double v) {
  float f = float(v);
  return double(f) < v ? std::nextafter(f, std::numeric_limits<float>::infinity()) : f;
}

}  // namespace

// The box an entry draws in, or an empty box when it has none of its own.
Box SpatialIndex::EntryBox(const Drawing& d, const SeqEntry& entry) {
  Box box;
  VisitRow(d, entry, [&](const auto& row) {
    using Row = std::decay_t<decltype(row)>;
    if constexpr (std::is_same_v<Row, PointEntity> || std::is_same_v<Row, RayEntity> ||
                  std::is_same_v<Row, InsertRef>) {
      return;
    } else {
      box = RowBox(row);
      // A text's box is an estimate from its characters; its own size again on every
      // side holds what the faces really draw.
      if constexpr (std::is_same_v<Row, TextEntity> || std::is_same_v<Row, AttribEntity> ||
                    std::is_same_v<Row, MTextEntity>) {
        if (!box.Empty()) {
          const double reach = std::max(box.maxX - box.minX, box.maxY - box.minY);
          box = {box.minX - reach, box.minY - reach, box.maxX + reach, box.maxY + reach};
        }
      }
    }
  });
  return box;
}

SpatialIndex::SpatialIndex(const Drawing& drawing)
    : generation_(drawing.Generation()), entries_(drawing.DrawSeq.size()) {
  items_.reserve(drawing.DrawSeq.size());
  for (std::size_t i = 0; i < drawing.DrawSeq.size(); ++i) {
    const Box b = EntryBox(drawing, drawing.DrawSeq[i]);
    const bool finite =
        std::isfinite(b.minX) && std::isfinite(b.minY) && std::isfinite(b.maxX) && std::isfinite(b.maxY);
    if (b.Empty() || !finite)
      always_.push_back(int32_t(i));
    else
      items_.push_back({Down(b.minX), Down(b.minY), Up(b.maxX), Up(b.maxY), int32_t(i)});
  }
  Build();
}

// Sort-tile-recursive packing: the items sorted into vertical slices by the centres' x,
// each slice by y, then cut into leaves of kFanOut; each level above groups kFanOut
// nodes of the one below, which the packing has already put near each other.
void SpatialIndex::Build() {
  if (items_.empty()) return;
  auto centreX = [](const Item& a) { return double(a.minX) + double(a.maxX); };
  auto centreY = [](const Item& a) { return double(a.minY) + double(a.maxY); };
  std::sort(items_.begin(), items_.end(),
            [&](const Item& a, const Item& b) { return centreX(a) < centreX(b); });
  const std::size_t leaves = (items_.size() + kFanOut - 1) / kFanOut;
  const std::size_t slice = std::size_t(std::ceil(std::sqrt(double(leaves)))) * kFanOut;
  for (std::size_t at = 0; at < items_.size(); at += slice) {
    auto end = items_.begin() + std::ptrdiff_t(std::min(items_.size(), at + slice));
    std::sort(items_.begin() + std::ptrdiff_t(at), end,
              [&](const Item& a, const Item& b) { return centreY(a) < centreY(b); });
  }
  std::vector<Node> level;
  for (uint32_t at = 0; at < items_.size(); at += kFanOut) {
    Node n{items_[at].minX,
           items_[at].minY,
           items_[at].maxX,
           items_[at].maxY,
           at,
           std::min<uint32_t>(kFanOut, uint32_t(items_.size()) - at)};
    for (uint32_t i = at; i < at + n.count; ++i) {
      n.minX = std::min(n.minX, items_[i].minX), n.minY = std::min(n.minY, items_[i].minY);
      n.maxX = std::max(n.maxX, items_[i].maxX), n.maxY = std::max(n.maxY, items_[i].maxY);
    }
    level.push_back(n);
  }
  levels_.push_back(std::move(level));
  while (levels_.back().size() > 1) {
    const std::vector<Node>& below = levels_.back();
    std::vector<Node> above;
    for (uint32_t at = 0; at < below.size(); at += kFanOut) {
      Node n = below[at];
      n.first = at, n.count = std::min<uint32_t>(kFanOut, uint32_t(below.size()) - at);
      for (uint32_t i = at; i < at + n.count; ++i) {
        n.minX = std::min(n.minX, below[i].minX), n.minY = std::min(n.minY, below[i].minY);
        n.maxX = std::max(n.maxX, below[i].maxX), n.maxY = std::max(n.maxY, below[i].maxY);
      }
      above.push_back(n);
    }
    levels_.push_back(std::move(above));
  }
}

void SpatialIndex::Collect(std::size_t level, uint32_t node, const Box& window,
                           std::vector<uint64_t>& marks) const {
  const Node& n = levels_[level][node];
  if (!Meets(n, window)) return;
  if (level == 0) {
    for (uint32_t i = n.first; i < n.first + n.count; ++i) {
      const uint32_t e = uint32_t(items_[i].entry);
      if (Meets(items_[i], window)) marks[e >> 6] |= uint64_t(1) << (e & 63);
    }
    return;
  }
  for (uint32_t i = n.first; i < n.first + n.count; ++i) Collect(level - 1, i, window, marks);
}

// The entries found are marked in a bit per entry and read back in order: cheaper than
// sorting them when a view holds thousands.
void SpatialIndex::Query(const Box& window, std::vector<int32_t>& out, std::vector<uint64_t>& marks) const {
  out.clear();
  marks.assign((entries_ + 63) / 64, 0);
  for (int32_t e : always_) marks[std::size_t(e) >> 6] |= uint64_t(1) << (e & 63);
  if (!levels_.empty()) Collect(levels_.size() - 1, 0, window, marks);
  for (std::size_t w = 0; w < marks.size(); ++w) {
    for (uint64_t bits = marks[w]; bits; bits &= bits - 1)
      out.push_back(int32_t(w * 64 + std::size_t(__builtin_ctzll(bits))));
  }
}

}  // namespace dxfimport
