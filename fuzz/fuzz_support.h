#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "dxf/model/drawing.h"
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

// Loads the fuzzer's bytes with each reading profile in turn and hands each drawing on.
template <class Use>
void LoadWithEachProfile(const uint8_t* data, std::size_t size, Use&& use) {
  static Silence silence;
  std::string_view bytes(reinterpret_cast<const char*>(data), size);
  for (ReadingProfile profile : {ReadingProfile::Legacy, ReadingProfile::Modern}) {
    Drawing drawing;
    drawing.SetRowLimit(kFuzzRowLimit);
    DXFReader reader(drawing, profile);
    reader.SetOptions(LoadOptions{.EntityBudget = int64_t(kFuzzRowLimit)});
    reader.LoadDXFBytes(bytes);
    use(drawing);
  }
}

// Loads the bytes with the modern profile alone and hands the drawing on.
template <class Use>
void LoadModern(std::string_view bytes, Use&& use) {
  static Silence silence;
  Drawing drawing;
  drawing.SetRowLimit(kFuzzRowLimit);
  DXFReader reader(drawing, ReadingProfile::Modern);
  reader.SetOptions(LoadOptions{.EntityBudget = int64_t(kFuzzRowLimit)});
  reader.LoadDXFBytes(bytes);
  use(drawing);
}

// The LLVMFuzzerInitialize of the fuzzers that draw: an offscreen Qt application, for
// fonts and images.
int StartGui(int* argc, char*** argv);

// Draws a modern drawing into a small picture with smooth lines and line weights: its
// extents, a window zoomed into the middle, and a window far off to the side.
void DrawModern(Drawing& drawing);

}  // namespace dxfimport::fuzz
