// LoadDXF throughput on synthetic drawings of 1, 10 and 100 MB against a floor that only
// splits the same bytes into lines and parses every numeric line with std::from_chars.
// The summary prints MB/s of both, their ratio and the peak memory of a load.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>

#include "collecting_reporter.h"
#include "dxf/model/drawing.h"
#include "dxf/reader.h"
#include "support/log.h"
#include "support/messages.h"
#include "synthetic_drawing.h"

namespace dxfimport::bench {
namespace {

const int kSizes[] = {1, 10, 100};

std::string DataDir() { return DXFIMPORT_BENCH_DATA; }

class QuietSinks {
 public:
  QuietSinks() : messages_(SetMessageSink(&recorder_)), log_(SetLogSink(&nothing_)) {}
  ~QuietSinks() {
    SetMessageSink(messages_);
    SetLogSink(log_);
  }

 private:
  struct Nothing : LogSink {
    void Write(int, std::string_view) override {}
  } nothing_;
  RecordingMessageSink recorder_;
  MessageSink* messages_;
  LogSink* log_;
};

std::size_t FileSize(const std::string& path) {
  struct stat st {};
  stat(path.c_str(), &st);
  return std::size_t(st.st_size);
}

// Args: megabytes, drawing style (0 R12, 1 R2000), profile (0 legacy, 1 modern).
SyntheticStyle StyleOf(const benchmark::State& state) {
  return state.range(1) ? SyntheticStyle::R2000 : SyntheticStyle::R12;
}

// The floor: map the file, split it into lines and parse every numeric line.
double FloorPass(const std::string& path, std::size_t size) {
  double sum = 0;
  int fd = open(path.c_str(), O_RDONLY);
  void* map = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fd, 0);
  close(fd);
  const char* p = static_cast<const char*>(map);
  const char* end = p + size;
  while (p < end) {
    const char* nl = static_cast<const char*>(memchr(p, '\n', std::size_t(end - p)));
    if (!nl) nl = end;
    const char* s = p;
    while (s < nl && *s == ' ') ++s;
    double v = 0;
    if (s < nl && ((*s >= '0' && *s <= '9') || *s == '-')) std::from_chars(s, nl, v);
    sum += v;
    p = nl + 1;
  }
  munmap(map, size);
  return sum;
}

// Each iteration loads the file and then runs the floor over the same bytes, so that the
// ratio compares the two at the same moment of a noisy machine.
void BM_LoadDXF(benchmark::State& state) {
  std::string path = SyntheticDrawingFile(DataDir(), int(state.range(0)), StyleOf(state));
  const ReadingProfile profile = state.range(2) ? ReadingProfile::Modern : ReadingProfile::Legacy;
  const std::size_t size = FileSize(path);
  QuietSinks quiet;
  using Clock = std::chrono::steady_clock;
  double loadSeconds = 0, floorSeconds = 0, sum = 0;
  int64_t entities = 0;
  for (auto _ : state) {
    auto start = Clock::now();
    {
      Drawing drawing;
      DXFReader reader(drawing, profile);
      if (!reader.LoadDXF(path) || !reader.outcome().Complete) state.SkipWithError("load failed");
      entities = drawing.SeqCount();
    }
    auto loaded = Clock::now();
    sum += FloorPass(path, size);
    auto floored = Clock::now();
    loadSeconds += std::chrono::duration<double>(loaded - start).count();
    floorSeconds += std::chrono::duration<double>(floored - loaded).count();
  }
  benchmark::DoNotOptimize(sum);
  const double bytes = double(size) * double(state.iterations());
  state.counters["load_MBps"] = bytes / loadSeconds / 1e6;
  state.counters["floor_MBps"] = bytes / floorSeconds / 1e6;
  state.counters["ratio"] = floorSeconds / loadSeconds;
  state.counters["entities"] = double(entities);
}

// Medians of three repetitions: the legacy profile on R12 drawings, the modern one on R12
// and R2000 drawings.
void Cases(benchmark::internal::Benchmark* b) {
  for (int mb : kSizes)
    for (auto [style, profile] : {std::pair(0, 0), std::pair(0, 1), std::pair(1, 1)})
      b->Args({mb, style, profile});
  b->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(0.5)->Repetitions(3)->ReportAggregatesOnly(true);
}
BENCHMARK(BM_LoadDXF)->Apply(Cases);

// Drawings made of inserts, read with the modern profile: 0 the grid of 200,000 inserts
// of a 50-entity symbol (10 million rows), 1 nine nested blocks that would multiply to
// 10^9 rows (left out over the entity budget).
std::string BlocksDrawing(int which) {
  return which == 0 ? SymbolGridDrawingFile(DataDir()) : NestedBlocksDrawingFile(DataDir());
}

void BM_LoadBlocks(benchmark::State& state) {
  const std::string path = BlocksDrawing(int(state.range(0)));
  QuietSinks quiet;
  int64_t entities = 0;
  for (auto _ : state) {
    Drawing drawing;
    DXFReader reader(drawing, ReadingProfile::Modern);
    if (!reader.LoadDXF(path) || !reader.outcome().Complete) state.SkipWithError("load failed");
    entities = drawing.SeqCount();
  }
  state.counters["entities"] = double(entities);
}
BENCHMARK(BM_LoadBlocks)
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(1)
    ->Repetitions(3)
    ->ReportAggregatesOnly(true);

// Bytes per stored row of each table after loading `path` with `profile`: the record's
// size, and what the table holds per row with its spare capacity and its share of the
// draw sequence.
void PrintBytesPerRow(const std::string& title, const std::string& path, ReadingProfile profile) {
  QuietSinks quiet;
  Drawing drawing;
  DXFReader reader(drawing, profile);
  reader.LoadDXF(path);
  std::printf("\n%s\n\n| table | rows | record bytes | bytes per row held |\n|---|---|---|---|\n",
              title.c_str());
  const double seqPerRow = drawing.DrawSeq.empty() ? 0
                                                   : double(drawing.DrawSeq.capacity() * sizeof(SeqEntry)) /
                                                         double(drawing.DrawSeq.size());
  auto row = [&](const char* name, const auto& table) {
    if (table.empty()) return;
    const double held = double(table.capacity() * sizeof(table[0])) / double(table.size()) + seqPerRow;
    std::printf("| %s | %zu | %zu | %.1f |\n", name, table.size(), sizeof(table[0]), held);
  };
  row("lines", drawing.Lines);
  row("polyline segments", drawing.PolySegs);
  row("arcs and circles", drawing.Arcs);
  row("texts", drawing.Texts);
  row("solids", drawing.Solids);
  row("attributes", drawing.Attribs);
  row("MTEXT", drawing.MTexts);
  std::size_t blockRows = 0, blockBytes = 0;
  for (const BlockEntry& b : drawing.Blocks) {
    blockRows += b.Content.DrawSeq.size();
    blockBytes +=
        b.Content.DrawSeq.capacity() * sizeof(SeqEntry) + b.Content.Lines.capacity() * sizeof(LineEntity) +
        b.Content.Arcs.capacity() * sizeof(ArcEntity) + b.Content.Texts.capacity() * sizeof(TextEntity) +
        b.Content.Solids.capacity() * sizeof(SolidEntity) +
        b.Content.PolySegs.capacity() * sizeof(PolySegment) +
        b.Content.Inserts.capacity() * sizeof(InsertRef) +
        b.Content.Attribs.capacity() * sizeof(AttribEntity);
  }
  if (blockRows)
    std::printf("| block records (%zu blocks of %zu bytes each) | %zu | - | %.1f |\n", drawing.Blocks.size(),
                sizeof(BlockEntry), blockRows, double(blockBytes) / double(blockRows));
}

struct PeakMemory {
  std::size_t before = 0;  // peak resident memory of the process before the load
  std::size_t after = 0;   // and after it
};

long MaxRssKb() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

// Peak resident memory of a fresh process that only loads the file, in bytes.
PeakMemory PeakMemoryOfLoad(const std::string& path, ReadingProfile profile) {
  int pipefd[2];
  if (pipe(pipefd) != 0) return {};
  pid_t pid = fork();
  if (pid == 0) {
    close(pipefd[0]);
    QuietSinks quiet;
    long kb[2] = {MaxRssKb(), 0};
    Drawing drawing;
    DXFReader reader(drawing, profile);
    reader.LoadDXF(path);
    kb[1] = MaxRssKb();
    if (write(pipefd[1], kb, sizeof kb) != sizeof kb) _exit(1);
    _exit(0);
  }
  close(pipefd[1]);
  long kb[2] = {0, 0};
  if (read(pipefd[0], kb, sizeof kb) != sizeof kb) kb[0] = kb[1] = 0;
  close(pipefd[0]);
  waitpid(pid, nullptr, 0);
  return {std::size_t(kb[0]) * 1024, std::size_t(kb[1]) * 1024};
}

}  // namespace
}  // namespace dxfimport::bench

int main(int argc, char** argv) {
  using namespace dxfimport;
  using namespace dxfimport::bench;
  for (int mb : kSizes)
    for (SyntheticStyle style : {SyntheticStyle::R12, SyntheticStyle::R2000})
      SyntheticDrawingFile(DataDir(), mb, style);
  benchmark::Initialize(&argc, argv);
  CollectingReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);

  std::printf(
      "\n| file | profile | LoadDXF MB/s | floor MB/s | ratio | process peak before | after the load | "
      "growth / file size |\n");
  std::printf("|---|---|---|---|---|---|---|---|\n");
  const char* suffix = "/min_time:0.500/repeats:3/real_time_median";
  for (int mb : kSizes) {
    for (auto [style, profile] : {std::pair(0, 0), std::pair(0, 1), std::pair(1, 1)}) {
      std::string name = "BM_LoadDXF/" + std::to_string(mb) + "/" + std::to_string(style) + "/" +
                         std::to_string(profile) + suffix;
      auto& counters = reporter.values[name];
      double load = counters["load_MBps"], floor = counters["floor_MBps"], ratio = counters["ratio"];
      if (load == 0 || floor == 0) continue;
      SyntheticStyle s = style ? SyntheticStyle::R2000 : SyntheticStyle::R12;
      ReadingProfile p = profile ? ReadingProfile::Modern : ReadingProfile::Legacy;
      std::string path = SyntheticDrawingFile(DataDir(), mb, s);
      double size = double(FileSize(path));
      PeakMemory peak = PeakMemoryOfLoad(path, p);
      std::printf("| %d MB %s | %s | %.0f | %.0f | %.0f %% | %.1f MB | %.1f MB | %.2f |\n", mb,
                  style ? "R2000" : "R12", profile ? "modern" : "legacy", load, floor, 100.0 * ratio,
                  double(peak.before) / 1e6, double(peak.after) / 1e6,
                  double(peak.after - peak.before) / size);
    }
  }
  std::printf("\n| drawing | rows drawn | load s | process peak after the load |\n|---|---|---|---|\n");
  for (int which : {0, 1}) {
    const std::string name =
        "BM_LoadBlocks/" + std::to_string(which) + "/iterations:1/repeats:3/real_time_median";
    const double ms = reporter.values[name]["real_time_ms"];
    PeakMemory peak = PeakMemoryOfLoad(BlocksDrawing(which), ReadingProfile::Modern);
    std::printf("| %s | %.0f | %.2f | %.1f MB |\n", which ? "nested blocks (10^9)" : "200,000 symbol inserts",
                reporter.values[name]["entities"], ms / 1e3, double(peak.after) / 1e6);
  }
  PrintBytesPerRow("100 MB R2000, modern profile",
                   SyntheticDrawingFile(DataDir(), 100, SyntheticStyle::R2000), ReadingProfile::Modern);
  PrintBytesPerRow("100 MB R12, legacy profile", SyntheticDrawingFile(DataDir(), 100, SyntheticStyle::R12),
                   ReadingProfile::Legacy);
  PrintBytesPerRow("200,000 symbol inserts, modern profile", BlocksDrawing(0), ReadingProfile::Modern);
  benchmark::Shutdown();
  return 0;
}
