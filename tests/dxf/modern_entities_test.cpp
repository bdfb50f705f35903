#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <fstream>

#include "dxf/model/curves.h"
#include "dxf/model/mtext.h"
#include "testing/dxf_fixture.h"

namespace dxfimport {
namespace {

using testing::ClipObjects;
using testing::DxfText;
using testing::EntitiesFile;
using testing::LoadModern;
using testing::LoadModernFile;
using testing::Pairs;
using testing::WithObjects;

TEST(MTextMarkup, ParagraphsWordsAndFormats) {
  EXPECT_EQ(PlainText("plain"), "plain");
  EXPECT_EQ(PlainText("a\\Pb"), "a\nb");
  EXPECT_EQ(PlainText("{\\fArial|b1;Bold} \\H2.5x;big\\~end"), "Bold big\u00A0end");
  EXPECT_EQ(PlainText("\\LUnder\\l \\S1^2; \\\\ \\{x\\}"), "Under 1 2 \\ {x}");
  EXPECT_EQ(PlainText("\\C1;red^Jnext %%d%%c%%%%%065"), "red\nnext \u00B0\u00D8%A");
  EXPECT_EQ(PlainText("a^Ib^ c^a"), "a\tb^c!");  // caret codes: a tab, a caret, a character
  EXPECT_EQ(PlainText("a^?b\\:c"), "ab\\:c");    // ^? is the delete character; \: is no code

  const auto paragraphs = ParseMText("{\\H5;big \\C1;red} \\W0.5;\\Q15;\\Lnarrow\\l\\Pnext", 2.5);
  ASSERT_EQ(paragraphs.size(), 2u);
  const auto& pieces = paragraphs[0].pieces;
  ASSERT_EQ(pieces.size(), 5u);           // big, space, red, space, narrow
  EXPECT_EQ(pieces[0].format.height, 2);  // 5 of 2.5
  EXPECT_EQ(pieces[2].format.color, 0x0000FF);
  EXPECT_EQ(pieces[3].format.height, 1);  // the group restored the height
  EXPECT_EQ(pieces[4].format.widthFactor, 0.5);
  EXPECT_EQ(pieces[4].format.oblique, 15);
  EXPECT_TRUE(pieces[4].format.underline);
  EXPECT_EQ(paragraphs[1].pieces[0].text, "next");

  const auto stacked = ParseMText("\\S1/2; \\S+0.1^-0.2; \\pxi-3,l4,qr,t4,8;x", 1);
  ASSERT_EQ(stacked[0].pieces[0].kind, TextPiece::Kind::Stack);
  EXPECT_EQ(stacked[0].pieces[0].text, "1");
  EXPECT_EQ(stacked[0].pieces[0].lower, "2");
  EXPECT_EQ(stacked[0].pieces[0].stack, '/');
  EXPECT_EQ(stacked[0].pieces[2].stack, '^');
  EXPECT_EQ(stacked[0].pieces[2].lower, "-0.2");
  EXPECT_EQ(stacked[0].indentFirst, -3);
  EXPECT_EQ(stacked[0].indentLeft, 4);
  EXPECT_EQ(stacked[0].alignment, 2);
  EXPECT_EQ(stacked[0].tabs, (std::vector<double>{4, 8}));
  // A TEXT value: backslashes and braces are characters; %%u toggles the underline.
  const auto text = ParseMText(TextMarkup("%%uA\\{b}%%u c"), 1);
  ASSERT_EQ(text[0].pieces.size(), 3u);
  EXPECT_EQ(text[0].pieces[0].text, "A\\{b}");
  EXPECT_TRUE(text[0].pieces[0].format.underline);
  EXPECT_FALSE(text[0].pieces[2].format.underline);
}

TEST(Curves, EllipsesAndSplinesStayWithinTheTolerance) {
  auto circle = FlattenEllipse({0, 0}, {10, 0}, 1, 0, 2 * M_PI, false, 0.01);
  ASSERT_GT(circle.size(), 20u);
  for (std::size_t i = 1; i < circle.size(); ++i) {
    double mx = (circle[i - 1].x + circle[i].x) / 2, my = (circle[i - 1].y + circle[i].y) / 2;
    EXPECT_LE(10 - std::hypot(mx, my), 0.0101);
  }
  EXPECT_NEAR(circle[circle.size() / 4].y, 10, 0.01);  // counter-clockwise
  auto clockwise = FlattenEllipse({0, 0}, {10, 0}, 0.5, 0, M_PI / 2, true, 0.01);
  EXPECT_NEAR(clockwise.back().y, -5, 0.01);
  SplineData quadratic;
  quadratic.degree = 2;
  quadratic.controlPoints = {{0, 0}, {5, 10}, {10, 0}};
  auto points = FlattenSpline(quadratic, 0.01);
  EXPECT_NEAR(points.front().x, 0, 1e-5);
  EXPECT_NEAR(points.back().x, 10, 1e-5);
  EXPECT_NEAR(points[points.size() / 2].y, 5, 0.05);  // the middle of a clamped quadratic
  SplineData fitOnly;
  fitOnly.controlPoints.clear();
  fitOnly.fitPoints = {{0, 0}, {1, 1}, {2, 0}};
  EXPECT_EQ(FlattenSpline(fitOnly, 0.01).size(), 3u);
  EXPECT_EQ(ChordCount(1e30, 1, 0), 4);
  EXPECT_EQ(ChordCount(1e9, 6.3, 1e-9), 4096);
}

TEST(ModernEntities, MTextKeepsItsContentFrameAndColumns) {
  auto loaded = LoadModern(
      EntitiesFile({{0, "MTEXT"}, {10, "100"},        {20, "50"}, {40, "3"},   {41, "40"},
                    {71, "5"},    {3, "first\\Psec"}, {1, "ond"}, {11, "0"},   {21, "1"},
                    {73, "2"},    {44, "1.5"},        {90, "3"},  {45, "1.2"}, {101, "Embedded Object"},
                    {70, "1"},    {10, "999"},        {71, "1"},  {72, "2"},   {44, "20"},
                    {45, "2"},    {46, "30"}}));
  const Drawing& d = loaded->drawing;
  ASSERT_EQ(d.MTexts.size(), 1u);
  const MTextEntity& m = d.MTexts[0];
  EXPECT_EQ(m.Content, "first\\Psecond");  // 3 chunks, then 1
  EXPECT_EQ(m.X, 100);                     // not the embedded object's 10
  EXPECT_EQ(m.Height, 3);
  EXPECT_EQ(m.Width, 40);
  EXPECT_EQ(m.Attachment, 5);
  EXPECT_EQ(m.Rotation, 90);  // along the direction 11/21
  EXPECT_EQ(m.SpacingStyle, 2);
  EXPECT_EQ(m.SpacingFactor, 1.5);
  EXPECT_EQ(m.ColumnKind, 1);
  EXPECT_EQ(m.ColumnCount, 2);
  EXPECT_EQ(m.ColumnWidth, 20);
  EXPECT_EQ(m.ColumnHeight, 30);
  EXPECT_EQ(m.FillFlags, 3);
  EXPECT_EQ(m.FillScale, 1.2);
  // Seen from below (an extrusion along -Z) the text is mirrored.
  auto mirrored = LoadModern(EntitiesFile(
      {{0, "MTEXT"}, {10, "5"}, {20, "5"}, {40, "1"}, {1, "x"}, {210, "0"}, {220, "0"}, {230, "-1"}}));
  EXPECT_EQ(mirrored->drawing.MTexts[0].Mirror, kTextUpsideDown);
  EXPECT_EQ(mirrored->drawing.MTexts[0].Rotation, 0);  // the rotation is in world coordinates
  EXPECT_EQ(mirrored->drawing.MTexts[0].X, 5);         // the point is in world coordinates
}

TEST(ModernEntities, TextsTakeTheirStyleFontAndDefaults) {
  std::string styles = testing::DxfText({{0, "SECTION"},    {2, "TABLES"},
                                         {0, "TABLE"},      {2, "STYLE"},
                                         {0, "STYLE"},      {2, "Notes"},
                                         {70, "0"},         {40, "0"},
                                         {41, "0.8"},       {50, "10"},
                                         {71, "2"},         {3, "arial.ttf"},
                                         {0, "STYLE"},      {2, "Plot"},
                                         {70, "0"},         {40, "2.5"},
                                         {3, "romans.shx"}, {0, "STYLE"},
                                         {2, "Family"},     {3, ""},
                                         {1001, "ACAD"},    {1000, "Times New Roman"},
                                         {0, "ENDTAB"},     {0, "ENDSEC"}});
  auto loaded = LoadModern(styles + EntitiesFile({{0, "TEXT"},
                                                  {7, "notes"},
                                                  {40, "2"},
                                                  {1, "a"},
                                                  {0, "TEXT"},
                                                  {7, "Notes"},
                                                  {40, "2"},
                                                  {41, "1.5"},
                                                  {71, "0"},
                                                  {1, "b"},
                                                  {0, "TEXT"},
                                                  {7, "Plot"},
                                                  {1, "c"},
                                                  {0, "TEXT"},
                                                  {7, "Family"},
                                                  {40, "1"},
                                                  {1, "d"}}));
  const Drawing& d = loaded->drawing;
  ASSERT_EQ(d.TextCount(), 4);
  EXPECT_EQ(d.Texts[0].FontName, "Arial");
  EXPECT_EQ(d.Texts[0].WidthFactor, 0.8);  // the style's, the text having none
  EXPECT_EQ(d.Texts[0].Oblique, 10);
  EXPECT_EQ(d.Texts[0].Mirror, kTextBackward);
  EXPECT_EQ(d.Texts[1].WidthFactor, 1.5);  // the text's own
  EXPECT_EQ(d.Texts[1].Mirror, 0);
  EXPECT_EQ(d.Texts[2].FontName, "DejaVu Sans");  // the stand-in of an SHX font
  EXPECT_EQ(d.Texts[2].Height, 2.5);              // the style's fixed height
  EXPECT_EQ(d.Texts[3].FontName, "Times New Roman");
}

TEST(ModernEntities, CurvesKeepTheirShapeLeadersGetArrowsAndTracesBecomeSolids) {
  auto loaded = LoadModern(EntitiesFile(
      {{0, "ELLIPSE"},     {10, "0"},     {20, "0"},  {11, "10"},    {21, "0"}, {40, "0.5"}, {41, "0"},
       {42, "3.14159265"}, {0, "LEADER"}, {10, "0"},  {20, "0"},     {10, "5"}, {20, "5"},   {10, "9"},
       {20, "5"},          {0, "TRACE"},  {10, "0"},  {20, "0"},     {11, "1"}, {21, "0"},   {12, "0"},
       {22, "1"},          {13, "1"},     {23, "1"},  {0, "SPLINE"}, {71, "2"}, {10, "0"},   {20, "0"},
       {10, "5"},          {20, "10"},    {10, "10"}, {20, "0"}}));
  const Drawing& d = loaded->drawing;
  ASSERT_EQ(d.Ellipses.size(), 1u);
  EXPECT_EQ(d.Ellipses[0].UX, 10);  // the half ellipse starts on its major axis
  EXPECT_EQ(d.Ellipses[0].VY, 5);   // and turns towards the extrusion's left
  EXPECT_DOUBLE_EQ(d.Ellipses[0].End, 3.14159265);
  EXPECT_EQ(d.SolidCount(), 2);  // the trace and the leader's arrowhead
  EXPECT_EQ(d.Solids[0].X1, 0);  // the arrow's tip on the leader's first point
  ASSERT_GT(d.PolySegCount(), 10);
  int leader = 0;
  for (const PolySegment& s : d.PolySegs) leader += (s.X1 == 5 && s.Y1 == 5 && s.X2 == 9);
  EXPECT_EQ(leader, 1);
  EXPECT_NEAR(d.ExtMinY, -0.4, 1e-9);  // 0 less the margin of 2 % of the span of 20
  EXPECT_NEAR(d.ExtMaxY, 5.4, 1e-9);
  EXPECT_NEAR(d.ExtMinX, -10.4, 1e-9);
}

TEST(ModernEntities, HatchesKeepTheirLoopsAndTheirPatternLines) {
  testing::Pairs square = {{91, "2"},  {92, "2"}, {72, "0"},  {73, "1"},  {93, "4"}, {10, "0"},   {20, "0"},
                           {10, "10"}, {20, "0"}, {10, "10"}, {20, "10"}, {10, "0"}, {20, "10"},  {97, "0"},
                           {92, "1"},  {93, "2"}, {72, "1"},  {10, "4"},  {20, "4"}, {11, "6"},   {21, "4"},
                           {72, "2"},  {10, "5"}, {20, "4"},  {40, "1"},  {50, "0"}, {51, "180"}, {73, "1"},
                           {97, "0"},  {75, "0"}, {76, "1"},  {98, "1"},  {10, "5"}, {20, "5"}};
  testing::Pairs solid = {{0, "HATCH"}, {62, "1"}, {10, "0"}, {20, "0"}, {2, "SOLID"}, {70, "1"}};
  solid.insert(solid.end(), square.begin(), square.end());
  auto filled = LoadModern(EntitiesFile(solid));
  const Drawing& d = filled->drawing;
  ASSERT_EQ(d.HatchCount(), 1);
  EXPECT_EQ(d.Hatches[0].LoopStarts.size(), 2u);
  EXPECT_EQ(d.Hatches[0].LoopStarts[1], 4);
  EXPECT_GT(d.Hatches[0].Points.size(), 8u);
  EXPECT_EQ(d.Hatches[0].Color, 0x0000FF);
  EXPECT_EQ(d.DrawSeq[0].Kind, kKindHatch);
  testing::Pairs pattern = {{0, "HATCH"}, {2, "ANSI31"}, {70, "0"}};
  pattern.insert(pattern.end(), square.begin(), square.end());
  pattern.insert(pattern.end(), {{78, "1"},
                                 {53, "45"},
                                 {43, "0"},
                                 {44, "0"},
                                 {45, "-0.5"},
                                 {46, "0.5"},
                                 {79, "2"},
                                 {49, "1"},
                                 {49, "-0.5"}});
  auto patterned = LoadModern(EntitiesFile(pattern));
  ASSERT_EQ(patterned->drawing.HatchCount(), 1);
  const HatchEntity& h = patterned->drawing.Hatches[0];
  EXPECT_EQ(h.Filling, HatchEntity::Fill::Pattern);
  ASSERT_EQ(h.Pattern.size(), 1u);
  EXPECT_NEAR(h.Pattern[0].Direction.x, std::sqrt(0.5), 1e-12);
  EXPECT_EQ(h.Pattern[0].Offset.x, -0.5);
  EXPECT_EQ(h.Pattern[0].Dashes, (std::vector<double>{1, -0.5}));
}

TEST(ModernEntities, LineTypePatternsComeFromTheLtypeTable) {
  std::string tables = testing::DxfText({{0, "SECTION"},
                                         {2, "HEADER"},
                                         {9, "$LTSCALE"},
                                         {40, "2"},
                                         {0, "ENDSEC"},
                                         {0, "SECTION"},
                                         {2, "TABLES"},
                                         {0, "TABLE"},
                                         {2, "LTYPE"},
                                         {0, "LTYPE"},
                                         {2, "CENTER2"},
                                         {73, "4"},
                                         {49, "1.25"},
                                         {49, "-0.25"},
                                         {49, "0.25"},
                                         {49, "-0.25"},
                                         // shapes we cannot draw: solid, not a row of dots
                                         {0, "LTYPE"},
                                         {2, "BATTING"},
                                         {73, "2"},
                                         {49, "0.001"},
                                         {74, "0"},
                                         {49, "-2"},
                                         {74, "4"},
                                         {75, "134"},
                                         {0, "ENDTAB"},
                                         {0, "TABLE"},
                                         {2, "LAYER"},
                                         {0, "LAYER"},
                                         {2, "0"},
                                         {6, "CENTER2"},
                                         {0, "ENDTAB"},
                                         {0, "ENDSEC"}});
  auto loaded = LoadModern(tables + EntitiesFile({{0, "LINE"},
                                                  {6, "CENTER2"},
                                                  {48, "3"},
                                                  {0, "LINE"},
                                                  {0, "LINE"},
                                                  {6, "DASHED"},
                                                  {0, "LINE"},
                                                  {6, "BATTING"}}));
  const Drawing& d = loaded->drawing;
  ASSERT_EQ(d.LineCount(), 4);
  EXPECT_EQ(d.Lines[3].LineType, 0);
  EXPECT_EQ(d.Lines[0].LineType, Drawing::kFirstDashPattern + 1);  // the layer took pattern 0
  EXPECT_EQ(d.Lines[1].LineType, Drawing::kFirstDashPattern);      // by layer
  EXPECT_EQ(d.Lines[2].LineType, 1);                               // the legacy map's
  ASSERT_EQ(d.DashPatterns.size(), 2u);
  EXPECT_FLOAT_EQ(d.DashPatterns[1][0], 1.25f * 2 * 3);
}

TEST(ModernEntities, MeshesAndMultilinesDrawTheirEdgesAndDefinitionPointsStayOut) {
  // A MESH of two triangles sharing an edge: five edges, the shared one once.
  auto mesh = LoadModern(EntitiesFile(
      {{0, "MESH"}, {71, "2"}, {91, "0"}, {92, "4"}, {10, "0"}, {20, "0"}, {30, "0"}, {10, "1"}, {20, "0"},
       {30, "0"},   {10, "1"}, {20, "1"}, {30, "0"}, {10, "0"}, {20, "1"}, {30, "0"}, {93, "8"}, {90, "3"},
       {90, "0"},   {90, "1"}, {90, "2"}, {90, "3"}, {90, "0"}, {90, "2"}, {90, "3"}, {94, "0"}, {95, "0"}}));
  EXPECT_EQ(mesh->drawing.LineCount(), 5);
  // An MLINE of two elements (offsets +1 and -1 along the miters) over three vertices.
  testing::Pairs mline = {{0, "MLINE"}, {2, "STANDARD"}, {40, "1"}, {70, "0"}, {71, "1"},
                          {72, "3"},    {73, "2"},       {10, "0"}, {20, "0"}};
  for (const char* x : {"0", "10", "20"})
    mline.insert(mline.end(), {{11, x},
                               {21, "0"},
                               {31, "0"},
                               {12, "1"},
                               {22, "0"},
                               {32, "0"},
                               {13, "0"},
                               {23, "1"},
                               {33, "0"},
                               {74, "2"},
                               {41, "1"},
                               {41, "0"},
                               {75, "0"},
                               {74, "2"},
                               {41, "-1"},
                               {41, "0"},
                               {75, "0"}});
  auto lines = LoadModern(EntitiesFile(mline));
  const Drawing& m = lines->drawing;
  ASSERT_EQ(m.PolySegCount(), 4);
  EXPECT_EQ(m.PolySegs[0].Y1, 1);
  EXPECT_EQ(m.PolySegs[1].X2, 20);
  EXPECT_EQ(m.PolySegs[2].Y1, -1);
  // Points on Defpoints (a dimension's definition points) are not drawn; others are.
  auto points = LoadModern(EntitiesFile(
      {{0, "POINT"}, {8, "DEFPOINTS"}, {10, "1"}, {20, "1"}, {0, "POINT"}, {8, "0"}, {10, "2"}, {20, "2"}}));
  ASSERT_EQ(points->drawing.Points.size(), 1u);
  EXPECT_EQ(points->drawing.Points[0].X, 2);
}

// An IMAGE's file looked for as written, beside the drawing and in the folders given;
// each named in the load report, found or missing.
TEST(ModernImages, PicturesAreLookedForAndNamedInTheReport) {
  const std::string folder =
      std::filesystem::temp_directory_path() / ("dxfimport-images-" + std::to_string(getpid()));
  std::filesystem::create_directories(folder + "/extra");
  std::ofstream(folder + "/extra/plan.jpg") << "not really a picture";
  const std::string dxf =
      DxfText({{0, "SECTION"},  {2, "ENTITIES"}, {0, "IMAGE"},    {10, "1"},     {20, "2"},
               {11, "0.5"},     {21, "0"},       {12, "0"},       {22, "0.5"},   {13, "4"},
               {23, "2"},       {340, "7F"},     {0, "IMAGE"},    {340, "80"},   {0, "ENDSEC"},
               {0, "SECTION"},  {2, "OBJECTS"},  {0, "IMAGEDEF"}, {5, "7F"},     {1, "..\\scans\\plan.jpg"},
               {0, "IMAGEDEF"}, {5, "80"},       {1, "gone.png"}, {0, "ENDSEC"}, {0, "EOF"}});
  std::ofstream(folder + "/drawing.dxf") << dxf;
  auto loaded = LoadModernFile(folder + "/drawing.dxf", LoadOptions{.ImageFolders = {folder + "/extra"}});
  const Drawing& d = loaded->drawing;
  ASSERT_EQ(d.Images.size(), 2u);
  EXPECT_EQ(d.Images[0].Origin, (PointD{1, 2}));
  EXPECT_EQ(d.Images[0].Width, (PointD{2, 0}));
  EXPECT_EQ(d.Images[0].Height, (PointD{0, 1}));
  ASSERT_EQ(d.Pictures.size(), 2u);
  EXPECT_EQ(d.Pictures[0].Path, folder + "/extra/plan.jpg");
  EXPECT_EQ(d.Pictures[1].Path, "");
  std::vector<std::string> report;
  for (const ReportEntry& e : loaded->outcome.Report.Entries()) report.push_back(e.Kind);
  EXPECT_EQ(report,
            (std::vector<std::string>{"image found: ..\\scans\\plan.jpg", "image missing: gone.png"}));
  std::filesystem::remove_all(folder);
}

// An external reference pair that refers back: host.dxf draws b.dxf at (10, 0), b.dxf's
// own reference to host.dxf is a cycle and left out; a missing reference and a DWG one
// are named in the report and draw nothing.
TEST(ModernReferences, ReferencesAreDrawnWhereInsertedCyclesAndMissingOnesReported) {
  const std::string folder =
      std::filesystem::temp_directory_path() / ("dxfimport-xref-" + std::to_string(getpid()));
  std::filesystem::create_directories(folder + "/refs");
  auto reference = [](const char* name, const char* file) {
    return Pairs{{0, "BLOCK"}, {2, name}, {70, "4"}, {1, file}, {10, "0"}, {20, "0"}, {0, "ENDBLK"}};
  };
  auto drawing = [](const Pairs& blocks, const Pairs& entities, const Pairs& layers) {
    return DxfText({{0, "SECTION"}, {2, "TABLES"}, {0, "TABLE"}, {2, "LAYER"}}) + DxfText(layers) +
           DxfText({{0, "ENDTAB"}, {0, "ENDSEC"}, {0, "SECTION"}, {2, "BLOCKS"}}) + DxfText(blocks) +
           DxfText({{0, "ENDSEC"}}) + EntitiesFile(entities);
  };
  Pairs hostBlocks = reference("B", "..\\elsewhere\\b.dxf");
  for (const Pairs& more : {reference("GONE", "gone.dxf"), reference("CAD", "plan.dwg")})
    hostBlocks.insert(hostBlocks.end(), more.begin(), more.end());
  std::ofstream(folder + "/host.dxf") << drawing(
      hostBlocks,
      {{0, "INSERT"}, {2, "B"}, {10, "10"}, {20, "0"}, {0, "INSERT"}, {2, "GONE"}, {0, "INSERT"}, {2, "CAD"}},
      {{0, "LAYER"}, {2, "0"}});
  // b.dxf also holds a reference (at y 1) clipped to 0..2 x 0..2 of its block (XCLIP), a line
  // from 0 to 4.
  Pairs refBlocks = reference("HOST", "../host.dxf");
  refBlocks.insert(refBlocks.end(), {{0, "BLOCK"},
                                     {2, "TICK"},
                                     {10, "0"},
                                     {20, "0"},
                                     {0, "LINE"},
                                     {8, "0"},
                                     {10, "0"},
                                     {20, "0"},
                                     {11, "4"},
                                     {21, "0"},
                                     {0, "ENDBLK"}});
  std::string b = drawing(refBlocks,
                          {{0, "LINE"},
                           {8, "WALL"},
                           {10, "0"},
                           {20, "0"},
                           {11, "5"},
                           {21, "0"},
                           {0, "INSERT"},
                           {2, "HOST"},
                           {0, "INSERT"},
                           {102, "{ACAD_XDICTIONARY"},
                           {360, "D0"},
                           {102, "}"},
                           {2, "TICK"},
                           {10, "0"},
                           {20, "1"}},
                          {{0, "LAYER"}, {2, "WALL"}, {62, "3"}});
  b = WithObjects(b, ClipObjects("D0", "2", "2", "0"));
  std::ofstream(folder + "/refs/b.dxf") << b;
  // b.dxf is not where host.dxf says; it is found in the folder given.
  auto loaded = LoadModernFile(folder + "/host.dxf", LoadOptions{.XrefFolders = {folder + "/refs"}});
  const Drawing& d = loaded->drawing;
  ASSERT_EQ(d.LineCount(), 2);
  EXPECT_EQ(d.Lines[0].X1, 10);
  EXPECT_EQ(d.Lines[0].X2, 15);
  // The clipped line keeps its clip where the reference is inserted.
  ASSERT_EQ(d.Clips.size(), 1u);
  EXPECT_EQ(d.Clips[0].Loops, (std::vector<std::vector<PointD>>{{{10, 1}, {12, 1}, {12, 3}, {10, 3}}}));
  std::vector<std::pair<int32_t, int32_t>> seq;
  for (const SeqEntry& e : d.DrawSeq) seq.emplace_back(e.Kind, e.Index);
  EXPECT_EQ(seq, (std::vector<std::pair<int32_t, int32_t>>{
                     {kKindLine, 1}, {kKindClip, 1}, {kKindLine, 2}, {kKindClip, 0}}));
  EXPECT_EQ(d.Layers[std::size_t(d.Lines[0].Layer - 1)].Name, "B|WALL");
  EXPECT_EQ(d.Layers[std::size_t(d.Lines[0].Layer - 1)].Color, 0x00FF00);
  std::vector<std::string> report;
  for (const ReportEntry& e : loaded->outcome.Report.Entries()) report.push_back(e.Kind);
  EXPECT_EQ(report, (std::vector<std::string>{
                        "in B: external reference that refers back to itself, left out: ../host.dxf",
                        "in B: block reference drawn within its clip boundary (XCLIP)",
                        "external reference drawn: ..\\elsewhere\\b.dxf",
                        "external reference missing: gone.dxf",
                        "external reference is a DWG file, not drawn: plan.dwg",
                    }));
  std::filesystem::remove_all(folder);
}

// A MULTILEADER without saved graphics, from its context data: the leader from its
// arrowhead through a vertex to the landing and the dogleg, the closed filled arrowhead,
// the text at its place in the colour of the context (red), framed.
TEST(ModernMultiLeader, LeadersArrowheadsAndTextFromTheContextData) {
  auto loaded = LoadModern(EntitiesFile({{0, "MULTILEADER"},
                                         {8, "0"},
                                         {100, "AcDbMLeader"},
                                         {300, "CONTEXT_DATA{"},
                                         {40, "1"},
                                         {41, "2.5"},
                                         {140, "1.5"},
                                         {145, "0.5"},
                                         {290, "1"},
                                         {304, "Cable\\Pduct"},
                                         {12, "20"},
                                         {22, "12"},
                                         {13, "1"},
                                         {23, "0"},
                                         {171, "1"},
                                         {90, std::to_string(int32_t(0xC3000001))},
                                         {302, "LEADER{"},
                                         {290, "1"},
                                         {291, "1"},
                                         {10, "18"},
                                         {20, "10"},
                                         {11, "1"},
                                         {21, "0"},
                                         {40, "2"},
                                         {304, "LEADER_LINE{"},
                                         {10, "0"},
                                         {20, "0"},
                                         {10, "10"},
                                         {20, "10"},
                                         {305, "}"},
                                         {303, "}"},
                                         {301, "}"},
                                         {170, "1"},
                                         {291, "1"},
                                         {42, "0.18"},
                                         {172, "2"},
                                         {292, "1"}}));
  const Drawing& d = loaded->drawing;
  ASSERT_EQ(d.MTexts.size(), 1u);
  EXPECT_EQ(PlainText(d.MTexts[0].Content), "Cable\nduct");
  EXPECT_EQ(d.MTexts[0].X, 20);
  EXPECT_DOUBLE_EQ(d.MTexts[0].Height, 2.5);
  EXPECT_EQ(d.MTexts[0].Color, 0x0000FF);
  // (0, 0) -> (10, 10) -> (18, 10) -> the dogleg to (20, 10); then the frame's four sides.
  ASSERT_EQ(d.PolySegCount(), 3 + 4);
  EXPECT_EQ((PointD{d.PolySegs[2].X2, d.PolySegs[2].Y2}), (PointD{20, 10}));
  ASSERT_EQ(d.SolidCount(), 1);
  EXPECT_EQ((PointD{d.Solids[0].X1, d.Solids[0].Y1}), (PointD{0, 0}));  // the arrowhead's tip
  EXPECT_TRUE(loaded->outcome.Report.Clean());
}

// A MULTILEADER whose content is a block with an attribute: the block where the context
// data puts it, turned and scaled, and the attribute's definition with the value given.
TEST(ModernMultiLeader, BlockContentWithItsAttributes) {
  const std::string dxf =
      DxfText({{0, "SECTION"}, {2, "TABLES"}, {0, "TABLE"},  {2, "BLOCK_RECORD"}, {0, "BLOCK_RECORD"},
               {5, "3A"},      {2, "TAG"},    {0, "ENDTAB"}, {0, "ENDSEC"},       {0, "SECTION"},
               {2, "BLOCKS"},  {0, "BLOCK"},  {2, "TAG"},    {10, "0"},           {20, "0"},
               {0, "CIRCLE"},  {10, "0"},     {20, "0"},     {40, "1"},           {0, "ATTDEF"},
               {5, "2A"},      {10, "2"},     {20, "0"},     {40, "0.5"},         {1, ""},
               {2, "NUMBER"},  {70, "0"},     {0, "ENDBLK"}, {0, "ENDSEC"}}) +
      EntitiesFile({{0, "MULTILEADER"},
                    {8, "0"},
                    {330, "1F"},
                    {100, "AcDbMLeader"},
                    {300, "CONTEXT_DATA{"},
                    {40, "1"},
                    {140, "1"},
                    {290, "0"},
                    {296, "1"},
                    {341, "3A"},
                    {15, "10"},
                    {25, "5"},
                    {16, "2"},
                    {26, "2"},
                    {46, "0"},
                    {301, "}"},
                    {172, "1"},
                    {330, "2A"},
                    {177, "1"},
                    {44, "0"},
                    {302, "A-12"}});
  auto loaded = LoadModern(dxf);
  const Drawing& d = loaded->drawing;
  ASSERT_EQ(d.ArcCount(), 1);
  EXPECT_EQ(d.Arcs[0].CenterX, 10);
  EXPECT_EQ(d.Arcs[0].Radius, 2);
  ASSERT_EQ(d.TextCount(), 1);
  EXPECT_EQ(PlainText(d.Texts[0].Text), "A-12");
  EXPECT_EQ(d.Texts[0].X, 14);
  EXPECT_DOUBLE_EQ(d.Texts[0].Height, 1);
}

// A MULTILEADER that leaves its leader to its MLEADERSTYLE (which comes after it in the
// file): the style's arrow size and dogleg length are drawn.
TEST(ModernMultiLeader, ValuesTheEntityLeavesToItsStyle) {
  const std::string dxf = DxfText({{0, "SECTION"},
                                   {2, "ENTITIES"},
                                   {0, "MULTILEADER"},
                                   {8, "0"},
                                   {100, "AcDbMLeader"},
                                   {300, "CONTEXT_DATA{"},
                                   {40, "1"},
                                   {290, "0"},
                                   {302, "LEADER{"},
                                   {290, "1"},
                                   {291, "1"},
                                   {10, "10"},
                                   {20, "0"},
                                   {11, "1"},
                                   {21, "0"},
                                   {304, "LEADER_LINE{"},
                                   {10, "0"},
                                   {20, "0"},
                                   {305, "}"},
                                   {303, "}"},
                                   {301, "}"},
                                   {340, "5A"},
                                   {0, "ENDSEC"},
                                   {0, "SECTION"},
                                   {2, "OBJECTS"},
                                   {0, "MLEADERSTYLE"},
                                   {5, "5A"},
                                   {173, "1"},
                                   {291, "1"},
                                   {43, "4"},
                                   {44, "3"},
                                   {0, "ENDSEC"},
                                   {0, "EOF"}});
  auto loaded = LoadModern(dxf);
  const Drawing& d = loaded->drawing;
  ASSERT_EQ(d.PolySegCount(), 2);  // (0, 0) -> (10, 0) -> the dogleg to (14, 0)
  EXPECT_EQ((PointD{d.PolySegs[1].X2, d.PolySegs[1].Y2}), (PointD{14, 0}));
  ASSERT_EQ(d.SolidCount(), 1);
  EXPECT_DOUBLE_EQ(d.Solids[0].X2, 3);  // the arrowhead's back, the style's size from the tip
}

}  // namespace
}  // namespace dxfimport

namespace dxfimport {

// GEODATA: its definition in chunks with ^J for line ends; the EPSG code from a WKT's
// outermost AUTHORITY (not an inner one) or an XML alias; the map of a drawing in feet.
TEST(ModernGeoData, TheGeographicLocationOfModelSpace) {
  auto loaded = LoadModern(WithObjects(EntitiesFile({{0, "LINE"}, {8, "0"}, {11, "1"}}),
                                       {{0, "GEODATA"},
                                        {70, "2"},
                                        {10, "10"},
                                        {20, "0"},
                                        {11, "1000"},
                                        {21, "2000"},
                                        {40, "0.3048"},
                                        {12, "1"},
                                        {22, "0"},
                                        {303, "PROJCS[\"x\",GEOGCS[\"y\",AUTHORITY[\"EPSG\",\"4326\"]],^J"},
                                        {301, "AUTHORITY[\"EPSG\",\"32632\"]]"}}));
  const GeoData& geo = loaded->drawing.Geo;
  ASSERT_TRUE(geo.Present);
  EXPECT_NE(geo.Definition.find("\n"), std::string::npos);
  EXPECT_EQ(geo.EpsgCode(), 32632);
  // North along the drawing's +x: the drawing is turned a quarter counter-clockwise onto the map.
  const PointD p = geo.ToSystem().Apply({10, 1});
  EXPECT_NEAR(p.x, 1000 - 0.3048, 1e-9);  // the drawing's up is west
  EXPECT_NEAR(p.y, 2000, 1e-9);
  const PointD q = geo.ToSystem().Apply({11, 0});
  EXPECT_NEAR(q.x, 1000, 1e-9);
  EXPECT_NEAR(q.y, 2000 + 0.3048, 1e-9);
  EXPECT_EQ(EpsgCodeIn("PROJCS[\"x\",AUTHORITY[\"EPSG\",\"4326\"],UNIT[\"m\",1]]"), 0);
  EXPECT_EQ(EpsgCodeIn("<Alias id=\"2056\" type=\"CoordinateSystem\"><ObjectId>CH</ObjectId>"
                       "<Namespace>EPSG Code</Namespace></Alias>"),
            2056);
}

}  // namespace dxfimport
