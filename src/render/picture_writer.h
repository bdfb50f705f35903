#pragma once

#include <QColor>
#include <string>

#include "geo/georeference.h"
#include "render/color_depth.h"
#include "render/engine.h"

namespace dxfimport {

class ZoomState;

// A picture file to write: where (its format from the extension), how large, in what
// depth and look, and with which placement files.
struct PictureOutput {
  enum class Format { Bmp, Png, Tiff, Svg, Pdf, Unknown };
  static Format FormatOf(const std::string& path);

  std::string Path;
  int Width = 640, Height = 480;
  double Dpi = 0;  // the resolution kept in the file (0: not said)
  ColorDepth Depth = ColorDepth::Full;
  // The background; alpha 0 makes PNG and TIFF transparent (its colour still what inks
  // fade toward and stand out from).
  QColor Background = Qt::white;
  int32_t StripRows = 0;      // draw and write a bitmap this many rows at a time (0: as needed)
  bool WorldFile = false;     // a world file beside the picture
  bool Georeference = false;  // the world file on the map, with a .prj and an .aux.xml
  dxfimport::Georeference Geo;
  std::string Title;  // of an SVG or PDF

  Format Kind() const { return FormatOf(Path); }
  bool Transparent() const { return Background.alpha() < 255; }
};

// The largest bitmap side the writer takes, and the largest drawn in one piece.
inline constexpr int kLargestPictureSide = 1 << 20;

// Why the picture cannot be written as asked; empty when it can.
std::string OutputProblem(const PictureOutput& out);

enum class WriteOutcome { Written, PictureFailed, WorldFileFailed, CrsFailed };

// Draws `window` of the drawing of `zoom` into the file `out` describes: a bitmap whole,
// or in strips when it is large (a TIFF always), SVG and PDF through Qt's generators;
// then its world file, .prj and .aux.xml as asked. A TIFF is placed on the map whenever
// its system is known, and the world file beside it agrees. Files are written atomically.
WriteOutcome WritePictureFile(ZoomState& zoom, const ZoomRect& window, const PictureOutput& out);

}  // namespace dxfimport
