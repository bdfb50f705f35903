#pragma once

#include <QColor>
#include <QImage>
#include <cstdint>

class QPaintDevice;

namespace dxfimport {

// What the redraw draws into: a viewing surface measured in pixels. The viewer's picture
// box and the command line's image both implement it.
class Surface {
 public:
  virtual ~Surface() = default;
  virtual int32_t ScaleWidth() const = 0;
  virtual int32_t ScaleHeight() const = 0;
  // The paint device that the redraw draws into.
  virtual QPaintDevice* PaintDevice() = 0;
  // Shows what was drawn so far (the redraw calls it every 500 entities and at the end).
  virtual void Refresh() {}
  // Clears the picture to the background colour.
  virtual void Cls() = 0;
  // The hourglass pointer while a redraw runs.
  virtual void SetBusy(bool) {}
  virtual QColor BackColor() const = 0;
};

// A surface that keeps its picture in a persistent image (RGB, one pixel per unit).
// The format of a picture on `background`: with an alpha channel when it is transparent
// (its colour then only says what inks fade toward and stand out from).
inline QImage::Format PictureFormat(QColor background) {
  return background.alpha() == 255 ? QImage::Format_RGB32 : QImage::Format_ARGB32_Premultiplied;
}

class ImageSurface : public Surface {
 public:
  ImageSurface(int width, int height, QColor background = Qt::white);

  int32_t ScaleWidth() const override { return image_.width(); }
  int32_t ScaleHeight() const override { return image_.height(); }
  QPaintDevice* PaintDevice() override { return &image_; }
  void Refresh() override { ++refreshes_; }
  void Cls() override { image_.fill(background_); }
  QColor BackColor() const override { return background_; }

  void SetBackColor(QColor color) { background_ = color; }
  // Resizes the picture (cleared to the background).
  void Resize(int width, int height);
  const QImage& image() const { return image_; }
  int refreshes() const { return refreshes_; }

 private:
  QImage image_;
  QColor background_;
  int refreshes_ = 0;
};

}  // namespace dxfimport
