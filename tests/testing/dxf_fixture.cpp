#include "testing/dxf_fixture.h"

#include <unistd.h>

#include <cstdio>
#include <fstream>

namespace dxfimport::testing {

bool RecordingLogSink::Contains(std::string_view fragment) const {
  for (const auto& [level, text] : lines)
    if (text.find(fragment) != std::string::npos) return true;
  return false;
}

Capture::Capture() : previousMessages_(SetMessageSink(&messages)), previousLog_(SetLogSink(&log)) {}

Capture::~Capture() {
  SetMessageSink(previousMessages_);
  SetLogSink(previousLog_);
}

std::string DxfText(const Pairs& pairs) {
  std::string out;
  for (const auto& [code, value] : pairs) out += std::to_string(code) + "\n" + value + "\n";
  return out;
}

std::string EntitiesFile(const Pairs& entities) {
  return DxfText({{0, "SECTION"}, {2, "ENTITIES"}}) + DxfText(entities) +
         DxfText({{0, "ENDSEC"}, {0, "EOF"}});
}

std::unique_ptr<Loaded> Load(const std::string& dxf, std::size_t rowLimit, ReadingProfile profile) {
  auto loaded = std::make_unique<Loaded>();
  loaded->drawing.SetRowLimit(rowLimit);
  loaded->drawing.InitDrawing(true);
  DXFReader reader(loaded->drawing, profile);
  // The modern profile bounds its rows by its entity budget.
  if (rowLimit != Drawing::kRowLimit) reader.SetOptions(LoadOptions{.EntityBudget = int64_t(rowLimit)});
  loaded->result = reader.LoadDXFBytes(dxf);
  loaded->outcome = reader.outcome();
  return loaded;
}

std::unique_ptr<Loaded> LoadModernFile(const std::string& path, const LoadOptions& options) {
  auto loaded = std::make_unique<Loaded>();
  loaded->drawing.InitDrawing(true);
  DXFReader reader(loaded->drawing, ReadingProfile::Modern);
  reader.SetOptions(options);
  loaded->result = reader.LoadDXF(path);
  loaded->outcome = reader.outcome();
  return loaded;
}

TempFile::TempFile(const std::string& contents, const std::string& suffix) {
  std::string name = "/tmp/dxfimport-testXXXXXX" + suffix;
  int fd = mkstemps(name.data(), int(suffix.size()));
  if (fd >= 0) ::close(fd);
  path_ = name;
  std::ofstream(path_, std::ios::binary) << contents;
}

TempFile::~TempFile() { std::remove(path_.c_str()); }

std::string SamplePath() { return std::string(DXFIMPORT_SAMPLES_DIR) + "/floorplan.dxf"; }
std::string CorpusDir() { return DXFIMPORT_CORPUS_DIR; }

}  // namespace dxfimport::testing
