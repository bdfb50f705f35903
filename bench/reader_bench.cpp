// LoadDXF throughput on synthetic drawings of 1, 10 and 100 MB against a floor that only
// splits the same bytes into lines and parses every numeric line with std::from_chars.
// The summary prints MB/s of both, their ratio and the peak memory of a load.
#include <benchmark/benchmark.h>

#include <charconv>
#include <cstdlib>
#include <cstring>
#include <cstdio>
#include <fcntl.h>
#include <map>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "dxf/drawing.h"
#include "dxf/reader.h"
#include "support/log.h"
#include "support/messages.h"
#include "collecting_reporter.h"
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

void BM_LoadDXF(benchmark::State& state) {
  std::string path = SyntheticDrawingFile(DataDir(), int(state.range(0)));
  QuietSinks quiet;
  int64_t entities = 0;
  for (auto _ : state) {
    Drawing drawing;
    DXFReader reader(drawing);
    if (!reader.LoadDXF(path) || !reader.outcome().Complete) state.SkipWithError("load failed");
    entities = drawing.SeqCount();
  }
  state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(FileSize(path)));
  state.counters["entities"] = double(entities);
}

// The floor: map the same file, split it into lines and parse every numeric line.
void BM_Floor(benchmark::State& state) {
  std::string path = SyntheticDrawingFile(DataDir(), int(state.range(0)));
  std::size_t size = FileSize(path);
  double sum = 0;
  for (auto _ : state) {
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
  }
  benchmark::DoNotOptimize(sum);
  state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(size));
}

// Medians of three repetitions: the machines this runs on are shared and noisy.
#define DXF_SIZES(b) \
  b->Arg(1)->Arg(10)->Arg(100)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(0.5)->Repetitions(3)->ReportAggregatesOnly(true)
DXF_SIZES(BENCHMARK(BM_LoadDXF));
DXF_SIZES(BENCHMARK(BM_Floor));

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
PeakMemory PeakMemoryOfLoad(const std::string& path) {
  int pipefd[2];
  if (pipe(pipefd) != 0) return {};
  pid_t pid = fork();
  if (pid == 0) {
    close(pipefd[0]);
    QuietSinks quiet;
    long kb[2] = {MaxRssKb(), 0};
    Drawing drawing;
    DXFReader reader(drawing);
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
  using namespace dxfimport::bench;
  for (int mb : kSizes) SyntheticDrawingFile(DataDir(), mb);
  benchmark::Initialize(&argc, argv);
  CollectingReporter reporter("bytes_per_second");
  benchmark::RunSpecifiedBenchmarks(&reporter);

  std::printf("\n| file | LoadDXF MB/s | floor MB/s | ratio | process peak before | after the load | growth / file size |\n");
  std::printf("|---|---|---|---|---|---|---|\n");
  for (int mb : kSizes) {
    std::string arg = "/" + std::to_string(mb) + "/min_time:0.500/repeats:3/real_time_median";
    double load = reporter.values["BM_LoadDXF" + arg] / 1e6;
    double floor = reporter.values["BM_Floor" + arg] / 1e6;
    std::string path = SyntheticDrawingFile(DataDir(), mb);
    double size = double(FileSize(path));
    PeakMemory peak = PeakMemoryOfLoad(path);
    std::printf("| %d MB | %.0f | %.0f | %.0f %% | %.1f MB | %.1f MB | %.2f |\n", mb, load, floor,
                floor > 0 ? 100.0 * load / floor : 0.0, double(peak.before) / 1e6, double(peak.after) / 1e6,
                double(peak.after - peak.before) / size);
  }
  benchmark::Shutdown();
  return 0;
}
