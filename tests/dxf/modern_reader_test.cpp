#include <gtest/gtest.h>

#include "dxf/model/mtext.h"
#include "dxf/reader.h"
#include "testing/dxf_fixture.h"

namespace dxfimport {
namespace {

using testing::DxfText;
using testing::EntitiesFile;
using testing::LoadModern;
using testing::Pairs;

std::string WithLayers(const Pairs& layers, const Pairs& entities) {
  Pairs tables = {{0, "SECTION"}, {2, "TABLES"}, {0, "TABLE"}, {2, "LAYER"}};
  tables.insert(tables.end(), layers.begin(), layers.end());
  tables.insert(tables.end(), {{0, "ENDTAB"}, {0, "ENDSEC"}});
  return DxfText(tables) + EntitiesFile(entities);
}

const Pairs kModernLine = {{0, "LINE"},       {5, "2A"},
                           {330, "1F"},       {100, "AcDbEntity"},
                           {8, "0"},          {100, "AcDbLine"},
                           {10, "1"},         {20, "2"},
                           {30, "0"},         {11, "3"},
                           {21, "4"},         {31, "0"},
                           {1001, "APP"},     {1000, "extended data"},
                           {999, "a comment"}};

TEST(ModernProfile, PassesOverHighGroupCodesCommentsAndExtendedData) {
  auto modern = LoadModern(EntitiesFile(kModernLine));
  EXPECT_TRUE(modern->outcome.Complete);
  ASSERT_EQ(modern->drawing.LineCount(), 1);
  EXPECT_EQ(modern->drawing.Lines[0].X2, 3);
  EXPECT_TRUE(modern->capture.messages.messages().empty());
  auto legacy = testing::Load(EntitiesFile(kModernLine));
  EXPECT_FALSE(legacy->outcome.Complete);  // the legacy rules stop at code 330
}

TEST(ModernProfile, OnlyTheValueAfterCodeZeroNamesAnEntity) {
  auto loaded = LoadModern(WithLayers({{0, "LAYER"}, {2, "LINE"}}, {{0, "TEXT"},
                                                                    {8, "LINE"},
                                                                    {1, "LINE"},
                                                                    {10, "1"},
                                                                    {20, "1"},
                                                                    {0, "TEXT"},
                                                                    {1, "ENTITIES"},
                                                                    {0, "  LINE  "},
                                                                    {10, "5"},
                                                                    {11, "6"}}));
  const Drawing& d = loaded->drawing;
  EXPECT_EQ(d.LayerCount(), 2);  // "LINE", and "0" that the table lacks, added for the entities on it
  EXPECT_EQ(d.TextCount(), 2);
  ASSERT_EQ(d.LineCount(), 1);  // the trimmed name counts
  EXPECT_EQ(d.Lines[0].X1, 5);
}

TEST(ModernProfile, ResolvesTrueColoursByLayerByBlockAndLayersThatAreOff) {
  Pairs layers = {{0, "LAYER"}, {2, "0"},     {62, "7"},   {0, "LAYER"}, {2, "OFF"},
                  {62, "-3"},   {0, "LAYER"}, {2, "TRUE"}, {62, "1"},    {420, "65280"}};
  Pairs blocks = {{0, "SECTION"}, {2, "BLOCKS"}, {0, "BLOCK"},  {2, "B"},     {0, "LINE"},
                  {8, "0"},       {62, "0"},     {0, "ENDBLK"}, {0, "ENDSEC"}};
  Pairs entities = {{0, "LINE"},   {8, "0"},               // by layer: 0
                    {0, "LINE"},   {8, "0"}, {62, "256"},  // by layer: 0
                    {0, "LINE"},   {8, "0"}, {62, "7"},    // the foreground colour
                    {0, "LINE"},   {8, "0"}, {62, "0"},    // by block at the top: the foreground
                    {0, "LINE"},   {8, "0"}, {62, "1"},   {420, "16711680"},  // true red wins
                    {0, "INSERT"}, {8, "0"}, {2, "B"},    {62, "3"}};         // its line by block: green
  std::string text = DxfText({{0, "SECTION"}, {2, "TABLES"}, {0, "TABLE"}, {2, "LAYER"}}) + DxfText(layers) +
                     DxfText({{0, "ENDTAB"}, {0, "ENDSEC"}}) + DxfText(blocks) + EntitiesFile(entities);
  auto loaded = LoadModern(text);
  const Drawing& d = loaded->drawing;
  ASSERT_EQ(d.LineCount(), 6);
  EXPECT_EQ(d.Lines[0].Color, 0);
  EXPECT_EQ(d.Lines[1].Color, 0);
  EXPECT_EQ(d.Lines[2].Color, kForeground);
  EXPECT_EQ(d.Lines[3].Color, kForeground);
  EXPECT_EQ(d.Lines[4].Color, 0x0000FF);
  EXPECT_EQ(d.Lines[5].Color, 0x00FF00);
  EXPECT_EQ(d.Layers[0].Color, kForeground);
  EXPECT_EQ(d.Layers[1].IsOn, 0);
  EXPECT_EQ(d.Layers[1].Color, 0x00FF00);
  EXPECT_EQ(d.Layers[2].Color, 0x00FF00);
}

TEST(ModernProfile, LwPolylinesCarryBulgesWidthAndTheClosingSegment) {
  auto loaded = LoadModern(EntitiesFile({{0, "LWPOLYLINE"},
                                         {8, "0"},
                                         {90, "3"},
                                         {70, "1"},
                                         {43, "0.5"},
                                         {10, "0"},
                                         {20, "0"},
                                         {10, "2"},
                                         {20, "0"},
                                         {42, "1"},
                                         {10, "2"},
                                         {20, "2"},
                                         {42, "0.25"}}));
  const Drawing& d = loaded->drawing;
  ASSERT_EQ(d.PolySegCount(), 3);
  EXPECT_EQ(d.PolySegs[0].Bulge, 0);
  EXPECT_EQ(d.PolySegs[1].Bulge, 1);
  EXPECT_EQ(d.PolySegs[2].X1, 2);  // closing: from the last vertex back to the first
  EXPECT_EQ(d.PolySegs[2].X2, 0);
  EXPECT_EQ(d.PolySegs[2].Bulge, 0.25f);
  EXPECT_EQ(d.PolySegs[2].Width, 0.5f);
}

TEST(ModernProfile, ADrawingWithoutALayerTableGetsLayerZero) {
  auto loaded = LoadModern(EntitiesFile(kModernLine));
  ASSERT_EQ(loaded->drawing.LayerCount(), 1);
  EXPECT_EQ(loaded->drawing.Layers[0].Name, "0");
  EXPECT_EQ(loaded->drawing.LayerState(loaded->drawing.Lines[0].Layer), -1);
}

TEST(ModernProfile, PaperSpaceIsDrawnOnlyWhenModelSpaceIsEmptyOrALayoutIsAsked) {
  Pairs blocks = {{0, "SECTION"}, {2, "BLOCKS"}, {0, "BLOCK"},  {2, "*Paper_Space"},
                  {0, "LINE"},    {10, "9"},     {0, "ENDBLK"}, {0, "ENDSEC"}};
  Pairs paper = {{0, "LINE"},   {67, "1"}, {10, "50"},    {0, "POLYLINE"}, {67, "1"},
                 {0, "VERTEX"}, {10, "1"}, {0, "VERTEX"}, {10, "2"},       {0, "SEQEND"}};
  Pairs model = {{0, "LINE"}, {10, "1"}, {11, "2"}};
  Pairs both = paper;
  both.insert(both.end(), model.begin(), model.end());
  auto modelFirst = LoadModern(DxfText(blocks) + EntitiesFile(both));
  EXPECT_EQ(modelFirst->drawing.LineCount(), 1);
  EXPECT_EQ(modelFirst->drawing.Lines[0].X2, 2);
  EXPECT_EQ(modelFirst->drawing.PolySegCount(), 0);
  EXPECT_EQ(modelFirst->outcome.Layout, "");
  EXPECT_EQ(modelFirst->drawing.Blocks[0].Content.DrawSeq.size(), 3u);  // the block's line, then ENTITIES'

  auto paperOnly = LoadModern(DxfText(blocks) + EntitiesFile(paper));
  EXPECT_EQ(paperOnly->outcome.Layout, "*Paper_Space");
  EXPECT_EQ(paperOnly->drawing.LineCount(), 2);
  EXPECT_EQ(paperOnly->drawing.PolySegCount(), 1);
}

TEST(ModernProfile, ExtentsHoldWhatIsDrawnWithAMarginAndTheHeaderOnlyForAnEmptyDrawing) {
  auto header = [](const char* min, const char* max) {
    return DxfText({{0, "SECTION"},
                    {2, "HEADER"},
                    {9, "$EXTMIN"},
                    {10, min},
                    {20, min},
                    {9, "$EXTMAX"},
                    {10, max},
                    {20, max},
                    {0, "ENDSEC"}});
  };
  std::string body = EntitiesFile({{0, "LINE"},
                                   {10, "1"},
                                   {20, "2"},
                                   {11, "3"},
                                   {21, "4"},
                                   {0, "CIRCLE"},
                                   {10, "10"},
                                   {20, "10"},
                                   {40, "1"}});
  for (const std::string& head : {std::string(), header("1e20", "-1e20"), header("-100", "100")}) {
    auto loaded = LoadModern(head + body);
    EXPECT_DOUBLE_EQ(loaded->drawing.ExtMinX, 0.8);  // 1 less 2 % of the span of 10
    EXPECT_DOUBLE_EQ(loaded->drawing.ExtMaxX, 11.2);
    EXPECT_DOUBLE_EQ(loaded->drawing.ExtMinY, 1.8);
    EXPECT_DOUBLE_EQ(loaded->drawing.ExtMaxY, 11.2);
  }
  auto empty = LoadModern(header("-100", "100") + EntitiesFile({}));
  EXPECT_EQ(empty->drawing.ExtMinX, -100);
  EXPECT_EQ(empty->drawing.ExtMaxY, 100);
}

TEST(ModernProfile, SelfInsertsAndDeepNestingAreLoggedAndSkipped) {
  Pairs blocks = {{0, "SECTION"}, {2, "BLOCKS"}, {0, "BLOCK"}, {2, "SELF"},  {0, "LINE"},
                  {11, "1"},      {0, "INSERT"}, {2, "SELF"},  {0, "ENDBLK"}};
  blocks.insert(blocks.end(), {{0, "BLOCK"}, {2, "L0"}, {0, "LINE"}, {11, "1"}, {0, "ENDBLK"}});
  for (int i = 1; i <= 34; ++i)
    blocks.insert(blocks.end(), {{0, "BLOCK"},
                                 {2, "L" + std::to_string(i)},
                                 {0, "INSERT"},
                                 {2, "L" + std::to_string(i - 1)},
                                 {0, "ENDBLK"}});
  blocks.push_back({0, "ENDSEC"});
  auto loaded =
      LoadModern(DxfText(blocks) + EntitiesFile({{0, "INSERT"}, {2, "SELF"}, {0, "INSERT"}, {2, "L34"}}));
  EXPECT_TRUE(loaded->outcome.Complete);
  EXPECT_TRUE(loaded->capture.log.Contains("Block SELF inserts itself; the insert is skipped."));
  EXPECT_TRUE(
      loaded->capture.log.Contains("Block L34 is nested more than 32 levels deep; the insert is skipped."));
  EXPECT_EQ(loaded->drawing.LineCount(), 1);                         // SELF once; L34 not at all
  EXPECT_EQ(loaded->drawing.Blocks[33].Content.DrawSeq.size(), 1u);  // L32 holds its insert of L31
}

TEST(ModernProfile, MinsertPlacesRowsAndColumns) {
  Pairs blocks = {{0, "SECTION"}, {2, "BLOCKS"}, {0, "BLOCK"},  {2, "B"},
                  {0, "LINE"},    {11, "1"},     {0, "ENDBLK"}, {0, "ENDSEC"}};
  auto loaded = LoadModern(
      DxfText(blocks) +
      EntitiesFile(
          {{0, "INSERT"}, {2, "B"}, {10, "100"}, {20, "0"}, {70, "3"}, {71, "2"}, {44, "10"}, {45, "20"}}));
  const Drawing& d = loaded->drawing;
  ASSERT_EQ(d.LineCount(), 6);
  EXPECT_EQ(d.Lines[2].X1, 120);
  EXPECT_EQ(d.Lines[5].Y1, 20);
}

TEST(ModernProfile, AttributesShowUnlessInvisible) {
  auto loaded = LoadModern(EntitiesFile({{0, "INSERT"},
                                         {2, "NONE"},
                                         {66, "1"},
                                         {0, "ATTRIB"},
                                         {1, "preset"},
                                         {70, "8"},
                                         {0, "ATTRIB"},
                                         {1, "hidden"},
                                         {70, "1"},
                                         {0, "SEQEND"}}));
  ASSERT_EQ(loaded->drawing.AttribCount(), 1);
  EXPECT_EQ(loaded->drawing.Attribs[0].Text.Text, "preset");
}

TEST(ModernProfile, LayerReferencesAreTrimmedAndCutLikeTheLayerNames) {
  auto loaded =
      LoadModern(WithLayers({{0, "LAYER"}, {2, "0"}, {0, "LAYER"}, {2, "NETWORK CABLES OF FLOOR 1"}},
                            {{0, "LINE"}, {8, " NETWORK CABLES OF FLOOR 1 "}}));
  ASSERT_EQ(loaded->drawing.LineCount(), 1);
  EXPECT_EQ(loaded->drawing.Lines[0].Layer, 2);
}

TEST(ModernProfile, DecodesCodePagesUtf8AndEscapes) {
  auto header = [](const char* version, const char* codepage) {
    return DxfText({{0, "SECTION"},
                    {2, "HEADER"},
                    {9, "$ACADVER"},
                    {1, version},
                    {9, "$DWGCODEPAGE"},
                    {3, codepage},
                    {0, "ENDSEC"}});
  };
  // "図面" in Shift-JIS, in UTF-8, and as escapes.
  const std::string sjis = "\x90\x7D\x96\xCA", utf8 = "\u56F3\u9762";
  auto japanese = LoadModern(header("AC1015", "ANSI_932") + EntitiesFile({{0, "TEXT"}, {1, sjis}}));
  EXPECT_EQ(PlainText(japanese->drawing.Texts[0].Text), utf8);
  auto unicode = LoadModern(header("AC1021", "ANSI_1252") + EntitiesFile({{0, "TEXT"}, {1, utf8}}));
  EXPECT_EQ(PlainText(unicode->drawing.Texts[0].Text), utf8);
  auto wrongHeader = LoadModern(header("AC1015", "ANSI_1252") + EntitiesFile({{0, "TEXT"}, {1, utf8}}));
  EXPECT_EQ(PlainText(wrongHeader->drawing.Texts[0].Text), utf8);
  auto cyrillic = LoadModern(header("AC1015", "ANSI_1251") + EntitiesFile({{0, "TEXT"}, {1, "\xCF\xF0"}}));
  EXPECT_EQ(PlainText(cyrillic->drawing.Texts[0].Text), "\u041F\u0440");
  auto escapes = LoadModern(EntitiesFile({{0, "TEXT"}, {1, "\\U+56F3\\M+196CA x\\U+zz"}}));
  EXPECT_EQ(PlainText(escapes->drawing.Texts[0].Text), utf8 + " x\\U+zz");
}

TEST(BothProfiles, LoadTheSampleDrawingCompletely) {
  // The modern profile draws the dimension's arrowheads too, and places the chair that a
  // desk inserts before the chair is defined relative to the desk's base point.
  for (ReadingProfile profile : {ReadingProfile::Legacy, ReadingProfile::Modern}) {
    testing::Capture capture;
    Drawing d;
    DXFReader reader(d, profile);
    ASSERT_TRUE(reader.LoadDXF(testing::SamplePath()));
    EXPECT_TRUE(reader.outcome().Complete);
    EXPECT_EQ(d.SeqCount(), profile == ReadingProfile::Legacy ? 89 : 91);
    EXPECT_EQ(d.PolySegCount(), 25);
    EXPECT_TRUE(capture.messages.messages().empty());
  }
}

}  // namespace
}  // namespace dxfimport
