#pragma once

#include <optional>
#include <string>
#include <vector>

#include "dxf/reader.h"
#include "render/engine.h"

namespace dxfimport {

struct RenderOptions {
  std::string file;
  std::string output;  // .bmp, .png, .svg or .pdf
  int width = 640;
  int height = 480;
  std::string background = "white";  // or "none": transparent (PNG, TIFF)
  std::string depth;                 // "", "256", "16", "mono", "palette", "bw" or "grey"
  std::vector<std::string> layersOff;
  bool entityColors = false;
  std::optional<ZoomRect> window;  // drawing units; default: the extents
  ReadingProfile profile = ReadingProfile::Modern;
  std::string layout;                     // a paper-space layout to draw instead of model space
  bool lineWeights = false;               // line weights drawn as pen widths
  int64_t maxEntities = 0;                // the modern profile's entity budget (0: the default)
  std::vector<std::string> imageFolders;  // where named images are also looked for
  std::vector<std::string> xrefFolders;   // where the drawings of external references are
  bool worldFile = false;                 // a world file beside the picture
  double dpi = 0;                         // the picture's resolution (0: not said; 96 for --scale)
  std::string scale;                      // "1:500": the size follows from the window, scale and dpi
  std::string units;          // the drawing unit when the drawing does not say (mm, cm, m, in, ft)
  int32_t stripRows = 0;      // draw a bitmap this many rows at a time (0: whole when it fits)
  int32_t fade = 0;           // inks this many percent of the way to the background
  std::string monochrome;     // every ink this colour ("": their own)
  std::string crs;            // EPSG:n: the drawing's coordinate reference system
  bool georeference = false;  // world file in the system's coordinates, .prj and .aux.xml
};

// Draws a drawing to a picture file. 0 when the picture was written from a complete read
// (an insert left out over the entity budget is named on standard error and still 0);
// 1 when the drawing could not be read or drawn (no file is then written) or the read
// stopped early (the picture of what was read is written); 2 for bad options. Reports of
// the redraw go to standard error and do not stop it.
int RunRender(const RenderOptions& options);

}  // namespace dxfimport
