#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace dxfimport {

// The page of a PDF file that an underlay shows, as CAD lays it out: one underlay unit is
// one inch of the page, which is turned as the file says it is shown.
struct UnderlayPageSize {
  double Width = 0, Height = 0;  // inches
};

// The size of page `page` (the definition's name: a page number counted from 1, or a page
// label) of the PDF at `path`; nothing when the file is not a PDF that can be read or has
// no such page, or when the page is empty or absurdly large.
std::optional<UnderlayPageSize> ReadUnderlayPageSize(const std::string& path, const std::string& page);

// The same page drawn at most `longestSide` pixels on its longer side: rows of
// premultiplied ARGB pixels, transparent where the page has no ink (the paper is not
// drawn). Empty when it cannot be drawn.
struct UnderlayPicture {
  int Width = 0, Height = 0;
  std::vector<uint32_t> Pixels;
};
UnderlayPicture RenderUnderlayPage(const std::string& path, const std::string& page, int longestSide);

}  // namespace dxfimport
