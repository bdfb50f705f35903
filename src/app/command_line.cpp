#include "app/command_line.h"

namespace dxfimport {

const char* ProgramVersion() { return DXFIMPORT_VERSION; }

CommandLine::CommandLine()
    : app("dxfimport: reads DXF drawings, draws them and reports on them.\n"
          "Without a command it opens the viewer (with FILE, if one is given).",
          "dxfimport") {
  app.require_subcommand(0, 1);
  app.set_version_flag("--version", std::string("dxfimport ") + ProgramVersion(),
                       "Print the program's version");
  app.add_option("file", viewerFile, "DXF file to open in the viewer");
  app.add_flag("--automation", automation,
               "Host mode: the modal viewer, then the bitmap path on standard output");
  app.add_flag(
      "--placement", placement,
      "With --automation: a second line with the bitmap's world-file numbers, a third with its coordinate "
      "reference system (WKT; empty when not known)");

  const char* budgetHelp =
      "Rows the drawing may hold; an insert that would pass them is left out (modern profile)";
  const char* imagePathHelp =
      "A folder where the images and underlays a drawing names are also looked for (repeatable; modern "
      "profile)";
  const char* xrefPathHelp =
      "A folder where the drawings of external references are also looked for (repeatable; modern profile)";
  const char* crsHelp =
      "The drawing's coordinate reference system, EPSG:n (over its GEODATA and a NAME.prj beside it)";
  const char* legacyHelp = "Read with the legacy rules (every line compared with the entity names)";
  stats = app.add_subcommand("stats", "Print the load statistics of a drawing");
  stats->add_option("file", file, "DXF file")->required();
  stats->add_flag("--json", json, "Print the figures as one JSON object");
  stats->add_flag("--legacy", legacy, legacyHelp);
  stats->add_option("--max-entities", maxEntities, budgetHelp)->check(CLI::PositiveNumber);
  stats->add_option("--image-path", imageFolders, imagePathHelp);
  stats->add_option("--xref-path", xrefFolders, xrefPathHelp);
  stats->add_option("--crs", crs, crsHelp);
  stats->add_option("--window", window, "With --json: the window of the picture whose placement is given");
  stats->add_option("--size", size, "With --json: the size of that picture, WIDTHxHEIGHT")
      ->capture_default_str();

  dump = app.add_subcommand("dump", "Print the drawing's tables as tab-separated text");
  dump->add_option("file", file, "DXF file")->required();
  dump->add_flag("--legacy", legacy, legacyHelp);
  dump->add_option("--max-entities", maxEntities, budgetHelp)->check(CLI::PositiveNumber);
  dump->add_option("--image-path", imageFolders, imagePathHelp);
  dump->add_option("--xref-path", xrefFolders, xrefPathHelp);

  draw = app.add_subcommand("render", "Draw a drawing to a picture file (.bmp, .png, .svg, .pdf)");
  draw->add_option("file", renderFiles, "DXF file (several: a batch into the folder -o names)")->required();
  draw->add_option("-o,--output", render.output, "Picture file to write (a batch: the folder)")->required();
  draw->add_option("--format", format, "A batch's pictures: bmp, png, svg or pdf")
      ->capture_default_str()
      ->check(CLI::IsMember({"bmp", "png", "svg", "pdf"}));
  draw->add_option("--jobs", jobs, "A batch's drawings at once (default: one per processor)")
      ->check(CLI::PositiveNumber);
  draw->add_option("--file-timeout", fileTimeout, "A batch's time limit per file in seconds (0: none)")
      ->capture_default_str()
      ->check(CLI::NonNegativeNumber);
  draw->add_option("--size", size, "Picture size WIDTHxHEIGHT in pixels")->capture_default_str();
  draw->add_option("--background", render.background,
                   "Background colour (name or #rrggbb), or none: transparent (PNG and TIFF)")
      ->capture_default_str();
  draw->add_option("--fade", render.fade, "Fade every ink this many percent toward the background (0-100)")
      ->check(CLI::Range(0, 100));
  draw->add_option("--monochrome", render.monochrome, "Draw every ink in one colour (default black)")
      ->expected(0, 1);
  draw->add_option("--depth", render.depth,
                   "Colour depth of a bitmap: 256, 16 or mono (dithered); palette, bw or grey (line art)")
      ->check(CLI::IsMember({"256", "16", "mono", "palette", "bw", "grey", "gray"}));
  draw->add_option("--layer-off", render.layersOff, "Do not draw this layer (repeatable)");
  draw->add_flag("--entity-colors", render.entityColors,
                 "Draw entities in their own colours, not their layer's");
  draw->add_flag("--legacy", legacy, legacyHelp);
  draw->add_option("--window", window,
                   "Window LEFT,TOP,RIGHT,BOTTOM in drawing units (default: the extents)");
  draw->add_option("--layout", render.layout, "Draw this paper-space layout instead of model space");
  draw->add_flag("--lineweights", render.lineWeights, "Draw line weights as pen widths");
  draw->add_option("--max-entities", maxEntities, budgetHelp)->check(CLI::PositiveNumber);
  draw->add_option("--image-path", imageFolders, imagePathHelp);
  draw->add_option("--xref-path", xrefFolders, xrefPathHelp);
  draw->add_flag("--world-file", render.worldFile, "Write a world file beside the picture (.bpw, .pgw, ...)");
  draw->add_option("--crs", render.crs, crsHelp);
  draw->add_flag(
      "--georeference", render.georeference,
      "Place a BMP or PNG on the map: its world file in the drawing's coordinate reference system, "
      "a .prj and an .aux.xml");
  draw->add_option("--dpi", render.dpi, "Resolution kept in the picture, and with --scale its pixel size")
      ->check(CLI::Range(1.0, 100000.0));
  draw->add_option("--scale", render.scale,
                   "Draw at this scale, 1:N (the size follows from the window and --dpi)");
  draw->add_option("--units", render.units,
                   "The drawing unit when the drawing does not say: mm, cm, m, in or ft")
      ->check(CLI::IsMember({"mm", "cm", "m", "in", "ft"}));
  draw->add_option("--strip-rows", render.stripRows, "Draw and write a bitmap this many rows at a time")
      ->check(CLI::PositiveNumber);

  sweep = app.add_subcommand("sweep", "Load and draw every .dxf file under a folder; print a table");
  sweep->add_option("dir", sweepDir, "Folder to sweep")->required();
  sweep->add_option("-o,--output", sweepOutput, "Write the Markdown table to this file");
  sweep->add_option("--seconds", sweepSeconds, "Time bound per file and profile")->capture_default_str();
}

}  // namespace dxfimport
