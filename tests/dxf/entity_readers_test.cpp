#include <gtest/gtest.h>

#include "dxf/legacy/legacy_reader.h"
#include "dxf/model/text_codes.h"
#include "testing/dxf_fixture.h"

namespace dxfimport {
namespace {

using testing::EntitiesFile;
using testing::Load;

TEST(UnWindAngle, SubtractsWholeTurnsAndLeavesNegativesAlone) {
  float a = 725;
  EXPECT_EQ(UnWindAngle(a), 5);
  EXPECT_EQ(a, 5);
  float b = -90;
  EXPECT_EQ(UnWindAngle(b), -90);
  float c = 360;
  EXPECT_EQ(UnWindAngle(c), 0);
  float huge = 3e38f;  // would never finish by single-precision subtraction
  float unwound = UnWindAngle(huge);
  EXPECT_GE(unwound, 0);
  EXPECT_LT(unwound, 360);
}

TEST(DXFLine, MissingGroupsGiveBlackSolidOnLayerOne) {
  auto loaded = Load(EntitiesFile({{0, "LINE"}, {10, "1"}, {20, "2"}, {11, "3"}, {21, "4"}}));
  ASSERT_EQ(loaded->drawing.LineCount(), 1);
  const LineEntity& l = loaded->drawing.Lines[0];
  EXPECT_EQ(l.Color, 0);
  EXPECT_EQ(l.LineType, 0);
  EXPECT_EQ(l.Layer, 1);
  EXPECT_EQ(l.X1, 1);
  EXPECT_EQ(l.Y2, 4);
}

TEST(DXFCircle, CirclesAndArcsShareTheArcTable) {
  auto loaded = Load(EntitiesFile({{0, "CIRCLE"},
                                   {8, "0"},
                                   {10, "5"},
                                   {20, "6"},
                                   {40, "2"},
                                   {0, "ARC"},
                                   {6, "DASHED"},
                                   {10, "0"},
                                   {20, "0"},
                                   {40, "1"},
                                   {50, "450"},
                                   {51, "-30"}}));
  const Drawing& d = loaded->drawing;
  ASSERT_EQ(d.ArcCount(), 2);
  EXPECT_EQ(d.Arcs[0].StartAngle, 0);
  EXPECT_EQ(d.Arcs[0].EndAngle, 0);
  EXPECT_EQ(d.Arcs[1].StartAngle, 90);
  EXPECT_EQ(d.Arcs[1].EndAngle, -30);
  EXPECT_EQ(d.Arcs[1].LineType, 1);
  EXPECT_EQ(d.ExtMinX, -1);
  EXPECT_EQ(d.ExtMaxX, 7);
  EXPECT_EQ(d.ExtMaxY, 8);
}

TEST(DXFSolidAnd3DFace, CornerOrderAndEdges) {
  auto loaded =
      Load(EntitiesFile({{0, "SOLID"}, {10, "0"}, {20, "0"},     {11, "1"}, {21, "0"}, {12, "0"}, {22, "1"},
                         {13, "1"},    {23, "1"}, {0, "3DFACE"}, {62, "1"}, {10, "0"}, {20, "0"}, {30, "9"},
                         {11, "4"},    {21, "0"}, {12, "4"},     {22, "3"}, {13, "4"}, {23, "3"}}));
  const Drawing& d = loaded->drawing;
  ASSERT_EQ(d.SolidCount(), 1);
  const SolidEntity& s = d.Solids[0];
  EXPECT_EQ(s.X4, 1);  // stored 1, 2, 4, 3
  EXPECT_EQ(s.Y4, 1);
  EXPECT_EQ(s.X3, 0);
  // A triangle (corners 3 and 4 equal) still adds four lines, one of zero length.
  ASSERT_EQ(d.LineCount(), 4);
  EXPECT_EQ(d.SeqCount(), 5);
  EXPECT_EQ(d.Lines[2].X1, d.Lines[2].X2);
  EXPECT_EQ(d.Lines[2].Y1, d.Lines[2].Y2);
  EXPECT_EQ(d.Lines[3].X2, 0);
  EXPECT_EQ(d.Lines[3].Color, 0x0000FF);
}

TEST(ControlCodes, SpecialCharactersUnderlineAndQuotes) {
  EXPECT_EQ(ApplyControlCodes("45%%d").Text, "45\u00B0");
  EXPECT_EQ(ApplyControlCodes("%%c10 %%P1 %%x").Text, "\u00D810 \u00B11 ");
  EXPECT_EQ(ApplyControlCodes("end%%").Text, "end");
  ControlCodeResult title = ApplyControlCodes("%%uTitle");
  EXPECT_EQ(title.Text, "Title");
  EXPECT_TRUE(title.Underline);
  // The first three characters go, wherever the sequence stood.
  EXPECT_EQ(ApplyControlCodes("AB%%uC").Text, "%uC");
  EXPECT_EQ(ApplyControlCodes("%%%%dd").Text, "%dd");  // "%%%" goes, leaving "%dd"
  EXPECT_EQ(ReplaceQuote("say \"hi\""), "say ''hi''");
  std::string many;
  for (int i = 0; i < 200000; ++i) many += "%%u";
  EXPECT_TRUE(ApplyControlCodes(many).Underline);
}

TEST(DXFText, PositionByJustificationAndFittedRotation) {
  auto loaded = Load(EntitiesFile({
      {0, "TEXT"},
      {10, "1"},
      {20, "2"},
      {11, "5"},
      {21, "9"},
      {72, "4"},
      {1, "mid"},
      {40, "2.5"},
      {0, "TEXT"},
      {10, "1"},
      {20, "2"},
      {11, "5"},
      {21, "9"},
      {72, "2"},
      {1, "say \"x\""},
      {7, "romans"},
      {0, "TEXT"},
      {10, "2"},
      {20, "2"},
      {11, "1"},
      {21, "1"},
      {72, "5"},
      {1, "fit"},
      {50, "33"},
      {0, "TEXT"},
      {10, "1"},
      {20, "2"},
      {72, "9"},
      {1, std::string(150, 'z')},
  }));
  const Drawing& d = loaded->drawing;
  ASSERT_EQ(d.TextCount(), 4);
  EXPECT_EQ(d.Texts[0].X, 5);  // the X of 11 with the Y of 20
  EXPECT_EQ(d.Texts[0].Y, 2);
  EXPECT_EQ(d.Texts[0].FontName, "Arial");  // no style: every other style
  EXPECT_EQ(d.Texts[1].X, 5);
  EXPECT_EQ(d.Texts[1].Y, 9);
  EXPECT_EQ(d.Texts[1].Text, "say ''x''");
  EXPECT_EQ(d.Texts[1].FontFactor, 2.0f);
  // Right to left: atan gives 45 degrees, not 225.
  EXPECT_NEAR(d.Texts[2].Rotation, 45.0 * 3.14159265358979 / 3.14159, 1e-4);
  EXPECT_EQ(d.Texts[3].X, 0);
  EXPECT_EQ(d.Texts[3].Y, 0);
  EXPECT_EQ(d.Texts[3].Text.size(), 100u);
}

TEST(DXFAttrib, OnlyFlaglessAttributesOnTheInsertLayer) {
  auto loaded = Load(testing::DxfText({{0, "SECTION"},
                                       {2, "TABLES"},
                                       {0, "TABLE"},
                                       {2, "LAYER"},
                                       {0, "LAYER"},
                                       {2, "0"},
                                       {0, "LAYER"},
                                       {2, "NET"},
                                       {0, "ENDTAB"},
                                       {0, "ENDSEC"}}) +
                     EntitiesFile({{0, "INSERT"},
                                   {8, "NET"},
                                   {2, "UNKNOWN"},
                                   {66, "1"},
                                   {0, "ATTRIB"},
                                   {8, "0"},
                                   {10, "1"},
                                   {20, "1"},
                                   {1, "N-1"},
                                   {70, "0"},
                                   {0, "ATTRIB"},
                                   {8, "0"},
                                   {1, "hidden"},
                                   {70, "1"},
                                   {0, "SEQEND"}}));
  const Drawing& d = loaded->drawing;
  ASSERT_EQ(d.AttribCount(), 1);
  EXPECT_EQ(d.Attribs[0].Text.Text, "N-1");
  EXPECT_EQ(d.Attribs[0].Text.Layer, 2);
  EXPECT_EQ(d.DrawSeq.back().Kind, kKindAttrib);
}

}  // namespace
}  // namespace dxfimport
