#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace dxfimport {

// The bytes of one DXF file, read line by line. A regular file is mapped, not copied, and
// the pages behind the reading position can be handed back, so a load holds little of the
// file in memory at any time. LF and CR-LF both end a line.
class LineSource {
 public:
  LineSource() = default;
  ~LineSource();
  LineSource(const LineSource&) = delete;
  LineSource& operator=(const LineSource&) = delete;

  // Opens a file. Raises File not found for a missing file and Path/File access error
  // for a directory or an unreadable file.
  void Open(const std::string& path);
  // Reads from bytes that the caller keeps alive.
  void Attach(std::string_view bytes);
  void Close();

  std::string_view bytes() const { return data_; }
  bool AtEnd() const { return pos_ >= data_.size(); }
  std::size_t Position() const { return pos_; }
  std::size_t Length() const { return data_.size(); }

  // The next line without its ending; raises Input past end of file at the end.
  std::string_view ReadLine();
  // Lines read so far by ReadLine: the number of the line it gave last.
  std::size_t LinesRead() const { return lines_; }

  // Offset of the first line feed at or after `from` (Length() when there is none). A long
  // search hands back the pages it has passed: the mapping is read-only, so a page is read
  // again from the file if a line that spans it is looked at later.
  std::size_t FindLineEnd(std::size_t from);

  // Lets the system drop the mapped pages before `offset` (they are read again if needed).
  void ReleaseBefore(std::size_t offset);

  // 1-based number of the line that holds `offset`.
  std::size_t LineNumberAt(std::size_t offset) const;

 private:
  std::string_view data_;
  std::size_t pos_ = 0;
  std::size_t lines_ = 0;
  void* map_ = nullptr;
  std::size_t mapLength_ = 0;
  std::size_t released_ = 0;
  std::string owned_;
};

// Splits the line at the front of `rest` off it (without its ending).
inline std::string_view NextLine(std::string_view& rest) {
  std::size_t nl = rest.find('\n');
  std::string_view line = rest.substr(0, nl);
  rest.remove_prefix(nl == std::string_view::npos ? rest.size() : nl + 1);
  if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  return line;
}

}  // namespace dxfimport
