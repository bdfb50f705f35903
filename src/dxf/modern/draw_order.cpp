// Draw order: the SORTENTSTABLE of model space, of a block or of a layout gives some of
// its entities sort handles that replace their own handles as the order they are drawn
// in. The tables come in the OBJECTS section, after the entities, so where each entity's
// rows start is noted while reading (only for spaces whose block record has an extension
// dictionary, where such a table hangs), and the order is put right after the load:
// model space's entries, each expansion of a sorted block, and the blocks themselves
// (what a layout is drawn from).
#include <algorithm>
#include <charconv>

#include "dxf/modern/modern_reader.h"
#include "support/text_decode.h"

namespace dxfimport {
namespace {

// Entries from..to split at `starts` (each the first of one entity's entries): the
// entities' runs stably ordered by their keys, written back in place.
void OrderRuns(std::vector<SeqEntry>& seq, std::size_t to, const std::vector<std::size_t>& starts,
               const std::vector<uint64_t>& keys) {
  std::vector<std::size_t> order(starts.size());
  for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
  std::stable_sort(order.begin(), order.end(),
                   [&keys](std::size_t a, std::size_t b) { return keys[a] < keys[b]; });
  std::vector<SeqEntry> ordered;
  ordered.reserve(to - starts.front());
  for (std::size_t i : order) {
    const std::size_t end = i + 1 < starts.size() ? starts[i + 1] : to;
    ordered.insert(ordered.end(), seq.begin() + std::ptrdiff_t(starts[i]), seq.begin() + std::ptrdiff_t(end));
  }
  std::copy(ordered.begin(), ordered.end(), seq.begin() + std::ptrdiff_t(starts.front()));
}

}  // namespace

uint64_t ModernReader::HandleOf(std::string_view text) {
  text = Trim(text);
  uint64_t handle = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), handle, 16);
  return error == std::errc() && end == text.data() + text.size() ? handle : 0;
}

// Records that carry no entity of their own: they belong to the entity before them.
bool ModernReader::StartsNoEntity(Handler h) {
  return h == &ModernReader::DXFVertex || h == &ModernReader::DXFSeqEnd || h == &ModernReader::DXFAttrib ||
         h == &ModernReader::DXFBlock || h == &ModernReader::DXFEndBlock;
}

// Where each entity of model space starts in the drawing order, by its handle (the rows
// of an insert, its attributes and a polyline's vertices go with it); inside a block
// that may be sorted, where it starts in the block's own order.
void ModernReader::NoteEntityStart(Handler h) {
  if (output_ == 0 ? !keepStarts_ : blockOrders_.empty()) return;
  if (StartsNoEntity(h)) return;
  const uint64_t handle = HandleOf(Value(5));
  if (!handle) return;
  if (output_ == 0) {
    entityStarts_.emplace_back(handle, drawing_.DrawSeq.size());
    return;
  }
  auto sorted = blockOrders_.find(output_);
  if (sorted != blockOrders_.end())
    sorted->second.starts.emplace_back(
        handle, uint32_t(drawing_.Blocks[std::size_t(output_ - 1)].Content.DrawSeq.size()));
}

// A block whose record has an extension dictionary may be sorted: its entities' starts
// are noted (BLOCK's 330 is its record).
void ModernReader::NoteSortableBlock(int32_t block) {
  const std::string record(Trim(Value(330)));
  if (!record.empty() && sortableRecords_.count(record)) blockOrders_[block].record = record;
}

// An expansion of a block that may be sorted begins: its record (an index into
// expansions_), or kNoExpansion when the block is not one or too many are recorded.
std::size_t ModernReader::BeginExpansion(int32_t block) {
  if (blockOrders_.empty() || !recordExpansions_ || expansionStarts_ > kMaxExpansionStarts)
    return kNoExpansion;
  const auto sorted = blockOrders_.find(block);
  if (sorted == blockOrders_.end() || sorted->second.starts.size() < 2) return kNoExpansion;
  expansions_.push_back({block, {}, 0, 0});
  return expansions_.size() - 1;
}

// The expansion reaches entry `entry` of its block: where the rows of an entity that
// starts there begin in the drawing order.
void ModernReader::NoteExpansion(std::size_t expansion, std::size_t entry) {
  BlockExpansion& e = expansions_[expansion];
  const auto& starts = blockOrders_[e.block].starts;
  for (; e.next < starts.size() && starts[e.next].second == entry; ++e.next, ++expansionStarts_)
    e.starts.push_back(drawing_.DrawSeq.size());
}

bool ModernReader::DXFSortEnts() {
  bool inTable = false;
  std::string_view owner;
  uint64_t entity = 0;
  std::vector<std::pair<uint64_t, uint64_t>> keys;
  for (const auto& [code, value] : pairs_) {
    if (code == 100) {
      inTable = Trim(value) == "AcDbSortentsTable";
    } else if (inTable && code == 330 && owner.empty()) {
      owner = Trim(value);
    } else if (inTable && code == 331) {
      entity = HandleOf(value);
    } else if (inTable && code == 5 && entity != 0) {
      keys.emplace_back(entity, HandleOf(value));
      entity = 0;
    }
  }
  if (owner.empty()) return true;
  auto& table = owner == modelRecord_ ? sortHandles_ : blockSortHandles_[std::string(owner)];
  for (const auto& [from, to] : keys) table[from] = to;
  return true;
}

// Each expansion of a sorted block, innermost first (an outer expansion then moves the
// inner ones whole), and then the blocks' own orders, which layouts are drawn from.
void ModernReader::ApplyBlockOrders() {
  recordExpansions_ = false;
  auto keysOf = [this](const BlockOrder& order, std::size_t count) {
    const auto& table = blockSortHandles_[order.record];
    std::vector<uint64_t> keys(count);
    for (std::size_t i = 0; i < count; ++i) {
      const uint64_t own = order.starts[i].first;
      const auto sorted = table.find(own);
      keys[i] = sorted != table.end() ? sorted->second : own;
    }
    return keys;
  };
  // In reverse: an expansion comes before those nested in it.
  for (auto e = expansions_.rbegin(); e != expansions_.rend(); ++e) {
    const BlockOrder& order = blockOrders_[e->block];
    if (e->starts.size() < 2 || e->end < e->starts.back() || !blockSortHandles_.count(order.record)) continue;
    OrderRuns(drawing_.DrawSeq, e->end, e->starts, keysOf(order, e->starts.size()));
  }
  expansions_.clear();
  for (auto& [block, order] : blockOrders_) {
    if (order.starts.size() < 2 || !blockSortHandles_.count(order.record)) continue;
    std::vector<SeqEntry>& seq = drawing_.Blocks[std::size_t(block - 1)].Content.DrawSeq;
    std::vector<std::size_t> starts;
    for (const auto& start : order.starts) starts.push_back(std::min<std::size_t>(start.second, seq.size()));
    OrderRuns(seq, seq.size(), starts, keysOf(order, starts.size()));
  }
}

// Model space is drawn in the order of its entities' sort handles: an entity that the
// SORTENTSTABLE lists by the handle it gives, any other by its own handle.
void ModernReader::ApplyDrawOrder() {
  std::vector<std::pair<uint64_t, std::size_t>> starts;
  starts.swap(entityStarts_);
  std::vector<SeqEntry>& seq = drawing_.DrawSeq;
  const std::size_t end = std::min(entitiesEnd_ ? entitiesEnd_ : seq.size(), seq.size());
  if (sortHandles_.empty() || starts.empty() || starts.front().second > end) return;
  struct Run {
    uint64_t key;
    std::size_t from, to;
  };
  std::vector<Run> runs;
  runs.reserve(starts.size());
  for (std::size_t i = 0; i < starts.size(); ++i) {
    const std::size_t from = std::min(starts[i].second, end);
    const std::size_t to = i + 1 < starts.size() ? std::min(starts[i + 1].second, end) : end;
    const auto sorted = sortHandles_.find(starts[i].first);
    if (from < to)
      runs.push_back({sorted != sortHandles_.end() ? sorted->second : starts[i].first, from, to});
  }
  std::stable_sort(runs.begin(), runs.end(), [](const Run& a, const Run& b) { return a.key < b.key; });
  std::vector<SeqEntry> ordered;
  ordered.reserve(seq.size());
  ordered.insert(ordered.end(), seq.begin(), seq.begin() + std::ptrdiff_t(starts.front().second));
  for (const Run& run : runs)
    ordered.insert(ordered.end(), seq.begin() + std::ptrdiff_t(run.from),
                   seq.begin() + std::ptrdiff_t(run.to));
  ordered.insert(ordered.end(), seq.begin() + std::ptrdiff_t(end), seq.end());
  seq.swap(ordered);
}

}  // namespace dxfimport
