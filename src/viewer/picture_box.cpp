#include "viewer/picture_box.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPainter>

namespace dxfimport {

PictureBox::PictureBox(QWidget* parent) : QWidget(parent) { ResizePicture(640, 480); }

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
  if (busy) QApplication::setOverrideCursor(Qt::WaitCursor);
  else QApplication::restoreOverrideCursor();
}

void PictureBox::SetRubberBand(const QRect& band) {
  rubberBand_ = band;
  update();
}

void PictureBox::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.drawImage(0, 0, image_);
  if (rubberBand_.isNull()) return;
  painter.setCompositionMode(QPainter::RasterOp_SourceXorDestination);
  painter.setPen(QPen(Qt::white, 0, Qt::DotLine));
  painter.setBrush(Qt::NoBrush);
  painter.drawRect(rubberBand_);
}

void PictureBox::mousePressEvent(QMouseEvent* event) {
  if (onMouseDown) onMouseDown(event->position().toPoint().x(), event->position().toPoint().y());
}

void PictureBox::mouseMoveEvent(QMouseEvent* event) {
  if (onMouseMove) onMouseMove(event->position().toPoint().x(), event->position().toPoint().y());
}

void PictureBox::mouseReleaseEvent(QMouseEvent* event) {
  if (onMouseUp) onMouseUp(event->position().toPoint().x(), event->position().toPoint().y());
}

}  // namespace dxfimport
