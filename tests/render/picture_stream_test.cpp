#include "render/picture_stream.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QImage>
#include <filesystem>
#include <string>

#include "render/color_depth.h"
#include "render/picture_file.h"
#include "render/redraw.h"
#include "testing/dxf_fixture.h"

namespace dxfimport {
namespace {

// Texts, a wide polyline, a circle, a hatch and a dashed line, all crossing the rows
// where strips of 7 and 61 rows meet.
std::string MixedDrawing() {
  using testing::Pairs;
  Pairs e = {{0, "TEXT"},        {8, "0"},     {62, "1"},
             {10, "1"},          {20, "11.3"}, {40, "2.5"},
             {1, "Strips 1234"}, {0, "MTEXT"}, {8, "0"},
             {62, "5"},          {10, "2"},    {20, "30"},
             {40, "3"},          {71, "1"},    {1, "Over{\\C3;the} edge\\PSecond line"},
             {0, "LWPOLYLINE"},  {8, "0"},     {62, "3"},
             {90, "3"},          {43, "0.8"},  {10, "0"},
             {20, "0"},          {10, "40"},   {20, "33"},
             {10, "45"},         {20, "2"},    {0, "CIRCLE"},
             {8, "0"},           {62, "6"},    {10, "25"},
             {20, "20"},         {40, "13.7"}, {0, "HATCH"},
             {8, "0"},           {62, "4"},    {70, "1"},
             {91, "1"},          {92, "1"},    {93, "3"},
             {72, "1"},          {10, "30"},   {20, "5"},
             {11, "44"},         {21, "9"},    {72, "1"},
             {10, "44"},         {20, "9"},    {11, "33"},
             {21, "28"},         {72, "1"},    {10, "33"},
             {20, "28"},         {11, "30"},   {21, "5"},
             {0, "LINE"},        {8, "0"},     {62, "2"},
             {10, "-2"},         {20, "37"},   {11, "47"},
             {21, "-3"}};
  return testing::EntitiesFile(e);
}

QImage WholePicture(ZoomState& zoom, QSize size, QColor background) {
  ImageSurface surface(size.width(), size.height(), background);
  EXPECT_TRUE(zoom.Zoom(zoom.ExtentsZoom, surface));
  return surface.image();
}

// The picture drawn in strips of `rows` into a file of `format`, read back.
QImage StripPicture(ZoomState& zoom, QSize size, QColor background, int rows, const char* format,
                    ColorDepth depth = ColorDepth::Full) {
  const std::string path =
      std::filesystem::temp_directory_path() / ("dxfimport-strips." + std::string(format));
  EXPECT_TRUE(zoom.PlaceView(zoom.ExtentsZoom, size.width(), size.height()));
  const LineArtInks inks = InksOf(zoom, background, depth);
  auto stream = PictureStream::Open(QString::fromStdString(path), format,
                                    PictureStream::HeaderFor(size, depth, inks, 0, "placement"));
  EXPECT_TRUE(stream);
  if (!stream) return {};
  EXPECT_TRUE(WriteInStrips(zoom, background, rows, depth, inks, *stream));
  QImage read(QString::fromStdString(path));
  std::filesystem::remove(path);
  return read;
}

std::unique_ptr<Drawing> Sample(ReadingProfile profile) {
  auto drawing = std::make_unique<Drawing>();
  DXFReader reader(*drawing, profile);
  EXPECT_TRUE(reader.LoadDXF(testing::SamplePath()));
  return drawing;
}

TEST(Strips, EveryStripHeightGivesTheWholePicturesPixels) {
  auto mixed = testing::LoadModern(MixedDrawing());
  ASSERT_TRUE(mixed->result);
  const std::unique_ptr<Drawing> legacy = Sample(ReadingProfile::Legacy);
  for (Drawing* drawing : {&mixed->drawing, legacy.get()}) {
    ZoomState zoom(*drawing);
    zoom.ExtentsZoom = ExtentsOf(*drawing);
    const QSize size(301, 203);
    const QImage whole = WholePicture(zoom, size, Qt::white);
    for (int rows : {1, 7, 61, 203, 500}) {
      for (const char* format : {"BMP", "PNG"}) {
        const QImage strips = StripPicture(zoom, size, Qt::white, rows, format);
        EXPECT_EQ(strips.convertToFormat(QImage::Format_RGB32), whole)
            << format << " in strips of " << rows << (drawing == legacy.get() ? " (legacy)" : "");
      }
    }
    // The line-art depths reduce each strip to the pixels the whole picture reduces to.
    for (ColorDepth depth : {ColorDepth::Palette, ColorDepth::Threshold, ColorDepth::Grey}) {
      const QImage reduced = ReduceColors(whole, depth, InksOf(zoom, Qt::white, depth));
      const QImage strips = StripPicture(zoom, size, Qt::white, 61, "PNG", depth);
      EXPECT_EQ(strips.convertToFormat(QImage::Format_RGB32), reduced.convertToFormat(QImage::Format_RGB32));
    }
  }
}

TEST(Strips, ALargePictureInStripsIsTheSameFileByteForByte) {
  const std::unique_ptr<Drawing> drawing = Sample(ReadingProfile::Modern);
  ZoomState zoom(*drawing);
  zoom.ExtentsZoom = ExtentsOf(*drawing);
  const QSize size(4000, 3000);
  const QImage whole = WholePicture(zoom, size, Qt::white);
  testing::TempFile single("", ".bmp"), strips("", ".bmp");
  ASSERT_TRUE(SavePictureAtomically(whole, QString::fromStdString(single.path()), "BMP"));
  ASSERT_TRUE(zoom.PlaceView(zoom.ExtentsZoom, size.width(), size.height()));
  auto stream = PictureStream::Open(QString::fromStdString(strips.path()), "BMP", {size});
  ASSERT_TRUE(stream);
  ASSERT_TRUE(WriteInStrips(zoom, Qt::white, 333, ColorDepth::Full, {}, *stream));
  QFile a(QString::fromStdString(single.path())), b(QString::fromStdString(strips.path()));
  ASSERT_TRUE(a.open(QIODevice::ReadOnly) && b.open(QIODevice::ReadOnly));
  EXPECT_EQ(a.size(), 54 + 4000 * 3 * 3000);
  EXPECT_TRUE(a.readAll() == b.readAll());
}

TEST(LineArt, ReductionsKeepTheDrawingsColoursAndItsThinLines) {
  // A yellow one-pixel line on white, a smoothed grey edge, and the drawing's own colours.
  QImage picture(40, 10, QImage::Format_RGB32);
  picture.fill(Qt::white);
  for (int x = 0; x < 40; ++x) picture.setPixel(x, 2, qRgb(255, 255, 0));
  picture.setPixel(5, 5, qRgb(240, 240, 240));
  picture.setPixel(6, 5, qRgb(250, 20, 10));
  const LineArtInks inks{{qRgb(255, 255, 255), qRgb(0, 0, 0), qRgb(255, 255, 0), qRgb(255, 0, 0)},
                         qRgb(255, 255, 255)};

  const QImage palette = ReduceColors(picture, ColorDepth::Palette, inks);
  EXPECT_EQ(palette.format(), QImage::Format_Indexed8);
  EXPECT_EQ(palette.colorTable(), inks.palette);
  EXPECT_EQ(palette.pixel(10, 2), qRgb(255, 255, 0));   // kept exactly
  EXPECT_EQ(palette.pixel(5, 5), qRgb(255, 255, 255));  // to the nearest, not dithered
  EXPECT_EQ(palette.pixel(6, 5), qRgb(255, 0, 0));

  const QImage bw = ReduceColors(picture, ColorDepth::Threshold, inks);
  EXPECT_EQ(bw.format(), QImage::Format_Mono);
  for (int x = 0; x < 40; ++x) EXPECT_EQ(bw.pixel(x, 2), qRgb(0, 0, 0)) << x;  // a luminance cut loses it
  EXPECT_EQ(bw.pixel(5, 5), qRgb(255, 255, 255));
  EXPECT_EQ(bw.pixel(0, 0), qRgb(255, 255, 255));

  const QImage grey = ReduceColors(picture, ColorDepth::Grey, inks);
  EXPECT_EQ(grey.colorCount(), 256);
  EXPECT_EQ(grey.pixel(6, 5), qRgb(qGray(250, 20, 10), qGray(250, 20, 10), qGray(250, 20, 10)));
}

TEST(LineArt, ThePaletteHoldsEveryColourOfADrawingWithFewerThan256) {
  auto loaded = testing::LoadModern(MixedDrawing());
  ZoomState zoom(loaded->drawing);
  zoom.ExtentsZoom = ExtentsOf(loaded->drawing);
  const QImage whole = WholePicture(zoom, QSize(400, 300), Qt::white);
  const LineArtInks inks = InksOf(zoom, Qt::white, ColorDepth::Palette);
  // White, black and the six colour numbers of the drawing.
  EXPECT_EQ(inks.palette.size(), 8);
  const QImage reduced = ReduceColors(whole, ColorDepth::Palette, inks);
  int exact = 0;
  for (int y = 0; y < whole.height(); ++y) {
    for (int x = 0; x < whole.width(); ++x) {
      const QRgb pixel = whole.pixel(x, y);
      if (!inks.palette.contains(pixel)) continue;
      ++exact;
      ASSERT_EQ(reduced.pixel(x, y), pixel) << x << "," << y;
    }
  }
  EXPECT_GT(exact, 400 * 300 * 9 / 10);
}

}  // namespace
}  // namespace dxfimport
