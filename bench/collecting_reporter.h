#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>

namespace dxfimport::bench {

// A console reporter that also keeps the counters of every run (and its real time, as
// "real_time_ms"), by run name and counter name, for the summary table a benchmark
// prints at its end.
class CollectingReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      for (const auto& [name, counter] : run.counters) values[run.benchmark_name()][name] = counter.value;
      // The run's real time per iteration, in milliseconds.
      values[run.benchmark_name()]["real_time_ms"] =
          run.GetAdjustedRealTime() * 1e3 / benchmark::GetTimeUnitMultiplier(run.time_unit);
    }
    ConsoleReporter::ReportRuns(runs);
  }
  std::map<std::string, std::map<std::string, double>> values;
};

}  // namespace dxfimport::bench
