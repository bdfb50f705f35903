#include <gtest/gtest.h>

#include "testing/dxf_fixture.h"

namespace dxfimport {
namespace {

using testing::DxfText;
using testing::Load;
using testing::Pairs;

// A layer table of 0 and WALLS, then a BLOCKS section, then the entities.
std::string Drawing3(const Pairs& blocks, const Pairs& entities) {
  Pairs head = {{0, "SECTION"}, {2, "TABLES"}, {0, "TABLE"},   {2, "LAYER"}, {0, "LAYER"},
                {2, "0"},       {0, "LAYER"},  {2, "WALLS"},   {0, "LAYER"}, {2, "NET"},
                {0, "ENDTAB"},  {0, "ENDSEC"}, {0, "SECTION"}, {2, "BLOCKS"}};
  Pairs mid = {{0, "ENDSEC"}, {0, "SECTION"}, {2, "ENTITIES"}};
  Pairs tail = {{0, "ENDSEC"}, {0, "EOF"}};
  return DxfText(head) + DxfText(blocks) + DxfText(mid) + DxfText(entities) + DxfText(tail);
}

// Block B, based at (10, 10): a line on layer 0 and a line on WALLS, an arc and a text.
const Pairs kBlockB = {
    {0, "BLOCK"}, {8, "0"},   {2, "B"},   {10, "10"},  {20, "10"},   {0, "LINE"}, {8, "0"},   {10, "10"},
    {20, "10"},   {11, "12"}, {21, "10"}, {0, "LINE"}, {8, "WALLS"}, {10, "10"},  {20, "10"}, {11, "10"},
    {21, "11"},   {0, "ARC"}, {8, "0"},   {10, "10"},  {20, "10"},   {40, "1"},   {50, "10"}, {51, "80"},
    {0, "TEXT"},  {8, "0"},   {10, "11"}, {20, "10"},  {40, "0.5"},  {1, "T"},    {50, "5"},  {0, "ENDBLK"}};

Pairs Insert(const char* name, Pairs extra) {
  Pairs p = {{0, "INSERT"}, {8, "NET"}, {2, name}};
  p.insert(p.end(), extra.begin(), extra.end());
  return p;
}

TEST(DXFInsert, PlacesTheBlockAtScaleOneAndSubstitutesLayerOne) {
  auto loaded = Load(Drawing3(kBlockB, Insert("B", {{10, "100"}, {20, "50"}})));
  const Drawing& d = loaded->drawing;
  ASSERT_EQ(d.LineCount(), 2);
  EXPECT_EQ(d.Lines[0].X1, 100);
  EXPECT_EQ(d.Lines[0].X2, 102);
  EXPECT_EQ(d.Lines[0].Y2, 50);
  EXPECT_EQ(d.Lines[0].Layer, 3);  // layer 0 (row 1) takes the insert's layer
  EXPECT_EQ(d.Lines[1].Layer, 2);  // any other layer is kept
  EXPECT_EQ(d.Texts[0].X, 101);
  EXPECT_EQ(d.SeqCount(), 4);
  EXPECT_EQ(d.BlockCount(), 1);
  EXPECT_EQ(d.Blocks[0].Content.DrawSeq.size(), 4u);
}

TEST(DXFInsert, ScalesMirrorsAndRotates) {
  auto scaled = Load(Drawing3(kBlockB, Insert("B", {{41, "2"}, {42, "0"}})));
  EXPECT_EQ(scaled->drawing.Lines[0].X2, 4);  // 41 = 2 and 42 = 0: scale 2, 1
  EXPECT_EQ(scaled->drawing.Lines[1].Y2, 1);
  EXPECT_EQ(scaled->drawing.Arcs[0].Radius, 2);
  EXPECT_EQ(scaled->drawing.Texts[0].Height, 1);
  auto mirrored = Load(Drawing3(kBlockB, Insert("B", {{41, "-1"}, {42, "-1"}})));
  const ArcEntity& arc = mirrored->drawing.Arcs[0];
  EXPECT_EQ(arc.Radius, 1);
  EXPECT_EQ(arc.StartAngle, -170);  // x: 180 - 80 .. 180 - 10, then y: reflected
  EXPECT_EQ(arc.EndAngle, -100);
  EXPECT_EQ(mirrored->drawing.Lines[0].X2, -2);
  EXPECT_EQ(mirrored->drawing.Texts[0].Height, -0.5f);
  auto turned = Load(Drawing3(kBlockB, Insert("B", {{50, "90"}})));
  const Drawing& t = turned->drawing;
  EXPECT_NEAR(t.Lines[0].X2, 0, 1e-5);
  EXPECT_NEAR(t.Lines[0].Y2, 2, 1e-5);
  EXPECT_NE(t.Lines[0].X2, 0);  // turned through 3.14159, not pi
  EXPECT_EQ(t.Arcs[0].StartAngle, 100);
  EXPECT_EQ(t.Texts[0].Rotation, 95);
}

TEST(DXFInsert, EveryInsertAddsItsOwnCopies) {
  Pairs three = Insert("B", {});
  Pairs more = three;
  more.insert(more.end(), three.begin(), three.end());
  more.insert(more.end(), three.begin(), three.end());
  auto loaded = Load(Drawing3(kBlockB, more));
  EXPECT_EQ(loaded->drawing.LineCount(), 6);
  EXPECT_EQ(loaded->drawing.SeqCount(), 12);
}

TEST(DXFInsert, NestedAndPendingInsertsResolveIntoTheirContainer) {
  // OUTER inserts B (known) and LATER (defined after OUTER: pending until ENTITIES).
  Pairs blocks = kBlockB;
  Pairs outer = {{0, "BLOCK"}, {2, "OUTER"}, {10, "1"}, {20, "1"}};
  Pairs nestedB = Insert("B", {{10, "1"}, {20, "1"}});
  Pairs pending = Insert("LATER", {{10, "5"}, {20, "0"}});
  Pairs later = {{0, "ENDBLK"}, {0, "BLOCK"}, {2, "LATER"}, {0, "CIRCLE"},
                 {8, "WALLS"},  {40, "1"},    {0, "ENDBLK"}};
  for (const Pairs* p : {&outer, &nestedB, &pending, &later})
    blocks.insert(blocks.end(), p->begin(), p->end());
  auto loaded = Load(Drawing3(blocks, Insert("OUTER", {{10, "100"}, {20, "100"}})));
  const Drawing& d = loaded->drawing;
  ASSERT_EQ(d.PendingInsertCount(), 1);
  EXPECT_EQ(d.Blocks[1].Content.DrawSeq.size(), 5u);  // four of B, one circle of LATER
  EXPECT_EQ(d.LineCount(), 2);
  EXPECT_EQ(d.Lines[0].X1, 100);  // B at (1, 1) relative to OUTER's base (1, 1)
  ASSERT_EQ(d.ArcCount(), 2);
  // A pending insert keeps its point as written, without the container's base.
  EXPECT_EQ(d.Arcs[1].CenterX, 105);
  EXPECT_EQ(d.Arcs[1].CenterY, 100);
}

TEST(DXFInsert, ABlockThatInsertsItselfIsBounded) {
  Pairs blocks = {{0, "BLOCK"}, {2, "SELF"}, {0, "LINE"}, {11, "1"}};
  for (int i = 0; i < 40; ++i) {
    Pairs self = Insert("SELF", {});
    blocks.insert(blocks.end(), self.begin(), self.end());
  }
  blocks.push_back({0, "ENDBLK"});
  auto loaded = Load(Drawing3(blocks, Insert("SELF", {})), 100000);
  ASSERT_EQ(loaded->capture.messages.messages().size(), 1u);
  EXPECT_NE(loaded->capture.messages.messages()[0].text.find("Error 7: Out of memory"), std::string::npos);
  EXPECT_FALSE(loaded->outcome.Complete);
}

TEST(DXFInsert, ScaleBeyondTheSingleRangeIsReported) {
  auto loaded = Load(Drawing3(kBlockB, Insert("B", {{41, "3e38"}, {42, "3e38"}})));
  ASSERT_FALSE(loaded->capture.messages.messages().empty());
  EXPECT_NE(loaded->capture.messages.messages()[0].text.find("Overflow"), std::string::npos);
}

TEST(DXFDimension, DrawsLinesAndTextsOfItsBlockOrLogsAMissingOne) {
  Pairs dimBlock = {{0, "BLOCK"}, {2, "*D1"}, {10, "0"},  {20, "0"},    {0, "LINE"},
                    {8, "0"},     {10, "0"},  {20, "-1"}, {11, "20"},   {21, "-1"},
                    {0, "SOLID"}, {10, "0"},  {20, "-1"}, {11, "1"},    {21, "-1"},
                    {0, "TEXT"},  {10, "10"}, {20, "-1"}, {1, "20.00"}, {0, "ENDBLK"}};
  auto loaded = Load(Drawing3(
      dimBlock, {{0, "DIMENSION"}, {8, "WALLS"}, {2, "*D1"}, {0, "DIMENSION"}, {8, "WALLS"}, {2, "*D9 "}}));
  const Drawing& d = loaded->drawing;
  EXPECT_EQ(d.LineCount(), 1);
  EXPECT_EQ(d.TextCount(), 1);
  EXPECT_EQ(d.SolidCount(), 0);
  EXPECT_EQ(d.Lines[0].Layer, 2);
  EXPECT_EQ(d.Lines[0].X2, 20);
  EXPECT_TRUE(loaded->capture.log.Contains(
      "*D9 has been referenced in the DXF file but a definition of this block was not found in the header."));
  EXPECT_TRUE(loaded->outcome.Complete);
}

TEST(Blocks, PolylinesInsideBlocksInsertStraight) {
  Pairs block = {{0, "BLOCK"}, {2, "P"},      {0, "POLYLINE"}, {70, "0"},     {0, "VERTEX"},
                 {10, "0"},    {20, "0"},     {42, "1"},       {0, "VERTEX"}, {10, "2"},
                 {20, "0"},    {0, "SEQEND"}, {0, "ENDBLK"}};
  auto loaded = Load(Drawing3(block, Insert("P", {{41, "-2"}})));
  ASSERT_EQ(loaded->drawing.PolySegCount(), 1);
  EXPECT_EQ(loaded->drawing.PolySegs[0].Bulge, 0);
  EXPECT_EQ(loaded->drawing.PolySegs[0].X2, -4);
}

}  // namespace
}  // namespace dxfimport
