#pragma once

#include <fstream>
#include <memory>
#include <string>

#include "render/redraw.h"
#include "testing/dxf_fixture.h"

namespace dxfimport::testing {

// How a test drawing is drawn.
struct RenderSetup {
  QColor background = Qt::white;
  bool lineWeights = false;
  ZoomRect window{0, 100, 100, 0};
  std::string layerColor = "1";  // of layer 0
  std::string header;            // HEADER variables as DXF text
  Pairs lineTypes;               // LTYPE entries of the TABLES section
  std::string folder;            // when set, the drawing is read from a file written here
  std::string objects;           // an OBJECTS section after the entities, as DXF text
  std::string blocks;            // block definitions (a BLOCKS section) as DXF text
  Pairs layers;                  // LAYER entries after layer 0
};

// Draws a modern drawing of one layer (red unless set up otherwise) into 100 x 100
// pixels showing 0..100.
class ModernRender {
 public:
  explicit ModernRender(const Pairs& entities, const RenderSetup& setup = {})
      : surface_(100, 100, setup.background) {
    std::string lineTypes = setup.lineTypes.empty() ? ""
                                                    : DxfText({{0, "TABLE"}, {2, "LTYPE"}}) +
                                                          DxfText(setup.lineTypes) + DxfText({{0, "ENDTAB"}});
    std::string layers =
        DxfText({{0, "SECTION"}, {2, "TABLES"}}) + lineTypes +
        DxfText({{0, "TABLE"}, {2, "LAYER"}, {0, "LAYER"}, {2, "0"}, {62, setup.layerColor}}) +
        DxfText(setup.layers) + DxfText({{0, "ENDTAB"}, {0, "ENDSEC"}});
    std::string header = setup.header.empty() ? ""
                                              : DxfText({{0, "SECTION"}, {2, "HEADER"}}) + setup.header +
                                                    DxfText({{0, "ENDSEC"}});
    const std::string blocks = setup.blocks.empty() ? ""
                                                    : DxfText({{0, "SECTION"}, {2, "BLOCKS"}}) +
                                                          setup.blocks + DxfText({{0, "ENDSEC"}});
    const std::string text = header + layers + blocks + DxfText({{0, "SECTION"}, {2, "ENTITIES"}}) +
                             DxfText(entities) + DxfText({{0, "ENDSEC"}}) + setup.objects +
                             DxfText({{0, "EOF"}});
    if (setup.folder.empty()) {
      loaded_ = LoadModern(text);
    } else {
      const std::string path = setup.folder + "/drawing.dxf";
      std::ofstream(path, std::ios::binary) << text;
      loaded_ = LoadModernFile(path);
    }
    ZoomState zoom(loaded_->drawing);
    zoom.Display.LineWeights = setup.lineWeights;
    surface_.Cls();
    drawn_ = zoom.Zoom(setup.window, surface_);
  }
  bool drawn() const { return drawn_; }
  QRgb Pixel(int x, int y) const { return surface_.image().pixel(x, y) & 0xFFFFFF; }
  bool Inked(int x, int y) const { return Pixel(x, y) != (surface_.BackColor().rgb() & 0xFFFFFF); }
  bool InkedNear(int x, int y) const {
    for (int dy = -1; dy <= 1; ++dy)
      for (int dx = -1; dx <= 1; ++dx)
        if (Inked(x + dx, y + dy)) return true;
    return false;
  }
  int InkedIn(int x0, int y0, int x1, int y1) const {
    int n = 0;
    for (int y = y0; y < y1; ++y)
      for (int x = x0; x < x1; ++x) n += Inked(x, y);
    return n;
  }
  const QImage& image() const { return surface_.image(); }
  const Loaded& loaded() const { return *loaded_; }

 private:
  std::unique_ptr<Loaded> loaded_;
  ImageSurface surface_;
  bool drawn_ = false;
};

}  // namespace dxfimport::testing
