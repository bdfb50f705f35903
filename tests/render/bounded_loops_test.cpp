// Inputs that once kept a loop of the modern profile running without end, each as a small
// drawing written here: every one must load and draw, and keep what it can.
#include <gtest/gtest.h>

#include <QRect>
#include <cmath>

#include "dxf/model/geometry.h"
#include "dxf/model/mtext.h"
#include "render/modern_render_fixture.h"

namespace dxfimport {
namespace {

using testing::ModernRender;
using testing::Pairs;

TEST(BoundedLoops, MTextInlineCodeSlipsEndAndKeepTheirText) {
  struct Case {
    const char* content;
    const char* plain;
  };
  const Case cases[] = {
      {"TL\\ptower", "TL"},  // \p takes the rest as its properties
      {"\\pt", ""},
      {"\\pxi-3,l", ""},
      {"{\\H", ""},
      {"\\S1^", "1 "},
      {"{\\f", ""},
      {"A\\pxt4,x,c8,r12;B", "AB"},
      {"\\H1e400x;big", "big"},
      {"\\W1e400;\\T-5;\\Q1e20;wide", "wide"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.content);
    EXPECT_EQ(PlainText(c.content), c.plain);
  }
  // Tab stops after letters that are no stops, and heights held within their range.
  const auto tabs = ParseMText("\\pxt4,x,c8;A", 1);
  ASSERT_EQ(tabs.size(), 1u);
  EXPECT_EQ(tabs[0].tabs, (std::vector<double>{4, 8}));
  const auto big = ParseMText("\\H1e400x;A{\\H1e-30x;B}", 1);
  ASSERT_EQ(big[0].pieces.size(), 2u);
  EXPECT_LE(big[0].pieces[0].format.height, 1e4);
  EXPECT_GT(big[0].pieces[1].format.height, 0);
}

TEST(BoundedLoops, AnglesOfAnySizeGiveASweepWithinOneTurn) {
  struct Case {
    double start, end, sweep;
  };
  const Case cases[] = {
      {0, M_PI / 2, M_PI / 2},  {-M_PI / 2, 0, M_PI / 2}, {1, 1, 2 * M_PI},
      {0, 4 * M_PI + 0.5, 0.5}, {3, 1, 2 * M_PI - 2},     {NAN, 1, 2 * M_PI},
      {1e300, -1e300, -1},      {1e20, 0.5, -1},          {0, INFINITY, 2 * M_PI},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(::testing::Message() << c.start << " to " << c.end);
    const Sweep s = SweepOf(c.start, c.end);
    EXPECT_GE(s.start, 0);
    EXPECT_LT(s.start, 2 * M_PI);
    EXPECT_GT(s.end - s.start, 0);
    EXPECT_LE(s.end - s.start, 2 * M_PI + 1e-12);
    if (c.sweep > 0) {
      EXPECT_NEAR(s.end - s.start, c.sweep, 1e-9);
    }
  }
}

TEST(BoundedLoops, HugeAnglesRadiiAndLengthsDraw) {
  struct Case {
    const char* name;
    Pairs entities;
    Pairs lineTypes;
    QRect area;  // where the ink is counted
    int least, most;
  };
  const Pairs dashed = {{0, "LTYPE"}, {2, "DASHED"}, {73, "2"}, {49, "4"}, {49, "-2"}};
  const Case cases[] = {
      // A direction like any other.
      {"an arc that starts at 1e20 degrees",
       {{0, "ARC"}, {10, "50"}, {20, "50"}, {40, "30"}, {50, "1e20"}, {51, "30"}},
       {},
       {0, 0, 100, 100},
       21,
       10000},
      // The circle lies far outside; the line across the view shows.
      {"a circle of radius 1e300 beside a line",
       {{0, "CIRCLE"},
        {10, "50"},
        {20, "50"},
        {40, "1e300"},
        {0, "LINE"},
        {10, "10"},
        {20, "50"},
        {11, "90"},
        {21, "50"}},
       {},
       {0, 0, 100, 100},
       70,
       300},
      // Dashed, not solid, however far its ends lie.
      {"a dashed line 1e20 long across the view",
       {{0, "LINE"}, {6, "DASHED"}, {10, "-1e20"}, {20, "50"}, {11, "1e20"}, {21, "50"}},
       dashed,
       {0, 50, 100, 1},
       31,
       89},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    testing::RenderSetup setup;
    setup.lineTypes = c.lineTypes;
    ModernRender render(c.entities, setup);
    EXPECT_TRUE(render.drawn());
    const int inked = render.InkedIn(c.area.left(), c.area.top(), c.area.right() + 1, c.area.bottom() + 1);
    EXPECT_GE(inked, c.least);
    EXPECT_LE(inked, c.most);
  }
}

TEST(BoundedLoops, PatternLinesFarFromTheirBaseDraw) {
  // Pattern lines whose base point is 1e17 away: their numbers along the offset are
  // beyond where adding one to a double changes it.
  const Pairs hatch = {{0, "HATCH"}, {70, "0"},  {91, "1"},  {92, "2"},  {72, "0"},  {73, "1"},  {93, "4"},
                       {10, "10"},   {20, "10"}, {10, "90"}, {20, "10"}, {10, "90"}, {20, "90"}, {10, "10"},
                       {20, "90"},   {97, "0"},  {75, "0"},  {76, "1"},  {78, "1"},  {53, "0"},  {43, "0"},
                       {44, "1e17"}, {45, "0"},  {46, "5"},  {79, "2"},  {49, "3"},  {49, "-1"}};
  ModernRender far(hatch);
  EXPECT_TRUE(far.drawn());
  EXPECT_GT(far.InkedIn(10, 10, 90, 90), 100);
}

TEST(BoundedLoops, TextsWithHugeInlineSizesDraw) {
  ModernRender text({{0, "MTEXT"},
                     {10, "10"},
                     {20, "50"},
                     {40, "5"},
                     {1, "a\\H1e400x;b\\W1e300;c\\P\\pt;d"},
                     {0, "TEXT"},
                     {10, "10"},
                     {20, "20"},
                     {40, "5"},
                     {1, "%%999999%%u^"}});
  EXPECT_TRUE(text.drawn());
}

}  // namespace
}  // namespace dxfimport
