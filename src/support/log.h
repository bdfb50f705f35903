#pragma once

#include <string>
#include <string_view>

namespace dxfimport {

enum LogLevel : int { kLogDebug = 1, kLogCritical = 3 };

// Where log lines go. The default sink appends "level<TAB>text" lines to the log file
// named by DXFIMPORT_LOG, else to dxfimport.log in the user's state directory.
class LogSink {
 public:
  virtual ~LogSink() = default;
  virtual void Write(int level, std::string_view text) = 0;
};

class FileLogSink : public LogSink {
 public:
  explicit FileLogSink(std::string path);
  void Write(int level, std::string_view text) override;
  const std::string& path() const { return path_; }

  // DXFIMPORT_LOG, else $XDG_STATE_HOME (or ~/.local/state)/dxfimport/dxfimport.log.
  static std::string DefaultPath();

 private:
  std::string path_;
};

// Installs a sink (nullptr restores the default file sink); returns the previous one.
LogSink* SetLogSink(LogSink* sink);

// "<title> critical condition: <message>" at level 3; empty messages are not written.
void LogCritical(std::string_view message);
// "<title> debugging msg: <message>" at level 1; empty messages are not written.
void LogDebug(std::string_view message);

}  // namespace dxfimport
