#include "app/commands.h"

#include <cstdio>
#include <iostream>

#include "app/load_for_command.h"
#include "dxf/input/file_kind.h"
#include "dxf/model/drawing.h"
#include "dxf/model/dump.h"
#include "dxf/model/stats.h"
#include "dxf/reader.h"
#include "geo/georeference.h"
#include "render/import_check.h"
#include "render/redraw.h"
#include "render/world_file.h"
#include "support/runtime_error.h"
#include "support/texts.h"

namespace dxfimport {
std::string LayoutNotice(const LoadOutcome& outcome) {
  if (outcome.Layout.empty()) return {};
  return SubstituteArgs(LoadResText(outcome.ModelSpaceEmpty ? 1065 : 1066), {outcome.Layout});
}

bool LoadForCommand(const std::string& file, Drawing& drawing, LoadOutcome& outcome, ReadingProfile profile,
                    const LoadOptions& options) {
  // What is no drawing at all gets one line that says what it is instead.
  if (ProfileRules::Of(profile).NamesNonDrawings) {
    if (const std::string why = NotADrawing(file); !why.empty()) {
      std::fprintf(stderr, "dxfimport: %s %s\n", file.c_str(), why.c_str());
      outcome = {};
      return false;
    }
  }
  drawing.InitDrawing(true);
  DXFReader reader(drawing, profile);
  reader.SetOptions(options);
  const bool loaded = reader.LoadDXF(file);
  outcome = reader.outcome();
  outcome.Complete = loaded && outcome.Complete;
  if (const std::string notice = LayoutNotice(outcome); !notice.empty())
    std::fprintf(stderr, "dxfimport: %s\n", notice.c_str());
  for (const ReportEntry& entry : outcome.Report.Entries()) {
    if (entry.Notice.empty()) continue;
    const std::string more = entry.Count > 1 ? " (and " + CountText(entry.Count - 1) + " more like it)" : "";
    std::fprintf(stderr, "dxfimport: %s%s\n", entry.Notice.c_str(), more.c_str());
  }
  if (!outcome.Complete && !outcome.StoppedIn.empty()) {
    std::fprintf(stderr, "dxfimport: reading of %s stopped at line %zu (%s)\n", file.c_str(),
                 outcome.StopLine, outcome.StoppedIn.c_str());
  }
  return loaded;
}

namespace {

// ,"placement":{...} for the view, or nothing when the window has no width.
std::string PlacementMember(Drawing& drawing, const PictureView& view) {
  ZoomState zoom(drawing);
  try {
    if (!zoom.PlaceView(view.window.value_or(ExtentsOf(drawing)), view.width, view.height)) return {};
  } catch (const RunTimeError&) {
    return {};
  }
  return ",\"placement\":{\"width\":" + std::to_string(view.width) +
         ",\"height\":" + std::to_string(view.height) + ",\"worldFile\":" + PlacementOf(zoom.Engine).Json() +
         "}";
}

}  // namespace

bool CrsOptionUsable(const std::string& crs, const char* command) {
  if (crs.empty() || CrsOfEpsg(EpsgOfOption(crs))) return true;
  std::fprintf(stderr, "dxfimport %s: --crs %s: no coordinate reference system of that name (EPSG:n)\n",
               command, crs.c_str());
  return false;
}

int RunStats(const std::string& file, bool json, ReadingProfile profile, const LoadOptions& options,
             const PictureView& view, const std::string& crs) {
  if (!CrsOptionUsable(crs, "stats")) return 2;
  Drawing drawing;
  LoadOutcome outcome;
  if (!LoadForCommand(file, drawing, outcome, profile, options)) return 1;
  // The legacy profile's summary is the original one; the modern profile adds its report.
  const LoadReport* report = outcome.ReportIfKept();
  // The modern profile ends with where the drawing lies and whether it serves as a
  // background.
  std::string problem;
  const Georeference geo = report ? GeoreferenceOf(drawing.Geo, file, crs, problem) : Georeference{};
  if (!problem.empty()) std::fprintf(stderr, "dxfimport: %s\n", problem.c_str());
  const ImportCheck check = report ? CheckImport(drawing, outcome, geo) : ImportCheck{};
  if (json) {
    std::string object = StatsJson(drawing, file, report);
    if (drawing.SeqCount() > 0 && !object.empty() && object.back() == '}')
      object.insert(object.size() - 1, PlacementMember(drawing, view));
    if (report && !object.empty() && object.back() == '}')
      object.insert(object.size() - 1,
                    ",\"geolocation\":" + geo.Json(drawing.Geo) + ",\"importCheck\":" + check.Json());
    std::cout << object << '\n';
  } else {
    for (const std::string& line : StatsLines(drawing, file)) std::cout << line << '\n';
    if (report) {
      std::cout << '\n';
      for (const std::string& line : report->Lines()) std::cout << line << '\n';
      std::cout << '\n';
      for (const std::string& line : check.Lines()) std::cout << line << '\n';
    }
  }
  return outcome.Complete ? 0 : 1;
}

int RunDump(const std::string& file, ReadingProfile profile, const LoadOptions& options) {
  Drawing drawing;
  LoadOutcome outcome;
  if (!LoadForCommand(file, drawing, outcome, profile, options)) return 1;
  DumpTables(drawing, std::cout);
  return outcome.Complete ? 0 : 1;
}

}  // namespace dxfimport
