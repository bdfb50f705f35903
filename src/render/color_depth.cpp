#include "render/color_depth.h"

#include <QVector>

namespace dxfimport {
namespace {

// The 16 colours of the standard VGA palette.
QVector<QRgb> Vga16() {
  return {qRgb(0, 0, 0),       qRgb(128, 0, 0),   qRgb(0, 128, 0),   qRgb(128, 128, 0),
          qRgb(0, 0, 128),     qRgb(128, 0, 128), qRgb(0, 128, 128), qRgb(192, 192, 192),
          qRgb(128, 128, 128), qRgb(255, 0, 0),   qRgb(0, 255, 0),   qRgb(255, 255, 0),
          qRgb(0, 0, 255),     qRgb(255, 0, 255), qRgb(0, 255, 255), qRgb(255, 255, 255)};
}

}  // namespace

QImage ReduceColors(const QImage& picture, ColorDepth depth) {
  const Qt::ImageConversionFlags dither = Qt::DiffuseDither | Qt::PreferDither;
  switch (depth) {
    case ColorDepth::Colors256: return picture.convertToFormat(QImage::Format_Indexed8, dither);
    case ColorDepth::Colors16: return picture.convertToFormat(QImage::Format_Indexed8, Vga16(), dither);
    case ColorDepth::Mono: return picture.convertToFormat(QImage::Format_Mono, Qt::MonoOnly | dither);
    case ColorDepth::Full: break;
  }
  return picture;
}

}  // namespace dxfimport
