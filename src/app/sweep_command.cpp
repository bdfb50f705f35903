#include "app/sweep_command.h"

#include <unistd.h>

#include <QGuiApplication>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <vector>

#include "app/batch_command.h"
#include "app/child_process.h"
#include "dxf/reader.h"
#include "render/redraw.h"
#include "support/log.h"
#include "support/messages.h"

namespace dxfimport {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

struct Result {
  std::string status = "ok";  // ok, reported, crash, timeout
  double loadMs = 0, drawMs = 0;
  long entities = 0;
  std::string message;
};

double Millis(Clock::time_point since) {
  return std::chrono::duration<double, std::milli>(Clock::now() - since).count();
}

// In the child: load and draw, then write "status\tload\tentities\tdraw\tmessage".
int SweepChild(const fs::path& file, ReadingProfile profile, int fd) {
  struct Quiet : LogSink {
    void Write(int, std::string_view) override {}
  } quiet;
  SetLogSink(&quiet);
  RecordingMessageSink messages;
  SetMessageSink(&messages);
  int argc = 1;
  char name[] = "dxfimport";
  char* argv[] = {name, nullptr};
  QGuiApplication app(argc, argv);
  Drawing drawing;
  DXFReader reader(drawing, profile);
  auto start = Clock::now();
  reader.LoadDXF(file.string());
  double loadMs = Millis(start);
  const std::size_t loadReports = messages.messages().size();
  ImageSurface surface(640, 480);
  start = Clock::now();
  if (drawing.SeqCount() > 0) ZoomState(drawing).Zoom(ExtentsOf(drawing), surface);
  double drawMs = Millis(start);
  bool reported = loadReports > 0;
  std::string message = reported ? messages.messages().front().text : "";
  if (messages.messages().size() > loadReports) message += " draw: " + messages.messages()[loadReports].text;
  std::replace(message.begin(), message.end(), '\n', ' ');
  std::ostringstream line;
  line << (reported ? "reported" : "ok") << '\t' << loadMs << '\t' << drawing.SeqCount() << '\t' << drawMs
       << '\t' << message;
  std::string text = line.str();
  ssize_t written = write(fd, text.data(), text.size());
  return written == ssize_t(text.size()) ? 0 : 1;
}

Result SweepFile(const fs::path& file, ReadingProfile profile, int seconds) {
  ChildProcess child([&](int fd, int) { return SweepChild(file, profile, fd); }, unsigned(seconds));
  if (!child.Started()) return {"crash", 0, 0, 0, "no child process"};
  child.Finish();
  Result r;
  if (child.Signal() != 0) {
    r.status = child.TimedOut() ? "timeout" : "crash";
    r.message = "signal " + std::to_string(child.Signal());
    return r;
  }
  const std::string& text = child.Output();
  std::istringstream in(text);
  std::getline(in, r.status, '\t');
  in >> r.loadMs;
  in.ignore(1);
  in >> r.entities;
  in.ignore(1);
  in >> r.drawMs;
  in.ignore(1);
  std::getline(in, r.message);
  if (r.status.empty()) r.status = "crash", r.message = "exit " + std::to_string(child.ExitCode());
  return r;
}

std::string Cell(const Result& r) {
  char buffer[160];
  std::snprintf(buffer, sizeof buffer, "%.0f | %ld | %s | %.0f", r.loadMs, r.entities,
                r.status == "ok" ? "no" : r.status.c_str(), r.drawMs);
  std::string cell = buffer;
  if (!r.message.empty()) cell += " (" + r.message + ")";
  return cell;
}

}  // namespace

int RunSweep(const std::string& dir, const std::string& output, int secondsPerFile) {
  std::vector<fs::path> files;
  for (const std::string& file : DxfFilesUnder(dir)) files.push_back(file);
  if (files.empty()) {
    std::fprintf(stderr, "dxfimport sweep: no .dxf files under %s\n", dir.c_str());
    return 1;
  }
  std::ostringstream table;
  table << "| file | bytes | legacy: load ms | entities | error routine | draw ms | modern: load ms | "
           "entities | "
           "error routine | draw ms |\n|---|---|---|---|---|---|---|---|---|---|\n";
  int failures = 0;
  for (const fs::path& file : files) {
    Result legacy = SweepFile(file, ReadingProfile::Legacy, secondsPerFile);
    Result modern = SweepFile(file, ReadingProfile::Modern, secondsPerFile);
    for (const Result* r : {&legacy, &modern}) failures += r->status == "crash" || r->status == "timeout";
    table << "| " << fs::relative(file, dir).string() << " | " << fs::file_size(file) << " | " << Cell(legacy)
          << " | " << Cell(modern) << " |\n";
  }
  if (output.empty()) {
    std::cout << table.str();
  } else {
    std::ofstream(output) << table.str();
  }
  return failures == 0 ? 0 : 1;
}

}  // namespace dxfimport
