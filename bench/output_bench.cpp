// The command line's large outputs, measured as a user runs them (the program itself, in
// a process of its own): a 40,000 x 30,000 BMP of the 100 MB drawing, drawn in strips,
// with the process's peak memory; and a batch of 100 corpus drawings in one command
// against 100 commands.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "collecting_reporter.h"
#include "synthetic_drawing.h"

extern char** environ;

namespace dxfimport::bench {
namespace {

namespace fs = std::filesystem;

struct Run {
  double seconds = 0;
  double peakMegabytes = 0;
  int status = -1;
};

// Runs the program with `args` (output streams to /dev/null) and measures it.
Run Program(const std::vector<std::string>& args) {
  std::vector<char*> argv{const_cast<char*>(DXFIMPORT_BIN)};
  for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
  const auto start = std::chrono::steady_clock::now();
  pid_t pid = 0;
  Run run;
  if (posix_spawn(&pid, DXFIMPORT_BIN, &actions, nullptr, argv.data(), environ) == 0) {
    int status = 0;
    rusage usage{};
    wait4(pid, &status, 0, &usage);
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    run.peakMegabytes = double(usage.ru_maxrss) / 1024;
  }
  run.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  posix_spawn_file_actions_destroy(&actions);
  return run;
}

// The picture as BMP (0) or as a tiled GeoTIFF (1).
void BM_HugePicture(benchmark::State& state) {
  const std::string drawing = SyntheticDrawingFile(DXFIMPORT_BENCH_DATA, 100);
  const std::string picture =
      (fs::temp_directory_path() / (state.range(0) ? "dxfimport-huge.tif" : "dxfimport-huge.bmp")).string();
  Run run;
  for (auto _ : state) run = Program({"render", drawing, "-o", picture, "--size", "40000x30000"});
  std::error_code ec;
  state.counters["bytes"] = double(fs::file_size(picture, ec));
  fs::remove(picture, ec);
  state.counters["peak_mb"] = run.peakMegabytes;
  state.counters["status"] = run.status;
}
BENCHMARK(BM_HugePicture)->Arg(0)->Arg(1)->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();

// 100 drawings of the corpus (its files in order, from the start again when it has fewer).
std::vector<std::string> HundredCorpusFiles() {
  std::vector<std::string> all;
  std::error_code ec;
  for (const auto& entry : fs::directory_iterator(DXFIMPORT_CORPUS_DIR, ec)) {
    std::string ext = entry.path().extension().string();
    if (ext == ".dxf" || ext == ".DXF") all.push_back(entry.path().string());
  }
  std::sort(all.begin(), all.end());
  std::vector<std::string> hundred;
  for (std::size_t i = 0; !all.empty() && hundred.size() < 100; ++i) hundred.push_back(all[i % all.size()]);
  return hundred;
}

void BM_Batch(benchmark::State& state) {
  const std::vector<std::string> files = HundredCorpusFiles();
  if (files.empty()) return state.SkipWithError("no corpus");
  const fs::path out = fs::temp_directory_path() / "dxfimport-batch-bench";
  double separate = 0, batch = 0;
  for (auto _ : state) {
    separate = 0;
    for (std::size_t i = 0; i < files.size(); ++i)
      separate += Program({"render", files[i], "-o", (out / (std::to_string(i) + ".bmp")).string()}).seconds;
    std::vector<std::string> args{"render"};
    args.insert(args.end(), files.begin(), files.end());
    args.insert(args.end(), {"-o", out.string()});
    batch = Program(args).seconds;
  }
  fs::remove_all(out);
  state.counters["separate_s"] = separate;
  state.counters["batch_s"] = batch;
  state.counters["batch_percent"] = 100 * batch / separate;
}
BENCHMARK(BM_Batch)->Iterations(3)->Unit(benchmark::kSecond)->UseRealTime();

}  // namespace
}  // namespace dxfimport::bench

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  dxfimport::bench::CollectingReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  auto& huge = reporter.values["BM_HugePicture/0/iterations:1/real_time"];
  auto& tiff = reporter.values["BM_HugePicture/1/iterations:1/real_time"];
  auto& batch = reporter.values["BM_Batch/iterations:3/real_time"];
  std::printf("\n| output | seconds | peak memory |\n|---|---|---|\n");
  std::printf("| 40000 x 30000 BMP of the 100 MB drawing | %.1f | %.0f MB |\n", huge["real_time_ms"] / 1000,
              huge["peak_mb"]);
  std::printf("| 40000 x 30000 GeoTIFF of the 100 MB drawing | %.1f | %.0f MB |\n",
              tiff["real_time_ms"] / 1000, tiff["peak_mb"]);
  std::printf(
      "\n| 100 corpus drawings | seconds |\n|---|---|\n| 100 commands | %.2f |\n| one batch command | %.2f "
      "(%.0f %%) |\n",
      batch["separate_s"], batch["batch_s"], batch["batch_percent"]);
  benchmark::Shutdown();
  return 0;
}
