#include "support/log.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "support/texts.h"

namespace dxfimport {
namespace {

LogSink* g_sink = nullptr;

LogSink& Sink() {
  static FileLogSink defaultSink(FileLogSink::DefaultPath());
  return g_sink ? *g_sink : defaultSink;
}

void WriteLine(int level, std::string_view infix, std::string_view message) {
  if (message.empty()) return;
  std::string line = ApplicationTitle();
  line += infix;
  line += message;
  Sink().Write(level, line);
}

}  // namespace

FileLogSink::FileLogSink(std::string path) : path_(std::move(path)) {}

std::string FileLogSink::DefaultPath() {
  if (const char* env = std::getenv("DXFIMPORT_LOG"); env && *env) return env;
  std::filesystem::path dir;
  if (const char* state = std::getenv("XDG_STATE_HOME"); state && *state)
    dir = state;
  else if (const char* home = std::getenv("HOME"); home && *home)
    dir = std::filesystem::path(home) / ".local/state";
  else
    dir = std::filesystem::temp_directory_path();
  return (dir / "dxfimport" / "dxfimport.log").string();
}

void FileLogSink::Write(int level, std::string_view text) {
  std::error_code ec;
  std::filesystem::create_directories(std::filesystem::path(path_).parent_path(), ec);
  if (std::FILE* f = std::fopen(path_.c_str(), "a")) {
    std::fprintf(f, "%d\t%.*s\n", level, static_cast<int>(text.size()), text.data());
    std::fclose(f);
  }
}

LogSink* SetLogSink(LogSink* sink) {
  LogSink* previous = g_sink;
  g_sink = sink;
  return previous;
}

void LogCritical(std::string_view message) { WriteLine(kLogCritical, " critical condition: ", message); }

void LogDebug(std::string_view message) { WriteLine(kLogDebug, " debugging msg: ", message); }

}  // namespace dxfimport
