#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "support/runtime_error.h"

namespace dxfimport {

enum class MessageIcon { Information, Critical };

// Where message boxes go: a dialog in the viewer, standard error on the command line, a
// recorder in tests. The caption is always the application title.
class MessageSink {
 public:
  virtual ~MessageSink() = default;
  virtual void Show(MessageIcon icon, const std::string& caption, const std::string& text) = 0;
};

// Prints each message on standard error.
class StderrMessageSink : public MessageSink {
 public:
  void Show(MessageIcon icon, const std::string& caption, const std::string& text) override;
};

// Keeps every message; for tests and for callers that decide later what to show.
class RecordingMessageSink : public MessageSink {
 public:
  struct Message {
    MessageIcon icon;
    std::string caption;
    std::string text;
  };
  void Show(MessageIcon icon, const std::string& caption, const std::string& text) override;
  const std::vector<Message>& messages() const { return messages_; }
  void clear() { messages_.clear(); }

 private:
  std::vector<Message> messages_;
};

// Installs a sink (nullptr restores standard error); returns the previous one.
MessageSink* SetMessageSink(MessageSink* sink);

// Installs a sink for the lifetime of the guard.
class ScopedMessageSink {
 public:
  explicit ScopedMessageSink(MessageSink* sink) : previous_(SetMessageSink(sink)) {}
  ~ScopedMessageSink() { SetMessageSink(previous_); }
  ScopedMessageSink(const ScopedMessageSink&) = delete;
  ScopedMessageSink& operator=(const ScopedMessageSink&) = delete;

 private:
  MessageSink* previous_;
};

// A message box captioned with the application title.
void ShowMessage(MessageIcon icon, const std::string& text);

// Runs a procedure's body as every procedure runs it: a run-time error in it is handed to
// ReportError under the procedure's and module's names, and the procedure is left. True
// when the body ran to its end.
template <class Body>
bool RunReported(std::string_view procedure, std::string_view module, Body&& body);

// The one error routine: logs "Error <number>: <text> in module <module> procedure
// <procedure>" at the critical level and shows text 1049 with the number and the text.
void ReportError(std::string_view procedure, std::string_view module, const std::string& text, int number);

template <class Body>
bool RunReported(std::string_view procedure, std::string_view module, Body&& body) {
  try {
    body();
    return true;
  } catch (const RunTimeError& e) {
    ReportError(procedure, module, e.text(), e.number());
    return false;
  }
}

}  // namespace dxfimport
