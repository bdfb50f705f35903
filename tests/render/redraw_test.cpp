#include "render/redraw.h"

#include <gtest/gtest.h>

#include "testing/dxf_fixture.h"

namespace dxfimport {
namespace {

// A 100 x 100 surface showing drawing units 0..100 one to one: drawing (x, y) lands on
// device (x, 100 - y).
class RedrawTest : public ::testing::Test {
 protected:
  RedrawTest() {
    drawing.AddLayer({"0", 0, -1});
    drawing.AddLayer({"RED", 0x0000FF, -1});
  }

  bool Draw(ZoomRect window = {0, 100, 100, 0}) {
    surface.Cls();
    return zoom.Zoom(window, surface);
  }
  QRgb At(int x, int y) const { return surface.image().pixel(x, y) & 0xFFFFFF; }
  bool Inked(int x, int y) const { return At(x, y) != 0xFFFFFF; }
  // Ink within one pixel of (x, y): where an aliased curve crosses a point.
  bool InkedNear(int x, int y) const {
    for (int dy = -1; dy <= 1; ++dy)
      for (int dx = -1; dx <= 1; ++dx)
        if (Inked(x + dx, y + dy)) return true;
    return false;
  }
  int InkedCount() const {
    int n = 0;
    for (int y = 0; y < 100; ++y)
      for (int x = 0; x < 100; ++x) n += Inked(x, y);
    return n;
  }
  void Line(float x1, float y1, float x2, float y2, int32_t layer = 1, int32_t color = 0) {
    drawing.AddLine({x1, y1, x2, y2, layer, color, 0});
  }

  testing::Capture capture;
  Drawing drawing;
  ZoomState zoom{drawing};
  ImageSurface surface{100, 100};
};

TEST_F(RedrawTest, ALineLandsOnItsPixelsAndTheBottomEdgeIsRejected) {
  Line(10, 50, 20, 50);
  Line(30, 0, 60, 0);  // along the bottom edge: device y = 100, outside
  ASSERT_TRUE(Draw());
  for (int x = 10; x < 20; ++x) EXPECT_EQ(At(x, 50), 0u) << x;
  EXPECT_FALSE(Inked(20, 50));  // the last pixel is not drawn
  EXPECT_FALSE(Inked(9, 50));
  EXPECT_EQ(InkedCount(), 10);
}

TEST_F(RedrawTest, ArcsRunCounterClockwiseAndTinyArcsAreSkipped) {
  drawing.AddArc({50, 50, 20, 0, 90, 1, 0, 0});  // the upper right quarter
  ASSERT_TRUE(Draw());
  EXPECT_TRUE(InkedNear(64, 36));                    // 45 degrees
  EXPECT_FALSE(InkedNear(64, 64));                   // -45 degrees
  EXPECT_FALSE(InkedNear(36, 36));                   // 135 degrees
  drawing.Arcs[0] = {50, 50, 20, 270, 90, 1, 0, 0};  // from below through the right
  ASSERT_TRUE(Draw());
  EXPECT_TRUE(InkedNear(64, 64));
  EXPECT_TRUE(InkedNear(64, 36));
  EXPECT_FALSE(InkedNear(30, 50));
  drawing.Arcs[0] = {50, 50, 20, 0, 1, 1, 0, 0};  // both ends on one pixel
  ASSERT_TRUE(Draw());
  EXPECT_EQ(InkedCount(), 0);
}

TEST_F(RedrawTest, EqualAnglesDrawAWholeCircle) {
  drawing.AddArc({50, 50, 20, 30, 30, 1, 0x0000FF, 0});
  ASSERT_TRUE(Draw());
  EXPECT_EQ(At(50, 30), 0xFF0000u);  // red, as QRgb
  EXPECT_TRUE(Inked(50, 69) || Inked(50, 70));
  EXPECT_TRUE(Inked(30, 50));
  EXPECT_TRUE(Inked(69, 50) || Inked(70, 50));
  EXPECT_FALSE(Inked(50, 50));  // hollow
}

TEST_F(RedrawTest, LayersOffAndColoursByLayer) {
  Line(10, 50, 20, 50, 2, 0);         // colour 0 on the red layer
  Line(10, 60, 20, 60, 2, 0x00FF00);  // green on the red layer
  ASSERT_TRUE(Draw());
  EXPECT_EQ(At(15, 50), 0xFF0000u);
  EXPECT_EQ(At(15, 40), 0x00FF00u);
  zoom.ColorByLayer = false;
  ASSERT_TRUE(Draw());
  EXPECT_EQ(At(15, 50), 0u);
  drawing.Layers[1].IsOn = 0;
  ASSERT_TRUE(Draw());
  EXPECT_EQ(InkedCount(), 0);
  EXPECT_EQ(zoom.EntityColor(2, 0, false), 0);
  zoom.MonochromePrint = true;
  EXPECT_EQ(zoom.EntityColor(2, 0x00FF00, true), 0);
  EXPECT_EQ(zoom.EntityColor(2, 0x00FF00, false), 0x00FF00);
}

TEST_F(RedrawTest, PolylineWidthScalesAndNeverFallsBelowOnePixel) {
  drawing.AddPolySegment({10, 50, 90, 50, 6, 1, 0, 0.5f});
  drawing.AddPolySegment({10, 20, 90, 20, 0, 1, 0, 0});
  ASSERT_TRUE(Draw());
  EXPECT_TRUE(Inked(50, 48));
  EXPECT_TRUE(Inked(50, 52));
  EXPECT_FALSE(Inked(50, 55));
  EXPECT_TRUE(Inked(50, 80));
  EXPECT_FALSE(Inked(50, 79));
  EXPECT_FALSE(Inked(50, 81));
  EXPECT_FALSE(Inked(50, 30));  // the bulge is not drawn: the segment stays straight
}

TEST_F(RedrawTest, ASolidIsFilledWithItsColourAndOutlinedWithTheSurfacePen) {
  drawing.AddSolid({20, 20, 60, 20, 60, 60, 20, 60, 1, 0x00FF00});
  ASSERT_TRUE(Draw());
  EXPECT_EQ(At(40, 60), 0x00FF00u);
  // The fill covers the left and top edges; the right and bottom keep the black outline.
  EXPECT_EQ(At(20, 60), 0x00FF00u);
  EXPECT_EQ(At(60, 60), 0u);
  EXPECT_EQ(At(40, 80), 0u);
}

TEST_F(RedrawTest, TextSitsOnItsBaselineAndTinyTextIsSkipped) {
  TextEntity text;
  text.X = 10, text.Y = 50, text.Text = "  EEEE", text.Height = 20, text.Layer = 1, text.FontName = "Arial";
  text.FontFactor = 1;
  drawing.AddText(text);
  ASSERT_TRUE(Draw());
  int inkAbove = 0, inkBelow = 0;
  for (int y = 0; y < 100; ++y)
    for (int x = 0; x < 100; ++x)
      if (Inked(x, y)) (y < 50 ? inkAbove : inkBelow)++;
  EXPECT_GT(inkAbove, 50);
  EXPECT_EQ(inkBelow, 0);
  EXPECT_EQ(drawing.Texts[0].Text, "EEEE");  // kept trimmed after the redraw
  drawing.Texts[0].Height = 1.5f;
  ASSERT_TRUE(Draw());
  EXPECT_EQ(InkedCount(), 0);
}

TEST_F(RedrawTest, AspectCorrectionGrowsOnlyTheTopOrTheRight) {
  Line(0, 0, 10, 10);
  ASSERT_TRUE(Draw({0, 10, 40, 0}));  // wider than the square target: the top grows
  EXPECT_EQ(zoom.CurrentZoom().left, 0);
  EXPECT_EQ(zoom.CurrentZoom().bottom, 0);
  EXPECT_EQ(zoom.CurrentZoom().right, 40);
  EXPECT_EQ(zoom.CurrentZoom().top, 40);
  ASSERT_TRUE(Draw({5, 45, 15, 5}));  // taller: the right grows
  EXPECT_EQ(zoom.CurrentZoom().left, 5);
  EXPECT_EQ(zoom.CurrentZoom().top, 45);
  EXPECT_EQ(zoom.CurrentZoom().right, 45);
  EXPECT_EQ(zoom.Engine.ViewScale, 2.5f);
}

TEST_F(RedrawTest, StationaryZoomKeepsThePointUnderTheCursor) {
  Line(0, 0, 100, 100);
  ASSERT_TRUE(Draw());
  auto under = [this](float x, float y) {
    const ZoomRect& z = zoom.CurrentZoom();
    return std::pair(x / zoom.Engine.ViewScale + z.left,
                     z.bottom - (y - zoom.Engine.DeviceHeight) / zoom.Engine.ViewScale);
  };
  auto before = under(25, 75);
  zoom.StationaryZoom(25, 75, 200, surface);
  auto after = under(25, 75);
  EXPECT_NEAR(after.first, before.first, 1e-4);
  EXPECT_NEAR(after.second, before.second, 1e-4);
  EXPECT_NEAR(zoom.CurrentZoom().right - zoom.CurrentZoom().left, 50, 1e-4);
  zoom.StationaryZoom(50, 50, 50, surface);  // about the centre: doubles, centre kept
  EXPECT_NEAR(zoom.CurrentZoom().right - zoom.CurrentZoom().left, 100, 1e-4);
  EXPECT_NEAR((zoom.CurrentZoom().right + zoom.CurrentZoom().left) / 2, 37.5, 1e-4);
  zoom.StationaryZoom(0, 0, 0, surface);
  EXPECT_TRUE(capture.log.Contains("Error 11: Division by zero in module Dxfin275 procedure StationaryZoom"));
}

TEST(PrevZoomStack, KeepsTheLastFourNewestFirst) {
  Drawing d;
  ZoomState zoom(d);
  for (int i = 1; i <= 5; ++i) zoom.AddToPrevZoomStack({float(i), 0, 0, 0});
  EXPECT_EQ(zoom.PrevZoom[0].left, 5);
  EXPECT_EQ(zoom.PrevZoom[3].left, 2);
  EXPECT_EQ(zoom.PrevZoom[4].left, 0);  // never written
}

TEST_F(RedrawTest, RefreshesEveryFiveHundredEntitiesAndAtTheEnd) {
  for (int i = 0; i < 100; ++i) Line(1, 1, 2, 2);
  ASSERT_TRUE(Draw());
  EXPECT_EQ(surface.refreshes(), 1);
  for (int i = 0; i < 900; ++i) Line(1, 1, 2, 2);
  ASSERT_TRUE(Draw());
  EXPECT_EQ(surface.refreshes(), 1 + 3);
}

TEST_F(RedrawTest, NothingToDrawAndDegenerateWindowsAreReported) {
  EXPECT_FALSE(Draw());
  ASSERT_EQ(capture.messages.messages().size(), 1u);
  EXPECT_EQ(capture.messages.messages()[0].text, "Error: There are no entities to draw.");
  Line(1, 1, 2, 2);
  EXPECT_FALSE(Draw({5, 10, 5, 0}));
  EXPECT_NE(capture.messages.messages()[1].text.find("drawing extents were not read in correctly"),
            std::string::npos);
  EXPECT_FALSE(Draw({0, 5, 10, 5}));
  EXPECT_TRUE(capture.log.Contains("Error 11: Division by zero in module DXFINVB procedure Zoom"));
}

TEST_F(RedrawTest, CoordinatesBeyondTheDeviceAreReportedWithoutStoppingTheRedraw) {
  Line(1e30f, 50, 2e30f, 50);
  Line(10, 50, 20, 50);
  EXPECT_TRUE(Draw());
  EXPECT_TRUE(capture.log.Contains("procedure CvtX"));
  EXPECT_TRUE(Inked(15, 50));
}

TEST_F(RedrawTest, ABadLayerReferenceStopsTheRedrawWithAReport) {
  Line(10, 50, 20, 50, 7);
  EXPECT_FALSE(Draw());
  EXPECT_TRUE(capture.log.Contains("Error 9: Subscript out of range in module DXFINVB procedure Zoom"));
}

}  // namespace
}  // namespace dxfimport
