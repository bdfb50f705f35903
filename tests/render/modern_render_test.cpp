#include <gtest/gtest.h>

#include "render/redraw.h"
#include "testing/dxf_fixture.h"

namespace dxfimport {
namespace {

using testing::DxfText;
using testing::EntitiesFile;
using testing::Pairs;

// Draws a modern drawing of one layer (red) into 100 x 100 pixels showing 0..100.
class ModernRender {
 public:
  explicit ModernRender(const Pairs& entities) {
    std::string layers = DxfText({{0, "SECTION"}, {2, "TABLES"}, {0, "TABLE"}, {2, "LAYER"}, {0, "LAYER"}, {2, "0"},
                                  {62, "1"}, {0, "ENDTAB"}, {0, "ENDSEC"}});
    loaded_ = testing::LoadModern(layers + EntitiesFile(entities));
    ZoomState zoom(loaded_->drawing);
    surface_.Cls();
    drawn_ = zoom.Zoom({0, 100, 100, 0}, surface_);
  }
  bool drawn() const { return drawn_; }
  bool Inked(int x, int y) const { return (surface_.image().pixel(x, y) & 0xFFFFFF) != 0xFFFFFF; }
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

 private:
  std::unique_ptr<testing::Loaded> loaded_;
  ImageSurface surface_{100, 100};
  bool drawn_ = false;
};

TEST(ModernRendering, EllipseSplineAndBulgeArcsAreCurved) {
  ModernRender ellipse({{0, "ELLIPSE"}, {10, "50"}, {20, "50"}, {11, "40"}, {21, "0"}, {40, "0.5"}});
  ASSERT_TRUE(ellipse.drawn());
  EXPECT_TRUE(ellipse.InkedNear(90, 50));
  EXPECT_TRUE(ellipse.InkedNear(50, 30));  // the minor axis: 20 up from the centre
  EXPECT_FALSE(ellipse.InkedNear(50, 10));
  ModernRender spline({{0, "SPLINE"}, {71, "2"}, {10, "10"}, {20, "10"}, {10, "50"}, {20, "90"}, {10, "90"},
                       {20, "10"}});
  EXPECT_TRUE(spline.InkedNear(50, 50));   // the apex of the curve, not the control point
  EXPECT_FALSE(spline.InkedNear(50, 10));
  ModernRender bulge({{0, "LWPOLYLINE"}, {10, "20"}, {20, "50"}, {42, "1"}, {10, "80"}, {20, "50"}});
  EXPECT_GT(bulge.InkedIn(45, 76, 55, 83), 0);  // a semicircle below the chord
  EXPECT_EQ(bulge.InkedIn(30, 45, 70, 55), 0);  // not the straight chord
  EXPECT_EQ(bulge.InkedIn(0, 0, 100, 45), 0);   // nor above it
}

TEST(ModernRendering, SolidHatchFillsAroundItsHole) {
  ModernRender hatch({{0, "HATCH"}, {70, "1"}, {91, "2"},
                      {92, "2"}, {72, "0"}, {73, "1"}, {93, "4"}, {10, "10"}, {20, "10"}, {10, "90"}, {20, "10"},
                      {10, "90"}, {20, "90"}, {10, "10"}, {20, "90"}, {97, "0"},
                      {92, "2"}, {72, "0"}, {73, "1"}, {93, "4"}, {10, "40"}, {20, "40"}, {10, "60"}, {20, "40"},
                      {10, "60"}, {20, "60"}, {10, "40"}, {20, "60"}, {97, "0"}});
  ASSERT_TRUE(hatch.drawn());
  EXPECT_TRUE(hatch.Inked(20, 20));
  EXPECT_FALSE(hatch.Inked(50, 50));  // the hole
  EXPECT_FALSE(hatch.Inked(5, 5));
}

TEST(ModernRendering, MTextLinesAreDrawnOneBelowTheOther) {
  ModernRender text({{0, "MTEXT"}, {10, "10"}, {20, "90"}, {40, "12"}, {71, "1"}, {7, "TXT"},
                     {1, "{\\fArial;EEE}\\PEEE"}});
  ASSERT_TRUE(text.drawn());
  EXPECT_GT(text.InkedIn(10, 10, 50, 24), 20);  // first line: its cap height below the top
  EXPECT_GT(text.InkedIn(10, 30, 50, 44), 20);  // second line: 20 units further down
  EXPECT_EQ(text.InkedIn(60, 0, 100, 100), 0);
}

}  // namespace
}  // namespace dxfimport
