#include "dxf/input/line_source.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstdint>
#include <cstring>

#include "support/runtime_error.h"

namespace dxfimport {

LineSource::~LineSource() { Close(); }

void LineSource::Close() {
  if (map_) munmap(map_, mapLength_);
  map_ = nullptr;
  mapLength_ = 0;
  released_ = 0;
  owned_.clear();
  data_ = {};
  pos_ = 0;
  lines_ = 0;
}

void LineSource::Attach(std::string_view bytes) {
  Close();
  data_ = bytes;
}

void LineSource::Open(const std::string& path) {
  Close();
  int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) throw RunTimeError(errno == ENOENT || errno == ENOTDIR ? kErrFileNotFound : kErrPathFileAccess);
  struct stat st {};
  if (fstat(fd, &st) != 0 || S_ISDIR(st.st_mode)) {
    ::close(fd);
    throw RunTimeError(kErrPathFileAccess);
  }
  if (S_ISREG(st.st_mode) && st.st_size > 0) {
    void* map = mmap(nullptr, std::size_t(st.st_size), PROT_READ, MAP_PRIVATE, fd, 0);
    if (map != MAP_FAILED) {
      madvise(map, std::size_t(st.st_size), MADV_SEQUENTIAL);
      map_ = map;
      mapLength_ = std::size_t(st.st_size);
      data_ = std::string_view(static_cast<const char*>(map), mapLength_);
      ::close(fd);
      return;
    }
  }
  char buffer[1 << 16];
  for (;;) {
    ssize_t n = ::read(fd, buffer, sizeof buffer);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) {
      ::close(fd);
      throw RunTimeError(kErrPathFileAccess);
    }
    if (n == 0) break;
    owned_.append(buffer, std::size_t(n));
  }
  ::close(fd);
  data_ = owned_;
}

std::string_view LineSource::ReadLine() {
  if (AtEnd()) throw RunTimeError(kErrInputPastEnd);
  ++lines_;
  const char* begin = data_.data() + pos_;
  std::size_t left = data_.size() - pos_;
  static_assert(std::endian::native == std::endian::little,
                "the word scan reads bytes in little-endian order");
  // Most DXF lines are short: look for the line feed eight bytes at a time over the first
  // words, then let memchr take a long line.
  const char* nl = nullptr;
  const char* p = begin;
  const char* const stop = begin + std::min<std::size_t>(left, 64);
  for (; p + 8 <= stop; p += 8) {
    uint64_t word;
    std::memcpy(&word, p, 8);
    uint64_t x = word ^ 0x0A0A0A0A0A0A0A0AULL;
    uint64_t found = (x - 0x0101010101010101ULL) & ~x & 0x8080808080808080ULL;
    if (found) {
      nl = p + (__builtin_ctzll(found) >> 3);
      break;
    }
  }
  if (!nl) {
    std::size_t end = FindLineEnd(std::size_t(p - data_.data()));
    nl = end < data_.size() ? data_.data() + end : nullptr;
  }
  std::size_t length = nl ? std::size_t(nl - begin) : left;
  pos_ += nl ? length + 1 : length;
  if (length > 0 && begin[length - 1] == '\r') --length;
  return {begin, length};
}

std::size_t LineSource::FindLineEnd(std::size_t from) {
  constexpr std::size_t kWindow = 8u << 20;
  for (std::size_t at = from; at < data_.size(); at += kWindow) {
    std::size_t length = std::min(kWindow, data_.size() - at);
    if (const void* nl = std::memchr(data_.data() + at, '\n', length))
      return std::size_t(static_cast<const char*>(nl) - data_.data());
    if (length == kWindow) ReleaseBefore(at + length);
  }
  return data_.size();
}

void LineSource::ReleaseBefore(std::size_t offset) {
  if (!map_) return;
  static const std::size_t page = std::size_t(sysconf(_SC_PAGESIZE));
  std::size_t end = std::min(offset, mapLength_) / page * page;
  if (end <= released_) return;
  madvise(static_cast<char*>(map_) + released_, end - released_, MADV_DONTNEED);
  released_ = end;
}

std::size_t LineSource::LineNumberAt(std::size_t offset) const {
  std::string_view before = data_.substr(0, std::min(offset, data_.size()));
  return std::size_t(std::count(before.begin(), before.end(), '\n')) + 1;
}

}  // namespace dxfimport
