// Block references clipped by a spatial filter (XCLIP): the INSERT's extension dictionary
// names an ACAD_FILTER dictionary, whose SPATIAL entry is the SPATIAL_FILTER with the
// boundary. The objects come after the entities, so the clips are put in when the
// drawing has been read.
#include <algorithm>
#include <charconv>

#include "dxf/modern/modern_reader.h"
#include "support/numbers.h"
#include "support/text_decode.h"

namespace dxfimport {
namespace {}  // namespace

// The extension dictionary of the record (360 after 102 {ACAD_XDICTIONARY), or 0.
uint64_t ModernReader::ExtensionDictionary() const {
  bool inside = false;
  for (const auto& [code, value] : pairs_) {
    if (code == 102) inside = Trim(value) == "{ACAD_XDICTIONARY";
    if (code == 360 && inside) return HandleOf(value);
  }
  return 0;
}

// A model-space INSERT that may be clipped: where its rows are, and its map from block
// coordinates (not relative to the base point) to the world.
void ModernReader::NoteClippable(const InsertRef& ref, std::size_t firstEntry) {
  const uint64_t dictionary = ExtensionDictionary();
  if (!dictionary || output_ != 0 || drawing_.DrawSeq.size() == firstEntry) return;
  const BlockEntry& b = drawing_.Blocks[std::size_t(ref.Block - 1)];
  clippable_.push_back({dictionary, ref.Frame * ref.Local * Affine::Translate(-b.BaseX, -b.BaseY), firstEntry,
                        drawing_.DrawSeq.size()});
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
// two are a rectangle's corners), whether it clips (71; XCLIP OFF leaves it 0) and the
// map from that world to block coordinates (the first twelve 40s, three rows of four).
// Inverted clips are saved as the boundary of what stays.
bool ModernReader::DXFSpatialFilter() {
  if (Whole(71, 1, 0, 1) == 0) return true;
  SpatialFilter filter;
  std::vector<double> matrix;
  filter.boundary = ClipBoundary(10);
  for (const auto& [code, value] : pairs_)
    if (code == 40 && matrix.size() < 24) matrix.push_back(Val(value));
  filter.extension = ExtensionDictionary();
  if (matrix.size() >= 12)
    filter.toBlock = {matrix[0], matrix[4], matrix[1], matrix[5], matrix[3], matrix[7]};
  if (!filter.boundary.empty() && filter.toBlock.IsFinite())
    spatialFilters_[HandleOf(Value(5))] = std::move(filter);
  return true;
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

// Puts each clipped reference's rows between a clip entry and its end, keeping where
// model-space entities start in the drawing order true.
void ModernReader::ApplyClips() {
  struct Mark {
    std::size_t at;
    bool opens;
    int32_t clip;
  };
  std::vector<Mark> marks;
  for (const Clippable& c : clippable_) {
    auto link = filterLinks_.find(c.dictionary);
    if (link == filterLinks_.end()) continue;
    auto spatial = filterLinks_.find(link->second);
    if (spatial == filterLinks_.end()) continue;
    auto filter = spatialFilters_.find(spatial->second);
    if (filter == spatialFilters_.end()) continue;
    ClipRegion region{{filter->second.boundary}};
    // An inverted clip: what stays is the frame around its boundary without its hole,
    // which is kept aside (the boundary itself runs around the frame and into the hole
    // through a slit, or around the frame alone).
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
    const Affine toWorld = c.toWorld * filter->second.toBlock;
    for (auto& loop : region.Loops)
      for (PointD& p : loop) p = toWorld.Apply(p);
    drawing_.Clips.push_back(std::move(region));
    marks.push_back({c.from, true, int32_t(drawing_.Clips.size())});
    marks.push_back({c.to, false, 0});
    ctx_.outcome.Report.NoteDrawn("block reference drawn within its clip boundary (XCLIP)", 0);
  }
  clippable_.clear();
  if (marks.empty()) return;
  // At one place, ends before starts.
  std::stable_sort(marks.begin(), marks.end(), [](const Mark& a, const Mark& b) {
    return a.at != b.at ? a.at < b.at : !a.opens && b.opens;
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
  // Where an entry at `old` lands: after every mark before it and every end at it. The
  // starts come in the order of the drawing, so one walk over the marks serves them all.
  std::size_t passed = 0;
  auto shifted = [&marks, &passed](std::size_t old) {
    while (passed < marks.size() &&
           (marks[passed].at < old || (marks[passed].at == old && !marks[passed].opens)))
      ++passed;
    return old + passed;
  };
  for (auto& start : entityStarts_) start.second = shifted(start.second);
  if (entitiesEnd_) entitiesEnd_ = shifted(entitiesEnd_);
  seq.swap(clipped);
}

}  // namespace dxfimport
