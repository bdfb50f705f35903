#include "dxf/model/load_report.h"

#include <unistd.h>

#include <algorithm>
#include <cstdint>

#include "dxf/model/drawing.h"
#include "support/numbers.h"

namespace dxfimport {

void LoadReport::Note(const std::string& kind, std::size_t line, std::string notice) {
  auto [at, added] = index_.try_emplace(kind, entries_.size());
  if (added) entries_.push_back({kind, 0, line, std::move(notice)});
  ReportEntry& entry = entries_[at->second];
  if (entry.Count < INT64_MAX) ++entry.Count;
}

void LoadReport::NoteDrawn(const std::string& kind, std::size_t line) {
  Note(kind, line);
  entries_[index_[kind]].Drawn = true;
}

bool LoadReport::Clean() const {
  return std::all_of(entries_.begin(), entries_.end(), [](const ReportEntry& e) { return e.Drawn; });
}

std::vector<std::string> LoadReport::Lines() const {
  std::vector<std::string> lines;
  auto list = [&](bool drawn, const char* heading) {
    for (const ReportEntry& e : entries_) {
      if (e.Drawn != drawn) continue;
      if (heading) lines.emplace_back(heading), heading = nullptr;
      std::string line = "  " + e.Kind + " (" + CountText(e.Count) + (e.Count == 1 ? " time" : " times");
      if (e.Line) line += ", first at line " + std::to_string(e.Line);
      lines.push_back(line + ")");
    }
  };
  if (Clean()) lines.emplace_back("Loaded cleanly: nothing was skipped, repaired or left out.");
  list(false, "Skipped, repaired or left out:");
  list(true, "Found and drawn:");
  return lines;
}

int64_t DefaultEntityBudget() {
  constexpr int64_t kMost = 50'000'000;
  const long pages = sysconf(_SC_PHYS_PAGES), pageSize = sysconf(_SC_PAGESIZE);
  if (pages <= 0 || pageSize <= 0) return kMost;
  const int64_t quarter = int64_t(pages) / 4 * int64_t(pageSize);
  return std::clamp<int64_t>(quarter / Drawing::kBytesPerRow, 1'000'000, kMost);
}

std::string CountText(int64_t count) {
  if (count == INT64_MAX) return "more than 10^18";
  return FormatGrouped(count, NumberSeparators{});
}

}  // namespace dxfimport
