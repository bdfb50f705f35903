#include <gtest/gtest.h>

#include <random>
#include <thread>

#include "render/redraw.h"
#include "render/spatial_index.h"
#include "testing/dxf_fixture.h"

namespace dxfimport {
namespace {

// A drawing of a few thousand entities of every kind the index boxes differently, spread
// over 1000 x 1000 units.
std::unique_ptr<testing::Loaded> Scattered(int count = 3000, bool texts = true) {
  std::mt19937 random(7);
  std::uniform_real_distribution<double> at(0, 1000), size(0.5, 40);
  auto n = [](double v) { return std::to_string(v); };
  testing::Pairs e;
  for (int i = 0; i < count; ++i) {
    const double x = at(random), y = at(random), s = size(random);
    switch (texts ? i % 6 : i % 2 ? 0 : 3) {
      case 0: e.insert(e.end(), {{0, "LINE"}, {10, n(x)}, {20, n(y)}, {11, n(x + s)}, {21, n(y - s)}}); break;
      case 1: e.insert(e.end(), {{0, "ARC"}, {10, n(x)}, {20, n(y)}, {40, n(s)}, {50, "10"}, {51, "200"}}); break;
      case 2: e.insert(e.end(), {{0, "TEXT"}, {10, n(x)}, {20, n(y)}, {40, n(s / 4)}, {1, "Duct " + std::to_string(i)}}); break;
      case 3: e.insert(e.end(), {{0, "LWPOLYLINE"}, {43, "2"}, {10, n(x)}, {20, n(y)}, {42, "0.5"}, {10, n(x + s)}, {20, n(y)}}); break;
      case 4: e.insert(e.end(), {{0, "MTEXT"}, {10, n(x)}, {20, n(y)}, {40, "3"}, {41, "30"}, {1, "Manhole cover 600 x 600"}}); break;
      default: e.insert(e.end(), {{0, "POINT"}, {10, n(x)}, {20, n(y)}}); break;
    }
  }
  e.insert(e.end(), {{0, "XLINE"}, {10, "0"}, {20, "0"}, {11, "1"}, {21, "1"}});
  return testing::LoadModern(testing::EntitiesFile(e));
}

TEST(SpatialIndex, FindsWhatAFullWalkFindsInFileOrder) {
  auto loaded = Scattered();
  const Drawing& d = loaded->drawing;
  SpatialIndex index(d);
  EXPECT_EQ(index.size(), d.DrawSeq.size());
  std::mt19937 random(11);
  std::uniform_real_distribution<double> at(-100, 1100), span(0.1, 300);
  std::vector<int32_t> found;
  for (int trial = 0; trial < 200; ++trial) {
    const double x = at(random), y = at(random);
    const Box window{x, y, x + span(random), y + span(random)};
    index.Query(window, found);
    std::vector<int32_t> walked;
    for (std::size_t i = 0; i < d.DrawSeq.size(); ++i) {
      const Box b = SpatialIndex::EntryBox(d, d.DrawSeq[i]);
      if (b.Empty() || (b.maxX >= window.minX && b.minX <= window.maxX && b.maxY >= window.minY && b.minY <= window.maxY))
        walked.push_back(int32_t(i));
    }
    ASSERT_EQ(found, walked) << "window " << window.minX << "," << window.minY;
  }
}

TEST(SpatialIndex, AZoomedInViewDrawsTheSamePictureAsAFullWalk) {
  auto loaded = Scattered();
  std::mt19937 random(3);
  std::uniform_real_distribution<double> at(0, 900);
  int64_t ink = 0;
  for (int trial = 0; trial < 12; ++trial) {
    const double x = at(random), y = at(random);
    const ZoomRect window{x, y + 60, x + 80, y};
    ImageSurface indexed(320, 240), walked(320, 240);
    ZoomState withIndex(loaded->drawing), withoutIndex(loaded->drawing);
    withIndex.ExtentsZoom = ExtentsOf(loaded->drawing);  // a view under a quarter of it: indexed
    ASSERT_TRUE(withIndex.Zoom(window, indexed));
    ASSERT_TRUE(withoutIndex.Zoom(window, walked));  // no extents known: every entry visited
    ASSERT_NE(withIndex.Index, nullptr);
    EXPECT_EQ(withoutIndex.Index, nullptr);
    ASSERT_EQ(indexed.image(), walked.image()) << "window at " << x << "," << y;
    for (int py = 0; py < 240; ++py)
      for (int px = 0; px < 320; ++px) ink += (indexed.image().pixel(px, py) & 0xFFFFFF) != 0xFFFFFF;
  }
  EXPECT_GT(ink, 12 * 1000);  // the views are not empty
}

// A long redraw is drawn in two halves at once when the second holds only opaque ink: the
// picture is the one drawing in a single run gives (here a metafile target, which always
// draws in one run).
TEST(SpatialIndex, ARedrawInTwoHalvesDrawsTheSamePicture) {
  for (bool texts : {false, true}) {
    auto loaded = Scattered(30000, texts);
    const ZoomRect window = ExtentsOf(loaded->drawing);
    ImageSurface halves(400, 300);
    QImage whole(400, 300, QImage::Format_RGB32);
    whole.fill(Qt::white);
    ZoomState a(loaded->drawing), b(loaded->drawing);
    ASSERT_TRUE(a.Zoom(window, halves));
    ASSERT_TRUE(b.Zoom(window, halves, &whole));
    EXPECT_EQ(halves.image().convertToFormat(QImage::Format_RGB32), whole) << texts;
    // Texts big enough to be drawn have smoothed edges: those are drawn in one run.
    if (std::thread::hardware_concurrency() > 1) {
      EXPECT_EQ(a.DrewInHalves, !texts);
    }
    EXPECT_FALSE(b.DrewInHalves);
  }
}

}  // namespace
}  // namespace dxfimport
