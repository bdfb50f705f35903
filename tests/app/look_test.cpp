#include <gtest/gtest.h>

#include <QImage>
#include <filesystem>
#include <string>

#include "app/program_run.h"
#include "testing/dxf_fixture.h"

namespace dxfimport {
namespace {

// A red square (SOLID) on the left half, a half transparent blue hatch on the right.
std::string Squares() {
  return testing::EntitiesFile(
      {{0, "SOLID"},      {8, "0"},    {62, "1"},   {10, "0"},  {20, "0"},    {11, "40"}, {21, "0"},
       {12, "0"},         {22, "40"},  {13, "40"},  {23, "40"}, {0, "HATCH"}, {8, "0"},   {62, "5"},
       {440, "33554559"}, {70, "1"},   {91, "1"},   {92, "1"},  {93, "4"},    {72, "1"},  {10, "60"},
       {20, "0"},         {11, "100"}, {21, "0"},   {72, "1"},  {10, "100"},  {20, "0"},  {11, "100"},
       {21, "40"},        {72, "1"},   {10, "100"}, {20, "40"}, {11, "60"},   {21, "40"}, {72, "1"},
       {10, "60"},        {20, "40"},  {11, "60"},  {21, "0"}});
}

bool Near(QRgb c, int r, int g, int b, int a) {
  return std::abs(qRed(c) - r) <= 3 && std::abs(qGreen(c) - g) <= 3 && std::abs(qBlue(c) - b) <= 3 &&
         std::abs(qAlpha(c) - a) <= 3;
}

}  // namespace

// The look of a background: transparent where nothing is drawn, inks faded toward white,
// every ink one colour with its transparency kept; a BMP cannot be transparent.
TEST(BackgroundLook, TransparentFadedAndMonochromePictures) {
  const std::string dir = std::filesystem::temp_directory_path() / "dxfimport-look-test";
  std::filesystem::create_directories(dir);
  testing::TempFile drawing(Squares());
  const std::string window = " --window 0,100,100,0 --size 100x100";
  ASSERT_EQ(
      Dxfimport("render " + drawing.path() + " -o " + dir + "/f.png --background none --fade 70" + window)
          .status,
      0);
  ASSERT_EQ(
      Dxfimport("render " + drawing.path() + " -o " + dir + "/f.tif --background none --fade 70" + window)
          .status,
      0);
  for (const char* name : {"/f.png", "/f.tif"}) {
    const QImage faded = QImage(QString::fromStdString(dir + name)).convertToFormat(QImage::Format_ARGB32);
    ASSERT_FALSE(faded.isNull()) << name;
    EXPECT_EQ(qAlpha(faded.pixel(50, 50)), 0) << name;                   // nothing drawn there
    EXPECT_TRUE(Near(faded.pixel(20, 80), 255, 179, 179, 255)) << name;  // red 70 % of the way to white
    EXPECT_TRUE(Near(faded.pixel(80, 80), 179, 179, 255, 127)) << name;  // the hatch keeps its alpha
  }
  ASSERT_EQ(
      Dxfimport("render " + drawing.path() + " -o " + dir + "/m.png --monochrome '#008000'" + window).status,
      0);
  const QImage mono(QString::fromStdString(dir + "/m.png"));
  EXPECT_TRUE(Near(mono.pixel(20, 80), 0, 128, 0, 255));
  EXPECT_TRUE(Near(mono.pixel(80, 80), 128, 191, 128, 255));  // half of green over white
  EXPECT_EQ(Dxfimport("render " + drawing.path() + " -o " + dir + "/b.bmp --background none").status, 2);
  EXPECT_EQ(Dxfimport("render " + drawing.path() + " -o " + dir + "/p.png --background none --depth palette")
                .status,
            2);
  std::filesystem::remove_all(dir);
}

}  // namespace dxfimport
