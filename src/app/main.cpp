#include <sys/stat.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <QGuiApplication>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "app/batch_command.h"
#include "app/command_line.h"
#include "app/commands.h"
#include "app/gui_modes.h"
#include "app/render_command.h"
#include "app/sweep_command.h"
#include "support/texts.h"

namespace {

// "LEFT,TOP,RIGHT,BOTTOM" in drawing units, read in the profile's precision.
std::optional<dxfimport::ZoomRect> ParseWindow(const std::string& text, dxfimport::ReadingProfile profile) {
  return dxfimport::ProfileRules::Of(profile).InPrecision(
      [&text]<class Real>(Real) -> std::optional<dxfimport::ZoomRect> {
        Real l = 0, t = 0, r = 0, b = 0;
        char tail = 0;
        int read = 0;
        if constexpr (sizeof(Real) == sizeof(float))
          read = std::sscanf(text.c_str(), "%f,%f,%f,%f%c", &l, &t, &r, &b, &tail);
        else
          read = std::sscanf(text.c_str(), "%lf,%lf,%lf,%lf%c", &l, &t, &r, &b, &tail);
        if (read != 4) return std::nullopt;
        return dxfimport::ZoomRect{l, t, r, b};
      });
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

  CommandLine cl;
  CLI::App& app = cl.app;
  RenderOptions& render = cl.render;
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    int status = app.exit(e);
    return status == 0 ? 0 : 2;
  }
  const ReadingProfile profile = cl.legacy ? ReadingProfile::Legacy : ReadingProfile::Modern;
  const LoadOptions budget{
      .EntityBudget = cl.maxEntities, .ImageFolders = cl.imageFolders, .XrefFolders = cl.xrefFolders};
  if (app.get_subcommands().empty()) {
    if (cl.automation) return RunAutomation(argc, argv, cl.viewerFile, cl.placement);
    return RunViewer(argc, argv, cl.viewerFile);
  }
  if (cl.dump->parsed()) return RunDump(cl.file, profile, budget);
  if (cl.sweep->parsed()) {
    PrepareHeadlessQt();
    return RunSweep(cl.sweepDir, cl.sweepOutput, cl.sweepSeconds);
  }
  const char* command = cl.stats->parsed() ? "stats" : "render";
  PictureView view;
  if (std::sscanf(cl.size.c_str(), "%dx%d", &view.width, &view.height) != 2) {
    std::fprintf(stderr, "dxfimport %s: --size takes WIDTHxHEIGHT\n", command);
    return 2;
  }
  if (!cl.window.empty()) {
    view.window = ParseWindow(cl.window, profile);
    if (!view.window) {
      std::fprintf(stderr, "dxfimport %s: --window takes LEFT,TOP,RIGHT,BOTTOM\n", command);
      return 2;
    }
  }
  if (cl.stats->parsed()) {
    PrepareHeadlessQt();  // the fonts of the import check
    QGuiApplication gui(argc, argv);
    return RunStats(cl.file, cl.json, profile, budget, view, cl.crs);
  }
  if (cl.draw->parsed()) {
    render.profile = profile;
    if (cl.draw->get_option("--monochrome")->count() > 0 && render.monochrome.empty())
      render.monochrome = "black";
    render.maxEntities = cl.maxEntities;
    render.imageFolders = cl.imageFolders;
    render.xrefFolders = cl.xrefFolders;
    render.width = view.width, render.height = view.height, render.window = view.window;
    PrepareHeadlessQt();
    std::error_code ec;
    const std::vector<std::string> files = ExpandInputs(cl.renderFiles);
    if (files != cl.renderFiles || files.size() > 1 || std::filesystem::is_directory(render.output, ec)) {
      const int jobs = cl.jobs > 0 ? cl.jobs : int(std::max(1u, std::thread::hardware_concurrency()));
      return RunRenderBatch(render, files, cl.format, jobs, cl.fileTimeout);
    }
    render.file = cl.renderFiles.front();
    QGuiApplication gui(argc, argv);
    return RunRender(render);
  }
  return 2;
}
