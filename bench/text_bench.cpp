// Redraw of a drawing of 50,000 MTEXT paragraphs after its first draw (which lays the
// texts out once), in paragraphs per second: at 4096 x 3072 every paragraph is drawn;
// at 1024 x 768 over the whole drawing they are below the readable size and skipped,
// and zoomed to a sixteenth of it the visible ones are drawn and the rest culled.
#include <benchmark/benchmark.h>

#include <memory>

#include "drawing_bench_main.h"
#include "dxf/model/drawing.h"
#include "dxf/reader.h"
#include "render/redraw.h"
#include "synthetic_drawing.h"

namespace dxfimport::bench {
namespace {

constexpr int kParagraphs = 50000;

Drawing& Labels() {
  static std::unique_ptr<Drawing> drawing;
  if (!drawing) {
    drawing = std::make_unique<Drawing>();
    DXFReader reader(*drawing, ReadingProfile::Modern);
    reader.LoadDXF(MTextDrawingFile(DXFIMPORT_BENCH_DATA, kParagraphs));
  }
  return *drawing;
}

// Arguments: picture width, height, and the share of the drawing's width shown (1 in n).
void BM_RedrawMText(benchmark::State& state) {
  Drawing& drawing = Labels();
  ImageSurface surface(int(state.range(0)), int(state.range(1)));
  ZoomState zoom(drawing);
  ZoomRect window = ExtentsOf(drawing);
  const double part = double(state.range(2));
  window.right = window.left + (window.right - window.left) / part;
  window.top = window.bottom + (window.top - window.bottom) / part;
  surface.Cls();
  zoom.Zoom(window, surface);  // the first draw lays the texts out
  for (auto _ : state) {
    surface.Cls();
    zoom.Zoom(window, surface);
  }
  state.counters["paragraphs_per_second"] = benchmark::Counter(
      double(drawing.MTexts.size()) * double(state.iterations()), benchmark::Counter::kIsRate);
}

BENCHMARK(BM_RedrawMText)
    ->Args({4096, 3072, 1})
    ->Args({1024, 768, 1})
    ->Args({1024, 768, 4})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->MinTime(0.5)
    ->Repetitions(3)
    ->ReportAggregatesOnly(true);

}  // namespace
}  // namespace dxfimport::bench

int main(int argc, char** argv) {
  return dxfimport::bench::RunDrawingBenchmarks(
      argc, argv, [](dxfimport::bench::CollectingReporter& reporter) {
        std::printf("\n| picture | window | paragraphs/s |\n|---|---|---|\n");
        for (const std::string args : {"4096/3072/1", "1024/768/1", "1024/768/4"}) {
          const std::string name = "BM_RedrawMText/" + args + "/min_time:0.500/repeats:3/real_time_median";
          const double rate = reporter.values[name]["paragraphs_per_second"];
          std::printf("| %s | %s | %.0f k |\n", args.substr(0, args.rfind('/')).c_str(),
                      args.ends_with("/1") ? "whole drawing" : "a sixteenth", rate / 1e3);
        }
      });
}
