#include "dxf/model/stats.h"

#include <gtest/gtest.h>

#include <sstream>

#include "dxf/model/dump.h"
#include "dxf/model/load_report.h"
#include "testing/dxf_fixture.h"

namespace dxfimport {
namespace {

TEST(StatsLines, EmptyDrawingShowsTheStartExtents) {
  Drawing d;
  std::vector<std::string> lines = StatsLines(d, "empty.dxf", NumberSeparators{});
  ASSERT_EQ(lines.size(), 16u);
  EXPECT_EQ(lines[0], "empty.dxf");
  EXPECT_EQ(lines[1], "");
  EXPECT_EQ(lines[2], "Entities: 0");
  EXPECT_EQ(lines[12], "Left: 1,000,000,000,000,000,000,000,000,000,000");
  EXPECT_EQ(lines[13], "Top: -1,000,000,000,000,000,000,000,000,000,000");
}

TEST(DisplayStats, ShowsOneInformationBoxWithCrLfLines) {
  testing::Capture capture;
  Drawing d;
  for (int i = 0; i < 1234; ++i) d.AddLine({});
  DisplayStats(d, "h");
  ASSERT_EQ(capture.messages.messages().size(), 1u);
  const auto& m = capture.messages.messages()[0];
  EXPECT_EQ(m.icon, MessageIcon::Information);
  EXPECT_EQ(m.text.substr(0, 5), "h\r\n\r\n");
  EXPECT_NE(m.text.find("Lines: 1" + LocaleSeparators().group + "234\r\n"), std::string::npos);
}

TEST(SampleDrawing, LoadsToItsKnownTables) {
  testing::Capture capture;
  Drawing d;
  DXFReader reader(d, ReadingProfile::Legacy);
  ASSERT_TRUE(reader.LoadDXF(testing::SamplePath()));
  EXPECT_TRUE(reader.outcome().Complete);
  EXPECT_TRUE(capture.messages.messages().empty());
  std::ostringstream dump;
  DumpTables(d, dump);
  const std::string text = dump.str();
  for (const char* table : {"# Layers\n", "# Blocks\n", "# Lines\n", "# PolySegs\n", "# Texts\n", "# Arcs\n",
                            "# Solids\n", "# Attribs\n", "# DrawSeq\n"})
    EXPECT_NE(text.find(table), std::string::npos) << table;
  EXPECT_NE(text.find("\tOPEN OFFICE\t0.5\t0\t1\t6\t-1\t"), std::string::npos);
  EXPECT_NE(text.find("Room temp. 21\u00B0C \u00B11"), std::string::npos);
  EXPECT_NE(text.find("Drawn for the ''network'' survey"), std::string::npos);
  EXPECT_EQ(StatsJson(d, "s"),
            "{\"arcsAndCircles\":13,\"attributes\":3,\"blocks\":4,\"entities\":89,\"extents\":{\"bottom\":-2,"
            "\"left\":-1,\"right\":21,\"top\":13},\"file\":\"s\",\"layers\":9,\"lines\":31,"
            "\"polylineSegments\":25,\"solids\":4,\"texts\":13}");
}

}  // namespace
// What was found and drawn (an image, proxy graphics) is listed apart and leaves the load
// clean; anything left out does not.
TEST(LoadReportLines, WhatWasFoundAndDrawnIsListedApartAndKeepsTheLoadClean) {
  LoadReport report;
  report.NoteDrawn("image found: plan.png", 0);
  report.NoteDrawn("image found: plan.png", 0);
  EXPECT_TRUE(report.Clean());
  EXPECT_EQ(report.Lines(),
            (std::vector<std::string>{"Loaded cleanly: nothing was skipped, repaired or left out.",
                                      "Found and drawn:", "  image found: plan.png (2 times)"}));
  report.Note("image missing: gone.png", 0);
  EXPECT_FALSE(report.Clean());
  EXPECT_EQ(report.Lines(),
            (std::vector<std::string>{"Skipped, repaired or left out:", "  image missing: gone.png (1 time)",
                                      "Found and drawn:", "  image found: plan.png (2 times)"}));
}

}  // namespace dxfimport
