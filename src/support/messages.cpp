#include "support/messages.h"

#include <cstdio>

#include "support/log.h"
#include "support/texts.h"

namespace dxfimport {
namespace {

MessageSink* g_sink = nullptr;

MessageSink& Sink() {
  static StderrMessageSink stderrSink;
  return g_sink ? *g_sink : stderrSink;
}

}  // namespace

void StderrMessageSink::Show(MessageIcon, const std::string&, const std::string& text) {
  std::fprintf(stderr, "%s\n", text.c_str());
  std::fflush(stderr);
}

void RecordingMessageSink::Show(MessageIcon icon, const std::string& caption, const std::string& text) {
  messages_.push_back({icon, caption, text});
}

MessageSink* SetMessageSink(MessageSink* sink) {
  MessageSink* previous = g_sink;
  g_sink = sink;
  return previous;
}

void ShowMessage(MessageIcon icon, const std::string& text) { Sink().Show(icon, ApplicationTitle(), text); }

void ReportError(std::string_view procedure, std::string_view module, const std::string& text, int number) {
  std::string number_text = std::to_string(number);
  LogCritical("Error " + number_text + ": " + text + " in module " + std::string(module) + " procedure " +
              std::string(procedure));
  ShowMessage(MessageIcon::Critical, SubstituteArgs(LoadResText(1049), {number_text, text}));
}

}  // namespace dxfimport
