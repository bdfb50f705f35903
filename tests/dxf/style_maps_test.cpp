#include "dxf/model/style_maps.h"

#include <gtest/gtest.h>

namespace dxfimport {
namespace {

TEST(ColorMap, FollowsTheColourTableInOrder) {
  struct Case {
    int16_t number;
    int32_t rgb;
  };
  const Case cases[] = {
      {1, 0x0000FF},   {10, 0x0000FF},  {39, 0x0000FF},  {2, 0x00FFFF}, {59, 0x00FFFF},  {3, 0x00FF00},
      {129, 0x00FF00}, {4, 0xFFFF00},   {149, 0xFFFF00}, {5, 0x800000}, {189, 0x800000}, {6, 0xFF00FF},
      {229, 0xFF00FF}, {0, 0},          {7, 0},          {8, 0x404040}, {9, 0x404040},   {250, 0x808080},
      {252, 0xC0C0C0}, {253, 0xE0E0E0}, {255, 0xFFFFFF}, {-7, 0},       {230, 0},        {251, 0},
      {254, 0},        {256, 0},
  };
  for (const Case& c : cases) EXPECT_EQ(ColorMap(c.number), c.rgb) << c.number;
}

TEST(LineTypeMap, ComparesExactlyAndDefaultsToSolid) {
  EXPECT_EQ(LineTypeMap("CONTINUOUS"), 0);
  EXPECT_EQ(LineTypeMap("DASHEDX2"), 1);
  EXPECT_EQ(LineTypeMap("DOT2"), 2);
  EXPECT_EQ(LineTypeMap("DASHDOT"), 3);
  EXPECT_EQ(LineTypeMap("PHANTOMX2"), 4);
  EXPECT_EQ(LineTypeMap("dashed"), 0);
  EXPECT_EQ(LineTypeMap("DASHED "), 0);
  EXPECT_EQ(LineTypeMap("BYLAYER"), 0);
  EXPECT_EQ(LineTypeMap(""), 0);
}

TEST(FontNameMap, TakesTheStyleUpperCasedAndTrimmed) {
  FontChoice f = FontNameMap("  romans ");
  EXPECT_EQ(f.Face, "Arial");
  EXPECT_EQ(f.Factor, 2.0f);
  EXPECT_EQ(FontNameMap("Standard").Face, "Courier New");
  EXPECT_EQ(FontNameMap("CKSTANDARD").Face, "Arial Narrow");
  EXPECT_FLOAT_EQ(FontNameMap("CKSTANDARD").Factor, 1.3f);
  EXPECT_FLOAT_EQ(FontNameMap("simplex").Factor, 1.2f);
  EXPECT_FLOAT_EQ(FontNameMap("MAP").Factor, 1.5f);
  EXPECT_FLOAT_EQ(FontNameMap("whatever").Factor, 1.5f);
}

TEST(BitFlag, ReadsBitsZeroToEightAndEverythingFrom512) {
  EXPECT_TRUE(BitFlag(1, 0));
  EXPECT_FALSE(BitFlag(4, 0));
  EXPECT_TRUE(BitFlag(16, 4));
  EXPECT_TRUE(BitFlag(17, 4));
  EXPECT_FALSE(BitFlag(15, 4));
  EXPECT_TRUE(BitFlag(256, 8));
  EXPECT_FALSE(BitFlag(0, 0));
  EXPECT_FALSE(BitFlag(-1, 0));
  // 512 is never reduced below 256, so every low bit reads as set.
  for (int16_t bit = 0; bit <= 8; ++bit) EXPECT_TRUE(BitFlag(512, bit)) << bit;
}

}  // namespace
}  // namespace dxfimport
