// Golden pictures: a few drawings drawn at 640 x 480 with each profile, against the
// pictures kept in tests/golden. A picture may differ from its golden one in a few
// pixels (smoothed text edges); beyond that the test fails and writes expected | diff |
// actual side by side into the build folder. DXFIMPORT_UPDATE_GOLDEN=1 writes the golden
// pictures anew instead (and only then).
#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "render/redraw.h"
#include "testing/dxf_fixture.h"

namespace dxfimport {
namespace {

namespace fs = std::filesystem;

struct Golden {
  const char* name;     // of the golden picture
  std::string drawing;  // its path ("" when the shared corpus is not there)
  ReadingProfile profile;
};

std::string InCorpus(const char* file) {
  const fs::path path = fs::path(testing::CorpusDir()) / file;
  return fs::exists(path) ? path.string() : std::string();
}

QImage Draw(const std::string& path, ReadingProfile profile) {
  Drawing drawing;
  DXFReader reader(drawing, profile);
  reader.LoadDXF(path);
  ImageSurface surface(640, 480);
  ZoomState zoom(drawing);
  surface.Cls();
  zoom.Zoom(ExtentsOf(drawing), surface);
  return surface.image().convertToFormat(QImage::Format_RGB32);
}

// The pixels that differ by more than `tolerance` in a channel, painted red on grey.
int Differences(const QImage& expected, const QImage& actual, QImage& diff, int tolerance = 48) {
  diff = QImage(expected.size(), QImage::Format_RGB32);
  diff.fill(QColor(235, 235, 235));
  int count = 0;
  for (int y = 0; y < expected.height(); ++y) {
    for (int x = 0; x < expected.width(); ++x) {
      const QRgb a = expected.pixel(x, y), b = actual.pixel(x, y);
      const bool differs = std::abs(qRed(a) - qRed(b)) > tolerance ||
                           std::abs(qGreen(a) - qGreen(b)) > tolerance ||
                           std::abs(qBlue(a) - qBlue(b)) > tolerance;
      if (differs) diff.setPixel(x, y, qRgb(220, 0, 0)), ++count;
    }
  }
  return count;
}

void WriteSideBySide(const QImage& expected, const QImage& diff, const QImage& actual,
                     const std::string& path) {
  QImage out(expected.width() * 3 + 8, expected.height(), QImage::Format_RGB32);
  out.fill(Qt::black);
  QPainter p(&out);
  p.drawImage(0, 0, expected);
  p.drawImage(expected.width() + 4, 0, diff);
  p.drawImage(2 * expected.width() + 8, 0, actual);
  p.end();
  out.save(QString::fromStdString(path));
}

TEST(GoldenPictures, DrawingsLookAsTheyDid) {
  const Golden pictures[] = {
      {"floorplan-modern", testing::SamplePath(), ReadingProfile::Modern},
      {"floorplan-legacy", testing::SamplePath(), ReadingProfile::Legacy},
      {"paisley-legacy", InCorpus("LibreCAD__paisley.dxf"), ReadingProfile::Legacy},
      {"example00-modern", InCorpus("qcad__example00.dxf"), ReadingProfile::Modern},
      {"dim_sample-modern", InCorpus("LibreCAD__dim_sample.dxf"), ReadingProfile::Modern},
      {"a3-modern", InCorpus("LibreCAD__a3.dxf"), ReadingProfile::Modern},
  };
  const bool update = std::getenv("DXFIMPORT_UPDATE_GOLDEN") != nullptr;
  int compared = 0;
  for (const Golden& g : pictures) {
    if (g.drawing.empty()) continue;  // a corpus drawing, and no corpus here
    SCOPED_TRACE(g.name);
    const QString golden = QString(DXFIMPORT_GOLDEN_DIR "/%1.png").arg(g.name);
    const QImage actual = Draw(g.drawing, g.profile);
    if (update) {
      ASSERT_TRUE(actual.save(golden));
      continue;
    }
    const QImage expected = QImage(golden).convertToFormat(QImage::Format_RGB32);
    ASSERT_FALSE(expected.isNull()) << "no golden picture " << golden.toStdString();
    ASSERT_EQ(expected.size(), actual.size());
    QImage diff;
    const int differing = Differences(expected, actual, diff);
    // A few pixels of smoothed glyph edges may move between font versions.
    if (differing > expected.width() * expected.height() / 2000) {
      const std::string path = std::string(DXFIMPORT_GOLDEN_OUT "/") + g.name + "-expected-diff-actual.png";
      WriteSideBySide(expected, diff, actual, path);
      ADD_FAILURE() << differing << " pixels differ; see " << path;
    }
    ++compared;
  }
  if (!update) {
    EXPECT_GE(compared, 2);
  }
}

}  // namespace
}  // namespace dxfimport
