// Inputs that once hung the modern profile, timed: each MTEXT typing slip loaded as a
// drawing of its own, and a huge arc, circle and dashed line loaded and drawn at
// 1024 x 768. Each must take less than a millisecond to load and a second to draw.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>
#include <vector>

#include "drawing_bench_main.h"
#include "dxf/model/drawing.h"
#include "dxf/reader.h"
#include "render/redraw.h"

namespace dxfimport::bench {
namespace {

struct Hostile {
  const char* name;
  std::string file;
};

std::string Pairs(const std::vector<std::pair<int, std::string>>& pairs) {
  std::string text;
  for (const auto& [code, value] : pairs) text += std::to_string(code) + "\n" + value + "\n";
  return text;
}

std::string MText(const std::string& content) {
  return Pairs({{0, "SECTION"},
                {2, "ENTITIES"},
                {0, "MTEXT"},
                {10, "0"},
                {20, "0"},
                {40, "2.5"},
                {1, content},
                {0, "ENDSEC"},
                {0, "EOF"}});
}

const std::vector<Hostile>& Inputs() {
  static const std::vector<Hostile> inputs = {
      {"MTEXT TL\\ptower", MText("TL\\ptower")},
      {"MTEXT \\pt", MText("\\pt")},
      {"MTEXT \\pxi-3,l", MText("\\pxi-3,l")},
      {"MTEXT {\\H", MText("{\\H")},
      {"MTEXT \\S1^", MText("\\S1^")},
      {"MTEXT {\\f", MText("{\\f")},
      {"ARC from 1e20 degrees", Pairs({{0, "SECTION"},
                                       {2, "ENTITIES"},
                                       {0, "ARC"},
                                       {10, "0"},
                                       {20, "0"},
                                       {40, "10"},
                                       {50, "1e20"},
                                       {51, "30"},
                                       {0, "ENDSEC"},
                                       {0, "EOF"}})},
      {"CIRCLE of radius 1e300", Pairs({{0, "SECTION"},
                                        {2, "ENTITIES"},
                                        {0, "CIRCLE"},
                                        {10, "0"},
                                        {20, "0"},
                                        {40, "1e300"},
                                        {0, "ENDSEC"},
                                        {0, "EOF"}})},
      {"dashed LINE 1e20 long",
       Pairs({{0, "SECTION"},  {2, "TABLES"}, {0, "TABLE"},  {2, "LTYPE"},  {0, "LTYPE"},  {2, "DASHED"},
              {73, "2"},       {49, "0.5"},   {49, "-0.25"}, {0, "ENDTAB"}, {0, "ENDSEC"}, {0, "SECTION"},
              {2, "ENTITIES"}, {0, "LINE"},   {6, "DASHED"}, {10, "0"},     {20, "0"},     {11, "1e20"},
              {21, "1e20"},    {0, "LINE"},   {6, "DASHED"}, {10, "0"},     {20, "0"},     {11, "100"},
              {21, "0"},       {0, "ENDSEC"}, {0, "EOF"}})},
  };
  return inputs;
}

void BM_Load(benchmark::State& state) {
  const Hostile& input = Inputs()[std::size_t(state.range(0))];
  for (auto _ : state) {
    Drawing drawing;
    DXFReader reader(drawing, ReadingProfile::Modern);
    reader.LoadDXFBytes(input.file);
    benchmark::DoNotOptimize(drawing.SeqCount());
  }
  state.SetLabel(input.name);
}

// Loads and draws the whole drawing (texts laid out on the way), then a view of its
// corner at a thousand times the zoom.
void BM_LoadAndDraw(benchmark::State& state) {
  const Hostile& input = Inputs()[std::size_t(state.range(0))];
  ImageSurface surface(1024, 768);
  for (auto _ : state) {
    Drawing drawing;
    DXFReader reader(drawing, ReadingProfile::Modern);
    reader.LoadDXFBytes(input.file);
    ZoomState zoom(drawing);
    const ZoomRect extents = ExtentsOf(drawing);
    surface.Cls();
    zoom.Zoom(extents, surface);
    zoom.Zoom({extents.left, extents.top, extents.left + (extents.right - extents.left) / 1000,
               extents.top - (extents.top - extents.bottom) / 1000},
              surface);
  }
  state.SetLabel(input.name);
}

BENCHMARK(BM_Load)->DenseRange(0, 5)->Unit(benchmark::kMicrosecond)->MinTime(0.2);
BENCHMARK(BM_LoadAndDraw)->DenseRange(0, 8)->Unit(benchmark::kMillisecond)->MinTime(0.2);

}  // namespace
}  // namespace dxfimport::bench

int main(int argc, char** argv) {
  using dxfimport::bench::Inputs;
  return dxfimport::bench::RunDrawingBenchmarks(
      argc, argv, [](dxfimport::bench::CollectingReporter& reporter) {
        std::printf("\n| input | load | load and draw at 1024 x 768 |\n|---|---|---|\n");
        for (std::size_t i = 0; i < Inputs().size(); ++i) {
          const std::string n = std::to_string(i);
          const auto load = reporter.values.find("BM_Load/" + n + "/min_time:0.200");
          const auto draw = reporter.values.find("BM_LoadAndDraw/" + n + "/min_time:0.200");
          char loadText[32] = "";
          if (load != reporter.values.end())
            std::snprintf(loadText, sizeof loadText, "%.1f us", load->second["real_time_ms"] * 1e3);
          std::printf("| %s | %s | %.2f ms |\n", Inputs()[i].name, loadText,
                      draw != reporter.values.end() ? draw->second["real_time_ms"] : -1.0);
        }
      });
}
