#include <gtest/gtest.h>

#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "app/program_run.h"
#include "testing/dxf_fixture.h"

namespace dxfimport {
namespace {

QJsonObject JsonOf(const std::string& text) {
  return QJsonDocument::fromJson(QByteArray::fromStdString(text)).object();
}

bool HaveGdal() { return std::system("gdalinfo --version > /dev/null 2>&1") == 0; }

// What GDAL's gdalinfo makes of a picture.
QJsonObject GdalInfo(const std::string& picture) {
  testing::TempFile info("", ".json");
  if (std::system(("gdalinfo -json " + picture + " > " + info.path()).c_str()) != 0) return {};
  std::ifstream in(info.path());
  return JsonOf(std::string(std::istreambuf_iterator<char>(in), {}));
}

// A line across 0..1000 x 0..500 in millimetres, placed by GEODATA: the design point
// (100, 50) at (500000, 200000) of the system, grid north 30 degrees to the left of the
// drawing's up; the system named by `definition`.
std::string GeoDrawing(const std::string& definition) {
  testing::Pairs geodata{{0, "GEODATA"},
                         {5, "A0"},
                         {100, "AcDbGeoData"},
                         {90, "3"},
                         {70, "2"},
                         {10, "100"},
                         {20, "50"},
                         {11, "500000"},
                         {21, "200000"},
                         {40, "0.001"},
                         {91, "4"},
                         {12, "-0.5"},
                         {22, "0.8660254037844386"},
                         {95, "1"}};
  if (!definition.empty()) geodata.push_back({301, definition});
  return testing::WithObjects(
      testing::EntitiesFile({{0, "LINE"}, {8, "0"}, {10, "0"}, {20, "0"}, {11, "1000"}, {21, "500"}}),
      geodata);
}

// Where a drawing point lies in the system, worked out from the GEODATA numbers above.
std::pair<double, double> OnTheMap(double x, double y) {
  const double turn = -M_PI / 6, dx = (x - 100) * 0.001, dy = (y - 50) * 0.001;
  return {500000 + dx * std::cos(turn) - dy * std::sin(turn),
          200000 + dx * std::sin(turn) + dy * std::cos(turn)};
}

const char* kEpsgAlias =
    "<Dictionary><ProjectedCoordinateSystem id=\"X\"/><Alias id=\"27700\" type=\"CoordinateSystem\">"
    "<ObjectId>X</ObjectId><Namespace>EPSG Code</Namespace></Alias></Dictionary>";

}  // namespace

// GEODATA with an EPSG alias: stats --json gives the system and the map; render
// --georeference writes a picture that GDAL places where the numbers say, within half a
// pixel (the window's corners are the centres of the picture's corner pixels, where ink at
// them is drawn).
TEST(Georeference, GeodataPlacesThePictureOnTheMap) {
  const std::string dir = std::filesystem::temp_directory_path() / "dxfimport-georeference-test";
  std::filesystem::create_directories(dir);
  const std::string drawing = dir + "/site.dxf";
  std::ofstream(drawing) << GeoDrawing(kEpsgAlias);
  ProgramRun stats = Dxfimport("stats --json " + drawing);
  ASSERT_EQ(stats.status, 0) << stats.err;
  const QJsonObject geo = JsonOf(stats.out)["geolocation"].toObject();
  EXPECT_EQ(geo["crs"].toObject()["epsg"].toInt(), 27700);
  EXPECT_EQ(geo["source"].toString(), "GEODATA");
  const QJsonArray rows = geo["transform"].toArray();
  const auto [x0, y0] = OnTheMap(0, 0);
  EXPECT_NEAR(rows[0].toArray()[2].toDouble(), x0, 1e-6);
  EXPECT_NEAR(rows[1].toArray()[2].toDouble(), y0, 1e-6);

  ProgramRun render = Dxfimport("render " + drawing + " -o " + dir +
                                "/site.png --size 200x100 --window 0,500,1000,0 --georeference");
  ASSERT_EQ(render.status, 0) << render.err;
  for (const char* file : {"/site.pgw", "/site.prj", "/site.png.aux.xml"})
    EXPECT_TRUE(std::filesystem::exists(dir + file)) << file;
  // A GeoTIFF (turned: the whole transformation) and one of the line-art palette.
  ASSERT_EQ(
      Dxfimport("render " + drawing + " -o " + dir + "/site.tif --size 200x100 --window 0,500,1000,0").status,
      0);
  ASSERT_EQ(Dxfimport("render " + drawing + " -o " + dir +
                      "/palette.tif --size 200x100 --window 0,500,1000,0 --depth palette")
                .status,
            0);
  if (!HaveGdal()) GTEST_SKIP() << "gdalinfo is not installed";
  for (const char* picture : {"/site.png", "/site.tif", "/palette.tif"}) {
    const QJsonObject gdal = GdalInfo(dir + picture);
    EXPECT_NE(gdal["coordinateSystem"].toObject()["wkt"].toString().indexOf("ID[\"EPSG\",27700]]"), -1)
        << picture;
    const double pixel = 5;  // drawing units
    const QJsonObject corners = gdal["cornerCoordinates"].toObject();
    const std::pair<const char*, std::pair<double, double>> expected[] = {
        {"upperLeft", OnTheMap(-pixel / 2, 500 + pixel / 2)},
        {"lowerRight", OnTheMap(1000 - pixel / 2, pixel / 2)}};
    for (const auto& [name, at] : expected) {
      const QJsonArray corner = corners[name].toArray();
      EXPECT_NEAR(corner[0].toDouble(), at.first, pixel * 0.001 / 2) << picture << " " << name;
      EXPECT_NEAR(corner[1].toDouble(), at.second, pixel * 0.001 / 2) << picture << " " << name;
    }
  }
  const QJsonArray bands = GdalInfo(dir + "/palette.tif")["bands"].toArray();
  ASSERT_EQ(bands.size(), 1);
  EXPECT_EQ(bands[0].toObject()["colorInterpretation"].toString(), "Palette");
  std::filesystem::remove_all(dir);
}

// Where the system comes from: none (the map still from GEODATA), a .prj beside the
// drawing, --crs over both; a --crs that names nothing is refused.
TEST(Georeference, TheSystemFromAPrjOrTheCommandLine) {
  const std::string dir = std::filesystem::temp_directory_path() / "dxfimport-crs-test";
  std::filesystem::create_directories(dir);
  const std::string drawing = dir + "/plan.dxf";
  std::ofstream(drawing) << GeoDrawing("");
  QJsonObject geo = JsonOf(Dxfimport("stats --json " + drawing).out)["geolocation"].toObject();
  EXPECT_TRUE(geo["crs"].isNull());
  EXPECT_EQ(geo["transformSource"].toString(), "GEODATA");
  std::ofstream(dir + "/plan.prj") << "GEOGCS[\"WGS 84\",DATUM[\"WGS_1984\",SPHEROID[\"WGS "
                                      "84\",6378137,298.257223563]],PRIMEM[\"Greenwich\",0],"
                                      "UNIT[\"degree\",0.0174532925199433],AUTHORITY[\"EPSG\",\"4326\"]]";
  geo = JsonOf(Dxfimport("stats --json " + drawing).out)["geolocation"].toObject();
  EXPECT_EQ(geo["crs"].toObject()["epsg"].toInt(), 4326);
  EXPECT_EQ(geo["source"].toString(), "plan.prj");
  geo = JsonOf(Dxfimport("stats --json --crs EPSG:3857 " + drawing).out)["geolocation"].toObject();
  EXPECT_EQ(geo["crs"].toObject()["epsg"].toInt(), 3857);
  EXPECT_EQ(geo["source"].toString(), "--crs");
  EXPECT_EQ(Dxfimport("stats --json --crs EPSG:1 " + drawing).status, 2);
  EXPECT_EQ(Dxfimport("render " + drawing + " -o " + dir + "/plan.svg --georeference").status, 2);
  std::filesystem::remove_all(dir);
}

// The shared drawing of the Houses of Parliament (GEODATA, EPSG:27700, north turned): as
// PNG with its placement files and as GeoTIFF, GDAL finds British National Grid and the
// corners that the GEODATA numbers give (within half a pixel); the design point lands on
// the reference point (within a pixel).
TEST(Georeference, HousesOfParliamentInBritishNationalGrid) {
  const std::string drawing = testing::CorpusDir() + "/ezdxf__houses_of_parliament_georeferenced.dxf";
  if (!std::filesystem::exists(drawing)) GTEST_SKIP() << "no shared corpus";
  const std::string dir = std::filesystem::temp_directory_path() / "dxfimport-parliament-test";
  std::filesystem::create_directories(dir);
  ASSERT_EQ(Dxfimport("render " + drawing + " -o " + dir + "/hop.png --size 1000x750 --georeference").status,
            0);
  ASSERT_EQ(Dxfimport("render " + drawing + " -o " + dir + "/hop.tif --size 1000x750").status, 0);
  const QJsonObject stats = JsonOf(Dxfimport("stats --json --size 1000x750 " + drawing).out);
  EXPECT_EQ(stats["geolocation"].toObject()["crs"].toObject()["epsg"].toInt(), 27700);
  const QJsonObject world = stats["placement"].toObject()["worldFile"].toObject();
  const double pixel = world["pixelWidth"].toDouble();
  // The GEODATA numbers: design point, reference point, inches, north.
  const double dx = 23448.14039573381, dy = 4967.0957105509, rx = 530207.5677217417, ry = 179366.7895852687;
  const double turn = M_PI / 2 - std::atan2(0.8480480961564261, -0.5299192642332047);
  auto onGrid = [&](double x, double y) {
    const double u = (x - dx) * 0.0254, v = (y - dy) * 0.0254;
    return std::pair{rx + u * std::cos(turn) - v * std::sin(turn),
                     ry + u * std::sin(turn) + v * std::cos(turn)};
  };
  // The pixel of the design point in the picture (drawing coordinates) ...
  const double column = (dx - world["x"].toDouble()) / pixel, row = (dy - world["y"].toDouble()) / -pixel;
  // ... where the georeferenced world file puts it.
  std::ifstream pgw(dir + "/hop.pgw");
  double w[6];
  for (double& v : w) pgw >> v;
  const double e = w[4] + column * w[0] + row * w[2], n = w[5] + column * w[1] + row * w[3];
  EXPECT_LT(std::hypot(e - rx, n - ry), std::hypot(w[0], w[1]));
  if (!HaveGdal()) GTEST_SKIP() << "gdalinfo is not installed";
  const double left = world["x"].toDouble() - pixel / 2, top = world["y"].toDouble() + pixel / 2;
  const double halfPixel = pixel * 0.0254 / 2;
  for (const char* picture : {"/hop.png", "/hop.tif"}) {
    const QJsonObject gdal = GdalInfo(dir + picture);
    EXPECT_NE(gdal["coordinateSystem"].toObject()["wkt"].toString().indexOf("ID[\"EPSG\",27700]]"), -1)
        << picture;
    const QJsonObject corners = gdal["cornerCoordinates"].toObject();
    const std::pair<const char*, std::pair<double, double>> expected[] = {
        {"upperLeft", onGrid(left, top)}, {"lowerRight", onGrid(left + 1000 * pixel, top - 750 * pixel)}};
    for (const auto& [name, at] : expected) {
      const QJsonArray corner = corners[name].toArray();
      EXPECT_NEAR(corner[0].toDouble(), at.first, halfPixel) << picture << " " << name;
      EXPECT_NEAR(corner[1].toDouble(), at.second, halfPixel) << picture << " " << name;
    }
  }
  std::filesystem::remove_all(dir);
}

}  // namespace dxfimport

namespace dxfimport {

// A TIFF holds the PNG's pixels, gathered into tiles from strips of any height.
TEST(Georeference, ATiffHoldsThePicturesPixels) {
  const std::string dir = std::filesystem::temp_directory_path() / "dxfimport-tiff-test";
  std::filesystem::create_directories(dir);
  const std::string sample = testing::SamplePath();
  ASSERT_EQ(Dxfimport("render " + sample + " -o " + dir + "/s.png --size 300x290").status, 0);
  ASSERT_EQ(Dxfimport("render " + sample + " -o " + dir + "/s.tif --size 300x290 --strip-rows 37").status, 0);
  const QImage png(QString::fromStdString(dir + "/s.png")), tif(QString::fromStdString(dir + "/s.tif"));
  ASSERT_FALSE(tif.isNull());
  EXPECT_EQ(png.convertToFormat(QImage::Format_RGB32), tif.convertToFormat(QImage::Format_RGB32));
  EXPECT_EQ(Dxfimport("render " + sample + " -o " + dir + "/d.tif --depth 256").status, 2);
  std::filesystem::remove_all(dir);
}

}  // namespace dxfimport
