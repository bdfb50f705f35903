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

std::string WithObjects(std::string dxf, const Pairs& objects) {
  const std::string eof = DxfText({{0, "EOF"}});
  if (dxf.ends_with(eof)) dxf.resize(dxf.size() - eof.size());
  return dxf + DxfText({{0, "SECTION"}, {2, "OBJECTS"}}) + DxfText(objects) + DxfText({{0, "ENDSEC"}}) + eof;
}

Pairs DictionaryEntry(const std::string& handle, const char* name, const std::string& entry) {
  return Pairs{{0, "DICTIONARY"}, {5, handle}, {3, name}, {360, entry}};
}

Pairs ClipObjects(const std::string& handle, const char* right, const char* top, const char* dy,
                  const char* extension) {
  Pairs objects = DictionaryEntry(handle, "ACAD_FILTER", handle + "1");
  const Pairs spatial = DictionaryEntry(handle + "1", "SPATIAL", handle + "2");
  objects.insert(objects.end(), spatial.begin(), spatial.end());
  objects.insert(objects.end(), {{0, "SPATIAL_FILTER"}, {5, handle + "2"}});
  if (*extension) objects.insert(objects.end(), {{102, "{ACAD_XDICTIONARY"}, {360, extension}, {102, "}"}});
  // The boundary's two corners, then the map from that world to block coordinates.
  objects.insert(objects.end(), {{100, "AcDbSpatialFilter"},
                                 {70, "2"},
                                 {10, "0"},
                                 {20, "0"},
                                 {10, right},
                                 {20, top},
                                 {71, "1"},
                                 {40, "1"},
                                 {40, "0"},
                                 {40, "0"},
                                 {40, "0"},
                                 {40, "0"},
                                 {40, "1"},
                                 {40, "0"},
                                 {40, dy},
                                 {40, "0"},
                                 {40, "0"},
                                 {40, "1"},
                                 {40, "0"}});
  return objects;
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
