// Block references clipped by a spatial filter (XCLIP): the INSERT's extension dictionary
// names an ACAD_FILTER dictionary, whose SPATIAL entry is the SPATIAL_FILTER with the
// boundary. The objects come after the entities, so the clips are put in when the
// drawing has been read.
#include <algorithm>
#include <charconv>
#include <cmath>

#include "dxf/modern/modern_reader.h"
#include "support/numbers.h"
#include "support/text_decode.h"

namespace dxfimport {

// The extension dictionary of the record (360 after 102 {ACAD_XDICTIONARY), or 0.
uint64_t ModernReader::ExtensionDictionary() const {
  bool inside = false;
  for (const auto& [code, value] : pairs_) {
    if (code == 102) inside = Trim(value) == "{ACAD_XDICTIONARY";
    if (code == 360 && inside) return HandleOf(value);
  }
  return 0;
}

// An INSERT that may be clipped: in model space, where its rows are and its map from
// block coordinates (not relative to the base point) to the world; inside a block
// definition, which insert row of the block it is.
void ModernReader::NoteClippable(const InsertRef& ref, std::size_t firstEntry) {
  const uint64_t dictionary = ExtensionDictionary();
  if (!dictionary) return;
  if (output_ != 0) {
    const EntityTables& content = drawing_.Blocks[std::size_t(output_ - 1)].Content;
    if (content.DrawSeq.size() > firstEntry && content.DrawSeq.back().Kind == kKindInsert)
      nestedClippable_[uint64_t(output_) << 32 | uint32_t(content.DrawSeq.back().Index)] = dictionary;
    return;
  }
  if (drawing_.DrawSeq.size() == firstEntry) return;
  const BlockEntry& b = drawing_.Blocks[std::size_t(ref.Block - 1)];
  clippable_.push_back({dictionary, ref.Frame * ref.Local * Affine::Translate(-b.BaseX, -b.BaseY), firstEntry,
                        drawing_.DrawSeq.size()});
}

// The dictionary of an insert inside block `block` (its insert row), or 0 when it has none.
uint64_t ModernReader::NestedClip(int32_t block, int32_t insert) const {
  if (nestedClippable_.empty()) return 0;
  const auto found = nestedClippable_.find(uint64_t(block) << 32 | uint32_t(insert));
  return found == nestedClippable_.end() ? 0 : found->second;
}

// DICTIONARY: only the entries that lead to a spatial filter are kept.
bool ModernReader::DXFDictionary() {
  const uint64_t self = HandleOf(Value(5));
  std::string_view name;
  for (const auto& [code, value] : pairs_) {
    if (code == 3) name = Trim(value);
    if ((code == 350 || code == 360) &&
        (name == "ACAD_FILTER" || name == "SPATIAL" || name == "ACAD_XREC_ROUNDTRIP") && self)
      filterLinks_[self] = HandleOf(value);
  }
  return true;
}

// SPATIAL_FILTER: its boundary (70 points 10/20 in the world at the time of clipping;
// two are a rectangle's corners), whether it clips (71; XCLIP OFF leaves it 0), its front
// and back clipping planes (72 and the 40 after it, 73 and 41), the map from that world to
// block coordinates (the next twelve 40s, three rows of four) and from it to the clip's
// own coordinates (twelve more). Inverted clips are saved as the boundary of what stays.
bool ModernReader::DXFSpatialFilter() {
  if (Whole(71, 1, 0, 1) == 0) return true;
  SpatialFilter filter;
  std::vector<double> matrix;
  filter.boundary = ClipBoundary(10);
  bool front = false, back = false, frontRead = false;
  double frontDistance = 0, backDistance = 0;
  for (const auto& [code, value] : pairs_) {
    if (code == 72) front = Val(value) == 1;
    if (code == 73) back = Val(value) == 1;
    if (code == 41) backDistance = Val(value);
    if (code != 40) continue;
    if (front && !frontRead)
      frontDistance = Val(value), frontRead = true;
    else if (matrix.size() < 24)
      matrix.push_back(Val(value));
  }
  filter.extension = ExtensionDictionary();
  if (matrix.size() >= 12)
    filter.toBlock = {matrix[0], matrix[4], matrix[1], matrix[5], matrix[3], matrix[7]};
  if (front || back) filter.outsideSlab = OutsideSlab(matrix, front, frontDistance, back, backDistance);
  if (!filter.boundary.empty() && filter.toBlock.IsFinite())
    spatialFilters_[HandleOf(Value(5))] = std::move(filter);
  return true;
}

// Whether the block's own plane (z = 0, where a plan's content lies: the rows keep no
// elevation) lies outside the slab between the back and the front clipping plane, given
// as distances from the clip's origin along its normal. A block turned out of the plan
// is left as it is.
bool ModernReader::OutsideSlab(const std::vector<double>& matrix, bool front, double frontDistance, bool back,
                               double backDistance) const {
  if (matrix.size() < 12) return false;
  const double flat = 1e-9;
  if (std::abs(matrix[8]) > flat || std::abs(matrix[9]) > flat || std::abs(matrix[10]) < flat) {
    Note("XCLIP front and back planes of a block turned out of the plan not applied");
    return false;
  }
  const double worldZ = -matrix[11] / matrix[10];
  double z = worldZ;
  if (matrix.size() >= 24 && std::abs(matrix[20]) < flat && std::abs(matrix[21]) < flat)
    z = matrix[22] * worldZ + matrix[23];
  const double tolerance = 1e-9 * std::max(1.0, std::abs(z));
  return (front && z > frontDistance + tolerance) || (back && z < backDistance - tolerance);
}

// XRECORD: the hole of an inverted clip, which CAD tools keep beside its spatial filter
// (the points 10/20 after 102 ACAD_INVERTEDCLIP_ROUNDTRIP).
bool ModernReader::DXFXRecord() {
  std::vector<PointD> hole;
  bool inside = false;
  for (const auto& [code, value] : pairs_) {
    if (code == 102) inside = Trim(value) == "ACAD_INVERTEDCLIP_ROUNDTRIP";
    if (!inside) continue;
    if (code == 10 && hole.size() < 100000)
      hole.push_back({Val(value), 0});
    else if (code == 20 && !hole.empty())
      hole.back().y = Val(value);
  }
  if (hole.size() >= 3) invertedHoles_[HandleOf(Value(5))] = std::move(hole);
  return true;
}

// The clip of an insert whose extension dictionary is `dictionary`, in the coordinates of
// its block, when a spatial filter that clips hangs there. An inverted clip keeps the
// frame around its boundary without its hole, which is kept aside (the boundary itself
// runs around the frame and into the hole through a slit, or around the frame alone).
bool ModernReader::ClipOf(uint64_t dictionary, ClipRegion& region) const {
  const auto link = filterLinks_.find(dictionary);
  if (link == filterLinks_.end()) return false;
  const auto spatial = filterLinks_.find(link->second);
  if (spatial == filterLinks_.end()) return false;
  const auto filter = spatialFilters_.find(spatial->second);
  if (filter == spatialFilters_.end()) return false;
  if (filter->second.outsideSlab) {
    region.Loops.clear();  // nothing is drawn
    Note("block reference outside its front or back clipping plane (XCLIP)");
    return true;
  }
  region.Loops = {filter->second.boundary};
  const auto roundTrip = filterLinks_.find(filter->second.extension);
  const auto hole =
      roundTrip == filterLinks_.end() ? invertedHoles_.end() : invertedHoles_.find(roundTrip->second);
  if (hole != invertedHoles_.end()) {
    Box frame;
    for (const PointD& p : filter->second.boundary) frame.Add(p);
    region.Loops = {{{frame.minX, frame.minY},
                     {frame.maxX, frame.minY},
                     {frame.maxX, frame.maxY},
                     {frame.minX, frame.maxY}},
                    hole->second};
  }
  for (auto& loop : region.Loops)
    for (PointD& p : loop) p = filter->second.toBlock.Apply(p);
  return true;
}

// A clip entry of a block's content as the expansion through `m` draws it: its region
// placed and added to the drawing's clips (index 0, the end of a clip, as it is).
void ModernReader::PlaceClip(const std::vector<ClipRegion>& clips, int32_t index, const Affine& m) {
  if (index < 1 || std::size_t(index) > clips.size()) {
    drawing_.DrawSeq.push_back({kKindClip, 0});
    return;
  }
  ClipRegion region = clips[std::size_t(index - 1)];
  for (auto& loop : region.Loops)
    for (PointD& p : loop) p = m.Apply(p);
  drawing_.Clips.push_back(std::move(region));
  drawing_.DrawSeq.push_back({kKindClip, int32_t(drawing_.Clips.size())});
}

// Puts each clipped reference's rows between a clip entry and its end, keeping where
// entities and expansions of sorted blocks start in the drawing order true.
void ModernReader::ApplyClips() {
  std::vector<ClipMark> marks;
  for (const Clippable& c : clippable_) {
    ClipRegion region;
    if (!ClipOf(c.dictionary, region)) continue;
    for (auto& loop : region.Loops)
      for (PointD& p : loop) p = c.toWorld.Apply(p);
    drawing_.Clips.push_back(std::move(region));
    marks.push_back({c.from, c.to, true, int32_t(drawing_.Clips.size())});
    marks.push_back({c.to, c.from, false, 0});
    ctx_.outcome.Report.NoteDrawn("block reference drawn within its clip boundary (XCLIP)", 0);
  }
  clippable_.clear();
  clipsResolved_ = true;
  if (marks.empty()) return;
  // At one place: ends, then starts, the widest first.
  std::stable_sort(marks.begin(), marks.end(), [](const ClipMark& a, const ClipMark& b) {
    if (a.at != b.at) return a.at < b.at;
    if (a.opens != b.opens) return !a.opens;
    return a.opens && a.other > b.other;
  });
  std::vector<SeqEntry>& seq = drawing_.DrawSeq;
  std::vector<SeqEntry> clipped;
  clipped.reserve(seq.size() + marks.size());
  std::size_t next = 0;
  for (std::size_t i = 0; i <= seq.size(); ++i) {
    for (; next < marks.size() && marks[next].at == i; ++next)
      clipped.push_back({kKindClip, marks[next].clip});
    if (i < seq.size()) clipped.push_back(seq[i]);
  }
  for (auto& start : entityStarts_) start.second = RunStart(marks, start.second, SIZE_MAX);
  if (entitiesEnd_) entitiesEnd_ = RunEnd(marks, entitiesEnd_, 0);
  for (BlockExpansion& e : expansions_) {
    if (e.starts.empty()) continue;
    const std::size_t front = e.starts.front();
    for (std::size_t i = 0; i < e.starts.size(); ++i)
      e.starts[i] = RunStart(marks, e.starts[i], i + 1 < e.starts.size() ? e.starts[i + 1] : e.end);
    e.end = RunEnd(marks, e.end, front);
  }
  seq.swap(clipped);
}

// Where a run of entries that starts at `old` and ends at `end` starts once the marks are
// in: after the marks before it, the ends at it and the clips that open at it but reach
// past its end (they hold more than this run); the others open inside it.
std::size_t ModernReader::RunStart(const std::vector<ClipMark>& marks, std::size_t old, std::size_t end) {
  auto at = std::partition_point(marks.begin(), marks.end(), [old](const ClipMark& m) { return m.at < old; });
  for (; at != marks.end() && at->at == old && (!at->opens || at->other > end); ++at) {
  }
  return old + std::size_t(at - marks.begin());
}

// Where a run that starts at `from` ends (before `old`) once the marks are in: the ends
// at `old` of clips that opened within the run are still its own.
std::size_t ModernReader::RunEnd(const std::vector<ClipMark>& marks, std::size_t old, std::size_t from) {
  auto at = std::partition_point(marks.begin(), marks.end(), [old](const ClipMark& m) { return m.at < old; });
  for (; at != marks.end() && at->at == old && !at->opens && at->other >= from; ++at) {
  }
  return old + std::size_t(at - marks.begin());
}

// The clipped inserts inside block definitions: their clips put in the blocks' own
// orders, for the expansions made from now on (layouts among them).
void ModernReader::ClipBlockContents() {
  for (const auto& [key, dictionary] : nestedClippable_) {
    const int32_t block = int32_t(key >> 32), insert = int32_t(key & 0xFFFFFFFF);
    ClipRegion region;
    if (block < 1 || block > drawing_.BlockCount() || !ClipOf(dictionary, region)) continue;
    BlockEntry& b = drawing_.Blocks[std::size_t(block - 1)];
    std::vector<SeqEntry>& seq = b.Content.DrawSeq;
    const auto at = std::find_if(seq.begin(), seq.end(), [insert](const SeqEntry& e) {
      return e.Kind == kKindInsert && e.Index == insert;
    });
    if (at == seq.end()) continue;
    const InsertRef& ref = b.Content.Inserts[std::size_t(insert - 1)];
    const BlockEntry& inner = drawing_.Blocks[std::size_t(ref.Block - 1)];
    const Affine toOuter = ref.Frame * ref.Local * Affine::Translate(-inner.BaseX, -inner.BaseY);
    for (auto& loop : region.Loops)
      for (PointD& p : loop) p = toOuter.Apply(p);
    b.Clips.push_back(std::move(region));
    const auto where = seq.insert(at, {kKindClip, int32_t(b.Clips.size())});
    seq.insert(where + 2, {kKindClip, 0});
  }
  nestedClippable_.clear();
}

}  // namespace dxfimport
