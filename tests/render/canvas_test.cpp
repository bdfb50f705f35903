#include "render/canvas.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>

#include "render/color_depth.h"
#include "support/runtime_error.h"

namespace dxfimport {
namespace {

TEST(Canvas, EscapementRoundsToWholeDegreesFirst) {
  EXPECT_EQ(Canvas::Escapement(45.5f), 460);
  EXPECT_EQ(Canvas::Escapement(44.5f), 440);
  EXPECT_EQ(Canvas::Escapement(-90.2f), -900);
  EXPECT_THROW(Canvas::Escapement(3e9f), RunTimeError);
}

TEST(Canvas, TextMeasurementsAreCrossed) {
  QImage image(50, 50, QImage::Format_RGB32);
  QPainter painter(&image);
  Canvas canvas(painter);
  int16_t height = canvas.CalcTxtWidth("WWWWWWWW");
  int16_t width = canvas.CalcTxtHeight("WWWWWWWW");
  EXPECT_GT(width, height);  // the "height" call measured the width of eight W's
  EXPECT_GE(height, 14);
  EXPECT_LE(height, 20);
  EXPECT_EQ(canvas.CalcTxtWidth(""), 0);
  EXPECT_EQ(canvas.CalcTxtHeight(""), 0);
}

TEST(Canvas, ColoursAndPenStyles) {
  EXPECT_EQ(Canvas::ToQColor(0x0000FF), QColor(255, 0, 0));
  EXPECT_EQ(Canvas::ToQColor(0x800000), QColor(0, 0, 128));
  EXPECT_EQ(Canvas::ToPenStyle(4), Qt::DashDotDotLine);
  EXPECT_EQ(Canvas::ToPenStyle(9), Qt::SolidLine);
}

TEST(ReduceColors, MakesIndexedPicturesOfTheChosenDepth) {
  QImage picture(32, 32, QImage::Format_RGB32);
  for (int y = 0; y < 32; ++y)
    for (int x = 0; x < 32; ++x) picture.setPixel(x, y, qRgb(x * 8, y * 8, 100));
  QImage c256 = ReduceColors(picture, ColorDepth::Colors256);
  EXPECT_EQ(c256.format(), QImage::Format_Indexed8);
  EXPECT_LE(c256.colorCount(), 256);
  QImage c16 = ReduceColors(picture, ColorDepth::Colors16);
  EXPECT_EQ(c16.colorCount(), 16);
  QImage mono = ReduceColors(picture, ColorDepth::Mono);
  EXPECT_EQ(mono.format(), QImage::Format_Mono);
  EXPECT_EQ(ReduceColors(picture, ColorDepth::Full), picture);
}

}  // namespace
}  // namespace dxfimport
