// Zoom of the synthetic drawings at 1024 x 768 and 4096 x 3072, in entities per second,
// against a floor: the same number of plain drawLine calls with one pen on the same image.
#include <benchmark/benchmark.h>

#include <QPainter>
#include <map>
#include <memory>

#include "drawing_bench_main.h"
#include "dxf/model/drawing.h"
#include "dxf/reader.h"
#include "render/redraw.h"
#include "synthetic_drawing.h"

namespace dxfimport::bench {
namespace {

// The synthetic drawing of `megabytes` MB, loaded once per reading profile (1 modern:
// line types by layer make a third of its lines dashed; 0 legacy: all solid).
Drawing& Loaded(int megabytes, int modern) {
  static std::map<std::pair<int, int>, std::unique_ptr<Drawing>> drawings;
  auto& slot = drawings[{megabytes, modern}];
  if (!slot) {
    slot = std::make_unique<Drawing>();
    DXFReader reader(*slot, modern ? ReadingProfile::Modern : ReadingProfile::Legacy);
    reader.LoadDXF(SyntheticDrawingFile(DXFIMPORT_BENCH_DATA, megabytes));
  }
  return *slot;
}

void BM_Zoom(benchmark::State& state) {
  Drawing& drawing = Loaded(int(state.range(0)), int(state.range(3)));
  ImageSurface surface(int(state.range(1)), int(state.range(2)));
  ZoomState zoom(drawing);
  ZoomRect extents = ExtentsOf(drawing);
  for (auto _ : state) {
    surface.Cls();
    zoom.Zoom(extents, surface);
  }
  state.counters["entities_per_second"] = benchmark::Counter(
      double(drawing.SeqCount()) * double(state.iterations()), benchmark::Counter::kIsRate);
}

// Redraws of the modern-read 100 MB drawing at 1920 x 1080 after a first draw (which lays
// the texts out and builds the spatial index): the whole extents, and a view of 1 % of
// them (a tenth of their width and height, about their centre).
void BM_View(benchmark::State& state) {
  Drawing& drawing = Loaded(100, 1);
  ImageSurface surface(1920, 1080);
  ZoomState zoom(drawing);
  zoom.ExtentsZoom = ExtentsOf(drawing);
  ZoomRect window = zoom.ExtentsZoom;
  if (state.range(0) == 1) {
    const double cx = (window.left + window.right) / 2, cy = (window.top + window.bottom) / 2;
    const double w = (window.right - window.left) / 20, h = (window.top - window.bottom) / 20;
    window = {cx - w, cy + h, cx + w, cy - h};
  }
  surface.Cls();
  zoom.Zoom(window, surface);
  for (auto _ : state) {
    surface.Cls();
    zoom.Zoom(window, surface);
  }
}
BENCHMARK(BM_View)
    ->Arg(100)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->MinTime(0.5)
    ->Repetitions(3)
    ->ReportAggregatesOnly(true);

// Device lines for the floor: one per draw-sequence entry, from the entity's geometry.
std::vector<QLine> FloorLines(Drawing& drawing, int width, int height) {
  ImageSurface surface(width, height);
  ZoomState zoom(drawing);
  zoom.Zoom(ExtentsOf(drawing), surface);
  const DXFEngine& e = zoom.Engine;
  std::vector<QLine> lines;
  lines.reserve(drawing.DrawSeq.size());
  for (const SeqEntry& s : drawing.DrawSeq) {
    float x1 = 0, y1 = 0, x2 = 0, y2 = 0;
    switch (s.Kind) {
      case kKindLine: {
        const auto& l = drawing.Lines[s.Index - 1];
        x1 = l.X1, y1 = l.Y1, x2 = l.X2, y2 = l.Y2;
        break;
      }
      case kKindPolySeg: {
        const auto& p = drawing.PolySegs[s.Index - 1];
        x1 = p.X1, y1 = p.Y1, x2 = p.X2, y2 = p.Y2;
        break;
      }
      case kKindArc: {
        const auto& a = drawing.Arcs[s.Index - 1];
        x1 = a.CenterX - a.Radius, y1 = a.CenterY, x2 = a.CenterX + a.Radius, y2 = a.CenterY;
        break;
      }
      case kKindSolid: {
        const auto& o = drawing.Solids[s.Index - 1];
        x1 = o.X1, y1 = o.Y1, x2 = o.X3, y2 = o.Y3;
        break;
      }
      case kKindText: {
        const auto& t = drawing.Texts[s.Index - 1];
        x1 = x2 = t.X, y1 = y2 = t.Y;
        break;
      }
      default:
        break;
    }
    lines.emplace_back(e.CvtX(x1), e.CvtY(y1), e.CvtX(x2), e.CvtY(y2));
  }
  return lines;
}

void BM_FloorDrawLine(benchmark::State& state) {
  Drawing& drawing = Loaded(int(state.range(0)), int(state.range(3)));
  QImage image(int(state.range(1)), int(state.range(2)), QImage::Format_RGB32);
  std::vector<QLine> lines = FloorLines(drawing, image.width(), image.height());
  for (auto _ : state) {
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setPen(QPen(Qt::black, 0));
    for (const QLine& line : lines) painter.drawLine(line);
  }
  state.counters["entities_per_second"] =
      benchmark::Counter(double(lines.size()) * double(state.iterations()), benchmark::Counter::kIsRate);
}

void Sizes(benchmark::internal::Benchmark* b) {
  for (int mb : {1, 10, 100})
    for (auto [w, h] : {std::pair(1024, 768), std::pair(4096, 3072)})
      for (int modern : {0, 1}) b->Args({mb, w, h, modern});
  // Medians of three repetitions: the machines this runs on are shared and noisy.
  b->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(0.5)->Repetitions(3)->ReportAggregatesOnly(true);
}

BENCHMARK(BM_Zoom)->Apply(Sizes);
BENCHMARK(BM_FloorDrawLine)->Apply(Sizes);

}  // namespace
}  // namespace dxfimport::bench

int main(int argc, char** argv) {
  return dxfimport::bench::RunDrawingBenchmarks(
      argc, argv, [](dxfimport::bench::CollectingReporter& reporter) {
        std::printf("\n| view of the 100 MB drawing at 1920 x 1080 | redraw ms |\n|---|---|\n");
        for (int percent : {100, 1}) {
          const std::string name =
              "BM_View/" + std::to_string(percent) + "/min_time:0.500/repeats:3/real_time_median";
          std::printf("| %d %% of the extents | %.1f |\n", percent, reporter.values[name]["real_time_ms"]);
        }
        std::printf(
            "\n| drawing | read with | picture | Zoom entities/s | floor entities/s | ratio "
            "|\n|---|---|---|---|---|---|\n");
        for (int mb : {1, 10, 100}) {
          for (const char* size : {"1024/768", "4096/3072"}) {
            for (int modern : {0, 1}) {
              std::string args = "/" + std::to_string(mb) + "/" + size + "/" + std::to_string(modern) +
                                 "/min_time:0.500/repeats:3/real_time_median";
              double zoom = reporter.values["BM_Zoom" + args]["entities_per_second"];
              double floor = reporter.values["BM_FloorDrawLine" + args]["entities_per_second"];
              if (zoom == 0 || floor == 0) continue;
              std::printf("| %d MB | %s | %s | %.2f M | %.2f M | %.0f %% |\n", mb,
                          modern ? "modern" : "legacy", size, zoom / 1e6, floor / 1e6, 100 * zoom / floor);
            }
          }
        }
      });
}
