#pragma once

#include <QImage>
#include <cstdint>
#include <map>
#include <mutex>
#include <tuple>

#include "dxf/model/drawing.h"

namespace dxfimport {

// The pictures of a drawing's IMAGE and underlay rows as they are drawn: each file read once, at most
// kLongestSide pixels on its longer side (a larger one is scaled while it is read, so it
// is never held at full size), with the row's brightness and contrast applied. Shared by
// the threads that draw a picture's bands.
class PictureCache {
 public:
  static constexpr int kLongestSide = 4096;
  // The picture of `image`; a null image when its file is missing or cannot be read.
  const QImage& Of(const Drawing& drawing, const ImageEntity& image);

 private:
  std::mutex mutex_;
  uint64_t generation_ = 0;
  const Drawing* drawing_ = nullptr;
  std::map<std::tuple<int32_t, int, int>, QImage> pictures_;  // (row, brightness, contrast)
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
