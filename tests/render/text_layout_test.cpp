#include "render/text_layout.h"

#include <gtest/gtest.h>

#include <QGlyphRun>

#include "testing/dxf_fixture.h"

namespace dxfimport {
namespace {

using testing::EntitiesFile;
using testing::Pairs;

// The layouts of a modern drawing's texts.
class Laid {
 public:
  explicit Laid(const Pairs& entities, const std::string& tables = "")
      : loaded_(testing::LoadModern(tables + EntitiesFile(entities))) {}
  const Drawing& drawing() const { return loaded_->drawing; }
  const TextLayout& MText(std::size_t i = 0) {
    return layouts_.Of(drawing().MTexts.at(i), int32_t(i + 1), drawing());
  }
  const TextLayout& Text(std::size_t i = 0) {
    return layouts_.Of(drawing().Texts.at(i), kKindText, int32_t(i + 1), drawing());
  }

 private:
  std::unique_ptr<testing::Loaded> loaded_;
  TextLayouts layouts_;
};

// Glyphs that no face (nor any fallback) has: drawn as the missing-glyph box.
int MissingGlyphs(const TextLayout& layout) {
  int missing = 0;
  for (const TextLayout::Run& run : layout.runs)
    for (quint32 glyph : run.glyphs.glyphIndexes()) missing += glyph == 0;
  return missing;
}

int Lines(const TextLayout& layout) {
  std::vector<double> baselines;
  for (const TextLayout::Run& run : layout.runs)
    if (std::find(baselines.begin(), baselines.end(), run.origin.y()) == baselines.end())
      baselines.push_back(run.origin.y());
  return int(baselines.size());
}

Pairs MText(const std::string& content, const std::string& width, int attachment = 1) {
  return {{0, "MTEXT"}, {10, "0"}, {20, "0"}, {40, "2.5"}, {41, width}, {71, std::to_string(attachment)},
          {1, content}};
}

TEST(TextLayout, MTextWrapsAtItsWidthAndBreaksOnlyAtParagraphsWithoutOne) {
  const std::string words = "cable duct north entry to the main distribution frame";
  Laid wrapped({MText(words, "30")});
  const TextLayout& w = wrapped.MText();
  EXPECT_GE(Lines(w), 3);
  EXPECT_LE(w.box.width(), 30.0 + 1e-9);
  Laid free({MText(words + "\\Psecond paragraph", "0")});
  EXPECT_EQ(Lines(free.MText()), 2);
  EXPECT_GT(free.MText().box.width(), 60);
}

TEST(TextLayout, EachAttachmentPointPutsTheBoxAroundTheAnchor) {
  for (int attachment = 1; attachment <= 9; ++attachment) {
    Laid laid({MText("Room 12", "0", attachment)});
    const QRectF box = laid.MText().box;  // y up: top() is the lowest y
    const int column = (attachment - 1) % 3, row = (attachment - 1) / 3;
    const double x = column == 0 ? box.left() : column == 1 ? box.center().x() : box.right();
    const double y = row == 0 ? box.bottom() : row == 1 ? box.center().y() : box.top();
    EXPECT_NEAR(x, 0, 0.05) << attachment;
    EXPECT_NEAR(y, 0, 0.3) << attachment;  // the line box, not the ink
    EXPECT_GT(box.width(), 8) << attachment;
  }
}

TEST(TextLayout, AStackedFractionHasItsBarBetweenNumeratorAndDenominator) {
  Laid laid({MText("1\\S3/4;\"", "0")});
  const TextLayout& t = laid.MText();
  ASSERT_EQ(t.strokes.size(), 1u);  // the fraction bar
  const QLineF bar = t.strokes[0].line;
  EXPECT_EQ(bar.y1(), bar.y2());
  double above = -1e9, below = 1e9;
  for (const TextLayout::Run& run : t.runs) {
    if (run.origin.y() > bar.y1())
      above = std::max(above, run.origin.y());
    else
      below = std::min(below, run.origin.y());
  }
  EXPECT_GT(above, bar.y1());  // the numerator's baseline above the bar
  EXPECT_LT(below, bar.y1());  // the denominator's below
}

TEST(TextLayout, BackwardAndFitTextsFollowTheirFlagsAndPoints) {
  Laid laid({{0, "TEXT"}, {10, "10"}, {20, "10"}, {40, "5"}, {71, "2"}, {1, "BACK"},   {0, "TEXT"}, {10, "0"},
             {20, "0"},   {11, "50"}, {21, "0"},  {40, "5"}, {72, "5"}, {1, "FIT"},    {0, "TEXT"}, {10, "0"},
             {20, "0"},   {11, "50"}, {21, "0"},  {40, "5"}, {72, "3"}, {1, "ALIGNED"}});
  const TextLayout& back = laid.Text(0);
  EXPECT_TRUE(back.backward);
  const QRectF drawn = TextLayouts::FrameTransform(back).mapRect(back.box);
  EXPECT_NEAR(drawn.right(), 10, 0.5);  // mirrored about its insertion point: it runs to the left
  EXPECT_LT(drawn.left(), 0);
  const TextLayout& fit = laid.Text(1);
  const QRectF fitted = TextLayouts::FrameTransform(fit).mapRect(fit.box);
  EXPECT_NEAR(fitted.left(), 0, 0.5);
  EXPECT_NEAR(fitted.right(), 50, 0.5);
  EXPECT_NEAR(fitted.height(), 5, 2.5);  // the height stays (the box holds the descent too)
  const TextLayout& aligned = laid.Text(2);
  const QRectF scaled = TextLayouts::FrameTransform(aligned).mapRect(aligned.box);
  EXPECT_NEAR(scaled.right() - scaled.left(), 50, 0.5);
  EXPECT_GT(scaled.height(), 1.5 * fitted.height());  // aligned grows its height with its width
}

TEST(TextLayout, EveryScriptFindsAFaceAndBigFontStylesDrawCJK) {
  const std::string styles = testing::DxfText({{0, "SECTION"},
                                               {2, "TABLES"},
                                               {0, "TABLE"},
                                               {2, "STYLE"},
                                               {0, "STYLE"},
                                               {2, "CHINESE"},
                                               {3, "txt.shx"},
                                               {4, "gbcbig.shx"},
                                               {0, "ENDTAB"},
                                               {0, "ENDSEC"}});
  Pairs entities = MText(
      "ケーブル接続箱\\P电缆分线盒\\P케이블 접속함\\PКабельный колодец\\PΚαλώδιο\\P"
      "Studzienka kablowa żółć",
      "0");
  const Pairs unknown = MText("\xEE\x80\x80", "0");  // U+E000
  entities.insert(entities.end(),
                  {{0, "TEXT"}, {7, "CHINESE"}, {10, "0"}, {20, "0"}, {40, "2.5"}, {1, "配线架"}});
  entities.insert(entities.end(), unknown.begin(), unknown.end());
  Laid laid(entities, styles);
  EXPECT_EQ(Lines(laid.MText(0)), 6);
  EXPECT_EQ(MissingGlyphs(laid.MText(0)), 0);
  EXPECT_EQ(MissingGlyphs(laid.Text(0)), 0);
  EXPECT_GT(laid.Text(0).box.width(), 5);
  // A private-use character that no face has shows that the check sees a missing glyph.
  EXPECT_GT(MissingGlyphs(laid.MText(1)), 0);
}

}  // namespace
}  // namespace dxfimport
