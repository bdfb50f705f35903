#pragma once

#include <QImage>
#include <QWidget>
#include <functional>
#include <optional>

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
  // Seen first: a press, move, release or double click that this returns true for goes
  // no further (the viewer's pan and zoom gestures).
  std::function<bool(QMouseEvent*)> onGesture;
  // The wheel turned over the picture: where, and by how many notches (positive away from
  // the user).
  std::function<void(QPointF, double)> onWheel;
  // The pointer moved over the picture (buttons or not); left it (nullopt).
  std::function<void(std::optional<QPoint>)> onHover;
  // Shows the picture moved by `offset` pixels, the uncovered part in the background
  // colour (a pan under way); (0, 0) ends it.
  void SetPanOffset(QPoint offset);
  QPoint panOffset() const { return panOffset_; }
  // Replaces the picture with one of the same size (drawn off the screen).
  void SetImage(const QImage& image);
  // A new, cleared picture of this size; the widget takes the same size.
  void ResizePicture(int width, int height);
  const QImage& image() const { return image_; }

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void leaveEvent(QEvent* event) override;

 private:
  QImage image_;
  QColor background_ = Qt::white;
  QRect rubberBand_;
  QPoint panOffset_;
};

}  // namespace dxfimport
