#include "app/render_command.h"

#include <QColor>
#include <cmath>
#include <cstdio>

#include "app/commands.h"
#include "app/load_for_command.h"
#include "geo/georeference.h"
#include "render/color_depth.h"
#include "render/picture_writer.h"
#include "render/redraw.h"
#include "render/world_file.h"
#include "support/messages.h"
#include "support/text_decode.h"
#include "support/texts.h"

namespace dxfimport {
namespace {

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

// "1:500" (or "500"): the scale's denominator; 0 when the text is not a scale.
double ScaleDenominator(const std::string& text) {
  double paper = 1, drawing = 0;
  char tail = 0;
  if (std::sscanf(text.c_str(), "%lf:%lf%c", &paper, &drawing, &tail) != 2 &&
      std::sscanf(text.c_str(), "%lf%c", &drawing, &tail) != 1)
    return 0;
  return paper > 0 && drawing > 0 && std::isfinite(drawing / paper) ? drawing / paper : 0;
}

// Why the look asked for cannot be had with these options; empty when it can.
std::string LookProblem(const RenderOptions& o) {
  if (!o.monochrome.empty() && !QColor(QString::fromStdString(o.monochrome)).isValid())
    return "--monochrome " + o.monochrome + ": unknown colour";
  if ((o.fade > 0 || !o.monochrome.empty() || o.background == "none") && o.profile == ReadingProfile::Legacy)
    return "--background none, --fade and --monochrome draw with the modern rules, not --legacy";
  return {};
}

// Writes the picture and its placement files; the exit status.
int WritePicture(ZoomState& zoom, const ZoomRect& window, const PictureOutput& out,
                 const LoadOutcome& outcome) {
  switch (WritePictureFile(zoom, window, out)) {
    case WriteOutcome::PictureFailed:
      std::fprintf(stderr, "dxfimport render: no picture was written to %s\n", out.Path.c_str());
      return 1;
    case WriteOutcome::WorldFileFailed:
      std::fprintf(stderr, "dxfimport render: the world file %s could not be written\n",
                   WorldFilePath(QString::fromStdString(out.Path)).toLocal8Bit().constData());
      return 1;
    case WriteOutcome::CrsFailed:
      std::fprintf(stderr, "dxfimport render: the coordinate system could not be written beside %s\n",
                   out.Path.c_str());
      return 1;
    case WriteOutcome::Written:
      break;
  }
  return outcome.Complete ? 0 : 1;
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
  if (!(width <= kLargestPictureSide && height <= kLargestPictureSide))
    return "at " + o.scale + " and " + std::to_string(int(o.dpi)) + " dpi the picture would be " +
           std::to_string(std::llround(std::min(width, 1e15))) + " x " +
           std::to_string(std::llround(std::min(height, 1e15))) + " pixels; the most is " +
           std::to_string(kLargestPictureSide) + " on a side";
  o.width = std::max(1, int(std::ceil(width - 1e-6)));
  o.height = std::max(1, int(std::ceil(height - 1e-6)));
  const double left = std::min(window.left, window.right), bottom = std::min(window.bottom, window.top);
  window = {left, bottom + o.height / pixelsPerUnit, left + o.width / pixelsPerUnit, bottom};
  return {};
}

// The output the options describe (the size and resolution as given).
PictureOutput OutputOf(const RenderOptions& o, ColorDepth depth, QColor background) {
  PictureOutput out;
  out.Path = o.output, out.Title = o.file;
  out.Width = o.width, out.Height = o.height, out.Dpi = o.dpi;
  out.Depth = depth, out.Background = background, out.StripRows = o.stripRows;
  out.WorldFile = o.worldFile, out.Georeference = o.georeference;
  return out;
}

}  // namespace

int RunRender(const RenderOptions& o) {
  std::optional<ColorDepth> depth = ColorDepthNamed(o.depth);
  if (!depth) return Usage("--depth takes 256, 16, mono, palette, bw or grey");
  const bool transparent = o.background == "none";
  // A transparent background keeps white for what inks fade toward and stand out from.
  QColor background(transparent ? QColor(255, 255, 255, 0) : QColor(QString::fromStdString(o.background)));
  if (!background.isValid()) return Usage("unknown colour " + o.background);
  if (!transparent && background.alpha() != 255)
    return Usage("--background " + o.background +
                 ": a picture's background is an opaque colour (a name or #rrggbb), or none");
  PictureOutput out = OutputOf(o, *depth, background);
  if (std::string problem = OutputProblem(out); !problem.empty()) return Usage(problem);
  if (std::string problem = LookProblem(o); !problem.empty()) return Usage(problem);
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
  if (!o.scale.empty()) {
    RenderOptions sized = o;
    if (std::string problem = SizeForScale(drawing, sized, window); !problem.empty()) return Usage(problem);
    out.Width = sized.width, out.Height = sized.height, out.Dpi = sized.dpi;
    if (std::string problem = OutputProblem(out); !problem.empty()) return Usage(problem);
  }
  if (out.Dpi > 0) zoom.Display.Dpi = out.Dpi;
  std::string problem;
  out.Geo = GeoreferenceOf(drawing.Geo, o.file, o.crs, problem);
  if (!problem.empty()) std::fprintf(stderr, "dxfimport render: %s\n", problem.c_str());
  if (o.georeference && !out.Geo.Known())
    std::fprintf(
        stderr,
        "dxfimport render: %s names no coordinate reference system (in GEODATA, %s or --crs): no .prj "
        "or .aux.xml is written and its world file is in %s coordinates\n",
        o.file.c_str(), PrjPath(o.file).c_str(), out.Geo.FromGeoData ? "GEODATA's" : "drawing");
  return WritePicture(zoom, window, out, outcome);
}

}  // namespace dxfimport
