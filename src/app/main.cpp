#include <CLI/CLI.hpp>

#include "app/commands.h"
#include "support/texts.h"

int main(int argc, char** argv) {
  using namespace dxfimport;
  SetApplicationTitle(LoadResText(1000));

  CLI::App app{"dxfimport: reads DXF drawings, shows their statistics and tables"};
  app.require_subcommand(1);

  std::string file;
  bool json = false;
  CLI::App* stats = app.add_subcommand("stats", "Print the load statistics of a drawing");
  stats->add_option("file", file, "DXF file")->required();
  stats->add_flag("--json", json, "Print the figures as one JSON object");

  CLI::App* dump = app.add_subcommand("dump", "Print the drawing's tables as tab-separated text");
  dump->add_option("file", file, "DXF file")->required();

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    int status = app.exit(e);
    return status == 0 ? 0 : 2;
  }
  if (stats->parsed()) return RunStats(file, json);
  if (dump->parsed()) return RunDump(file);
  return 2;
}
