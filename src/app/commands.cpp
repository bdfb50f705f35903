#include "app/commands.h"
#include "app/load_for_command.h"

#include <cstdio>
#include <iostream>

#include "dxf/drawing.h"
#include "dxf/dump.h"
#include "dxf/reader.h"
#include "dxf/stats.h"

namespace dxfimport {
bool LoadForCommand(const std::string& file, Drawing& drawing, bool& complete, ReadingProfile profile) {
  drawing.InitDrawing(true);
  DXFReader reader(drawing, profile);
  bool loaded = reader.LoadDXF(file);
  const LoadOutcome& outcome = reader.outcome();
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
