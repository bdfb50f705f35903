#include "dxf/model/drawing.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdint>

#include "support/numbers.h"
#include "support/runtime_error.h"
#include "support/text_decode.h"

namespace dxfimport {

bool Drawing::InitDrawing(bool clearAll) {
  ++generation_;
  if (clearAll) {
    TextStyles = {};
    Pictures = {};
    EntityTables::Clear();
    DashPatterns = {};
    PointDisplay = {};
    Clips = {};
    Geo = {};
    DefaultLineWeight = 25;
    Layers = {};
    PendingInserts = {};
    layerRows_.clear();
    layersTrimmed_ = 0;
    storedRows_ = 0;
  }
  Blocks = {};
  blockRows_.clear();
  return true;
}

namespace {

// Asks for large pages behind a big table's free capacity: filling it then costs one
// page fault per 2 MiB instead of one per 4 KiB.
void PreferLargePages(void* data, std::size_t bytes) {
  constexpr std::size_t kLarge = std::size_t(2) << 20;
  if (bytes < 4 * kLarge) return;
  const auto begin = (reinterpret_cast<std::uintptr_t>(data) + kLarge - 1) & ~(kLarge - 1);
  const auto end = (reinterpret_cast<std::uintptr_t>(data) + bytes) & ~(kLarge - 1);
  if (end > begin) madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
}

}  // namespace

void EntityTables::Anticipate(double readShare, std::size_t rowsLeft) {
  if (!(readShare > 0 && readShare < 1)) return;
  auto grow = [&](auto& table) {
    const double expected =
        std::min(double(table.size()) / readShare * 1.15, double(table.size() + rowsLeft));
    if (expected <= double(table.capacity())) return;
    table.reserve(std::size_t(std::max(expected, double(table.capacity()) * 1.5)));
    PreferLargePages(table.data(), table.capacity() * sizeof(table[0]));
  };
  grow(Lines);
  grow(PolySegs);
  grow(Texts);
  grow(Arcs);
  grow(Solids);
  grow(Attribs);
  grow(Hatches);
  grow(Ellipses);
  grow(Points);
  grow(MTexts);
  grow(DrawSeq);
}

void Drawing::CheckExtents(double x1, double y1, double x2, double y2) {
  const ProfileRules& rules = *rules_;
  auto store = [&rules](double& extent, double v) { extent = rules.Held(v); };
  auto lower = [&](double& extent, double v) {
    if (v < extent) store(extent, v);
  };
  auto raise = [&](double& extent, double v) {
    if (v > extent) store(extent, v);
  };
  lower(ExtMinX, x1);
  lower(ExtMinX, x2);
  raise(ExtMaxX, x1);
  raise(ExtMaxX, x2);
  lower(ExtMinY, y1);
  lower(ExtMinY, y2);
  raise(ExtMaxY, y1);
  raise(ExtMaxY, y2);
}

void Drawing::CountRow(std::size_t rows) {
  storedRows_ += rows;
  if (storedRows_ > rowLimit_) {
    storedRows_ -= rows - 1;  // what was refused is not held; the count stays past the limit
    throw RunTimeError(kErrOutOfMemory);
  }
}

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

int32_t Drawing::FindLayer(std::string_view name) const {
  auto found = layerRows_.find(name);
  return found == layerRows_.end() ? 0 : found->second;
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

}  // namespace dxfimport
