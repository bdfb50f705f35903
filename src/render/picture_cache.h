#pragma once

#include <QImage>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <tuple>

#include "dxf/model/drawing.h"

namespace dxfimport {

// The pictures of a drawing's IMAGE and underlay rows as they are drawn: each file read
// once however many definitions name it, at most kLongestSide pixels on its longer side
// (a larger one is scaled while it is read, so it is never held at full size), with the
// row's brightness and contrast applied. Shared by the threads that draw a picture's bands.
class PictureCache {
 public:
  static constexpr int kLongestSide = 4096;
  // The picture of `image` to be drawn `pixelsAcross` pixels long on its longer side: the
  // smallest of its halvings that is still at least that long (a picture drawn small many
  // times is not scaled down from its full size each time). A null image when its file is
  // missing or cannot be read.
  const QImage& Of(const Drawing& drawing, const ImageEntity& image, double pixelsAcross = kLongestSide);

 private:
  // The picture and its halvings, largest first, made as they are asked for (a deque:
  // what one thread draws stays where it is while another adds a halving).
  using Levels = std::deque<QImage>;
  static const QImage& LevelFor(Levels& levels, double pixelsAcross);
  std::mutex mutex_;
  uint64_t generation_ = 0;
  const Drawing* drawing_ = nullptr;
  // By file, page, brightness and contrast: definitions that name the same file share it.
  std::map<std::tuple<std::string, std::string, int, int>, Levels> pictures_;
};

// Reads a picture file, scaled down to fit `longestSide` pixels; null when it cannot be
// read.
QImage ReadPicture(const std::string& path, int longestSide);

// The page an underlay shows, drawn to fit `longestSide` pixels, transparent where it has
// no ink; null when it cannot be drawn.
QImage ReadUnderlay(const PictureFile& file, int longestSide);

// Brightness and contrast (0..100; 50 and 50 leave the colours as they are) applied to
// the colour channels.
void AdjustPicture(QImage& picture, int brightness, int contrast);

}  // namespace dxfimport
