#include "render/color_depth.h"

#include <algorithm>
#include <unordered_map>

#include "dxf/model/colors.h"
#include "render/redraw.h"

namespace dxfimport {
namespace {

// The 16 colours of the standard VGA palette.
QVector<QRgb> Vga16() {
  return {qRgb(0, 0, 0),       qRgb(128, 0, 0),   qRgb(0, 128, 0),   qRgb(128, 128, 0),
          qRgb(0, 0, 128),     qRgb(128, 0, 128), qRgb(0, 128, 128), qRgb(192, 192, 192),
          qRgb(128, 128, 128), qRgb(255, 0, 0),   qRgb(0, 255, 0),   qRgb(255, 255, 0),
          qRgb(0, 0, 255),     qRgb(255, 0, 255), qRgb(0, 255, 255), qRgb(255, 255, 255)};
}

int Distance(QRgb a, QRgb b) {
  const int r = qRed(a) - qRed(b), g = qGreen(a) - qGreen(b), bl = qBlue(a) - qBlue(b);
  return r * r + g * g + bl * bl;
}

// Every pixel the palette colour nearest to it (exact colours keep their own entry).
QImage ToPalette(const QImage& picture, const QVector<QRgb>& palette) {
  QImage out(picture.size(), QImage::Format_Indexed8);
  out.setColorTable(palette);
  std::unordered_map<QRgb, uchar> nearest;
  for (int i = int(palette.size()) - 1; i >= 0; --i) nearest[palette[i] | 0xFF000000u] = uchar(i);
  for (int y = 0; y < picture.height(); ++y) {
    const QRgb* in = reinterpret_cast<const QRgb*>(picture.constScanLine(y));
    uchar* row = out.scanLine(y);
    for (int x = 0; x < picture.width(); ++x) {
      const QRgb pixel = in[x] | 0xFF000000u;
      auto found = nearest.find(pixel);
      if (found == nearest.end()) {
        int best = 0;
        for (int i = 1; i < palette.size(); ++i)
          if (Distance(pixel, palette[i]) < Distance(pixel, palette[best])) best = i;
        found = nearest.emplace(pixel, uchar(best)).first;
      }
      row[x] = found->second;
    }
  }
  return out;
}

// Ink (black) where a colour channel differs from the background's by more than a fifth:
// a one-pixel line of any colour stays, the faint edges of smoothed text go.
QImage ToThreshold(const QImage& picture, QRgb background) {
  QImage out(picture.size(), QImage::Format_Mono);
  out.setColorTable({qRgb(255, 255, 255), qRgb(0, 0, 0)});
  out.fill(0);
  for (int y = 0; y < picture.height(); ++y) {
    const QRgb* in = reinterpret_cast<const QRgb*>(picture.constScanLine(y));
    uchar* row = out.scanLine(y);
    for (int x = 0; x < picture.width(); ++x) {
      const QRgb p = in[x];
      const int apart =
          std::max({std::abs(qRed(p) - qRed(background)), std::abs(qGreen(p) - qGreen(background)),
                    std::abs(qBlue(p) - qBlue(background))});
      if (apart > 51) row[x >> 3] |= uchar(0x80 >> (x & 7));
    }
  }
  return out;
}

// Every shade of grey in the table, whichever the picture uses.
QImage ToGrey(const QImage& picture) {
  QVector<QRgb> greys(256);
  for (int i = 0; i < 256; ++i) greys[i] = qRgb(i, i, i);
  QImage out(picture.size(), QImage::Format_Indexed8);
  out.setColorTable(greys);
  for (int y = 0; y < picture.height(); ++y) {
    const QRgb* in = reinterpret_cast<const QRgb*>(picture.constScanLine(y));
    uchar* row = out.scanLine(y);
    for (int x = 0; x < picture.width(); ++x) row[x] = uchar(qGray(in[x]));
  }
  return out;
}

}  // namespace

std::optional<ColorDepth> ColorDepthNamed(const std::string& name) {
  if (name.empty()) return ColorDepth::Full;
  if (name == "256") return ColorDepth::Colors256;
  if (name == "16") return ColorDepth::Colors16;
  if (name == "mono") return ColorDepth::Mono;
  if (name == "palette") return ColorDepth::Palette;
  if (name == "bw") return ColorDepth::Threshold;
  if (name == "grey" || name == "gray") return ColorDepth::Grey;
  return std::nullopt;
}

LineArtInks InksOf(const ZoomState& zoom, QColor background, ColorDepth depth) {
  LineArtInks inks;
  inks.background = background.rgb();
  if (depth != ColorDepth::Palette) return inks;
  const Drawing& d = zoom.drawing();
  const int32_t bgr = background.red() | (background.green() << 8) | (background.blue() << 16);
  const int32_t foreground = ContrastingColor(bgr);
  auto add = [&](int32_t rgb) {
    const QRgb c = qRgb(rgb & 0xFF, (rgb >> 8) & 0xFF, (rgb >> 16) & 0xFF);
    if (inks.palette.size() < 256 && !inks.palette.contains(c)) inks.palette.push_back(c);
  };
  add(bgr);
  add(foreground);
  for (const SeqEntry& entry : d.DrawSeq) {
    VisitRow(d, entry, [&](const auto& row) {
      if constexpr (requires {
                      row.Color;
                      row.Layer;
                    }) {
        if (row.Layer >= 1 && row.Layer <= d.LayerCount() && d.LayerState(row.Layer) != 0)
          add(zoom.InkOf(d, row.Layer, row.Color, foreground, false));
      }
    });
    if (inks.palette.size() == 256) break;
  }
  return inks;
}

QImage ReduceColors(const QImage& picture, ColorDepth depth, const LineArtInks& inks) {
  const Qt::ImageConversionFlags dither = Qt::DiffuseDither | Qt::PreferDither;
  if (depth >= ColorDepth::Palette && picture.format() != QImage::Format_RGB32)
    return ReduceColors(picture.convertToFormat(QImage::Format_RGB32), depth, inks);
  switch (depth) {
    case ColorDepth::Colors256:
      return picture.convertToFormat(QImage::Format_Indexed8, dither);
    case ColorDepth::Colors16:
      return picture.convertToFormat(QImage::Format_Indexed8, Vga16(), dither);
    case ColorDepth::Mono:
      return picture.convertToFormat(QImage::Format_Mono, Qt::MonoOnly | dither);
    case ColorDepth::Palette:
      return ToPalette(picture, inks.palette.isEmpty() ? QVector<QRgb>{inks.background} : inks.palette);
    case ColorDepth::Threshold:
      return ToThreshold(picture, inks.background);
    case ColorDepth::Grey:
      return ToGrey(picture);
    case ColorDepth::Full:
      break;
  }
  return picture;
}

}  // namespace dxfimport
