#include "dxf/model/drawing.h"

#include <gtest/gtest.h>

#include "support/runtime_error.h"

namespace dxfimport {
namespace {

TEST(Drawing, CheckExtentsAfterResetSetsAllFour) {
  Drawing d;
  d.CheckExtents(5, 5, 5, 5);
  EXPECT_EQ(d.ExtMinX, 5);
  EXPECT_EQ(d.ExtMinY, 5);
  EXPECT_EQ(d.ExtMaxX, 5);
  EXPECT_EQ(d.ExtMaxY, 5);
  d.CheckExtents(7, -1, 2, 9);
  EXPECT_EQ(d.ExtMinX, 2);
  EXPECT_EQ(d.ExtMaxX, 7);
  EXPECT_EQ(d.ExtMinY, -1);
  EXPECT_EQ(d.ExtMaxY, 9);
}

TEST(Drawing, InitDrawingWithoutClearAllKeepsEntitiesButDropsBlocks) {
  Drawing d;
  d.AddLine({});
  d.AddBlock({0, 0, "B", {}});
  d.InitDrawing(false);
  EXPECT_EQ(d.LineCount(), 1);
  EXPECT_EQ(d.SeqCount(), 1);
  EXPECT_EQ(d.BlockCount(), 0);
  EXPECT_EQ(d.FindBlock("B"), 0);
  d.InitDrawing(true);
  EXPECT_EQ(d.LineCount(), 0);
  EXPECT_EQ(d.SeqCount(), 0);
}

TEST(LayerIndex, FindsTheFirstTrimmedMatchOrFallsBackToOne) {
  Drawing d;
  d.AddLayer({"WALLS", 0, -1});
  d.AddLayer({"  DOORS", 0, -1});
  d.AddLayer({"0", 0, -1});
  d.AddLayer({"0", 255, -1});
  EXPECT_EQ(d.LayerIndex("0"), 3);
  EXPECT_EQ(d.LayerIndex("DOORS"), 2);
  EXPECT_EQ(d.Layers[1].Name, "DOORS");  // stored back trimmed on the way
  EXPECT_EQ(d.LayerIndex("doors"), 1);
  EXPECT_EQ(d.LayerIndex("0 "), 1);  // the entity's name is not trimmed
  EXPECT_EQ(d.LayerIndex("NOWHERE"), 1);
  EXPECT_EQ(d.LayerState(2), -1);
  EXPECT_THROW(d.LayerState(5), RunTimeError);
  EXPECT_THROW(d.LayerState(0), RunTimeError);
}

TEST(LayerIndex, SearchingPastRow32767Overflows) {
  Drawing d;
  for (int i = 0; i < 32770; ++i) d.AddLayer({"L" + std::to_string(i), 0, -1});
  EXPECT_EQ(d.LayerIndex("L32766"), 32767);
  try {
    d.LayerIndex("L32767");
    FAIL();
  } catch (const RunTimeError& e) {
    EXPECT_EQ(e.number(), 6);
  }
  EXPECT_THROW(d.LayerIndex("missing"), RunTimeError);
}

}  // namespace
// The rows of the large tables keep their size (the transparency of the modern profile
// sits in what was padding): what a drawing costs per row stays as it was.
static_assert(sizeof(void*) != 8 ||
              (sizeof(LineEntity) == 48 && sizeof(PolySegment) == 64 && sizeof(ArcEntity) == 56 &&
               sizeof(TextEntity) == 168 && sizeof(HatchEntity) == 128));

}  // namespace dxfimport
