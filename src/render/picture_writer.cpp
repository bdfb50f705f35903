#include "render/picture_writer.h"

#include <QPageSize>
#include <QPdfWriter>
#include <QSaveFile>
#include <QSvgGenerator>
#include <algorithm>

#include "render/picture_file.h"
#include "render/picture_stream.h"
#include "render/redraw.h"
#include "render/world_file.h"
#include "support/messages.h"
#include "support/texts.h"

namespace dxfimport {
namespace {

using Format = PictureOutput::Format;

// A picture of up to this many pixels is drawn whole; a larger one a strip of about
// kStripPixels at a time (64 MB in memory), as is one whose side is beyond what the
// rasterizer takes in one go.
constexpr int64_t kWholePicturePixels = int64_t(1) << 26;
constexpr int64_t kStripPixels = int64_t(1) << 24;
constexpr int kWholePictureSide = 32767;

bool NeedsStrips(const PictureOutput& o) {
  return o.Kind() == Format::Tiff || o.StripRows > 0 || int64_t(o.Width) * o.Height > kWholePicturePixels ||
         o.Width > kWholePictureSide || o.Height > kWholePictureSide;
}

bool Bitmap(Format f) { return f == Format::Bmp || f == Format::Png || f == Format::Tiff; }

const char* FormatName(Format f) { return f == Format::Bmp ? "BMP" : f == Format::Png ? "PNG" : "TIFF"; }

// Whether the picture lies on the map (in its system's coordinates).
bool OnMap(const PictureOutput& o) { return o.Georeference || (o.Kind() == Format::Tiff && o.Geo.Known()); }

PicturePlacement PlacementOn(const ZoomState& zoom, const PictureOutput& o) {
  return OnMap(o) ? PlacementOf(zoom.Engine).Through(o.Geo.ToSystem) : PlacementOf(zoom.Engine);
}

bool WriteWhole(ZoomState& zoom, const ZoomRect& window, const PictureOutput& o) {
  ImageSurface surface(o.Width, o.Height, o.Background);
  if (!zoom.Zoom(window, surface)) return false;
  QImage picture = ReduceColors(surface.image(), o.Depth, InksOf(zoom, o.Background, o.Depth));
  SetDotsPerInch(picture, o.Dpi);
  SetPlacementText(picture, PlacementOf(zoom.Engine));
  return SavePictureAtomically(picture, QString::fromStdString(o.Path), FormatName(o.Kind()));
}

bool WriteStrips(ZoomState& zoom, const ZoomRect& window, const PictureOutput& o) {
  if (zoom.drawing().SeqCount() == 0) {
    ShowMessage(MessageIcon::Information, LoadResText(1051));
    return false;
  }
  if (!zoom.PlaceView(window, o.Width, o.Height)) return false;
  const LineArtInks inks = InksOf(zoom, o.Background, o.Depth);
  PictureStream::Header header =
      PictureStream::HeaderFor(QSize(o.Width, o.Height), o.Depth, inks, o.Dpi,
                               QString::fromStdString(PlacementOf(zoom.Engine).WorldFileText()));
  if (o.Transparent()) header.format = QImage::Format_ARGB32;
  if (o.Kind() == Format::Tiff) {
    header.mapPlacement = PlacementOn(zoom, o);
    header.system = o.Geo.System;
  }
  std::unique_ptr<PictureStream> stream =
      PictureStream::Open(QString::fromStdString(o.Path), FormatName(o.Kind()), header);
  if (!stream) return false;
  const int32_t rows = o.StripRows > 0 ? o.StripRows : int32_t(std::max<int64_t>(1, kStripPixels / o.Width));
  return WriteInStrips(zoom, o.Background, rows, o.Depth, inks, *stream);
}

bool WriteSvg(ZoomState& zoom, const ZoomRect& window, const PictureOutput& o) {
  ImageSurface surface(o.Width, o.Height, o.Background);
  QSaveFile file(QString::fromStdString(o.Path));
  if (!file.open(QIODevice::WriteOnly)) return false;
  QSvgGenerator svg;
  svg.setOutputDevice(&file);
  svg.setSize(QSize(o.Width, o.Height));
  svg.setViewBox(QRect(0, 0, o.Width, o.Height));
  svg.setTitle(QString::fromStdString(o.Title));
  if (!zoom.Zoom(window, surface, &svg)) return false;
  return file.commit();
}

bool WritePdf(ZoomState& zoom, const ZoomRect& window, const PictureOutput& o) {
  ImageSurface surface(o.Width, o.Height, o.Background);
  QSaveFile file(QString::fromStdString(o.Path));
  if (!file.open(QIODevice::WriteOnly)) return false;
  QPdfWriter pdf(&file);
  pdf.setResolution(300);
  pdf.setPageSize(QPageSize(QPageSize::A4));
  pdf.setPageOrientation(o.Width >= o.Height ? QPageLayout::Landscape : QPageLayout::Portrait);
  pdf.setTitle(QString::fromStdString(o.Title));
  zoom.Printer = &pdf;
  const bool drawn = zoom.Zoom(window, surface, nullptr, true);
  zoom.Printer = nullptr;
  return drawn && file.commit();
}

}  // namespace

PictureOutput::Format PictureOutput::FormatOf(const std::string& path) {
  const QString suffix = QString::fromStdString(path).section('.', -1).toLower();
  if (suffix == "bmp") return Format::Bmp;
  if (suffix == "png") return Format::Png;
  if (suffix == "tif" || suffix == "tiff") return Format::Tiff;
  if (suffix == "svg") return Format::Svg;
  if (suffix == "pdf") return Format::Pdf;
  return Format::Unknown;
}

std::string OutputProblem(const PictureOutput& o) {
  const Format kind = o.Kind();
  if (kind == Format::Unknown) return "the output must end in .bmp, .png, .tif, .svg or .pdf";
  const int largest = Bitmap(kind) ? kLargestPictureSide : kWholePictureSide;
  if (o.Width < 1 || o.Height < 1 || o.Width > largest || o.Height > largest)
    return "--size takes WIDTHxHEIGHT, each 1 to " + std::to_string(largest);
  if (kind == Format::Tiff && !ReducesPixelByPixel(o.Depth))
    return "--depth 256, 16 and mono are for BMP and PNG; a TIFF takes palette, bw or grey";
  if (Bitmap(kind) && NeedsStrips(o) && !ReducesPixelByPixel(o.Depth))
    return "--depth 256, 16 and mono dither the picture whole, which goes up to " +
           std::to_string(kWholePicturePixels) + " pixels; palette, bw and grey take any size";
  if (o.Georeference && !Bitmap(kind)) return "--georeference places a .bmp, .png or .tif picture";
  if (o.Transparent() && kind != Format::Png && kind != Format::Tiff)
    return "--background none: only PNG and TIFF pictures can be transparent (a BMP cannot)";
  if (o.Transparent() && o.Depth != ColorDepth::Full)
    return "--background none keeps full colour: leave out --depth";
  return {};
}

WriteOutcome WritePictureFile(ZoomState& zoom, const ZoomRect& window, const PictureOutput& o) {
  bool written = false;
  switch (o.Kind()) {
    case Format::Bmp:
    case Format::Png:
    case Format::Tiff:
      written = NeedsStrips(o) ? WriteStrips(zoom, window, o) : WriteWhole(zoom, window, o);
      break;
    case Format::Svg:
      written = WriteSvg(zoom, window, o);
      break;
    case Format::Pdf:
      written = WritePdf(zoom, window, o);
      break;
    case Format::Unknown:
      break;
  }
  if (!written) return WriteOutcome::PictureFailed;
  const QString picture = QString::fromStdString(o.Path);
  if ((o.WorldFile || o.Georeference) && !WriteWorldFile(PlacementOn(zoom, o), picture))
    return WriteOutcome::WorldFileFailed;
  if (o.Georeference && o.Geo.Known() && !WriteCrsFiles(o.Geo.System, picture))
    return WriteOutcome::CrsFailed;
  return WriteOutcome::Written;
}

}  // namespace dxfimport
