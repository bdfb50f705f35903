#include "app/commands.h"
#include "app/load_for_command.h"

#include <cstdio>
#include <iostream>

#include "dxf/drawing.h"
#include "dxf/dump.h"
#include "dxf/reader.h"
#include "dxf/stats.h"
#include "support/texts.h"

namespace dxfimport {
std::string LayoutNotice(const LoadOutcome& outcome) {
  if (outcome.Layout.empty()) return {};
  return SubstituteArgs(LoadResText(outcome.ModelSpaceEmpty ? 1065 : 1066), {outcome.Layout});
}

bool LoadForCommand(const std::string& file, Drawing& drawing, bool& complete, ReadingProfile profile,
                    const LoadOptions& options) {
  drawing.InitDrawing(true);
  DXFReader reader(drawing, profile);
  reader.SetOptions(options);
  bool loaded = reader.LoadDXF(file);
  const LoadOutcome& outcome = reader.outcome();
  if (const std::string notice = LayoutNotice(outcome); !notice.empty())
    std::fprintf(stderr, "dxfimport: %s\n", notice.c_str());
  complete = loaded && outcome.Complete;
  if (!complete && !outcome.StoppedIn.empty()) {
    std::fprintf(stderr, "dxfimport: reading of %s stopped at line %zu (%s)\n", file.c_str(), outcome.StopLine,
                 outcome.StoppedIn.c_str());
  }
  return loaded;
}

int RunStats(const std::string& file, bool json, ReadingProfile profile) {
  Drawing drawing;
  bool complete = false;
  if (!LoadForCommand(file, drawing, complete, profile)) return 1;
  if (json) {
    std::cout << StatsJson(drawing, file) << '\n';
  } else {
    for (const std::string& line : StatsLines(drawing, file)) std::cout << line << '\n';
  }
  return complete ? 0 : 1;
}

int RunDump(const std::string& file, ReadingProfile profile) {
  Drawing drawing;
  bool complete = false;
  if (!LoadForCommand(file, drawing, complete, profile)) return 1;
  DumpTables(drawing, std::cout);
  return complete ? 0 : 1;
}

}  // namespace dxfimport
