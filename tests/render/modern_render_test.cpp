#include <gtest/gtest.h>

#include <QPainter>
#include <QPdfWriter>
#include <QTemporaryDir>
#include <algorithm>

#include "render/modern_render_fixture.h"
#include "render/picture_cache.h"
#include "render/redraw.h"
#include "testing/dxf_fixture.h"
#include "testing/proxy_stream.h"

namespace dxfimport {
namespace {

using testing::DxfText;
using testing::EntitiesFile;
using testing::ModernRender;
using testing::Pairs;
using testing::ProxyData;
using testing::ProxyStream;
using testing::RenderSetup;

TEST(ModernRendering, EllipseSplineAndBulgeArcsAreCurved) {
  ModernRender ellipse({{0, "ELLIPSE"}, {10, "50"}, {20, "50"}, {11, "40"}, {21, "0"}, {40, "0.5"}});
  ASSERT_TRUE(ellipse.drawn());
  EXPECT_TRUE(ellipse.InkedNear(90, 50));
  EXPECT_TRUE(ellipse.InkedNear(50, 30));  // the minor axis: 20 up from the centre
  EXPECT_FALSE(ellipse.InkedNear(50, 10));
  ModernRender spline(
      {{0, "SPLINE"}, {71, "2"}, {10, "10"}, {20, "10"}, {10, "50"}, {20, "90"}, {10, "90"}, {20, "10"}});
  EXPECT_TRUE(spline.InkedNear(50, 50));  // the apex of the curve, not the control point
  EXPECT_FALSE(spline.InkedNear(50, 10));
  ModernRender bulge({{0, "LWPOLYLINE"}, {10, "20"}, {20, "50"}, {42, "1"}, {10, "80"}, {20, "50"}});
  EXPECT_GT(bulge.InkedIn(45, 76, 55, 83), 0);  // a semicircle below the chord
  EXPECT_EQ(bulge.InkedIn(30, 45, 70, 55), 0);  // not the straight chord
  EXPECT_EQ(bulge.InkedIn(0, 0, 100, 45), 0);   // nor above it
}

TEST(ModernRendering, SolidHatchFillsAroundItsHole) {
  ModernRender hatch({{0, "HATCH"}, {70, "1"},  {91, "2"},  {92, "2"},  {72, "0"},  {73, "1"},
                      {93, "4"},    {10, "10"}, {20, "10"}, {10, "90"}, {20, "10"}, {10, "90"},
                      {20, "90"},   {10, "10"}, {20, "90"}, {97, "0"},  {92, "2"},  {72, "0"},
                      {73, "1"},    {93, "4"},  {10, "40"}, {20, "40"}, {10, "60"}, {20, "40"},
                      {10, "60"},   {20, "60"}, {10, "40"}, {20, "60"}, {97, "0"}});
  ASSERT_TRUE(hatch.drawn());
  EXPECT_TRUE(hatch.Inked(20, 20));
  EXPECT_FALSE(hatch.Inked(50, 50));  // the hole
  EXPECT_FALSE(hatch.Inked(5, 5));
}

TEST(ModernRendering, MTextLinesAreDrawnOneBelowTheOther) {
  ModernRender text(
      {{0, "MTEXT"}, {10, "10"}, {20, "90"}, {40, "12"}, {71, "1"}, {7, "TXT"}, {1, "{\\fArial;EEE}\\PEEE"}});
  ASSERT_TRUE(text.drawn());
  EXPECT_GT(text.InkedIn(10, 10, 50, 24), 20);  // first line: its cap height below the top
  EXPECT_GT(text.InkedIn(10, 30, 50, 44), 20);  // second line: 20 units further down
  EXPECT_EQ(text.InkedIn(60, 0, 100, 100), 0);
}

// Two dynamic columns with the text before the column break: the text stands in the
// first column, at the insertion point, and the second stays empty (the reference
// renderer draws such a text one column to the right).
// An MTEXT at (5, 80), 10 high, in two dynamic columns 40 wide with a gutter of 5.
Pairs TwoColumnText(const char* content) {
  return {{0, "MTEXT"}, {10, "5"},  {20, "80"},   {40, "10"},
          {41, "90"},   {71, "1"},  {1, content}, {101, "Embedded Object"},
          {70, "1"},    {10, "1"},  {11, "5"},    {21, "80"},
          {40, "90"},   {42, "90"}, {43, "25"},   {71, "2"},
          {72, "2"},    {44, "40"}, {45, "5"}};
}

TEST(ModernRendering, MTextBeforeAColumnBreakStandsInTheFirstColumn) {
  ModernRender columns(TwoColumnText("AB\\PCD\\N"));
  ASSERT_TRUE(columns.drawn());
  EXPECT_GT(columns.InkedIn(5, 15, 45, 50), 20);
  EXPECT_EQ(columns.InkedIn(50, 0, 100, 100), 0);
  // What follows a break goes to the next column.
  ModernRender broken(TwoColumnText("AB\\NCD"));
  EXPECT_GT(broken.InkedIn(5, 15, 45, 50), 10);
  EXPECT_GT(broken.InkedIn(50, 15, 90, 50), 10);
}

TEST(ModernRendering, ColourSevenContrastsWithTheBackground) {
  const Pairs line = {{0, "LINE"}, {62, "7"}, {10, "0"}, {20, "50"}, {11, "100"}, {21, "50"}};
  ModernRender onWhite(line);
  EXPECT_EQ(onWhite.Pixel(50, 50), 0x000000u);
  ModernRender onBlack(line, {.background = Qt::black});
  EXPECT_EQ(onBlack.Pixel(50, 50), 0xFFFFFFu);
  // A layer in colour 7 with a true colour that only restates it, as QCAD writes it.
  ModernRender byLayer({{0, "LINE"}, {10, "0"}, {20, "50"}, {11, "100"}, {21, "50"}},
                       {.layerColor = "7\n420\n16777215"});
  EXPECT_EQ(byLayer.Pixel(50, 50), 0x000000u);
  ModernRender orange({{0, "LINE"}, {62, "30"}, {10, "0"}, {20, "50"}, {11, "100"}, {21, "50"}});
  EXPECT_EQ(orange.Pixel(50, 50), 0xFF7F00u);
}

TEST(ModernRendering, LineWeightsAreDrawnOnlyWhenAsked) {
  const Pairs heavy = {{0, "LINE"}, {370, "200"}, {10, "0"}, {20, "50"}, {11, "100"}, {21, "50"}};
  ModernRender thin(heavy);
  EXPECT_EQ(thin.InkedIn(50, 40, 51, 60), 1);
  ModernRender weighted(heavy, {.lineWeights = true});
  EXPECT_NEAR(weighted.InkedIn(50, 40, 51, 60), 8, 1);  // 2 mm at 96 dpi
}

TEST(ModernRendering, RaysAndConstructionLinesReachTheEdgesOfTheView) {
  ModernRender ray({{0, "RAY"},
                    {10, "50"},
                    {20, "50"},
                    {11, "1"},
                    {21, "0"},
                    {0, "XLINE"},
                    {10, "50"},
                    {20, "20"},
                    {11, "0"},
                    {21, "1"}});
  ASSERT_TRUE(ray.drawn());
  EXPECT_TRUE(ray.Inked(99, 50));
  EXPECT_FALSE(ray.Inked(20, 50));  // a ray runs one way only
  EXPECT_TRUE(ray.Inked(50, 0));
  EXPECT_TRUE(ray.Inked(50, 99));
}

TEST(ModernRendering, AWipeoutHidesWhatWasDrawnBeforeIt) {
  ModernRender wiped({{0, "LINE"}, {10, "0"},   {20, "50"}, {11, "100"},  {21, "50"},   {0, "WIPEOUT"},
                      {10, "40"},  {20, "40"},  {11, "20"}, {21, "0"},    {12, "0"},    {22, "20"},
                      {13, "1"},   {23, "1"},   {91, "2"},  {14, "-0.5"}, {24, "-0.5"}, {14, "0.5"},
                      {24, "0.5"}, {0, "LINE"}, {10, "50"}, {20, "0"},    {11, "50"},   {21, "100"}});
  EXPECT_TRUE(wiped.Inked(20, 50));
  EXPECT_FALSE(wiped.Inked(45, 50));  // under the wipeout
  EXPECT_TRUE(wiped.Inked(50, 45));   // the line drawn after it
}

TEST(ModernRendering, PointsFollowThePointStyle) {
  const Pairs point = {{0, "POINT"}, {10, "50"}, {20, "50"}};
  ModernRender cross(point, {.header = DxfText({{9, "$PDMODE"}, {70, "3"}, {9, "$PDSIZE"}, {40, "10"}})});
  EXPECT_TRUE(cross.InkedNear(45, 45));
  EXPECT_TRUE(cross.InkedNear(55, 55));
  EXPECT_FALSE(cross.Inked(50, 44));
  ModernRender hidden(point, {.header = DxfText({{9, "$PDMODE"}, {70, "1"}})});
  EXPECT_EQ(hidden.InkedIn(0, 0, 100, 100), 0);
  ModernRender dot(point);
  EXPECT_EQ(dot.InkedIn(0, 0, 100, 100), 1);
}

TEST(ModernRendering, PatternHatchesDrawTheirLinesAndATintWhenTooDense) {
  auto hatch = [](const std::string& offset) {
    return Pairs{{0, "HATCH"}, {70, "0"},  {91, "1"},  {92, "2"},    {72, "0"},  {73, "1"},
                 {93, "4"},    {10, "10"}, {20, "10"}, {10, "90"},   {20, "10"}, {10, "90"},
                 {20, "90"},   {10, "10"}, {20, "90"}, {97, "0"},    {78, "1"},  {53, "0"},
                 {43, "0"},    {44, "0"},  {45, "0"},  {46, offset}, {79, "0"}};
  };
  ModernRender lines(hatch("10"));
  EXPECT_EQ(lines.InkedIn(50, 15, 51, 85), 7);  // y = 20, 30, ... 80
  EXPECT_FALSE(lines.Inked(5, 50));             // nothing outside the boundary
  ModernRender dense(hatch("0.001"));
  EXPECT_EQ(dense.InkedIn(20, 20, 80, 80), 60 * 60);
  EXPECT_NE(dense.Pixel(50, 50), 0xFF0000u);  // a tint, lighter than the red lines
}

TEST(ModernRendering, ADrawingAtSurveyCoordinatesDrawsAsItDoesAtTheOrigin) {
  auto shifted = [](double dx, double dy) {
    auto at = [](double v) { return std::to_string(v); };
    return Pairs{{0, "CIRCLE"},       {10, at(dx + 5.0004)}, {20, at(dy + 4.0003)},
                 {40, "0.3"},         {0, "LWPOLYLINE"},     {90, "3"},
                 {70, "1"},           {10, at(dx + 1.25)},   {20, at(dy + 1.1)},
                 {10, at(dx + 8.7)},  {20, at(dy + 1.1)},    {10, at(dx + 8.7)},
                 {20, at(dy + 7.35)}, {0, "LINE"},           {10, at(dx + 0.5)},
                 {20, at(dy + 9.5)},  {11, at(dx + 9.5)},    {21, at(dy + 0.5)}};
  };
  ModernRender origin(shifted(0, 0), {.window = {0, 10, 10, 0}});
  ModernRender survey(shifted(512345, 5412345), {.window = {512345, 5412355, 512355, 5412345}});
  ASSERT_TRUE(origin.drawn());
  EXPECT_GT(origin.InkedIn(0, 0, 100, 100), 200);
  EXPECT_EQ(origin.image(), survey.image());
  // The manhole of radius 0.3 stays round: as wide as it is high.
  EXPECT_EQ(survey.InkedIn(44, 50, 56, 51), origin.InkedIn(44, 50, 56, 51));
}

TEST(ModernRendering, DimensionsWithoutABlockGetFilledArrowheads) {
  ModernRender dimension({{0, "DIMENSION"},
                          {70, "0"},
                          {10, "10"},
                          {20, "50"},
                          {11, "50"},
                          {21, "52"},
                          {13, "10"},
                          {23, "20"},
                          {14, "90"},
                          {24, "20"}},
                         {.header = DxfText({{9, "$DIMASZ"}, {40, "6"}, {9, "$DIMTXT"}, {40, "5"}})});
  EXPECT_TRUE(dimension.Inked(50, 50));              // the dimension line
  EXPECT_GT(dimension.InkedIn(11, 48, 16, 53), 8);   // a filled arrowhead at its left end
  EXPECT_GT(dimension.InkedIn(10, 60, 11, 80), 15);  // the extension line down to 13
  EXPECT_GT(dimension.InkedIn(40, 40, 60, 50), 10);  // the text "80" above the line
}

// Two squares over each other, red (handle A0) written first, blue (A1) after: a
// SORTENTSTABLE that gives red the later sort handle brings it on top, in model space,
// in a block (every insert of it) and in a paper-space layout.
TEST(DrawOrder, TheSortEntsTableOfItsSpaceDecidesWhatIsOnTop) {
  auto square = [](const char* handle, const char* color) {
    return Pairs{{0, "SOLID"}, {5, handle}, {62, color}, {10, "20"}, {20, "20"}, {11, "80"},
                 {21, "20"},   {12, "20"},  {22, "80"},  {13, "80"}, {23, "80"}};
  };
  auto record = [](const char* handle, const char* name) {
    return Pairs{{0, "BLOCK_RECORD"}, {5, handle}, {102, "{ACAD_XDICTIONARY"},
                 {360, "2A"},         {102, "}"},  {2, name}};
  };
  Pairs records{{0, "SECTION"}, {2, "TABLES"}, {0, "TABLE"}, {2, "BLOCK_RECORD"}};
  for (const Pairs& r : {record("1F", "*Model_Space"), record("3F", "SQUARES"), record("4F", "*Paper_Space")})
    records.insert(records.end(), r.begin(), r.end());
  records.insert(records.end(), {{0, "ENDTAB"}, {0, "ENDSEC"}});
  Pairs squares = square("A0", "1");
  const Pairs blue = square("A1", "5");
  squares.insert(squares.end(), blue.begin(), blue.end());
  auto sortents = [](const char* owner) {
    return DxfText({{0, "SECTION"},
                    {2, "OBJECTS"},
                    {0, "SORTENTSTABLE"},
                    {5, "2B"},
                    {330, "2A"},
                    {100, "AcDbSortentsTable"},
                    {330, owner},
                    {331, "A0"},
                    {5, "B0"},
                    {0, "ENDSEC"},
                    {0, "EOF"}});
  };
  const std::string modelSpace = DxfText(records) + DxfText({{0, "SECTION"}, {2, "ENTITIES"}}) +
                                 DxfText(squares) + DxfText({{0, "ENDSEC"}});
  Pairs block{{0, "SECTION"}, {2, "BLOCKS"}, {0, "BLOCK"}, {330, "3F"}, {2, "SQUARES"}};
  block.insert(block.end(), squares.begin(), squares.end());
  block.insert(block.end(), {{0, "ENDBLK"},
                             {0, "ENDSEC"},
                             {0, "SECTION"},
                             {2, "ENTITIES"},
                             {0, "INSERT"},
                             {2, "SQUARES"},
                             {0, "ENDSEC"}});
  Pairs paper = squares;
  for (std::size_t i = 0; i < paper.size(); ++i)
    if (paper[i].first == 0) paper.insert(paper.begin() + std::ptrdiff_t(i) + 1, {67, "1"});
  const std::string paperSpace = DxfText(records) +
                                 DxfText({{0, "SECTION"},
                                          {2, "BLOCKS"},
                                          {0, "BLOCK"},
                                          {330, "4F"},
                                          {2, "*Paper_Space"},
                                          {0, "ENDBLK"},
                                          {0, "ENDSEC"},
                                          {0, "SECTION"},
                                          {2, "ENTITIES"}}) +
                                 DxfText(paper) + DxfText({{0, "ENDSEC"}});
  struct Case {
    const char* name;
    std::string dxf;
    QRgb top;
  };
  const Case cases[] = {
      {"file order", modelSpace + DxfText({{0, "EOF"}}), qRgb(0, 0, 255)},
      {"model space sorted", modelSpace + sortents("1F"), qRgb(255, 0, 0)},
      {"block in file order", DxfText(records) + DxfText(block) + DxfText({{0, "EOF"}}), qRgb(0, 0, 255)},
      {"block sorted", DxfText(records) + DxfText(block) + sortents("3F"), qRgb(255, 0, 0)},
      {"layout sorted", paperSpace + sortents("4F"), qRgb(255, 0, 0)},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    auto loaded = testing::LoadModern(c.dxf);
    ASSERT_EQ(loaded->drawing.SolidCount(), 2);
    ImageSurface surface(100, 100);
    ZoomState zoom(loaded->drawing);
    ASSERT_TRUE(zoom.Zoom({0, 100, 100, 0}, surface));
    EXPECT_EQ(surface.image().pixel(50, 50) & 0xFFFFFF, c.top & 0xFFFFFF);
  }
}

// A square hatch from 10 to 90 filled with a gradient from red (first colour) to blue.
Pairs GradientSquare(const char* shape, const char* radians, bool oneColor) {
  Pairs hatch = {{0, "HATCH"},     {70, "1"},
                 {450, "1"},       {91, "1"},
                 {92, "2"},        {72, "0"},
                 {73, "1"},        {93, "4"},
                 {10, "10"},       {20, "10"},
                 {10, "90"},       {20, "10"},
                 {10, "90"},       {20, "90"},
                 {10, "10"},       {20, "90"},
                 {97, "0"},        {75, "0"},
                 {76, "1"},        {98, "0"},
                 {451, "0"},       {460, radians},
                 {461, "0"},       {452, oneColor ? "1" : "0"},
                 {462, "1"},       {453, oneColor ? "1" : "2"},
                 {463, "0"},       {63, "1"},
                 {421, "16711680"}};
  if (!oneColor) hatch.insert(hatch.end(), {{463, "1"}, {63, "5"}, {421, "255"}});
  hatch.push_back({470, shape});
  return hatch;
}

TEST(Gradients, EachShapeRunsFromItsFirstColourToItsSecond) {
  struct Probe {
    int x, y;
    QRgb near;  // the colour expected there, within a tenth
  };
  struct Case {
    const char* name;
    Pairs hatch;
    std::vector<Probe> probes;
  };
  const QRgb red = qRgb(255, 0, 0), blue = qRgb(0, 0, 255), white = qRgb(255, 255, 255);
  const Case cases[] = {
      {"linear, left to right", GradientSquare("LINEAR", "0", false), {{11, 50, red}, {88, 50, blue}}},
      {"linear, turned a quarter: bottom to top",
       GradientSquare("LINEAR", "1.5707963", false),
       {{50, 88, red}, {50, 11, blue}}},
      {"cylinder: the second colour in the middle",
       GradientSquare("CYLINDER", "0", false),
       {{11, 50, red}, {50, 50, blue}, {88, 50, red}}},
      {"spherical: the second colour at the centre",
       GradientSquare("SPHERICAL", "0", false),
       {{50, 50, blue}}},
      {"one colour tinted to white", GradientSquare("LINEAR", "0", true), {{11, 50, red}, {88, 50, white}}},
  };
  auto near = [](QRgb a, QRgb b) {
    return std::abs(qRed(a) - qRed(b)) < 26 && std::abs(qGreen(a) - qGreen(b)) < 26 &&
           std::abs(qBlue(a) - qBlue(b)) < 26;
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    ModernRender render(c.hatch);
    ASSERT_TRUE(render.drawn());
    for (const Probe& p : c.probes)
      EXPECT_TRUE(near(render.Pixel(p.x, p.y), p.near))
          << p.x << "," << p.y << ": " << std::hex << render.Pixel(p.x, p.y);
  }
}

TEST(ProxyGraphics, AnAddOnObjectIsDrawnAsItsGraphicsSay) {
  ProxyStream stream;
  stream
      .Add(14, ProxyData().Int(1))  // red
      .Add(20, ProxyData().Int(1))  // filled
      .Add(7, ProxyData().Int(3).Point(0, 0).Point(100, 0).Point(0, 100))
      .Add(14, ProxyData().Int(5))
      .Add(6, ProxyData().Int(2).Point(0, 100).Point(100, 100));
  Pairs wall{{0, "TCH_WALL"}, {8, "0"}};
  for (const auto& pair : stream.Pairs()) wall.push_back(pair);
  // A second one, half transparent (the stream has no opacity of its own: the entity's).
  ProxyStream glass;
  glass.Add(14, ProxyData().Int(5))
      .Add(20, ProxyData().Int(1))
      .Add(7, ProxyData().Int(3).Point(70, 60).Point(100, 60).Point(100, 90));
  wall.insert(wall.end(), {{0, "TCH_WINDOW"}, {8, "0"}, {440, std::to_string(0x02000000 | 127)}});
  for (const auto& pair : glass.Pairs()) wall.push_back(pair);
  ModernRender render(wall);
  ASSERT_TRUE(render.drawn());
  const QRgb pane = render.Pixel(95, 25);
  EXPECT_TRUE(std::abs(qRed(pane) - 128) < 20 && std::abs(qBlue(pane) - 255) < 20) << std::hex << pane;
  EXPECT_EQ(render.Pixel(20, 80), qRgb(255, 0, 0) & 0xFFFFFF);  // inside the triangle
  EXPECT_FALSE(render.Inked(80, 20));                           // beside it
  EXPECT_TRUE(render.InkedNear(50, 0));                         // the blue line along the top
}

// A picture of 8 x 8 red pixels over 0..50 x 0..100, clipped to the triangle of its top
// left half; beside it, a picture whose file is not there, drawn as its frame.
TEST(Images, APictureShowsWithinItsClipAndAMissingOneAsItsFrame) {
  QTemporaryDir folder;
  ASSERT_TRUE(folder.isValid());
  QImage red(8, 8, QImage::Format_RGB32);
  red.fill(Qt::red);
  ASSERT_TRUE(red.save(folder.filePath("red.png")));
  auto image = [](const char* handle, const char* x, const char* width, const char* height) {
    return Pairs{{0, "IMAGE"}, {8, "0"},     {10, x},    {20, "0"},    {11, width},   {21, "0"},
                 {12, "0"},    {22, height}, {13, "8"},  {23, "8"},    {340, handle}, {70, "7"},
                 {280, "1"},   {71, "2"},    {91, "3"},  {14, "-0.5"}, {24, "-0.5"},  {14, "7.5"},
                 {24, "-0.5"}, {14, "-0.5"}, {24, "7.5"}};
  };
  Pairs entities = image("A1", "0", "6.25", "12.5");
  Pairs missing = image("A2", "60", "3.75", "3.75");
  missing.resize(missing.size() - 9);  // no clip
  entities.insert(entities.end(), missing.begin(), missing.end());
  RenderSetup setup;
  setup.folder = folder.path().toStdString();
  // The first as written elsewhere (found by its bare name beside the drawing).
  setup.objects = DxfText({{0, "SECTION"},
                           {2, "OBJECTS"},
                           {0, "IMAGEDEF"},
                           {5, "A1"},
                           {1, "C:\\pictures\\red.png"},
                           {0, "IMAGEDEF"},
                           {5, "A2"},
                           {1, "gone.png"},
                           {0, "ENDSEC"}});
  ModernRender render(entities, setup);
  ASSERT_TRUE(render.drawn());
  EXPECT_EQ(render.Pixel(10, 10), qRgb(255, 0, 0) & 0xFFFFFF);  // inside the triangle
  EXPECT_FALSE(render.Inked(40, 80));                           // the clipped-off half
  EXPECT_TRUE(render.InkedNear(75, 70));                        // the missing one's frame, bottom edge
  EXPECT_FALSE(render.Inked(80, 95));                           // and no picture inside it
}

// Definitions that name one file share one picture (a drawing with thousands of them
// reads it once), and a picture drawn small is taken from a halving of it.
TEST(Images, OneFileIsReadOnceAndDrawnSmallFromAHalving) {
  QTemporaryDir folder;
  ASSERT_TRUE(folder.isValid());
  QImage red(1000, 500, QImage::Format_RGB32);
  red.fill(Qt::red);
  const std::string path = folder.filePath("red.png").toStdString();
  ASSERT_TRUE(red.save(QString::fromStdString(path)));
  Drawing drawing;
  drawing.Pictures = {{"red.png", path}, {"C:\\red.png", path}};
  ImageEntity first, second;
  first.Picture = 1, second.Picture = 2;
  PictureCache cache;
  const QImage& whole = cache.Of(drawing, first);
  EXPECT_EQ(whole.size(), QSize(1000, 500));
  EXPECT_EQ(cache.Of(drawing, second).cacheKey(), whole.cacheKey());
  const QImage& small = cache.Of(drawing, second, 100);
  EXPECT_EQ(small.size(), QSize(125, 62));  // three halvings: the smallest still 100 across
  EXPECT_EQ(small.pixel(60, 30), qRgb(255, 0, 0));
}

// A PDF page of one inch square, its left half red, laid at (10, 10) 40 times its size:
// its ink shows over 10..30 x 10..50 and its paper does not. A missing PDF clipped to
// 0..10 x 0..10 of its page at (60, 60), twice its size, is drawn as the clip's frame; a
// missing one without a clip is not drawn at all.
TEST(Underlays, APdfPageShowsAtItsPaperSizeAndAMissingOneAsItsClipFrame) {
  QTemporaryDir folder;
  ASSERT_TRUE(folder.isValid());
  {
    QPdfWriter pdf(folder.filePath("page.pdf"));
    pdf.setPageSize(QPageSize(QSizeF(1, 1), QPageSize::Inch));
    pdf.setPageMargins(QMarginsF(0, 0, 0, 0));
    pdf.setResolution(72);
    QPainter painter(&pdf);
    painter.fillRect(QRectF(0, 0, 36, 72), Qt::red);
  }
  auto underlay = [](const char* handle, const char* x, const char* y, const char* scale, const char* flags) {
    return Pairs{{0, "PDFUNDERLAY"}, {8, "0"},     {340, handle}, {10, x},   {20, y},    {41, scale},
                 {42, scale},        {280, flags}, {11, "0"},     {21, "0"}, {11, "10"}, {21, "10"}};
  };
  Pairs entities = underlay("D1", "10", "10", "40", "2");
  for (const Pairs& more : {underlay("D2", "60", "60", "2", "3"), underlay("D3", "60", "10", "2", "2")})
    entities.insert(entities.end(), more.begin(), more.end());
  RenderSetup setup;
  setup.folder = folder.path().toStdString();
  setup.objects = DxfText({{0, "SECTION"},
                           {2, "OBJECTS"},
                           {0, "PDFDEFINITION"},
                           {5, "D1"},
                           {1, ".\\page.pdf"},
                           {2, "1"},
                           {0, "PDFDEFINITION"},
                           {5, "D2"},
                           {1, "gone.pdf"},
                           {2, "1"},
                           {0, "PDFDEFINITION"},
                           {5, "D3"},
                           {1, "gone too.pdf"},
                           {2, "1"},
                           {0, "ENDSEC"}});
  ModernRender render(entities, setup);
  ASSERT_TRUE(render.drawn());
  EXPECT_EQ(render.Pixel(20, 70), qRgb(255, 0, 0) & 0xFFFFFF);  // the page's left half
  EXPECT_FALSE(render.Inked(40, 70));                           // its right half: paper
  EXPECT_FALSE(render.Inked(31, 45));                           // and above the page
  EXPECT_TRUE(render.InkedNear(70, 40));                        // the missing one's clip frame
  EXPECT_EQ(render.InkedIn(56, 50, 100, 92), 0);                // the one without a clip
  const Drawing& d = render.loaded().drawing;
  ASSERT_EQ(d.Images.size(), 3u);
  EXPECT_EQ(d.Images[0].Width, (PointD{40, 0}));  // the page, an inch a unit
  EXPECT_EQ(d.Images[2].Width, (PointD{}));       // no page known
  // 10..80 both ways (the page, the clip frame; nothing for the last), 2 % of 70 around.
  EXPECT_NEAR(d.ExtMaxX, 81.4, 1e-9);
  EXPECT_NEAR(d.ExtMinY, 8.6, 1e-9);
  std::vector<std::string> report;
  for (const ReportEntry& e : render.loaded().outcome.Report.Entries()) report.push_back(e.Kind);
  EXPECT_EQ(report, (std::vector<std::string>{"underlay found: .\\page.pdf", "underlay missing: gone.pdf",
                                              "underlay missing: gone too.pdf"}));
}

namespace {

// An insert of LINEB (a line from 0 to 100 along x) at height y with the extension
// dictionary `dictionary`.
Pairs ClippedLine(const char* handle, const char* dictionary, const char* y) {
  return Pairs{{0, "INSERT"},     {5, handle}, {102, "{ACAD_XDICTIONARY"},
               {360, dictionary}, {102, "}"},  {2, "LINEB"},
               {8, "0"},          {10, "0"},   {20, y}};
}

const Pairs kLineBlock{{0, "BLOCK"}, {2, "LINEB"}, {10, "0"},   {20, "0"}, {0, "LINE"},  {8, "0"},
                       {10, "0"},    {20, "0"},    {11, "100"}, {21, "0"}, {0, "ENDBLK"}};

// The objects of a clip to the left half (B0) of a reference at height 30.
Pairs LeftHalfClip() { return testing::ClipObjects("B0", "50", "100", "-30"); }

Pairs Section(const char* name, Pairs content) {
  content.insert(content.begin(), {{0, "SECTION"}, {2, name}});
  content.push_back({0, "ENDSEC"});
  return content;
}

}  // namespace

// Two references to a line across the view: the lower one clipped to the left half, the
// upper one by an inverted clip whose hole is the middle fifth (XCLIP).
TEST(Clipping, ABlockReferenceShowsOnlyWhatItsSpatialFilterKeeps) {
  Pairs entities = ClippedLine("A0", "B0", "30");
  const Pairs upper = ClippedLine("A1", "C0", "70");
  entities.insert(entities.end(), upper.begin(), upper.end());
  Pairs objects = LeftHalfClip();
  for (const Pairs& p : {testing::ClipObjects("C0", "100", "100", "-70", "C3"),
                         testing::DictionaryEntry("C3", "ACAD_XREC_ROUNDTRIP", "C4"),
                         Pairs{{0, "XRECORD"},
                               {5, "C4"},
                               {102, "ACAD_INVERTEDCLIP_ROUNDTRIP"},
                               {10, "40"},
                               {20, "0"},
                               {10, "60"},
                               {20, "0"},
                               {10, "60"},
                               {20, "100"},
                               {10, "40"},
                               {20, "100"}}})
    objects.insert(objects.end(), p.begin(), p.end());
  RenderSetup setup;
  setup.objects = DxfText(Section("OBJECTS", objects));
  setup.blocks = DxfText(kLineBlock);
  ModernRender render(entities, setup);
  ASSERT_TRUE(render.drawn());
  EXPECT_TRUE(render.InkedNear(25, 70));   // the lower line's left half
  EXPECT_FALSE(render.InkedNear(75, 70));  // and not its right half
  EXPECT_TRUE(render.InkedNear(25, 30));   // the upper line outside the hole
  EXPECT_FALSE(render.InkedNear(50, 30));  // not in it
  EXPECT_TRUE(render.InkedNear(75, 30));
}

// Front and back clipping planes: a reference whose plane (z = 0) lies in front of the
// front plane, or behind the back plane, shows nothing; one between them shows what its
// boundary keeps (the front distance, a 40 of its own, does not shift the matrix after it).
TEST(Clipping, FrontAndBackPlanesKeepOrLeaveOutAReferenceByItsPlane) {
  auto withPlanes = [](const char* handle, const char* dy, Pairs planes) {
    Pairs objects = testing::ClipObjects(handle, "50", "100", dy);
    const auto at = std::find(objects.begin(), objects.end(), std::pair<int, std::string>{71, "1"});
    objects.insert(at + 1, planes.begin(), planes.end());
    return objects;
  };
  Pairs entities, objects;
  const char* ys[] = {"20", "50", "80"};
  const char* dys[] = {"-20", "-50", "-80"};
  const Pairs planes[] = {{{72, "1"}, {40, "-1"}, {73, "0"}},
                          {{72, "1"}, {40, "1"}, {73, "1"}, {41, "-1"}},
                          {{72, "0"}, {73, "1"}, {41, "2"}}};
  for (int i = 0; i < 3; ++i) {
    const std::string insert = "A" + std::to_string(i), clip = "B" + std::to_string(i);
    const Pairs line = ClippedLine(insert.c_str(), clip.c_str(), ys[i]);
    const Pairs filter = withPlanes(clip.c_str(), dys[i], planes[i]);
    entities.insert(entities.end(), line.begin(), line.end());
    objects.insert(objects.end(), filter.begin(), filter.end());
  }
  RenderSetup setup;
  setup.objects = DxfText(Section("OBJECTS", objects));
  setup.blocks = DxfText(kLineBlock);
  ModernRender render(entities, setup);
  ASSERT_TRUE(render.drawn());
  EXPECT_EQ(render.InkedIn(0, 75, 100, 85), 0);  // in front of the front plane
  EXPECT_TRUE(render.InkedNear(25, 50));         // between the planes: the left half
  EXPECT_FALSE(render.InkedNear(75, 50));
  EXPECT_EQ(render.InkedIn(0, 15, 100, 25), 0);  // behind the back plane
}

// The clipped reference inside another block (two inserts of it, the second 40 higher),
// and one on a paper-space layout (drawn after the clips are known).
TEST(Clipping, ClippedReferencesInsideBlocksAndLayoutsKeepTheirClip) {
  RenderSetup setup;
  setup.objects = DxfText(Section("OBJECTS", LeftHalfClip()));
  Pairs outer{{0, "BLOCK"}, {2, "OUTER"}, {10, "0"}, {20, "0"}};
  const Pairs inner = ClippedLine("D0", "B0", "30");
  outer.insert(outer.end(), inner.begin(), inner.end());
  outer.push_back({0, "ENDBLK"});
  outer.insert(outer.begin(), kLineBlock.begin(), kLineBlock.end());
  setup.blocks = DxfText(outer);
  const Pairs nested{{0, "INSERT"}, {2, "OUTER"}, {8, "0"}, {10, "0"}, {20, "0"},
                     {0, "INSERT"}, {2, "OUTER"}, {8, "0"}, {10, "0"}, {20, "40"}};
  ModernRender inBlock(nested, setup);
  ASSERT_TRUE(inBlock.drawn());
  for (int y : {30, 70}) {
    EXPECT_TRUE(inBlock.InkedNear(25, y)) << y;
    EXPECT_FALSE(inBlock.InkedNear(75, y)) << y;
  }
  Pairs paper = ClippedLine("A0", "B0", "30");
  paper.push_back({67, "1"});
  setup.blocks = DxfText(kLineBlock);
  ModernRender onLayout(paper, setup);
  ASSERT_TRUE(onLayout.drawn());
  EXPECT_TRUE(onLayout.InkedNear(25, 70));  // pixel rows run down from 100
  EXPECT_FALSE(onLayout.InkedNear(75, 70));
}

// A blue fill half transparent (440) over a red line; a line on a layer whose extended
// data makes it half transparent; a block of one line "by block" in an insert that is.
TEST(Transparency, EntitiesLayersAndBlocksAreDrawnWithTheirAlpha) {
  const std::string half = std::to_string(0x02000000 | 127);
  RenderSetup setup;
  setup.layers = {{0, "LAYER"}, {2, "GLASS"}, {62, "1"}, {1001, "AcCmTransparency"}, {1071, half}};
  setup.blocks = DxfText({{0, "BLOCK"},
                          {2, "B"},
                          {0, "LINE"},
                          {8, "0"},
                          {62, "1"},
                          {440, std::to_string(0x01000000)},
                          {10, "0"},
                          {20, "0"},
                          {11, "100"},
                          {21, "0"},
                          {0, "ENDBLK"}});
  ModernRender render(
      {{0, "LINE"}, {62, "1"},   {10, "0"},    {20, "50"}, {11, "100"},   {21, "50"},  {0, "HATCH"},
       {62, "5"},   {440, half}, {70, "1"},    {91, "1"},  {92, "1"},     {93, "4"},   {72, "1"},
       {10, "40"},  {20, "40"},  {11, "60"},   {21, "40"}, {72, "1"},     {10, "60"},  {20, "40"},
       {11, "60"},  {21, "60"},  {72, "1"},    {10, "60"}, {20, "60"},    {11, "40"},  {21, "60"},
       {72, "1"},   {10, "40"},  {20, "60"},   {11, "40"}, {21, "40"},    {0, "LINE"}, {8, "GLASS"},
       {10, "0"},   {20, "20"},  {11, "100"},  {21, "20"}, {0, "INSERT"}, {2, "B"},    {440, half},
       {10, "0"},   {20, "80"},  {0, "SOLID"}, {62, "3"},  {440, half},   {10, "70"},  {20, "40"},
       {11, "90"},  {21, "40"},  {12, "70"},   {22, "60"}, {13, "90"},    {23, "60"},  {0, "POINT"},
       {62, "5"},   {440, half}, {10, "30"},   {20, "30"}},
      setup);
  ASSERT_TRUE(render.drawn());
  auto near = [](QRgb c, int r, int g, int b) {
    return std::abs(qRed(c) - r) < 20 && std::abs(qGreen(c) - g) < 20 && std::abs(qBlue(c) - b) < 20;
  };
  EXPECT_TRUE(near(render.Pixel(50, 45), 128, 128, 255))
      << std::hex << render.Pixel(50, 45);                                                   // fill on white
  EXPECT_TRUE(near(render.Pixel(50, 50), 128, 0, 128)) << std::hex << render.Pixel(50, 50);  // over the line
  EXPECT_TRUE(near(render.Pixel(10, 50), 255, 0, 0));                                        // the line alone
  EXPECT_TRUE(near(render.Pixel(10, 80), 255, 128, 128)) << std::hex << render.Pixel(10, 80);  // the layer's
  EXPECT_TRUE(near(render.Pixel(10, 20), 255, 128, 128)) << std::hex << render.Pixel(10, 20);  // by block
  EXPECT_TRUE(near(render.Pixel(80, 45), 128, 255, 128)) << std::hex << render.Pixel(80, 45);  // a solid
  EXPECT_TRUE(near(render.Pixel(80, 50), 128, 128, 0)) << std::hex << render.Pixel(80, 50);
  bool point = false;  // a point's dot
  for (int y = 69; y <= 71; ++y)
    for (int x = 29; x <= 31; ++x) point = point || near(render.Pixel(x, y), 128, 128, 255);
  EXPECT_TRUE(point);
}

// A text too small to read is the grey mark its letters make: its box, faintly, in its
// colour; one of a tenth of that size is not drawn at all.
TEST(ModernRendering, TextTooSmallToReadIsAFaintMark) {
  RenderSetup setup;
  setup.window = {0, 1000, 1000, 0};
  ModernRender render({{0, "TEXT"},
                       {10, "100"},
                       {20, "500"},
                       {40, "10"},
                       {1, "WWWWWWWWWWWWWWWWWWWW"},
                       {0, "TEXT"},
                       {10, "100"},
                       {20, "200"},
                       {40, "1"},
                       {1, "WWWWWWWWWWWWWWWWWWWW"}},
                      setup);
  ASSERT_TRUE(render.drawn());
  EXPECT_GT(render.InkedIn(10, 48, 30, 50), 10);  // the mark of the text one pixel high
  const QRgb mark = render.Pixel(20, 49);
  EXPECT_GT(qGreen(mark), 120);                  // faint: red at a third of its strength
  EXPECT_EQ(render.InkedIn(10, 78, 30, 81), 0);  // the text of a tenth of a pixel
}

}  // namespace
}  // namespace dxfimport
