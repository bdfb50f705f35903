#include "render/engine.h"

#include <gtest/gtest.h>

#include "testing/dxf_fixture.h"

namespace dxfimport {
namespace {

DXFEngine Viewport() {
  DXFEngine e;
  e.DeviceWidth = 640;
  e.Initialize(480, 10, 20, 2, 0);
  return e;
}

TEST(DXFEngine, ConvertsWithTheYFlipAndBankersRounding) {
  DXFEngine e = Viewport();
  EXPECT_EQ(e.CvtY(20), 480);  // the bottom edge is one below the last row
  EXPECT_EQ(e.CvtY(20 + 480 / 2.0f), 0);
  EXPECT_EQ(e.CvtX(10), 0);
  EXPECT_EQ(e.CvtX(11.25f), 2);  // 2.5 rounds to the even pixel
  EXPECT_EQ(e.CvtX(11.75f), 4);  // 3.5 too
  EXPECT_EQ(e.CvtTxtHt(3, 1.5f), 9);
}

TEST(DXFEngine, ConversionsThatOverflowAreReportedAndGiveZero) {
  testing::Capture capture;
  DXFEngine e = Viewport();
  e.ViewScale = 1e30f;
  EXPECT_EQ(e.CvtX(100), 0);
  EXPECT_EQ(e.CvtY(100), 0);
  ASSERT_EQ(capture.messages.messages().size(), 2u);
  EXPECT_EQ(capture.messages.messages()[0].text, "Error encountered.\n\nError 6: Overflow");
  EXPECT_TRUE(capture.log.Contains("in module dxfengvb procedure CvtX"));
  EXPECT_TRUE(capture.log.Contains("in module dxfengvb procedure CvtY"));
}

TEST(DXFEngine, MakeTestRectShiftsInExceptForOnePixelEntities) {
  struct Case {
    RECT src, expected;
  };
  const Case cases[] = {
      {{10, 10, 11, 11}, {9, 9, 11, 11}},
      {{10, 10, 20, 20}, {11, 11, 20, 20}},
      {{20, 5, 10, 5}, {21, 6, 10, 5}},
  };
  for (const Case& c : cases) {
    RECT out;
    EXPECT_TRUE(DXFEngine::MakeTestRect(c.src, out));
    EXPECT_EQ(out.left, c.expected.left);
    EXPECT_EQ(out.top, c.expected.top);
    EXPECT_EQ(out.right, c.expected.right);
    EXPECT_EQ(out.bottom, c.expected.bottom);
  }
  testing::Capture capture;
  RECT out;
  EXPECT_FALSE(DXFEngine::MakeTestRect({INT32_MAX, 0, 0, 0}, out));
  EXPECT_TRUE(capture.log.Contains("in module Dxfin275 procedure MakeTestRect"));
}

TEST(DXFEngine, RotationsUseTheConstant314159) {
  PointF p{1, 0};
  EXPECT_EQ(DXFEngine::RotatePointNormal(p, 90), 1);
  EXPECT_NEAR(p.x, 1.3e-6, 1e-7);
  EXPECT_NEAR(p.y, 1, 1e-6);
  PointF q{3, 4};
  DXFEngine::RotatePointNormal(q, 0);
  EXPECT_EQ(q.x, 3);
  EXPECT_EQ(q.y, 4);
  PointPair r{1, 0, 0, 1};
  EXPECT_EQ(DXFEngine::RotateRectNormal(r, 180), 1);
  EXPECT_NEAR(r.x1, -1, 1e-5);
  EXPECT_NEAR(r.y2, -1, 1e-5);
}

}  // namespace
}  // namespace dxfimport
