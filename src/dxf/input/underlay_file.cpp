// PDF pages of underlays, through Poppler. Poppler's shared state is not made for several
// threads at once (the reader and the redraw may both ask), so every call holds one lock.
#include "dxf/input/underlay_file.h"

#include <poppler-document.h>
#include <poppler-global.h>
#include <poppler-page-renderer.h>
#include <poppler-page.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <memory>
#include <mutex>

namespace dxfimport {
namespace {

// A page larger than this (inches) is taken as a damaged file, not a sheet of paper.
constexpr double kLargestPage = 2000;

std::mutex& PopplerLock() {
  static std::mutex lock;
  return lock;
}

void Quiet(const std::string&, void*) {}

struct OpenPage {
  std::unique_ptr<poppler::document> document;
  std::unique_ptr<poppler::page> page;
  double width = 0, height = 0;  // inches, as shown
};

// The page named `page`: a number from 1, else a label; the first page when it is blank.
std::unique_ptr<poppler::page> PageOf(const poppler::document& document, const std::string& page) {
  int number = 1;
  if (!page.empty()) {
    const auto [end, ec] = std::from_chars(page.data(), page.data() + page.size(), number);
    if (ec != std::errc() || end != page.data() + page.size())
      return std::unique_ptr<poppler::page>(document.create_page(poppler::ustring::from_utf8(page.c_str())));
  }
  if (number < 1 || number > document.pages()) return nullptr;
  return std::unique_ptr<poppler::page>(document.create_page(number - 1));
}

std::optional<OpenPage> Open(const std::string& path, const std::string& page) {
  poppler::set_debug_error_function(Quiet, nullptr);
  OpenPage open;
  open.document.reset(poppler::document::load_from_file(path));
  if (!open.document || open.document->is_locked()) return std::nullopt;
  open.page = PageOf(*open.document, page);
  if (!open.page) return std::nullopt;
  const poppler::rectf box = open.page->page_rect(poppler::crop_box);
  double w = box.width() / 72, h = box.height() / 72;
  const auto turn = open.page->orientation();
  if (turn == poppler::page::landscape || turn == poppler::page::seascape) std::swap(w, h);
  if (!std::isfinite(w) || !std::isfinite(h) || w <= 0 || h <= 0 || w > kLargestPage || h > kLargestPage)
    return std::nullopt;
  open.width = w, open.height = h;
  return open;
}

poppler::image Render(const OpenPage& open, double dotsPerInch, poppler::argb paper) {
  poppler::page_renderer renderer;
  renderer.set_render_hints(poppler::page_renderer::antialiasing | poppler::page_renderer::text_antialiasing |
                            poppler::page_renderer::text_hinting);
  renderer.set_image_format(poppler::image::format_argb32);
  renderer.set_paper_color(paper);
  return renderer.render_page(open.page.get(), dotsPerInch, dotsPerInch);
}

// Poppler draws the paper it is given: the page drawn on white and on black tells, for
// each pixel, how much ink covers it (the difference) and the ink's colour (over black,
// already premultiplied).
UnderlayPicture Unpapered(const poppler::image& onWhite, const poppler::image& onBlack) {
  UnderlayPicture picture;
  if (!onWhite.is_valid() || !onBlack.is_valid() || onWhite.width() != onBlack.width() ||
      onWhite.height() != onBlack.height())
    return picture;
  picture.Width = onWhite.width(), picture.Height = onWhite.height();
  picture.Pixels.resize(std::size_t(picture.Width) * std::size_t(picture.Height));
  for (int y = 0; y < picture.Height; ++y) {
    const auto* white = reinterpret_cast<const uint32_t*>(onWhite.const_data() + y * onWhite.bytes_per_row());
    const auto* black = reinterpret_cast<const uint32_t*>(onBlack.const_data() + y * onBlack.bytes_per_row());
    uint32_t* out = picture.Pixels.data() + std::size_t(y) * std::size_t(picture.Width);
    for (int x = 0; x < picture.Width; ++x) {
      uint32_t alpha = 0, rgb = 0;
      for (int shift = 0; shift < 24; shift += 8) {
        const uint32_t w = (white[x] >> shift) & 0xFF, b = (black[x] >> shift) & 0xFF;
        alpha = std::max(alpha, 255 - (w > b ? w - b : 0));
        rgb |= b << shift;
      }
      for (int shift = 0; shift < 24; shift += 8)  // premultiplied: no channel above alpha
        if (((rgb >> shift) & 0xFF) > alpha) rgb = (rgb & ~(0xFFu << shift)) | (alpha << shift);
      out[x] = (alpha << 24) | rgb;
    }
  }
  return picture;
}

}  // namespace

std::optional<UnderlayPageSize> ReadUnderlayPageSize(const std::string& path, const std::string& page) {
  std::lock_guard lock(PopplerLock());
  const std::optional<OpenPage> open = Open(path, page);
  if (!open) return std::nullopt;
  return UnderlayPageSize{open->width, open->height};
}

UnderlayPicture RenderUnderlayPage(const std::string& path, const std::string& page, int longestSide) {
  std::lock_guard lock(PopplerLock());
  const std::optional<OpenPage> open = Open(path, page);
  if (!open || longestSide < 1 || !poppler::page_renderer::can_render()) return {};
  const double dotsPerInch = longestSide / std::max(open->width, open->height);
  return Unpapered(Render(*open, dotsPerInch, 0xFFFFFFFF), Render(*open, dotsPerInch, 0xFF000000));
}

}  // namespace dxfimport
