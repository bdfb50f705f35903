#include <CLI/CLI.hpp>

#include <QGuiApplication>

#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

#include "app/commands.h"
#include "app/gui_modes.h"
#include "app/render_command.h"
#include "app/sweep_command.h"
#include "support/texts.h"

namespace {

// "LEFT,TOP,RIGHT,BOTTOM" in drawing units, read in the profile's precision.
std::optional<dxfimport::ZoomRect> ParseWindow(const std::string& text, dxfimport::ReadingProfile profile) {
  char tail = 0;
  if (dxfimport::ProfileRules::Of(profile).SinglePrecision) {
    float l = 0, t = 0, r = 0, b = 0;
    if (std::sscanf(text.c_str(), "%f,%f,%f,%f%c", &l, &t, &r, &b, &tail) != 4) return std::nullopt;
    return dxfimport::ZoomRect{l, t, r, b};
  }
  dxfimport::ZoomRect r;
  if (std::sscanf(text.c_str(), "%lf,%lf,%lf,%lf%c", &r.left, &r.top, &r.right, &r.bottom, &tail) != 4)
    return std::nullopt;
  return r;
}

// Headless drawing: the offscreen platform unless one is chosen, and a private runtime
// directory so that Qt has no reason to warn on a machine without a desktop session.
void PrepareHeadlessQt() {
  if (!std::getenv("QT_QPA_PLATFORM")) setenv("QT_QPA_PLATFORM", "offscreen", 0);
  if (!std::getenv("XDG_RUNTIME_DIR")) {
    std::string dir = "/tmp/dxfimport-runtime-" + std::to_string(getuid());
    mkdir(dir.c_str(), 0700);
    struct stat st {};
    if (stat(dir.c_str(), &st) == 0 && st.st_uid == getuid() && (st.st_mode & 0777) == 0700)
      setenv("XDG_RUNTIME_DIR", dir.c_str(), 0);
  }
}

}  // namespace

int main(int argc, char** argv) {
  using namespace dxfimport;
  SetApplicationTitle(LoadResText(1000));

  CLI::App app{"dxfimport: reads DXF drawings, draws them and reports on them.\n"
               "Without a command it opens the viewer (with FILE, if one is given)."};
  app.require_subcommand(0, 1);
  std::string viewerFile;
  bool automation = false;
  app.add_option("file", viewerFile, "DXF file to open in the viewer");
  app.add_flag("--automation", automation, "Host mode: the modal viewer, then the bitmap path on standard output");

  std::string file;
  bool json = false, legacy = false;
  int64_t maxEntities = 0;
  const char* budgetHelp = "Rows the drawing may hold; an insert that would pass them is left out (modern profile)";
  const char* legacyHelp = "Read with the legacy rules (every line compared with the entity names)";
  CLI::App* stats = app.add_subcommand("stats", "Print the load statistics of a drawing");
  stats->add_option("file", file, "DXF file")->required();
  stats->add_flag("--json", json, "Print the figures as one JSON object");
  stats->add_flag("--legacy", legacy, legacyHelp);
  stats->add_option("--max-entities", maxEntities, budgetHelp)->check(CLI::PositiveNumber);

  CLI::App* dump = app.add_subcommand("dump", "Print the drawing's tables as tab-separated text");
  dump->add_option("file", file, "DXF file")->required();
  dump->add_flag("--legacy", legacy, legacyHelp);
  dump->add_option("--max-entities", maxEntities, budgetHelp)->check(CLI::PositiveNumber);

  RenderOptions render;
  std::string size = "640x480", window;
  CLI::App* draw = app.add_subcommand("render", "Draw a drawing to a picture file (.bmp, .png, .svg, .pdf)");
  draw->add_option("file", render.file, "DXF file")->required();
  draw->add_option("-o,--output", render.output, "Picture file to write")->required();
  draw->add_option("--size", size, "Picture size WIDTHxHEIGHT in pixels")->capture_default_str();
  draw->add_option("--background", render.background, "Background colour (name or #rrggbb)")->capture_default_str();
  draw->add_option("--depth", render.depth, "Colour depth of a bitmap: 256, 16 or mono");
  draw->add_option("--layer-off", render.layersOff, "Do not draw this layer (repeatable)");
  draw->add_flag("--entity-colors", render.entityColors, "Draw entities in their own colours, not their layer's");
  draw->add_flag("--legacy", legacy, legacyHelp);
  draw->add_option("--window", window, "Window LEFT,TOP,RIGHT,BOTTOM in drawing units (default: the extents)");
  draw->add_option("--layout", render.layout, "Draw this paper-space layout instead of model space");
  draw->add_flag("--lineweights", render.lineWeights, "Draw line weights as pen widths");
  draw->add_option("--max-entities", maxEntities, budgetHelp)->check(CLI::PositiveNumber);

  std::string sweepDir, sweepOutput;
  int sweepSeconds = 60;
  CLI::App* sweep = app.add_subcommand("sweep", "Load and draw every .dxf file under a folder; print a table");
  sweep->add_option("dir", sweepDir, "Folder to sweep")->required();
  sweep->add_option("-o,--output", sweepOutput, "Write the Markdown table to this file");
  sweep->add_option("--seconds", sweepSeconds, "Time bound per file and profile")->capture_default_str();

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    int status = app.exit(e);
    return status == 0 ? 0 : 2;
  }
  const ReadingProfile profile = legacy ? ReadingProfile::Legacy : ReadingProfile::Modern;
  const LoadOptions budget{.EntityBudget = maxEntities};
  if (stats->parsed()) return RunStats(file, json, profile, budget);
  if (dump->parsed()) return RunDump(file, profile, budget);
  if (app.get_subcommands().empty()) {
    if (automation) return RunAutomation(argc, argv, viewerFile);
    return RunViewer(argc, argv, viewerFile);
  }
  if (sweep->parsed()) {
    PrepareHeadlessQt();
    return RunSweep(sweepDir, sweepOutput, sweepSeconds);
  }
  if (draw->parsed()) {
    render.profile = profile;
    render.maxEntities = maxEntities;
    if (std::sscanf(size.c_str(), "%dx%d", &render.width, &render.height) != 2) {
      std::fprintf(stderr, "dxfimport render: --size takes WIDTHxHEIGHT\n");
      return 2;
    }
    if (!window.empty()) {
      render.window = ParseWindow(window, profile);
      if (!render.window) {
        std::fprintf(stderr, "dxfimport render: --window takes LEFT,TOP,RIGHT,BOTTOM\n");
        return 2;
      }
    }
    PrepareHeadlessQt();
    QGuiApplication gui(argc, argv);
    return RunRender(render);
  }
  return 2;
}
