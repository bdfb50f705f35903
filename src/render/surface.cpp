#include "render/surface.h"

namespace dxfimport {

ImageSurface::ImageSurface(int width, int height, QColor background)
    : image_(width, height, QImage::Format_RGB32), background_(background) {
  Cls();
}

void ImageSurface::Resize(int width, int height) {
  image_ = QImage(width, height, QImage::Format_RGB32);
  Cls();
}

}  // namespace dxfimport
