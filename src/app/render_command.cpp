#include "app/render_command.h"

#include <QColor>
#include <QPageSize>
#include <QPdfWriter>
#include <QSaveFile>
#include <QSvgGenerator>
#include <cmath>
#include <cstdio>

#include "app/commands.h"
#include "app/load_for_command.h"
#include "geo/georeference.h"
#include "render/color_depth.h"
#include "render/picture_file.h"
#include "render/picture_stream.h"
#include "render/redraw.h"
#include "render/world_file.h"
#include "support/messages.h"
#include "support/text_decode.h"
#include "support/texts.h"

namespace dxfimport {
namespace {

enum class OutputKind { Bmp, Png, Tiff, Svg, Pdf, Unknown };

OutputKind KindOf(const std::string& path) {
  QString suffix = QString::fromStdString(path).section('.', -1).toLower();
  if (suffix == "bmp") return OutputKind::Bmp;
  if (suffix == "png") return OutputKind::Png;
  if (suffix == "tif" || suffix == "tiff") return OutputKind::Tiff;
  if (suffix == "svg") return OutputKind::Svg;
  if (suffix == "pdf") return OutputKind::Pdf;
  return OutputKind::Unknown;
}

// A picture of up to this many pixels is drawn whole; a larger one a strip of about
// kStripPixels at a time (64 MB in memory), as is one whose side is beyond what the
// rasterizer takes in one go.
constexpr int64_t kWholePicturePixels = int64_t(1) << 26;
constexpr int64_t kStripPixels = int64_t(1) << 24;
constexpr int kWholePictureSide = 32767;
constexpr int kLargestSide = 1 << 20;

bool NeedsStrips(const RenderOptions& o) {
  return o.stripRows > 0 || int64_t(o.width) * o.height > kWholePicturePixels ||
         o.width > kWholePictureSide || o.height > kWholePictureSide;
}

int Usage(const std::string& text) {
  std::fprintf(stderr, "dxfimport render: %s\n", text.c_str());
  return 2;
}

void SwitchLayersOff(Drawing& drawing, const std::vector<std::string>& names) {
  for (const std::string& name : names) {
    bool found = false;
    for (LayerEntry& layer : drawing.Layers) {
      if (Trim(layer.Name) == name) layer.IsOn = 0, found = true;
    }
    if (!found) std::fprintf(stderr, "dxfimport render: the drawing has no layer named %s\n", name.c_str());
  }
}

bool RenderImage(ZoomState& zoom, const ZoomRect& window, const RenderOptions& o, QColor background,
                 ColorDepth depth, const char* format) {
  ImageSurface surface(o.width, o.height, background);
  if (!zoom.Zoom(window, surface)) return false;
  QImage picture = ReduceColors(surface.image(), depth, InksOf(zoom, background, depth));
  SetDotsPerInch(picture, o.dpi);
  SetPlacementText(picture, PlacementOf(zoom.Engine));
  return SavePictureAtomically(picture, QString::fromStdString(o.output), format);
}

// A picture drawn and written a strip at a time (BMP, PNG and TIFF; a TIFF placed on the
// map of `geo`, or on the drawing when its system is not known).
bool RenderStrips(ZoomState& zoom, const ZoomRect& window, const RenderOptions& o, QColor background,
                  ColorDepth depth, const char* format, const Georeference& geo) {
  if (zoom.drawing().SeqCount() == 0) {
    ShowMessage(MessageIcon::Information, LoadResText(1051));
    return false;
  }
  if (!zoom.PlaceView(window, o.width, o.height)) return false;
  const LineArtInks inks = InksOf(zoom, background, depth);
  PictureStream::Header header =
      PictureStream::HeaderFor(QSize(o.width, o.height), depth, inks, o.dpi,
                               QString::fromStdString(PlacementOf(zoom.Engine).WorldFileText()));
  if (background.alpha() < 255) header.format = QImage::Format_ARGB32;
  if (qstrcmp(format, "TIFF") == 0) {
    const bool onMap = o.georeference || geo.Known();
    header.mapPlacement = onMap ? PlacementOf(zoom.Engine).Through(geo.ToSystem) : PlacementOf(zoom.Engine);
    header.system = geo.System;
  }
  std::unique_ptr<PictureStream> stream =
      PictureStream::Open(QString::fromStdString(o.output), format, header);
  if (!stream) return false;
  const int32_t rows = o.stripRows > 0 ? o.stripRows : int32_t(std::max<int64_t>(1, kStripPixels / o.width));
  return WriteInStrips(zoom, background, rows, depth, inks, *stream);
}

// "1:500" (or "500"): the scale's denominator; 0 when the text is not a scale.
double ScaleDenominator(const std::string& text) {
  double paper = 1, drawing = 0;
  char tail = 0;
  if (std::sscanf(text.c_str(), "%lf:%lf%c", &paper, &drawing, &tail) != 2 &&
      std::sscanf(text.c_str(), "%lf%c", &drawing, &tail) != 1)
    return 0;
  return paper > 0 && drawing > 0 && std::isfinite(drawing / paper) ? drawing / paper : 0;
}

// Why a picture of this size cannot be made in this form; empty when it can.
std::string SizeProblem(const RenderOptions& o, OutputKind kind, ColorDepth depth) {
  const bool bitmap = kind == OutputKind::Bmp || kind == OutputKind::Png || kind == OutputKind::Tiff;
  const int largest = bitmap ? kLargestSide : kWholePictureSide;
  if (o.width < 1 || o.height < 1 || o.width > largest || o.height > largest)
    return "--size takes WIDTHxHEIGHT, each 1 to " + std::to_string(largest);
  if (kind == OutputKind::Tiff && !ReducesPixelByPixel(depth))
    return "--depth 256, 16 and mono are for BMP and PNG; a TIFF takes palette, bw or grey";
  if (bitmap && NeedsStrips(o) && !ReducesPixelByPixel(depth))
    return "--depth 256, 16 and mono dither the picture whole, which goes up to " +
           std::to_string(kWholePicturePixels) + " pixels; palette, bw and grey take any size";
  return {};
}

// Why the background look asked for cannot be had; empty when it can.
std::string LookProblem(const RenderOptions& o, OutputKind kind, ColorDepth depth) {
  if (!o.monochrome.empty() && !QColor(QString::fromStdString(o.monochrome)).isValid())
    return "--monochrome " + o.monochrome + ": unknown colour";
  if ((o.fade > 0 || !o.monochrome.empty() || o.background == "none") && o.profile == ReadingProfile::Legacy)
    return "--background none, --fade and --monochrome draw with the modern rules, not --legacy";
  if (o.background != "none") return {};
  if (kind != OutputKind::Png && kind != OutputKind::Tiff)
    return "--background none: only PNG and TIFF pictures can be transparent (a BMP cannot)";
  if (depth != ColorDepth::Full) return "--background none keeps full colour: leave out --depth";
  return {};
}

// With --scale the picture's size follows from the window: the window grows at its right
// and top to whole pixels, so that the scale holds exactly. An empty message when done.
std::string SizeForScale(const Drawing& drawing, RenderOptions& o, ZoomRect& window) {
  const double denominator = ScaleDenominator(o.scale);
  if (denominator == 0) return "--scale takes 1:N";
  int units = drawing.InsUnits;
  if (MillimetresPerUnit(units) == 0) units = UnitsCode(o.units);
  if (MillimetresPerUnit(units) == 0) return "the drawing does not say its units: add --units mm|cm|m|in|ft";
  if (o.dpi == 0) o.dpi = 96;
  const double pixelsPerUnit = PixelsPerUnit(denominator, o.dpi, units);
  const double width = std::abs(window.right - window.left) * pixelsPerUnit;
  const double height = std::abs(window.top - window.bottom) * pixelsPerUnit;
  if (!(width <= kLargestSide && height <= kLargestSide))
    return "at " + o.scale + " and " + std::to_string(int(o.dpi)) + " dpi the picture would be " +
           std::to_string(std::llround(std::min(width, 1e15))) + " x " +
           std::to_string(std::llround(std::min(height, 1e15))) + " pixels; the most is " +
           std::to_string(kLargestSide) + " on a side";
  o.width = std::max(1, int(std::ceil(width - 1e-6)));
  o.height = std::max(1, int(std::ceil(height - 1e-6)));
  const double left = std::min(window.left, window.right), bottom = std::min(window.bottom, window.top);
  window = {left, bottom + o.height / pixelsPerUnit, left + o.width / pixelsPerUnit, bottom};
  return {};
}

bool RenderSvg(ZoomState& zoom, const ZoomRect& window, const RenderOptions& o, QColor background) {
  ImageSurface surface(o.width, o.height, background);
  QSaveFile file(QString::fromStdString(o.output));
  if (!file.open(QIODevice::WriteOnly)) return false;
  QSvgGenerator svg;
  svg.setOutputDevice(&file);
  svg.setSize(QSize(o.width, o.height));
  svg.setViewBox(QRect(0, 0, o.width, o.height));
  svg.setTitle(QString::fromStdString(o.file));
  if (!zoom.Zoom(window, surface, &svg)) return false;
  return file.commit();
}

bool RenderPdf(ZoomState& zoom, const ZoomRect& window, const RenderOptions& o, QColor background) {
  ImageSurface surface(o.width, o.height, background);
  QSaveFile file(QString::fromStdString(o.output));
  if (!file.open(QIODevice::WriteOnly)) return false;
  QPdfWriter pdf(&file);
  pdf.setResolution(300);
  pdf.setPageSize(QPageSize(QPageSize::A4));
  pdf.setPageOrientation(o.width >= o.height ? QPageLayout::Landscape : QPageLayout::Portrait);
  pdf.setTitle(QString::fromStdString(o.file));
  zoom.Printer = &pdf;
  if (!zoom.Zoom(window, surface, nullptr, true)) return false;
  return file.commit();
}

// Draws and writes the picture (and its world file); the exit status.
int WritePicture(ZoomState& zoom, const ZoomRect& window, const RenderOptions& o, OutputKind kind,
                 ColorDepth depth, QColor background, const LoadOutcome& outcome, const Georeference& geo) {
  bool written = false;
  switch (kind) {
    case OutputKind::Bmp:
    case OutputKind::Png: {
      const char* format = kind == OutputKind::Bmp ? "BMP" : "PNG";
      written = NeedsStrips(o) ? RenderStrips(zoom, window, o, background, depth, format, geo)
                               : RenderImage(zoom, window, o, background, depth, format);
      break;
    }
    case OutputKind::Tiff:
      written = RenderStrips(zoom, window, o, background, depth, "TIFF", geo);
      break;
    case OutputKind::Svg:
      written = RenderSvg(zoom, window, o, background);
      break;
    case OutputKind::Pdf:
      written = RenderPdf(zoom, window, o, background);
      break;
    case OutputKind::Unknown:
      break;
  }
  if (!written) {
    std::fprintf(stderr, "dxfimport render: no picture was written to %s\n", o.output.c_str());
    return 1;
  }
  const QString picture = QString::fromStdString(o.output);
  // A TIFF is on the map whenever its system is known (its tags say so); the world file
  // beside it agrees.
  const bool onMap = o.georeference || (kind == OutputKind::Tiff && geo.Known());
  const PicturePlacement placement =
      onMap ? PlacementOf(zoom.Engine).Through(geo.ToSystem) : PlacementOf(zoom.Engine);
  if ((o.worldFile || o.georeference) && !WriteWorldFile(placement, picture)) {
    std::fprintf(stderr, "dxfimport render: the world file %s could not be written\n",
                 WorldFilePath(picture).toLocal8Bit().constData());
    return 1;
  }
  if (o.georeference && geo.Known() && !WriteCrsFiles(geo.System, picture)) {
    std::fprintf(stderr, "dxfimport render: the coordinate system could not be written beside %s\n",
                 o.output.c_str());
    return 1;
  }
  return outcome.Complete ? 0 : 1;
}

}  // namespace

int RunRender(const RenderOptions& o) {
  OutputKind kind = KindOf(o.output);
  if (kind == OutputKind::Unknown) return Usage("the output must end in .bmp, .png, .tif, .svg or .pdf");
  std::optional<ColorDepth> depth = ColorDepthNamed(o.depth);
  if (!depth) return Usage("--depth takes 256, 16, mono, palette, bw or grey");
  const bool transparent = o.background == "none";
  // A transparent background keeps white for what inks fade toward and stand out from.
  QColor background(transparent ? QColor(255, 255, 255, 0) : QColor(QString::fromStdString(o.background)));
  if (!background.isValid()) return Usage("unknown colour " + o.background);
  if (!transparent && background.alpha() != 255)
    return Usage("--background " + o.background +
                 ": a picture's background is an opaque colour (a name or #rrggbb), or none");
  if (std::string problem = LookProblem(o, kind, *depth); !problem.empty()) return Usage(problem);
  if (std::string problem = SizeProblem(o, kind, *depth); !problem.empty()) return Usage(problem);
  if (o.georeference && kind != OutputKind::Bmp && kind != OutputKind::Png && kind != OutputKind::Tiff)
    return Usage("--georeference places a .bmp, .png or .tif picture");
  if (!CrsOptionUsable(o.crs, "render")) return 2;

  Drawing drawing;
  LoadOutcome outcome;
  if (!LoadForCommand(o.file, drawing, outcome, o.profile,
                      LoadOptions{.Layout = o.layout,
                                  .EntityBudget = o.maxEntities,
                                  .ImageFolders = o.imageFolders,
                                  .XrefFolders = o.xrefFolders}))
    return 1;
  SwitchLayersOff(drawing, o.layersOff);
  ZoomState zoom(drawing);
  zoom.Display.LineWeights = o.lineWeights;
  zoom.Display.Fade = o.fade;
  if (!o.monochrome.empty()) {
    const QColor ink(QString::fromStdString(o.monochrome));
    zoom.Display.Monochrome = ink.red() | (ink.green() << 8) | (ink.blue() << 16);
  }
  zoom.FileName = o.file;
  zoom.ColorByLayer = !o.entityColors;
  zoom.ExtentsZoom = ExtentsOf(drawing);
  ZoomRect window = o.window.value_or(zoom.ExtentsZoom);
  RenderOptions sized = o;
  if (!o.scale.empty()) {
    if (std::string problem = SizeForScale(drawing, sized, window); !problem.empty()) return Usage(problem);
  }
  if (std::string problem = SizeProblem(sized, kind, *depth); !problem.empty()) return Usage(problem);
  if (sized.dpi > 0) zoom.Display.Dpi = sized.dpi;
  std::string problem;
  const Georeference geo = GeoreferenceOf(drawing.Geo, o.file, o.crs, problem);
  if (!problem.empty()) std::fprintf(stderr, "dxfimport render: %s\n", problem.c_str());
  if (o.georeference && !geo.Known())
    std::fprintf(
        stderr,
        "dxfimport render: %s says nothing of its coordinate reference system (no GEODATA, no %s, no "
        "--crs): its world file is in drawing coordinates\n",
        o.file.c_str(), PrjPath(o.file).c_str());
  return WritePicture(zoom, window, sized, kind, *depth, background, outcome, geo);
}

}  // namespace dxfimport
