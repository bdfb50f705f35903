#include "render/spatial_index.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <random>
#include <thread>

#include "render/redraw.h"
#include "testing/dxf_fixture.h"

namespace dxfimport {
namespace {

// A drawing of a few thousand entities of every kind the index boxes differently, spread
// over 1000 x 1000 units; every `textsEvery`th a TEXT or an MTEXT (none for 0).
std::unique_ptr<testing::Loaded> Scattered(int count = 3000, int textsEvery = 3) {
  std::mt19937 random(7);
  std::uniform_real_distribution<double> at(0, 1000), size(0.5, 40);
  auto n = [](double v) { return std::to_string(v); };
  testing::Pairs e;
  for (int i = 0; i < count; ++i) {
    const double x = at(random), y = at(random), s = size(random);
    const bool text = textsEvery > 0 && i % textsEvery == 0;
    switch (text ? 4 + (i / textsEvery) % 2 : i % 4) {
      case 0:
        e.insert(e.end(), {{0, "LINE"}, {10, n(x)}, {20, n(y)}, {11, n(x + s)}, {21, n(y - s)}});
        break;
      case 1:
        e.insert(e.end(), {{0, "ARC"}, {10, n(x)}, {20, n(y)}, {40, n(s)}, {50, "10"}, {51, "200"}});
        break;
      case 2:
        e.insert(
            e.end(),
            {{0, "LWPOLYLINE"}, {43, "2"}, {10, n(x)}, {20, n(y)}, {42, "0.5"}, {10, n(x + s)}, {20, n(y)}});
        break;
      case 3:
        e.insert(e.end(), {{0, "POINT"}, {10, n(x)}, {20, n(y)}});
        break;
      case 4:
        e.insert(e.end(),
                 {{0, "TEXT"}, {10, n(x)}, {20, n(y)}, {40, n(s / 4)}, {1, "Duct " + std::to_string(i)}});
        break;
      default:
        e.insert(
            e.end(),
            {{0, "MTEXT"}, {10, n(x)}, {20, n(y)}, {40, "3"}, {41, "30"}, {1, "Manhole cover 600 x 600"}});
        break;
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
  std::vector<uint64_t> marks;
  for (int trial = 0; trial < 200; ++trial) {
    const double x = at(random), y = at(random);
    const Box window{x, y, x + span(random), y + span(random)};
    index.Query(window, found, marks);
    std::vector<int32_t> walked;
    for (std::size_t i = 0; i < d.DrawSeq.size(); ++i) {
      const Box b = SpatialIndex::EntryBox(d, d.DrawSeq[i]);
      if (b.Empty() ||
          (b.maxX >= window.minX && b.minX <= window.maxX && b.maxY >= window.minY && b.minY <= window.maxY))
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
    ASSERT_NE(withIndex.Caches.Index, nullptr);
    EXPECT_EQ(withoutIndex.Caches.Index, nullptr);
    ASSERT_EQ(indexed.image(), walked.image()) << "window at " << x << "," << y;
    for (int py = 0; py < 240; ++py)
      for (int px = 0; px < 320; ++px) ink += (indexed.image().pixel(px, py) & 0xFFFFFF) != 0xFFFFFF;
  }
  EXPECT_GT(ink, 12 * 1000);  // the views are not empty
}

// A long redraw is drawn in two bands of rows at once unless it is mostly texts: the
// picture is the one drawing in a single run gives (here a metafile target, which always
// draws in one run), texts included.
TEST(SpatialIndex, ARedrawInTwoBandsDrawsTheSamePicture) {
  const bool twoProcessors = std::thread::hardware_concurrency() > 1;
  for (int textsEvery : {0, 10, 2}) {
    auto loaded = Scattered(50000, textsEvery);
    const ZoomRect all = ExtentsOf(loaded->drawing);
    // The whole drawing, and a fifth of it (the indexed entries of its two bands).
    for (const ZoomRect& window : {all, ZoomRect{280, 720, 727, 273}}) {
      ImageSurface bands(400, 301);
      QImage whole(400, 301, QImage::Format_RGB32);
      whole.fill(Qt::white);
      ZoomState a(loaded->drawing), b(loaded->drawing);
      a.ExtentsZoom = b.ExtentsZoom = all;
      ASSERT_TRUE(a.Zoom(window, bands));
      ASSERT_TRUE(b.Zoom(window, bands, &whole));
      EXPECT_EQ(bands.image().convertToFormat(QImage::Format_RGB32), whole)
          << textsEvery << " " << window.left;
      EXPECT_EQ(a.DrewInBands, twoProcessors && textsEvery != 2);
      EXPECT_FALSE(b.DrewInBands);
    }
  }
}

// A process forked after a redraw in bands (as the batch's workers are) has none of its
// parent's threads: its own redraws in bands still finish.
TEST(SpatialIndex, AForkedProcessDrawsInBands) {
  auto loaded = Scattered(20000, 10);
  ImageSurface picture(400, 300);
  ZoomState zoom(loaded->drawing);
  ASSERT_TRUE(zoom.Zoom(ExtentsOf(loaded->drawing), picture));
  const pid_t child = fork();
  if (child == 0) {
    alarm(60);
    ZoomState again(loaded->drawing);
    _exit(again.Zoom(ExtentsOf(loaded->drawing), picture) && again.DrewInBands == zoom.DrewInBands ? 0 : 1);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
}

}  // namespace
}  // namespace dxfimport
