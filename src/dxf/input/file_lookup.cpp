#include "dxf/input/file_lookup.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace dxfimport {
namespace {

namespace fs = std::filesystem;

bool IsFile(const fs::path& path) {
  std::error_code ec;
  return !path.empty() && fs::is_regular_file(path, ec);
}

}  // namespace

std::string FindReferencedFile(const std::string& name, const std::string& drawingFile,
                               const std::vector<std::string>& folders) {
  std::string written = name;
  std::replace(written.begin(), written.end(), '\\', '/');
  while (!written.empty() && (written.back() == ' ' || written.back() == '\r')) written.pop_back();
  if (written.empty() || written.find('\0') != std::string::npos) return "";
  const fs::path path(written);
  const fs::path folder = drawingFile.empty() ? fs::path() : fs::path(drawingFile).parent_path();
  // A drive letter ("C:/...") names nothing here: only its bare name can be looked for.
  const bool drive = written.size() > 1 && written[1] == ':';
  std::vector<fs::path> tries;
  if (!drive && path.is_absolute()) tries.push_back(path);
  if (!drive && path.is_relative()) tries.push_back(folder.empty() ? path : folder / path);
  const fs::path bare = path.filename();
  if (!bare.empty()) {
    tries.push_back(folder.empty() ? bare : folder / bare);
    for (const std::string& extra : folders)
      if (!extra.empty()) tries.push_back(fs::path(extra) / bare);
  }
  for (const fs::path& p : tries)
    if (IsFile(p)) return p.lexically_normal().string();
  return "";
}

}  // namespace dxfimport
