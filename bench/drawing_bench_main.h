#pragma once

#include <benchmark/benchmark.h>

#include <QGuiApplication>
#include <cstdlib>
#include <functional>

#include "collecting_reporter.h"
#include "support/log.h"
#include "support/messages.h"

namespace dxfimport::bench {

// Runs the benchmarks of a program that draws: under an offscreen Qt application, with
// log lines and messages swallowed; `summary` then prints its table from the counters.
inline int RunDrawingBenchmarks(int argc, char** argv,
                                const std::function<void(CollectingReporter&)>& summary) {
  struct Quiet : LogSink {
    void Write(int, std::string_view) override {}
  } quiet;
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  QGuiApplication app(argc, argv);
  LogSink* previousLog = SetLogSink(&quiet);
  RecordingMessageSink messages;
  ScopedMessageSink scoped(&messages);
  benchmark::Initialize(&argc, argv);
  CollectingReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  summary(reporter);
  benchmark::Shutdown();
  SetLogSink(previousLog);
  return 0;
}

}  // namespace dxfimport::bench
