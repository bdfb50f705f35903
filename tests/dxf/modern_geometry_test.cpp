#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>

#include "dxf/model/colors.h"
#include "dxf/model/hatch_geometry.h"
#include "dxf/model/wide_band.h"
#include "dxf/reader.h"
#include "testing/dxf_fixture.h"

namespace dxfimport {
namespace {

using testing::DxfText;
using testing::EntitiesFile;
using testing::LoadModern;
using testing::Pairs;

std::string WithBlocks(const Pairs& blocks, const Pairs& entities) {
  Pairs section = {{0, "SECTION"}, {2, "BLOCKS"}};
  section.insert(section.end(), blocks.begin(), blocks.end());
  section.push_back({0, "ENDSEC"});
  return DxfText(section) + EntitiesFile(entities);
}

TEST(ObjectCoordinates, AnExtrusionAlongMinusZMirrorsArcsAndInserts) {
  auto arc = LoadModern(EntitiesFile({{0, "ARC"},
                                      {10, "10"},
                                      {20, "0"},
                                      {40, "5"},
                                      {50, "0"},
                                      {51, "90"},
                                      {210, "0"},
                                      {220, "0"},
                                      {230, "-1"}}));
  ASSERT_EQ(arc->drawing.ArcCount(), 1);
  const ArcEntity& a = arc->drawing.Arcs[0];
  EXPECT_EQ(a.CenterX, -10);
  EXPECT_NEAR(a.StartAngle, 90, 1e-9);  // the quarter from 0 to 90 mirrors to 90..180
  EXPECT_NEAR(a.EndAngle, 180, 1e-9);

  // A block with a line and a nested insert of a block with a circle, inserted mirrored.
  Pairs blocks = {{0, "BLOCK"}, {2, "DOT"},    {0, "CIRCLE"}, {10, "1"},    {20, "0"},
                  {40, "0.5"},  {0, "ENDBLK"}, {0, "BLOCK"},  {2, "B"},     {0, "LINE"},
                  {10, "0"},    {20, "0"},     {11, "2"},     {21, "1"},    {0, "INSERT"},
                  {2, "DOT"},   {10, "3"},     {20, "0"},     {0, "ENDBLK"}};
  auto insert = LoadModern(WithBlocks(
      blocks, {{0, "INSERT"}, {2, "B"}, {10, "10"}, {20, "5"}, {210, "0"}, {220, "0"}, {230, "-1"}}));
  const Drawing& d = insert->drawing;
  ASSERT_EQ(d.LineCount(), 1);
  EXPECT_EQ(d.Lines[0].X1, -10);  // the insertion point is in object coordinates too
  EXPECT_EQ(d.Lines[0].X2, -12);
  EXPECT_EQ(d.Lines[0].Y2, 6);
  ASSERT_EQ(d.ArcCount(), 1);
  EXPECT_EQ(d.Arcs[0].CenterX, -14);  // through both levels
  EXPECT_EQ(d.Arcs[0].Radius, 0.5);
}

TEST(ObjectCoordinates, ATiltedPlaneDrawsACircleAsAnEllipse) {
  auto tilted = LoadModern(EntitiesFile(
      {{0, "CIRCLE"}, {10, "0"}, {20, "0"}, {40, "10"}, {210, "0"}, {220, "0.6"}, {230, "0.8"}}));
  ASSERT_EQ(tilted->drawing.Ellipses.size(), 1u);
  const EllipseEntity& e = tilted->drawing.Ellipses[0];
  EXPECT_NEAR(std::hypot(e.UX, e.UY), 10, 1e-9);  // the x axis lies in the world's plane
  EXPECT_NEAR(std::hypot(e.VX, e.VY), 8, 1e-9);   // the y axis is foreshortened by 0.8
  EXPECT_NEAR(e.End - e.Start, 2 * M_PI, 1e-12);
}

TEST(Meshes, APolyfaceDrawsEachVisibleEdgeOnceAndAPolygonMeshItsGrid) {
  // A cube: 8 corners, 6 faces; the edge from corner 1 to 2 is hidden in both faces.
  Pairs cube = {{0, "POLYLINE"}, {66, "1"}, {70, "64"}, {71, "8"}, {72, "6"}};
  const int corners[8][3] = {{0, 0, 0},  {10, 0, 0},  {10, 10, 0},  {0, 10, 0},
                             {0, 0, 10}, {10, 0, 10}, {10, 10, 10}, {0, 10, 10}};
  for (const auto& c : corners)
    cube.insert(cube.end(), {{0, "VERTEX"},
                             {70, "192"},
                             {10, std::to_string(c[0] + c[2] / 2)},
                             {20, std::to_string(c[1] + c[2] / 2)},
                             {30, std::to_string(c[2])}});
  const int faces[6][4] = {{-1, 2, 3, 4}, {5, 6, 7, 8}, {-2, 1, 5, 6},
                           {2, 3, 7, 6},  {3, 4, 8, 7}, {4, 1, 5, 8}};
  for (const auto& f : faces)
    cube.insert(cube.end(), {{0, "VERTEX"},
                             {70, "128"},
                             {71, std::to_string(f[0])},
                             {72, std::to_string(f[1])},
                             {73, std::to_string(f[2])},
                             {74, std::to_string(f[3])}});
  cube.push_back({0, "SEQEND"});
  auto mesh = LoadModern(EntitiesFile(cube));
  EXPECT_EQ(mesh->drawing.LineCount(), 11);
  EXPECT_EQ(mesh->drawing.PolySegCount(), 0);  // no chain through the face records

  Pairs grid = {{0, "POLYLINE"}, {66, "1"}, {70, "16"}, {71, "3"}, {72, "2"}};
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 2; ++j)
      grid.insert(grid.end(),
                  {{0, "VERTEX"}, {70, "64"}, {10, std::to_string(j * 10)}, {20, std::to_string(i * 10)}});
  grid.push_back({0, "SEQEND"});
  auto polygonMesh = LoadModern(EntitiesFile(grid));
  EXPECT_EQ(polygonMesh->drawing.LineCount(), 3 + 4);
}

TEST(BlockProperties, ByBlockAndLayerZeroResolveThroughEveryLevel) {
  std::string tables = DxfText({{0, "SECTION"},
                                {2, "TABLES"},
                                {0, "TABLE"},
                                {2, "LAYER"},
                                {0, "LAYER"},
                                {2, "0"},
                                {62, "7"},
                                {0, "LAYER"},
                                {2, "L"},
                                {62, "5"},
                                {6, "DASHED"},
                                {370, "35"},
                                {0, "ENDTAB"},
                                {0, "ENDSEC"}});
  Pairs blocks = {{0, "BLOCK"},   {2, "INNER"},   {0, "LINE"},  {8, "0"},      {62, "0"},
                  {6, "BYBLOCK"}, {370, "-2"},    {11, "1"},  // all by block
                  {0, "LINE"},    {8, "0"},       {11, "2"},  // all by layer
                  {0, "ENDBLK"},  {0, "BLOCK"},   {2, "OUTER"}, {0, "INSERT"}, {8, "0"},
                  {62, "0"},      {6, "BYBLOCK"}, {370, "-2"},  {2, "INNER"},  {0, "ENDBLK"}};
  auto loaded = LoadModern(
      tables +
      WithBlocks(blocks, {{0, "INSERT"}, {2, "OUTER"}, {8, "L"}, {62, "3"}, {6, "PHANTOM"}, {370, "50"}}));
  const Drawing& d = loaded->drawing;
  ASSERT_EQ(d.LineCount(), 2);
  EXPECT_EQ(d.Lines[0].Layer, 2);            // layer 0 became L through both inserts
  EXPECT_EQ(d.Lines[0].Color, AciColor(3));  // by block: the outer insert's green
  EXPECT_EQ(d.Lines[0].LineType, 4);         // its phantom line type
  EXPECT_EQ(d.Lines[0].LineWeight, 50);      // and its weight
  EXPECT_EQ(d.Lines[1].Layer, 2);
  EXPECT_EQ(d.Lines[1].Color, 0);        // by layer: drawn in L's colour
  EXPECT_EQ(d.Lines[1].LineType, 1);     // L's dashes
  EXPECT_EQ(d.Lines[1].LineWeight, 35);  // L's weight
}

TEST(Colors, TheColourIndexPaletteAndTheForeground) {
  EXPECT_EQ(AciColor(1), 0x0000FF);
  EXPECT_EQ(AciColor(10), 0x0000FF);
  EXPECT_EQ(AciColor(11), 0x7F7FFF);  // the half-white tint of red
  EXPECT_EQ(AciColor(30), 0x007FFF);  // orange
  EXPECT_EQ(AciColor(150), 0xFF7F00);
  EXPECT_EQ(AciColor(250), 0x333333);
  EXPECT_EQ(AciColor(8), 0x808080);
  EXPECT_EQ(AciColor(7), kForeground);
  EXPECT_EQ(AciColor(18), 0x000026);  // the darkest shade: 15 %
  EXPECT_EQ(ContrastingColor(0xFFFFFF), 0x000000);
  EXPECT_EQ(ContrastingColor(0x202020), 0xFFFFFF);
  EXPECT_EQ(TrueColorValue("16777215", 7), kForeground);  // restates colour 7
  EXPECT_EQ(TrueColorValue("16777215", 256), 0xFFFFFF);   // a white chosen as such
  EXPECT_EQ(TrueColorValue("0", 1), kExplicitBlack);
  const std::vector<LayerEntry> layers = {{"0", kForeground, -1, 0}, {"R", 0x0000FF, -1, 0}};
  EXPECT_EQ(EntityRgb(0, 1, layers, true, 0xFFFFFF), 0xFFFFFF);  // by layer, layer colour 7, dark picture
  EXPECT_EQ(EntityRgb(kColorOfLayer | 2, 1, layers, true, 0), 0x0000FF);
  EXPECT_EQ(EntityRgb(kExplicitBlack, 1, layers, true, 0xFFFFFF), 0);
}

TEST(Precision, SurveyCoordinatesKeepTheirMillimetres) {
  auto loaded = LoadModern(EntitiesFile({{0, "CIRCLE"},
                                         {10, "512350.0004"},
                                         {20, "5412349.0003"},
                                         {40, "0.3"},
                                         {0, "LINE"},
                                         {10, "512345.123"},
                                         {20, "5412345.456"},
                                         {11, "512345.124"},
                                         {21, "5412345.457"}}));
  const Drawing& d = loaded->drawing;
  EXPECT_EQ(d.Arcs[0].CenterX, 512350.0004);
  EXPECT_EQ(d.Arcs[0].CenterY, 5412349.0003);
  EXPECT_EQ(d.Lines[0].X2 - d.Lines[0].X1, 512345.124 - 512345.123);
  EXPECT_NEAR(d.ExtMinX, 512345.123 - 0.02 * (512350.3004 - 512345.123), 1e-6);
}

// A binary DXF with two-byte group codes written from pairs: strings for codes below 10,
// 100..109 and 1000..1009, doubles for 10..59 and 1010..1059, 16-bit numbers for 60..79,
// 32-bit ones for 90..99.
std::string BinaryOf(const Pairs& pairs) {
  std::string out("AutoCAD Binary DXF\r\n\x1a\0", 22);
  for (const auto& [code, value] : pairs) {
    const int16_t c = int16_t(code);
    out.append(reinterpret_cast<const char*>(&c), 2);
    if (code < 10 || (code >= 100 && code < 110) || (code >= 1000 && code < 1010)) {
      out += value;
      out += '\0';
    } else if (code < 60 || (code >= 1010 && code < 1060)) {
      const double v = std::stod(value);
      out.append(reinterpret_cast<const char*>(&v), 8);
    } else if (code < 80) {
      const int16_t v = int16_t(std::stoi(value));
      out.append(reinterpret_cast<const char*>(&v), 2);
    } else {
      const int32_t v = std::stoi(value);
      out.append(reinterpret_cast<const char*>(&v), 4);
    }
  }
  return out;
}

TEST(BinaryDxf, TheModernProfileReadsItAsItsTextAndTheLegacyOneRefusesIt) {
  const Pairs pairs = {{0, "SECTION"}, {2, "ENTITIES"},   {0, "LINE"},  {100, "AcDbEntity"}, {8, "WALLS"},
                       {62, "3"},      {10, "1.5"},       {20, "2.25"}, {11, "512345.125"},  {21, "-4"},
                       {0, "TEXT"},    {8, "WALLS"},      {10, "0"},    {20, "0"},           {40, "2"},
                       {1, "Hello"},   {0, "LWPOLYLINE"}, {90, "2"},    {70, "1"},           {10, "0"},
                       {20, "0"},      {10, "5"},         {20, "0"},    {0, "ENDSEC"},       {0, "EOF"}};
  auto binary = LoadModern(BinaryOf(pairs));
  auto text = LoadModern(DxfText(pairs));
  ASSERT_TRUE(binary->result);
  EXPECT_TRUE(binary->outcome.Complete);
  const Drawing& b = binary->drawing;
  ASSERT_EQ(b.LineCount(), 1);
  EXPECT_EQ(b.Lines[0].X2, 512345.125);
  EXPECT_EQ(b.Lines[0].Color, text->drawing.Lines[0].Color);
  EXPECT_EQ(b.Layers[b.Lines[0].Layer - 1].Name, "WALLS");
  ASSERT_EQ(b.TextCount(), 1);
  EXPECT_EQ(b.Texts[0].Text, "Hello");
  EXPECT_EQ(b.PolySegCount(), 2);

  auto legacy = testing::Load(BinaryOf(pairs));
  EXPECT_FALSE(legacy->result);
  EXPECT_EQ(legacy->capture.messages.messages().front().text,
            "Error: The selected file is not recognized as a valid DXF file.");
  // A file that ends inside a value keeps what was converted before it.
  auto cut = LoadModern(BinaryOf(pairs).substr(0, 60));
  EXPECT_TRUE(cut->result);
  EXPECT_LE(cut->drawing.LineCount(), 1);
}

TEST(Dimensions, TheWholeBlockWithArrowBlocksOrTheDefinitionPointsAreDrawn) {
  Pairs blocks = {{0, "BLOCK"},
                  {2, "_ClosedFilled"},
                  {0, "SOLID"},
                  {8, "0"},
                  {62, "0"},
                  {10, "0"},
                  {20, "0"},
                  {11, "-1"},
                  {21, "0.2"},
                  {12, "-1"},
                  {22, "-0.2"},
                  {0, "ENDBLK"},
                  {0, "BLOCK"},
                  {2, "*D1"},
                  {0, "LINE"},
                  {10, "0"},
                  {20, "5"},
                  {11, "10"},
                  {21, "5"},
                  {0, "INSERT"},
                  {2, "_ClosedFilled"},
                  {62, "0"},
                  {10, "10"},
                  {20, "5"},
                  {0, "INSERT"},
                  {2, "_ClosedFilled"},
                  {62, "0"},
                  {10, "0"},
                  {20, "5"},
                  {50, "180"},
                  {0, "MTEXT"},
                  {10, "5"},
                  {20, "6"},
                  {40, "1"},
                  {71, "8"},
                  {1, "10"},
                  {0, "ENDBLK"}};
  std::string styles = DxfText({{0, "SECTION"},
                                {2, "TABLES"},
                                {0, "TABLE"},
                                {2, "DIMSTYLE"},
                                {0, "DIMSTYLE"},
                                {2, "ISO"},
                                {41, "2.5"},
                                {140, "2.5"},
                                {271, "2"},
                                {0, "ENDTAB"},
                                {0, "ENDSEC"}});
  struct Case {
    const char* name;
    std::string dxf;
    int lines, solids, texts;
    std::size_t mtexts;
    std::function<void(const Drawing&)> more;
  };
  const Case cases[] = {
      {"its block, arrow blocks nested in it",
       WithBlocks(blocks, {{0, "DIMENSION"}, {2, "*D1"}, {62, "1"}, {70, "32"}}), 1, 2, 0, 1,
       [](const Drawing& d) {
         EXPECT_EQ(d.Solids[0].Color, AciColor(1));  // by block: the dimension's colour
         EXPECT_NEAR(d.Solids[1].X2, 1, 1e-9);       // the turned arrow points left
       }},
      // Two extension lines, the dimension line, its arrowheads and its measurement in
      // the style's text height.
      {"no block: its definition points",
       styles + EntitiesFile({{0, "DIMENSION"},
                              {3, "ISO"},
                              {70, "0"},
                              {10, "0"},
                              {20, "20"},
                              {11, "50"},
                              {21, "22"},
                              {13, "0"},
                              {23, "0"},
                              {14, "100"},
                              {24, "0"}}),
       3, 2, 1, 0,
       [](const Drawing& d) {
         EXPECT_EQ(d.Texts[0].Text, "100");
         EXPECT_EQ(d.Texts[0].Height, 2.5);
       }},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    auto loaded = LoadModern(c.dxf);
    const Drawing& d = loaded->drawing;
    EXPECT_EQ(d.LineCount(), c.lines);
    EXPECT_EQ(d.MTexts.size(), c.mtexts);
    ASSERT_EQ(d.TextCount(), c.texts);
    ASSERT_EQ(d.SolidCount(), c.solids);
    c.more(d);
  }
}

TEST(Invisible, AnInvisibleEntityIsNeitherDrawnNorCountedAnywhere) {
  const Pairs seen = {{0, "LINE"}, {10, "0"}, {20, "0"}, {11, "1"}, {21, "1"}};
  const Pairs hidden = {{0, "LINE"}, {60, "1"}, {10, "100"}, {20, "100"}, {11, "200"}, {21, "200"}};
  auto join = [](std::initializer_list<Pairs> parts) {
    Pairs all;
    for (const Pairs& p : parts) all.insert(all.end(), p.begin(), p.end());
    return all;
  };
  // A dynamic block's copy: the state shown, and the one hidden in it.
  const Pairs blocks = join({{{0, "BLOCK"}, {2, "*U2"}, {70, "1"}}, seen, hidden, {{0, "ENDBLK"}}});
  const Pairs insert = {{0, "INSERT"}, {2, "*U2"}, {10, "0"}, {20, "0"}};
  const Pairs hiddenInsert = {{0, "INSERT"}, {60, "1"}, {66, "1"}, {2, "*U2"}, {10, "500"}, {20, "500"}};
  const Pairs attrib = {{0, "ATTRIB"}, {10, "0.5"}, {20, "0.5"}, {40, "1"}, {1, "TAG VALUE"}, {2, "TAG"}};
  struct Case {
    const char* name;
    std::string dxf;
    int lines, attribs;
  };
  const Case cases[] = {
      {"model space", EntitiesFile(join({seen, hidden})), 1, 0},
      {"paper space",
       EntitiesFile(
           {{0, "LINE"}, {67, "1"}, {11, "1"}, {21, "1"}, {0, "LINE"}, {67, "1"}, {60, "1"}, {11, "300"}}),
       1, 0},
      {"the state a dynamic block hides", WithBlocks(blocks, insert), 1, 0},
      {"an invisible insert and its attributes",
       WithBlocks(blocks, join({hiddenInsert, attrib, {{0, "SEQEND"}}, seen})), 1, 0},
      {"the attributes of a visible insert stay",
       WithBlocks(blocks, join({insert, {{66, "1"}}, attrib, {{0, "SEQEND"}}})), 1, 1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    auto loaded = LoadModern(c.dxf);
    const Drawing& d = loaded->drawing;
    EXPECT_EQ(d.LineCount(), c.lines);
    EXPECT_EQ(d.Attribs.size(), std::size_t(c.attribs));
    EXPECT_LT(d.ExtMaxX, 50);  // nothing hidden widens the extents
    EXPECT_TRUE(loaded->outcome.Complete);
  }
}

TEST(OtherEntities, TablesWipeoutsRaysAndPointsAreKept) {
  Pairs blocks = {{0, "BLOCK"}, {2, "*T1"}, {0, "LINE"}, {10, "0"},
                  {20, "0"},    {11, "4"},  {21, "0"},   {0, "ENDBLK"}};
  auto loaded = LoadModern(WithBlocks(
      blocks,
      {{0, "ACAD_TABLE"}, {2, "*T1"}, {10, "100"}, {20, "50"},   {11, "0"},    {21, "1"},    {0, "WIPEOUT"},
       {10, "0"},         {20, "0"},  {11, "10"},  {21, "0"},    {12, "0"},    {22, "5"},    {13, "1"},
       {23, "1"},         {71, "1"},  {91, "2"},   {14, "-0.5"}, {24, "-0.5"}, {14, "0.5"},  {24, "0.5"},
       {0, "RAY"},        {10, "1"},  {20, "1"},   {11, "1"},    {21, "0"},    {0, "XLINE"}, {10, "1"},
       {20, "1"},         {11, "0"},  {21, "1"},   {0, "POINT"}, {10, "7"},    {20, "8"}}));
  const Drawing& d = loaded->drawing;
  ASSERT_EQ(d.LineCount(), 1);
  EXPECT_NEAR(d.Lines[0].X2, 100, 1e-9);  // the table's block turned along its direction
  EXPECT_NEAR(d.Lines[0].Y2, 54, 1e-9);
  ASSERT_EQ(d.HatchCount(), 1);
  EXPECT_EQ(d.Hatches[0].Filling, HatchEntity::Fill::Background);
  EXPECT_EQ(d.Hatches[0].Points[0].x, 0);  // image pixels count from the top left
  EXPECT_EQ(d.Hatches[0].Points[0].y, 5);
  EXPECT_EQ(d.Hatches[0].Points[2].x, 10);
  EXPECT_EQ(d.Hatches[0].Points[2].y, 0);
  ASSERT_EQ(d.Rays.size(), 2u);
  EXPECT_FALSE(d.Rays[0].BothWays);
  EXPECT_TRUE(d.Rays[1].BothWays);
  ASSERT_EQ(d.Points.size(), 1u);
  EXPECT_EQ(d.ExtMaxY, 54 + 0.02 * 100);  // rays take no part in the extents
}

}  // namespace
}  // namespace dxfimport

namespace dxfimport {
namespace {

TEST(DrawingGeometry, WideBandsMeetInMitresAndFollowTheirArcs) {
  // An L of width 2: the bands meet at the corner's outer and inner mitre points.
  auto l = testing::LoadModern(testing::EntitiesFile({{0, "LWPOLYLINE"},
                                                      {90, "3"},
                                                      {43, "2"},
                                                      {10, "0"},
                                                      {20, "0"},
                                                      {10, "10"},
                                                      {20, "0"},
                                                      {10, "10"},
                                                      {20, "10"}}));
  const Drawing& d = l->drawing;
  ASSERT_EQ(d.PolySegCount(), 2);
  const std::vector<PointD> first = WideBand(d, d.PolySegs[0], 1, 1);
  ASSERT_EQ(first.size(), 4u);
  EXPECT_EQ(first[0], (PointD{0, 1}));
  EXPECT_NEAR(first[1].x, 9, 1e-12);  // inside the corner
  EXPECT_NEAR(first[1].y, 1, 1e-12);
  EXPECT_NEAR(first[2].x, 11, 1e-12);  // outside it
  EXPECT_NEAR(first[2].y, -1, 1e-12);

  // A half circle of radius 5 and width 2: its outline keeps to radii 4 and 6.
  auto arc = testing::LoadModern(testing::EntitiesFile(
      {{0, "LWPOLYLINE"}, {90, "2"}, {43, "2"}, {10, "0"}, {20, "0"}, {42, "1"}, {10, "10"}, {20, "0"}}));
  const Drawing& a = arc->drawing;
  ASSERT_EQ(a.PolySegCount(), 1);
  const std::vector<PointD> band = WideBand(a, a.PolySegs[0], 1, 10);
  ASSERT_GE(band.size(), 10u);
  for (std::size_t i = 0; i < band.size(); ++i)
    EXPECT_NEAR(Length(band[i] - PointD{5, 0}), i < band.size() / 2 ? 6 : 4, 1e-9) << i;
}

TEST(DrawingGeometry, HatchLoopsFamiliesAndCrossings) {
  // A square with a square hole: a line across both enters and leaves twice.
  const std::vector<std::vector<PointD>> loops = {{{0, 0}, {10, 0}, {10, 10}, {0, 10}},
                                                  {{3, 3}, {7, 3}, {7, 7}, {3, 7}}};
  std::vector<double> crossings;
  BoundaryCrossings(loops, {-5, 5}, {1, 0}, crossings);
  EXPECT_EQ(crossings, (std::vector<double>{5, 8, 12, 15}));
  BoundaryCrossings(loops, {-5, 20}, {1, 0}, crossings);
  EXPECT_TRUE(crossings.empty());

  // Lines y = k cross a box from y = 0 to y = 3.5 for k in [0, 3.5].
  const auto [lo, hi] = FamilyRange({0, 0}, {0, 1}, {1, 0}, {PointD{0, 0}, {10, 0}, {0, 3.5}, {10, 3.5}});
  EXPECT_DOUBLE_EQ(lo, 0);
  EXPECT_DOUBLE_EQ(hi, 3.5);

  // Loop starts beyond the points, or going back, give empty loops, never a read past.
  HatchEntity h;
  h.Points = {{0, 0}, {1, 0}, {1, 1}};
  h.LoopStarts = {0, 2, 7, 1};
  const std::vector<LoopRange> ranges = HatchLoops(h);
  ASSERT_EQ(ranges.size(), 4u);
  EXPECT_EQ(ranges[0].to, 2u);
  EXPECT_EQ(ranges[1].to, 3u);
  EXPECT_EQ(ranges[2].from, ranges[2].to);
  EXPECT_LE(ranges[3].to, 3u);
}

}  // namespace
}  // namespace dxfimport
