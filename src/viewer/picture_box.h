#pragma once

#include <QImage>
#include <QWidget>

#include <functional>

#include "render/surface.h"

namespace dxfimport {

// The viewing surface of the main window: a widget that owns a persistent picture (one
// pixel per unit) and paints it. The redraw draws into the picture; Refresh repaints the
// widget at once, so the drawing is seen growing.
class PictureBox : public QWidget, public Surface {
 public:
  explicit PictureBox(QWidget* parent = nullptr);

  int32_t ScaleWidth() const override { return image_.width(); }
  int32_t ScaleHeight() const override { return image_.height(); }
  QPaintDevice* PaintDevice() override { return &image_; }
  void Refresh() override;
  void Cls() override;
  void SetBusy(bool busy) override;
  QColor BackColor() const override { return background_; }

  void SetBackColor(QColor color) { background_ = color; }
  // The rubber band of a zoom drag: drawn inverted and dotted over the picture, never
  // into it. An empty rectangle hides it.
  void SetRubberBand(const QRect& band);
  // Mouse presses, moves and releases on the picture, in picture pixels.
  std::function<void(int, int)> onMouseDown, onMouseMove, onMouseUp;
  // A new, cleared picture of this size; the widget takes the same size.
  void ResizePicture(int width, int height);
  const QImage& image() const { return image_; }

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;

 private:
  QImage image_;
  QColor background_ = Qt::white;
  QRect rubberBand_;
};

}  // namespace dxfimport
