#include "render/picture_cache.h"

#include <QImageReader>
#include <algorithm>
#include <array>

#include "dxf/input/underlay_file.h"

namespace dxfimport {

QImage ReadPicture(const std::string& path, int longestSide) {
  QImageReader reader(QString::fromStdString(path));
  reader.setAutoTransform(true);
  const QSize size = reader.size();
  if (size.isValid() && std::max(size.width(), size.height()) > longestSide)
    reader.setScaledSize(size.scaled(longestSide, longestSide, Qt::KeepAspectRatio));
  QImage picture = reader.read();
  if (picture.isNull()) return picture;
  if (std::max(picture.width(), picture.height()) > longestSide)  // a reader that cannot scale
    picture = picture.scaled(longestSide, longestSide, Qt::KeepAspectRatio, Qt::SmoothTransformation);
  return picture.convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

QImage ReadUnderlay(const PictureFile& file, int longestSide) {
  UnderlayPicture page = RenderUnderlayPage(file.Path, file.Page, longestSide);
  if (page.Pixels.empty()) return {};
  auto* pixels = new std::vector<uint32_t>(std::move(page.Pixels));
  return QImage(
      reinterpret_cast<const uchar*>(pixels->data()), page.Width, page.Height, page.Width * 4,
      QImage::Format_ARGB32_Premultiplied,
      [](void* held) { delete static_cast<std::vector<uint32_t>*>(held); }, pixels);
}

void AdjustPicture(QImage& picture, int brightness, int contrast) {
  if (brightness == 50 && contrast == 50) return;
  std::array<uint8_t, 256> level{};
  for (int v = 0; v < 256; ++v) {
    const double adjusted = (v - 127.5) * (contrast / 50.0) + 127.5 + (brightness - 50) * 5.1;
    level[std::size_t(v)] = uint8_t(std::clamp(adjusted, 0.0, 255.0));
  }
  picture = picture.convertToFormat(QImage::Format_ARGB32);
  for (int y = 0; y < picture.height(); ++y) {
    auto* line = reinterpret_cast<QRgb*>(picture.scanLine(y));
    for (int x = 0; x < picture.width(); ++x) {
      const QRgb c = line[x];
      line[x] = qRgba(level[qRed(c)], level[qGreen(c)], level[qBlue(c)], qAlpha(c));
    }
  }
  picture = picture.convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

const QImage& PictureCache::Of(const Drawing& drawing, const ImageEntity& image, double pixelsAcross) {
  static const QImage kNone;
  std::lock_guard lock(mutex_);
  if (drawing_ != &drawing || generation_ != drawing.Generation()) {
    pictures_.clear();
    drawing_ = &drawing;
    generation_ = drawing.Generation();
  }
  if (image.Picture < 1 || std::size_t(image.Picture) > drawing.Pictures.size()) return kNone;
  const PictureFile& file = drawing.Pictures[std::size_t(image.Picture - 1)];
  if (file.Path.empty()) return kNone;
  const auto key = std::tuple(file.Path, file.Page, int(image.Brightness), int(image.Contrast));
  auto found = pictures_.find(key);
  if (found != pictures_.end()) return LevelFor(found->second, pixelsAcross);
  // Another adjustment of the same file starts from the copy already read.
  QImage picture;
  const auto unadjusted = pictures_.find(std::tuple(file.Path, file.Page, 50, 50));
  if (unadjusted != pictures_.end()) picture = unadjusted->second.front();
  if (picture.isNull())
    picture = file.Underlay ? ReadUnderlay(file, kLongestSide) : ReadPicture(file.Path, kLongestSide);
  if (!picture.isNull()) AdjustPicture(picture, image.Brightness, image.Contrast);
  Levels& levels = pictures_[key];
  levels.push_back(std::move(picture));
  return LevelFor(levels, pixelsAcross);
}

const QImage& PictureCache::LevelFor(Levels& levels, double pixelsAcross) {
  constexpr int kSmallest = 16;
  for (std::size_t i = 0;; ++i) {
    if (i + 1 == levels.size()) {  // the next halving, made when it would still do
      const QImage& last = levels.back();
      const int w = last.width() / 2, h = last.height() / 2;
      if (last.isNull() || std::min(w, h) < 1 || std::max(w, h) < std::max<double>(kSmallest, pixelsAcross))
        return last;
      levels.push_back(last.scaled(w, h, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
    }
    const QImage& next = levels[i + 1];
    if (std::max(next.width(), next.height()) < pixelsAcross) return levels[i];
  }
}

}  // namespace dxfimport
