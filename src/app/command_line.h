#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "app/batch_command.h"
#include "app/render_command.h"

namespace dxfimport {

// Every command, option and help text of the program, in one place: main() parses with
// it, and the build writes the manual page and the shell completion from it.
struct CommandLine {
  CommandLine();
  CommandLine(const CommandLine&) = delete;
  CommandLine& operator=(const CommandLine&) = delete;

  CLI::App app;
  std::string viewerFile;
  bool automation = false, placement = false;

  std::string file;
  bool json = false, legacy = false;
  int64_t maxEntities = 0;
  std::vector<std::string> imageFolders;
  std::vector<std::string> xrefFolders;
  std::string crs;  // EPSG:n for a drawing that does not say where it lies

  RenderOptions render;
  std::vector<std::string> renderFiles;  // several: a batch into the folder -o names
  std::string size = "640x480", window, format = "bmp";
  int jobs = 0;                              // the batch's children at once (0: one per processor)
  double fileTimeout = kDefaultFileSeconds;  // a batch's time limit per file (0: none)

  std::string sweepDir, sweepOutput;
  int sweepSeconds = 60;

  CLI::App* stats = nullptr;
  CLI::App* dump = nullptr;
  CLI::App* draw = nullptr;
  CLI::App* sweep = nullptr;
};

// The program's version (the project's version in the build).
const char* ProgramVersion();

}  // namespace dxfimport
