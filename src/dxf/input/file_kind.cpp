#include "dxf/input/file_kind.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace dxfimport {
namespace {

// The release of AutoCAD that writes each DWG version.
std::string_view DwgRelease(std::string_view version) {
  struct Release {
    std::string_view version, release;
  };
  static constexpr Release kReleases[] = {
      {"AC1006", "Release 10"},   {"AC1009", "Release 11/12"}, {"AC1012", "Release 13"},
      {"AC1014", "Release 14"},   {"AC1015", "AutoCAD 2000"},  {"AC1018", "AutoCAD 2004"},
      {"AC1021", "AutoCAD 2007"}, {"AC1024", "AutoCAD 2010"},  {"AC1027", "AutoCAD 2013"},
      {"AC1032", "AutoCAD 2018"},
  };
  for (const Release& r : kReleases)
    if (r.version == version) return r.release;
  return {};
}

bool StartsWith(std::string_view head, std::string_view magic) {
  return head.substr(0, magic.size()) == magic;
}

}  // namespace

std::string KindOfBytes(std::string_view head) {
  if (head.empty()) return "is empty";
  if (StartsWith(head, "AC10") || StartsWith(head, "AC2.") || StartsWith(head, "AC1.")) {
    const std::string_view version = head.substr(0, 6);
    const std::string_view release = DwgRelease(version);
    const bool printable = version.find_first_not_of("AC0123456789.") == std::string_view::npos;
    std::string line = "is a DWG drawing";
    if (printable)
      line += " (" + (release.empty() ? std::string() : std::string(release) + " format, ") +
              std::string(version) + ")";
    return line + "; dxfimport reads DXF: save it as DXF in the CAD tool (Save As, DXF) and open that";
  }
  struct Magic {
    std::string_view bytes, kind;
  };
  using namespace std::string_view_literals;
  static constexpr Magic kMagic[] = {
      {"%PDF"sv, "a PDF document"},
      {"\x89PNG"sv, "a PNG image"},
      {"\xFF\xD8\xFF"sv, "a JPEG image"},
      {"GIF8"sv, "a GIF image"},
      {"BM"sv, "a BMP image"},
      {"II*\0"sv, "a TIFF image"},
      {"MM\0*"sv, "a TIFF image"},
      {"PK\x03\x04"sv, "a ZIP archive"},
      {"(DWF V"sv, "a DWF drawing"},
      {"\x1F\x8B"sv, "a gzip archive"},
      {"Rar!"sv, "a RAR archive"},
      {"7z\xBC\xAF"sv, "a 7-Zip archive"},
  };
  for (const Magic& m : kMagic)
    if (StartsWith(head, m.bytes)) return "is " + std::string(m.kind) + ", not a DXF drawing";
  return {};
}

std::string NotADrawing(const std::string& path) {
  struct stat st {};
  // A missing file is the reader's to report, with the system's message.
  if (::stat(path.c_str(), &st) != 0)
    return errno == ENOENT || errno == ENOTDIR ? "" : "cannot be read: " + std::string(std::strerror(errno));
  if (S_ISDIR(st.st_mode)) return "is a folder, not a drawing";
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return "cannot be read: " + std::string(std::strerror(errno));
  char head[16] = {};
  ssize_t n = 0;
  do n = ::read(fd, head, sizeof head);
  while (n < 0 && errno == EINTR);
  const int error = errno;
  ::close(fd);
  if (n < 0) return "cannot be read: " + std::string(std::strerror(error));
  return KindOfBytes(std::string_view(head, std::size_t(n)));
}

}  // namespace dxfimport
