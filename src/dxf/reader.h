#pragma once

#include <string>
#include <string_view>

#include "dxf/input/line_source.h"
#include "dxf/input/load_context.h"
#include "dxf/model/drawing.h"
#include "dxf/model/profile.h"

namespace dxfimport {

// Loads a DXF file into a Drawing in one pass, with the reader of the chosen profile
// (ProfileRules::MakeReader).
class DXFReader {
 public:
  explicit DXFReader(Drawing& drawing, ReadingProfile profile = ReadingProfile::Modern)
      : drawing_(drawing), profile_(profile) {}

  void SetOptions(LoadOptions options) { options_ = std::move(options); }

  // Loads a file into the drawing (which the caller has reset with InitDrawing). False
  // when the file is not DXF (message 1050) or cannot be opened (reported); true when the
  // reading ran to its end or a reader stopped it (reported by that reader). What was
  // read before a stop is kept.
  bool LoadDXF(const std::string& fileName, LoadProgress* progress = nullptr);
  // The same over bytes in memory.
  bool LoadDXFBytes(std::string_view bytes, LoadProgress* progress = nullptr);

  const LoadOutcome& outcome() const { return outcome_; }

  // True when a line whose blank-trimmed text is exactly "SECTION" exists.
  static bool LocateSection(std::string_view bytes);
  // The same for a file; false when it cannot be read.
  static bool LocateSection(const std::string& fileName);

 private:
  bool ReadAll(LoadProgress* progress);
  bool SectionInSource();

  Drawing& drawing_;
  ReadingProfile profile_;
  LoadOptions options_;
  LineSource source_;
  LoadOutcome outcome_;
  std::string converted_;  // a binary file turned into text (modern profile)
};

}  // namespace dxfimport
