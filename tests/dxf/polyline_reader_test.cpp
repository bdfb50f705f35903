#include <gtest/gtest.h>

#include "testing/dxf_fixture.h"

namespace dxfimport {
namespace {

using testing::EntitiesFile;
using testing::Load;
using testing::Pairs;

Pairs Polyline(int flags, const std::vector<Pairs>& vertices) {
  Pairs p = {{0, "POLYLINE"}, {8, "0"}, {66, "1"}, {70, std::to_string(flags)}, {40, "0.5"}};
  for (const Pairs& v : vertices) {
    p.push_back({0, "VERTEX"});
    p.insert(p.end(), v.begin(), v.end());
  }
  p.push_back({0, "SEQEND"});
  p.push_back({8, "0"});
  return p;
}

Pairs V(const char* x, const char* y, const char* bulge = nullptr, const char* flags = nullptr) {
  Pairs v = {{10, x}, {20, y}};
  if (bulge) v.push_back({42, bulge});
  if (flags) v.push_back({70, flags});
  return v;
}

TEST(DXFPoly, OpenAndClosedPolylines) {
  auto open = Load(EntitiesFile(Polyline(0, {V("0", "0"), V("1", "0"), V("1", "1")})));
  EXPECT_EQ(open->drawing.PolySegCount(), 2);
  auto closed = Load(EntitiesFile(Polyline(1, {V("0", "0"), V("1", "0", "0.5"), V("1", "1", "1")})));
  const Drawing& d = closed->drawing;
  ASSERT_EQ(d.PolySegCount(), 3);
  EXPECT_EQ(d.PolySegs[0].Bulge, 0);
  EXPECT_EQ(d.PolySegs[1].Bulge, 0.5f);  // the bulge of the segment's start vertex
  // The closing segment runs from the first vertex to the last and is always straight.
  EXPECT_EQ(d.PolySegs[2].X1, 0);
  EXPECT_EQ(d.PolySegs[2].X2, 1);
  EXPECT_EQ(d.PolySegs[2].Y2, 1);
  EXPECT_EQ(d.PolySegs[2].Bulge, 0);
  EXPECT_EQ(d.PolySegs[2].Width, 0.5f);
  EXPECT_EQ(d.SeqCount(), 3);
}

TEST(DXFPoly, SingleVertexAndSplineControlPoints) {
  EXPECT_EQ(Load(EntitiesFile(Polyline(0, {V("3", "3")})))->drawing.PolySegCount(), 0);
  auto single = Load(EntitiesFile(Polyline(1, {V("3", "3")})));
  ASSERT_EQ(single->drawing.PolySegCount(), 1);
  EXPECT_EQ(single->drawing.PolySegs[0].X1, single->drawing.PolySegs[0].X2);
  // A control point adds no segment but still starts the next one.
  auto spline = Load(EntitiesFile(Polyline(0, {V("0", "0"), V("5", "5", nullptr, "16"), V("9", "0")})));
  ASSERT_EQ(spline->drawing.PolySegCount(), 1);
  EXPECT_EQ(spline->drawing.PolySegs[0].X1, 5);
  EXPECT_EQ(spline->drawing.PolySegs[0].X2, 9);
}

TEST(DXFPoly, AHeaderWithoutVertexEndsTheLoadWithALogLine) {
  testing::Pairs entities = {{0, "POLYLINE"}, {8, "0"}, {0, "LINE"}, {10, "1"}};
  auto loaded = Load(EntitiesFile(entities));
  EXPECT_FALSE(loaded->outcome.Complete);
  EXPECT_EQ(loaded->outcome.StoppedIn, "DXFPoly");
  EXPECT_EQ(loaded->drawing.LineCount(), 0);
  EXPECT_TRUE(loaded->capture.messages.messages().empty());
  EXPECT_TRUE(loaded->capture.log.Contains("critical condition: DXFPoly -- PolyLine Read Error"));
}

TEST(DXFPoly, OtherLinesBetweenVerticesAreSkipped) {
  Pairs p = Polyline(0, {V("0", "0"), V("2", "0")});
  p.insert(p.begin() + 8, {{0, "JUNK"}, {8, "0"}});
  auto loaded = Load(EntitiesFile(p));
  EXPECT_EQ(loaded->drawing.PolySegCount(), 1);
  EXPECT_TRUE(loaded->outcome.Complete);
}

}  // namespace
}  // namespace dxfimport
