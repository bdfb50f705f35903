#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "dxf/model/drawing.h"
#include "dxf/reader.h"
#include "support/log.h"
#include "support/messages.h"

namespace dxfimport::testing {

// Keeps every log line.
class RecordingLogSink : public LogSink {
 public:
  void Write(int level, std::string_view text) override { lines.emplace_back(level, std::string(text)); }
  bool Contains(std::string_view fragment) const;
  std::vector<std::pair<int, std::string>> lines;
};

// Installs recording message and log sinks for the lifetime of a test.
class Capture {
 public:
  Capture();
  ~Capture();
  RecordingMessageSink messages;
  RecordingLogSink log;

 private:
  MessageSink* previousMessages_;
  LogSink* previousLog_;
};

// Group-code/value pairs written as DXF lines.
using Pairs = std::vector<std::pair<int, std::string>>;
std::string DxfText(const Pairs& pairs);

// A complete file: a SECTION line, then the ENTITIES section holding `entities`.
std::string EntitiesFile(const Pairs& entities);
// A complete file `dxf` with an OBJECTS section holding `objects` before its EOF.
std::string WithObjects(std::string dxf, const Pairs& objects);
// The objects of a clipped block reference (XCLIP): the insert's extension dictionary
// `handle` leads through an ACAD_FILTER dictionary (handle + "1") to the SPATIAL_FILTER
// (handle + "2") of the rectangle 0..right x 0..top, made where the block's origin was at
// (0, -dy); `extension` is the filter's own extension dictionary ("" none).
Pairs ClipObjects(const std::string& handle, const char* right, const char* top, const char* dy,
                  const char* extension = "");
// One DICTIONARY with one entry.
Pairs DictionaryEntry(const std::string& handle, const char* name, const std::string& entry);

// The result of loading text through LoadDXFBytes, with what was shown and logged.
struct Loaded {
  Capture capture;
  Drawing drawing;
  bool result = false;
  LoadOutcome outcome;
};
// `rowLimit` overrides the drawing's bound on stored rows. The reading rules' own tests
// read with the legacy profile; the modern profile's tests ask for it.
std::unique_ptr<Loaded> Load(const std::string& dxf, std::size_t rowLimit = Drawing::kRowLimit,
                             ReadingProfile profile = ReadingProfile::Legacy);
inline std::unique_ptr<Loaded> LoadModern(const std::string& dxf) {
  return Load(dxf, Drawing::kRowLimit, ReadingProfile::Modern);
}
// A file read with the modern profile (what it names is looked for beside it).
std::unique_ptr<Loaded> LoadModernFile(const std::string& path, const LoadOptions& options = {});

// A file in the temporary directory, removed with the object.
class TempFile {
 public:
  explicit TempFile(const std::string& contents, const std::string& suffix = ".dxf");
  ~TempFile();
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

std::string SamplePath();
std::string CorpusDir();

}  // namespace dxfimport::testing
