#include "dxf/reader.h"

#include <memory>

#include "dxf/input/binary_dxf.h"
#include "support/messages.h"
#include "support/text_decode.h"
#include "support/texts.h"

namespace dxfimport {

constexpr std::size_t kScanReleaseStep = 8u << 20;  // hand back mapped pages every 8 MiB

bool DXFReader::LocateSection(std::string_view bytes) {
  while (!bytes.empty())
    if (Trim(NextLine(bytes)) == "SECTION") return true;
  return false;
}

// The validity scan over the open file, handing back the pages it has looked at.
bool DXFReader::SectionInSource() {
  const std::string_view bytes = source_.bytes();
  std::size_t nextRelease = kScanReleaseStep;
  for (std::size_t start = 0; start < bytes.size();) {
    std::size_t end = source_.FindLineEnd(start);
    std::string_view line = bytes.substr(start, end - start);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (Trim(line) == "SECTION") return true;
    start = end + 1;
    if (start >= nextRelease) {
      source_.ReleaseBefore(start);
      nextRelease = start + kScanReleaseStep;
    }
  }
  return false;
}

bool DXFReader::LocateSection(const std::string& fileName) {
  LineSource source;
  try {
    source.Open(fileName);
  } catch (const RunTimeError&) {
    return false;
  }
  return LocateSection(source.bytes());
}

bool DXFReader::LoadDXF(const std::string& fileName, LoadProgress* progress) {
  outcome_ = {};
  options_.DrawingFile = fileName;
  try {
    source_.Open(fileName);
  } catch (const RunTimeError& e) {
    ReportError("LoadDXF", kReaderModule, e.text(), e.number());
    outcome_.StoppedIn = "LoadDXF";
    outcome_.StopLine = 1;
    return false;
  }
  bool loaded = ReadAll(progress);
  source_.Close();
  return loaded;
}

bool DXFReader::LoadDXFBytes(std::string_view bytes, LoadProgress* progress) {
  outcome_ = {};
  options_.DrawingFile.clear();
  source_.Attach(bytes);
  bool loaded = ReadAll(progress);
  source_.Close();
  return loaded;
}

bool DXFReader::ReadAll(LoadProgress* progress) {
  const ProfileRules& rules = ProfileRules::Of(profile_);
  // Binary DXF: a reader that keeps a report reads it as the text it stands for.
  if (IsBinaryDxf(source_.bytes()) && rules.ReadsBinary && !ConvertBinaryDxf(source_, converted_)) {
    ShowMessage(MessageIcon::Information, LoadResText(1050));
    return false;
  }
  if (IsBinaryDxf(source_.bytes()) || !SectionInSource()) {
    ShowMessage(MessageIcon::Information, LoadResText(1050));
    return false;
  }
  outcome_.Recognised = true;
  outcome_.Reported = rules.KeepsLoadReport;
  drawing_.SetRules(rules);
  drawing_.ExtMinX = drawing_.ExtMinY = 1e30f;
  drawing_.ExtMaxX = drawing_.ExtMaxY = -1e30f;
  LoadContext context(drawing_, source_, options_, outcome_, progress);
  if (progress) progress->Show();
  outcome_.Complete = rules.MakeReader(context)->Read();
  if (progress) progress->Hide();
  return true;
}

}  // namespace dxfimport
