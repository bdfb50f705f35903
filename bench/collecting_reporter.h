#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>

namespace dxfimport::bench {

// A console reporter that also keeps one counter of every run, by run name, for the
// summary table a benchmark prints at its end.
class CollectingReporter : public benchmark::ConsoleReporter {
 public:
  explicit CollectingReporter(std::string counter) : counter_(std::move(counter)) {}
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      auto it = run.counters.find(counter_);
      if (it != run.counters.end()) values[run.benchmark_name()] = it->second.value;
    }
    ConsoleReporter::ReportRuns(runs);
  }
  std::map<std::string, double> values;

 private:
  std::string counter_;
};

}  // namespace dxfimport::bench
