#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace dxfimport {

// One kind of thing a load skipped, repaired or left out: how often it happened and the
// line of the file where it was first met.
struct ReportEntry {
  std::string Kind;  // what happened, e.g. "entity kind not drawn: IMAGE"
  int64_t Count = 0;
  std::size_t Line = 0;  // of the first occurrence (0 when it has no place in the file)
  std::string Notice;    // a line for the user that names it ("" when the kind says it all)
  bool Drawn = false;    // what was found and drawn (proxy graphics, images, references), no loss
};

// What the modern profile skipped, repaired or left out while it loaded a drawing, in
// the order each kind was first met.
class LoadReport {
 public:
  // Counts one more of `kind`; the first one keeps its line and notice.
  void Note(const std::string& kind, std::size_t line, std::string notice = "");
  // Counts one more of `kind` that was found and drawn: named, but nothing was lost.
  void NoteDrawn(const std::string& kind, std::size_t line);
  const std::vector<ReportEntry>& Entries() const { return entries_; }
  // Nothing was skipped, repaired or left out (what was found and drawn aside).
  bool Clean() const;

  // The report as the lines `stats` prints after its figures: a heading and a line per
  // kind, or one line saying the drawing loaded cleanly; then what was found and drawn.
  std::vector<std::string> Lines() const;

 private:
  std::vector<ReportEntry> entries_;
  std::unordered_map<std::string, std::size_t> index_;
};

// The default budget of stored rows for the modern profile: what fits in a quarter of
// the machine's memory at the bytes a row costs, and at most 50 million.
int64_t DefaultEntityBudget();

// A count for a message: with thousands separators; "more than 10^18" when it overflowed.
std::string CountText(int64_t count);

}  // namespace dxfimport
