#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "dxf/drawing.h"
#include "dxf/reader.h"
#include "support/log.h"
#include "support/messages.h"

namespace dxfimport::fuzz {

// Messages and log lines are dropped: the fuzzers look for crashes, leaks, hangs and
// undefined behaviour, not for what a bad file says.
class Silence : public MessageSink, public LogSink {
 public:
  Silence() {
    SetMessageSink(this);
    SetLogSink(this);
  }
  void Show(MessageIcon, const std::string&, const std::string&) override {}
  void Write(int, std::string_view) override {}
};

// Rows a fuzzed drawing may hold: small enough that a block that multiplies itself stops
// within milliseconds.
inline constexpr std::size_t kFuzzRowLimit = 200000;

inline void Load(Drawing& drawing, std::string_view bytes, ReadingProfile profile) {
  drawing.InitDrawing(true);
  drawing.SetRowLimit(kFuzzRowLimit);
  DXFReader reader(drawing, profile);
  reader.LoadDXFBytes(bytes);
}

}  // namespace dxfimport::fuzz
