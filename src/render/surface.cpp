#include "render/surface.h"

namespace dxfimport {

ImageSurface::ImageSurface(int width, int height, QColor background)
    : image_(width, height, PictureFormat(background)), background_(background) {
  Cls();
}

void ImageSurface::Resize(int width, int height) {
  image_ = QImage(width, height, PictureFormat(background_));
  Cls();
}

}  // namespace dxfimport
