// Raster images and underlays: IMAGE with its IMAGEDEF, the PDF, DWF and DGN underlays
// with their definitions. The files are looked for when the drawing has been read.
#include <algorithm>
#include <charconv>

#include "dxf/input/file_lookup.h"
#include "dxf/model/placement.h"
#include "dxf/modern/modern_reader.h"
#include "support/numbers.h"
#include "support/text_decode.h"

namespace dxfimport {
namespace {

int8_t Percent(double v, int8_t fallback) {
  return std::isfinite(v) ? int8_t(std::clamp(v, 0.0, 100.0)) : fallback;
}

}  // namespace

// The row of Drawing::Pictures for the definition with `handle`, made when first named.
int32_t ModernReader::PictureRow(std::string_view handleText, bool underlay) {
  const uint64_t handle = HandleOf(handleText);
  auto [at, added] = pictureRows_.try_emplace(handle, int32_t(drawing_.Pictures.size() + 1));
  if (added) drawing_.Pictures.push_back({"", "", underlay});
  if (underlay) drawing_.Pictures[std::size_t(at->second - 1)].Underlay = true;
  return at->second;
}

// The points of a boundary (`xCode` and the y code after it: an image's or wipeout's
// 14/24, a spatial filter's 10/20); two points are the opposite corners of a rectangle.
// Empty when it has fewer than three corners.
std::vector<PointD> ModernReader::ClipBoundary(int xCode) const {
  std::vector<PointD> boundary;
  for (const auto& [code, value] : pairs_) {
    if (code == xCode && boundary.size() < 100000)
      boundary.push_back({Val(value), 0});
    else if (code == xCode + 10 && !boundary.empty())
      boundary.back().y = Val(value);
  }
  if (boundary.size() == 2) {
    const PointD a = boundary[0], b = boundary[1];
    boundary = {a, {b.x, a.y}, b, {a.x, b.y}};
  }
  if (boundary.size() < 3) boundary.clear();
  return boundary;
}

// IMAGE: its corner 10/20, a pixel's extent along the width 11/21 and the height 12/22,
// its size in pixels 13/23, its definition 340, the clip boundary 14/24 when 70 bit 2
// and 280 say it is used (290 = 1: what is outside it shows), brightness 281, contrast
// 282 and fade 283.
bool ModernReader::DXFImage() {
  const Style s = ReadStyle();
  ImageEntity image;
  image.Layer = s.Layer, image.Color = s.Color;
  const PointD u = Point(11), v = Point(12);
  const double columns = Num(13), rows = Num(23);
  image.Origin = Point(10);
  image.Width = u * columns, image.Height = v * rows;
  image.Picture = PictureRow(Value(340), false);
  image.Brightness = Percent(Num(281, 50), 50);
  image.Contrast = Percent(Num(282, 50), 50);
  image.Fade = Percent(Num(283, 0), 0);
  if ((Whole(70, 0, 0, 0xFFFF) & 4) && Whole(280, 0, 0, 1) == 1) {
    // Pixel (x, y) from the top left is at origin + u (x + 1/2) + v (rows - 1/2 - y).
    const PointD corner = image.Origin + u * 0.5 + v * (rows - 0.5);
    for (const PointD& p : ClipBoundary(14)) image.Clip.push_back(corner + u * p.x - v * p.y);
    image.ClipInverted = Whole(290, 0, 0, 1) == 1;
  }
  Emit(Placed(image, toBlock_));
  return true;
}

// PDFUNDERLAY, DWFUNDERLAY, DGNUNDERLAY: one page of the file its definition (340) names,
// its lower-left corner at 10/20, scaled by 41/42 and turned by 50 in its object
// coordinates. Its frame is the page, whose size is known only when the file has been
// found: until then Width and Height are one underlay unit (an inch of the page) long.
// 280: bit 1 clips to the boundary 11/21 (in underlay units), bit 2 shows it at all,
// bit 16 shows what lies outside the boundary; 282 fades it.
bool ModernReader::DXFUnderlay() {
  const int32_t flags = Whole(280, 2, 0, 0xFF);
  if (!(flags & 2)) {
    Note("underlay turned off");
    return true;
  }
  const Style s = ReadStyle();
  ImageEntity frame;
  frame.Layer = s.Layer, frame.Color = s.Color;
  frame.Picture = PictureRow(Value(340), true);
  const PointD at = Point(10);
  const Affine local =
      Affine::Translate(at.x, at.y) * Affine::Rotate(Num(50)) * Affine::Scaling(Num(41, 1), Num(42, 1));
  frame.Origin = at;
  frame.Width = local.ApplyVector({1, 0}), frame.Height = local.ApplyVector({0, 1});
  frame.Fade = Percent(Num(282, 0), 0);
  if (flags & 1) {
    for (const PointD& p : ClipBoundary(11)) frame.Clip.push_back(local.Apply(p));
    frame.ClipInverted = (flags & 16) != 0;
  }
  Emit(Placed(frame, Placement(Num(30))));
  return true;
}

// IMAGEDEF and the underlay definitions: the file (1) of the pictures that name them.
bool ModernReader::DXFImageDef() {
  const bool underlay = name_ != "IMAGEDEF";
  const int32_t row = PictureRow(Value(5), underlay);
  PictureFile& picture = drawing_.Pictures[std::size_t(row - 1)];
  picture.Name = std::string(Trim(Text(1)).substr(0, 4096));
  if (underlay) picture.Page = std::string(Trim(Text(2)).substr(0, 200));
  return true;
}

// After the load: each picture's file looked for, and named in the load report (those
// an external reference brought were looked for when it was read).
void ModernReader::ResolvePictures() {
  // The page size of each underlay looked for now (nothing for images), each file's page
  // read once however many definitions name it.
  std::vector<std::optional<UnderlayPageSize>> pages(drawing_.Pictures.size());
  std::vector<bool> underlaysNow(drawing_.Pictures.size(), false);
  PageSizes read;
  for (std::size_t i = 0; i < drawing_.Pictures.size(); ++i) {
    PictureFile& picture = drawing_.Pictures[i];
    if (picture.Resolved) continue;
    picture.Resolved = true;
    const std::string name = picture.Name.empty() ? "(no definition)" : picture.Name.substr(0, 200);
    picture.Path = picture.Name.empty() ? ""
                                        : FindReferencedFile(picture.Name, ctx_.options.DrawingFile,
                                                             ctx_.options.ImageFolders);
    if (picture.Underlay) {
      underlaysNow[i] = true;
      pages[i] = UnderlayPage(picture, name, read);
    } else if (picture.Path.empty()) {
      ctx_.outcome.Report.Note("image missing: " + name, 0);
    } else {
      ctx_.outcome.Report.NoteDrawn("image found: " + name, 0);
    }
  }
  // Frames take the size of their page, in the drawing's tables and every block's; without
  // a page they keep only their clip boundaries (drawn as frames with the file's name).
  if (std::find(underlaysNow.begin(), underlaysNow.end(), true) == underlaysNow.end()) return;
  auto size = [&](EntityTables& tables) {
    for (ImageEntity& frame : tables.Images) {
      const std::size_t row = std::size_t(frame.Picture) - 1;
      if (frame.Picture < 1 || row >= pages.size() || !underlaysNow[row]) continue;
      const double w = pages[row] ? pages[row]->Width : 0, h = pages[row] ? pages[row]->Height : 0;
      frame.Width = frame.Width * w, frame.Height = frame.Height * h;
    }
  };
  size(drawing_);
  for (BlockEntry& block : drawing_.Blocks) size(block.Content);
}

// The page an underlay's file shows, named in the load report; its path is kept only when
// the page can be drawn.
std::optional<UnderlayPageSize> ModernReader::UnderlayPage(PictureFile& picture, const std::string& name,
                                                           PageSizes& read) {
  std::optional<UnderlayPageSize> page;
  if (!picture.Path.empty()) {
    const auto [at, first] = read.try_emplace({picture.Path, picture.Page});
    if (first) at->second = ReadUnderlayPageSize(picture.Path, picture.Page);
    page = at->second;
  }
  if (picture.Path.empty())
    ctx_.outcome.Report.Note("underlay missing: " + name, 0);
  else if (!page)
    ctx_.outcome.Report.Note("underlay page not read (only PDF pages are): " + name, 0);
  else
    ctx_.outcome.Report.NoteDrawn("underlay found: " + name, 0);
  if (!page) picture.Path.clear();
  return page;
}

}  // namespace dxfimport
