#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "render/redraw.h"
#include "testing/dxf_fixture.h"

namespace dxfimport {
namespace {

namespace fs = std::filesystem;

// Every fuzzing seed and every input a fuzzer once failed on loads and draws without
// crashing, with both reading profiles (the sanitizer build checks the rest).
TEST(Robustness, SeedsAndFuzzerFindingsLoadAndDraw) {
  int files = 0;
  for (const char* dir : {DXFIMPORT_FUZZ_SEEDS_DIR, DXFIMPORT_REGRESSIONS_DIR}) {
    for (const fs::directory_entry& entry : fs::directory_iterator(dir)) {
      if (entry.path().extension() == ".md") continue;
      SCOPED_TRACE(entry.path().string());
      std::ifstream in(entry.path(), std::ios::binary);
      std::stringstream bytes;
      bytes << in.rdbuf();
      for (ReadingProfile profile : {ReadingProfile::Legacy, ReadingProfile::Modern}) {
        auto loaded = testing::Load(bytes.str(), 200000, profile);
        if (loaded->drawing.SeqCount() == 0) continue;
        ImageSurface surface(64, 48);
        ZoomState zoom(loaded->drawing);
        zoom.Zoom(ExtentsOf(loaded->drawing), surface);
        zoom.StationaryZoom(32, 24, 400, surface);
      }
      ++files;
    }
  }
  EXPECT_GT(files, 20);
}

// Nine blocks, each inserting the one before ten times, multiply to 10^9 lines (the DXF
// form of a "billion laughs"). The modern profile leaves the insert out whole and keeps
// the rest of the drawing.
std::string NestedBlocks() {
  testing::Pairs blocks = {{0, "SECTION"}, {2, "BLOCKS"}, {0, "BLOCK"}, {2, "B1"}, {10, "0"}, {20, "0"}};
  for (int i = 0; i < 10; ++i)
    blocks.insert(blocks.end(),
                  {{0, "LINE"}, {10, std::to_string(i)}, {20, "0"}, {11, std::to_string(i)}, {21, "1"}});
  blocks.push_back({0, "ENDBLK"});
  for (int k = 2; k <= 9; ++k) {
    blocks.insert(blocks.end(), {{0, "BLOCK"}, {2, "B" + std::to_string(k)}, {10, "0"}, {20, "0"}});
    for (int i = 0; i < 10; ++i)
      blocks.insert(
          blocks.end(),
          {{0, "INSERT"}, {2, "B" + std::to_string(k - 1)}, {10, std::to_string(i * 10)}, {20, "0"}});
    blocks.push_back({0, "ENDBLK"});
  }
  blocks.push_back({0, "ENDSEC"});
  return testing::DxfText(blocks) +
         testing::EntitiesFile({{0, "INSERT"},
                                {8, "SYMBOLS"},
                                {2, "B9"},
                                {10, "0"},
                                {20, "0"},
                                {0, "LINE"},
                                {10, "0"},
                                {20, "0"},
                                {11, "100"},
                                {21, "100"},
                                {0, "CIRCLE"},
                                {10, "50"},
                                {20, "50"},
                                {40, "10"},
                                // a grid of 100 x 100 copies of a block of ten lines
                                {0, "INSERT"},
                                {2, "B1"},
                                {70, "100"},
                                {71, "100"},
                                {44, "20"},
                                {45, "20"},
                                {0, "INSERT"},
                                {2, "B2"},
                                {10, "0"},
                                {20, "-50"}});
}

TEST(Robustness, BlocksThatMultiplyPastTheBudgetAreLeftOutWholeAndTheRestLoads) {
  const std::string nested = NestedBlocks();
  auto loaded = testing::LoadModern(nested);  // the default budget
  const Drawing& d = loaded->drawing;
  EXPECT_TRUE(loaded->outcome.Complete);
  EXPECT_EQ(d.LineCount(), 1 + 100 * 100 * 10 + 100);  // the line, the grid, B2
  EXPECT_EQ(d.ArcCount(), 1);
  ASSERT_FALSE(loaded->outcome.Report.Clean());
  const ReportEntry& left = loaded->outcome.Report.Entries()[0];
  EXPECT_EQ(left.Kind, "insert over the entity budget: B9");
  EXPECT_EQ(left.Notice,
            "Block B9 on layer SYMBOLS (1,000,000,000 entities) left out: over the entity budget");
  EXPECT_GT(left.Line, 0u);

  // A budget of 5,000 rows: the MINSERT grid (100,000 rows) goes too, the small insert stays.
  auto tight = testing::Load(nested, 5000, ReadingProfile::Modern);
  EXPECT_EQ(tight->drawing.LineCount(), 1 + 100);
  ASSERT_EQ(tight->outcome.Report.Entries().size(), 2u);
  EXPECT_EQ(tight->outcome.Report.Entries()[1].Notice,
            "Block B1 on layer 0 (100,000 entities) left out: over the entity budget");
  ImageSurface surface(64, 48);
  ZoomState zoom(tight->drawing);
  EXPECT_TRUE(zoom.Zoom(ExtentsOf(tight->drawing), surface));
}

TEST(Robustness, TheLoadReportCountsWhatWasNotDrawnOrWasRepaired) {
  auto clean = testing::LoadModern(testing::EntitiesFile({{0, "LINE"}, {11, "1"}}));
  EXPECT_TRUE(clean->outcome.Report.Clean());
  EXPECT_EQ(clean->outcome.Report.Lines()[0], "Loaded cleanly: nothing was skipped, repaired or left out.");
  auto odd = testing::LoadModern(testing::EntitiesFile(
      {{0, "3DSOLID"}, {0, "3DSOLID"}, {0, "LINE"}, {62, "99999"}, {0, "INSERT"}, {2, "SELF"}}));
  const auto& entries = odd->outcome.Report.Entries();
  ASSERT_GE(entries.size(), 2u);
  EXPECT_EQ(entries[0].Kind, "entity kind not drawn: 3DSOLID");
  EXPECT_EQ(entries[0].Count, 2);
  EXPECT_EQ(entries[0].Line, 6u);  // SECTION, ENTITIES, then the first 3DSOLID's name
  EXPECT_EQ(entries[1].Kind, "number out of range, held at its bound: group 62");
}

}  // namespace
}  // namespace dxfimport
