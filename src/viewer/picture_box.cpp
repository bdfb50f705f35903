#include "viewer/picture_box.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

namespace dxfimport {

PictureBox::PictureBox(QWidget* parent) : QWidget(parent) {
  setMouseTracking(true);
  ResizePicture(640, 480);
}

void PictureBox::SetPanOffset(QPoint offset) {
  panOffset_ = offset;
  update();
}

void PictureBox::SetImage(const QImage& image) {
  if (image.size() == image_.size()) image_ = image;
  panOffset_ = {};
  update();
}

void PictureBox::ResizePicture(int width, int height) {
  image_ = QImage(width, height, QImage::Format_RGB32);
  image_.fill(background_);
  setFixedSize(width, height);
  update();
}

void PictureBox::Refresh() { repaint(); }

void PictureBox::Cls() {
  image_.fill(background_);
  update();
}

void PictureBox::SetBusy(bool busy) {
  if (busy)
    QApplication::setOverrideCursor(Qt::WaitCursor);
  else
    QApplication::restoreOverrideCursor();
}

void PictureBox::SetRubberBand(const QRect& band) {
  rubberBand_ = band;
  update();
}

void PictureBox::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  if (!panOffset_.isNull()) painter.fillRect(rect(), background_);
  painter.drawImage(panOffset_, image_);
  if (rubberBand_.isNull()) return;
  painter.setCompositionMode(QPainter::RasterOp_SourceXorDestination);
  painter.setPen(QPen(Qt::white, 0, Qt::DotLine));
  painter.setBrush(Qt::NoBrush);
  painter.drawRect(rubberBand_);
}

void PictureBox::mousePressEvent(QMouseEvent* event) {
  if (onGesture && onGesture(event)) return;
  if (onMouseDown) onMouseDown(event->position().toPoint().x(), event->position().toPoint().y());
}

void PictureBox::mouseMoveEvent(QMouseEvent* event) {
  if (onHover) onHover(event->position().toPoint());
  if (onGesture && onGesture(event)) return;
  if (onMouseMove) onMouseMove(event->position().toPoint().x(), event->position().toPoint().y());
}

void PictureBox::mouseReleaseEvent(QMouseEvent* event) {
  if (onGesture && onGesture(event)) return;
  if (onMouseUp) onMouseUp(event->position().toPoint().x(), event->position().toPoint().y());
}

void PictureBox::mouseDoubleClickEvent(QMouseEvent* event) {
  if (onGesture && onGesture(event)) return;
  QWidget::mouseDoubleClickEvent(event);
}

void PictureBox::wheelEvent(QWheelEvent* event) {
  if (!onWheel) return QWidget::wheelEvent(event);
  onWheel(event->position(), event->angleDelta().y() / 120.0);
  event->accept();
}

void PictureBox::leaveEvent(QEvent* event) {
  if (onHover) onHover(std::nullopt);
  QWidget::leaveEvent(event);
}

}  // namespace dxfimport
