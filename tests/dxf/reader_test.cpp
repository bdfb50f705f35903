#include "dxf/reader.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "testing/dxf_fixture.h"

namespace dxfimport {
namespace {

using testing::DxfText;
using testing::EntitiesFile;
using testing::Load;
using testing::Pairs;

const Pairs kLine = {{0, "LINE"}, {8, "0"}, {10, "1"}, {20, "2"}, {11, "3"}, {21, "4"}};

std::string LinesFile(int n) {
  Pairs pairs;
  for (int i = 0; i < n; ++i) pairs.insert(pairs.end(), kLine.begin(), kLine.end());
  return EntitiesFile(pairs);
}

TEST(LoadDXF, ReadsLinesIntoTheTablesInFileOrder) {
  auto loaded = Load(LinesFile(51));
  EXPECT_TRUE(loaded->result);
  EXPECT_TRUE(loaded->outcome.Complete);
  EXPECT_EQ(loaded->drawing.LineCount(), 51);
  ASSERT_EQ(loaded->drawing.SeqCount(), 51);
  EXPECT_EQ(loaded->drawing.DrawSeq[50].Kind, kKindLine);
  EXPECT_EQ(loaded->drawing.DrawSeq[50].Index, 51);
  EXPECT_TRUE(loaded->capture.messages.messages().empty());
}

TEST(LoadDXF, AFileWithoutEntitiesKeepsTheStartExtents) {
  auto loaded = Load(DxfText({{0, "SECTION"}, {2, "ENTITIES"}, {0, "ENDSEC"}, {0, "EOF"}}));
  EXPECT_TRUE(loaded->result);
  EXPECT_EQ(loaded->drawing.SeqCount(), 0);
  EXPECT_EQ(loaded->drawing.ExtMinX, 1e30f);
  EXPECT_EQ(loaded->drawing.ExtMaxY, -1e30f);
}

TEST(LoadDXF, HeaderExtentsWinOverTheEntities) {
  Pairs header = {{0, "SECTION"}, {2, "HEADER"},  {9, "$EXTMIN"}, {10, "-5"},  {20, "-6"},
                  {30, "0"},      {9, "$EXTMAX"}, {10, "2"},      {20, "2.5"}, {0, "ENDSEC"}};
  auto withHeader = Load(DxfText(header) + LinesFile(1));
  EXPECT_EQ(withHeader->drawing.ExtMinX, -5);
  EXPECT_EQ(withHeader->drawing.ExtMinY, -6);
  EXPECT_EQ(withHeader->drawing.ExtMaxX, 2);  // the line reaches 3, the header wins
  EXPECT_EQ(withHeader->drawing.ExtMaxY, 2.5);
  auto withoutHeader = Load(LinesFile(1));
  EXPECT_EQ(withoutHeader->drawing.ExtMinX, 1);
  EXPECT_EQ(withoutHeader->drawing.ExtMaxY, 4);
}

TEST(LoadDXF, ComparesEveryLineUntrimmedAndCaseSensitively) {
  // An indented SECTION passes the validity test, but indented entity names are skipped.
  std::string indented = "  0\n  SECTION\n  2\nENTITIES\n  0\n  LINE\n 8\n0\n 10\n1\n  0\nline\n  0\nEOF\n";
  auto loaded = Load(indented);
  EXPECT_TRUE(loaded->result);
  EXPECT_EQ(loaded->drawing.LineCount(), 0);
  // A value that reads like a keyword starts that reader: here an unknown entity's name.
  auto quirk = Load(EntitiesFile({{0, "VIEWPORT"}, {2, "LINE"}, {10, "7"}, {20, "8"}, {0, "ENDSEC"}}));
  ASSERT_EQ(quirk->drawing.LineCount(), 1);
  EXPECT_EQ(quirk->drawing.Lines[0].X1, 7);
}

TEST(LoadDXF, TheFirstLayerLineIsTheTableName) {
  Pairs tables = {{0, "SECTION"},
                  {2, "TABLES"},
                  {0, "TABLE"},
                  {2, "LAYER"},
                  {70, "2"},
                  {0, "LAYER"},
                  {2, "WALLS"},
                  {70, "0"},
                  {62, "-7"},
                  {0, "LAYER"},
                  {2, "FROZEN"},
                  {70, "1"},
                  {62, "3"},
                  {0, "LAYER"},
                  {2, "LOCKED"},
                  {70, "4"},
                  {62, "5"},
                  {0, "LAYER"},
                  {2, "A_NAME_LONGER_THAN_TWENTY"},
                  {70, "512"},
                  {62, "1"},
                  {0, "ENDTAB"},
                  {0, "ENDSEC"}};
  auto loaded = Load(DxfText(tables) + LinesFile(0));
  const Drawing& d = loaded->drawing;
  ASSERT_EQ(d.LayerCount(), 4);
  EXPECT_EQ(d.Layers[0].Name, "WALLS");
  EXPECT_EQ(d.Layers[0].Color, 0);  // off in the file (negative colour): loads as on, black
  EXPECT_EQ(d.Layers[0].IsOn, -1);
  EXPECT_EQ(d.Layers[1].IsOn, 0);
  EXPECT_EQ(d.Layers[2].IsOn, -1);
  EXPECT_EQ(d.Layers[3].Name, "A_NAME_LONGER_THAN_T");
  EXPECT_EQ(d.Layers[3].IsOn, 0);  // flags from 512 up read every bit as set
}

TEST(LoadDXF, ShowsProgressInFivePercentSteps) {
  struct Recorder : LoadProgress {
    void Show() override { shown = true; }
    void Hide() override { hidden = true; }
    void SetValue(int percent) override { values.push_back(percent); }
    bool shown = false, hidden = false;
    std::vector<int> values;
  } progress;
  testing::Capture capture;
  Drawing d;
  DXFReader reader(d, ReadingProfile::Legacy);
  std::string text = LinesFile(400);
  ASSERT_TRUE(reader.LoadDXFBytes(text, &progress));
  EXPECT_TRUE(progress.shown);
  EXPECT_TRUE(progress.hidden);
  ASSERT_GE(progress.values.size(), 18u);
  ASSERT_LE(progress.values.size(), 20u);
  for (std::size_t i = 1; i < progress.values.size(); ++i)
    EXPECT_GT(progress.values[i], progress.values[i - 1]);
  EXPECT_LE(progress.values.back(), 100);
}

// Every kind of bad input gives the system's own message, keeps what was read before it
// and never crashes or hangs.
TEST(LoadDXF, BadInputIsReportedAndWhatWasReadIsKept) {
  std::string line = DxfText(kLine);
  std::string start = DxfText({{0, "SECTION"}, {2, "ENTITIES"}}) + line;
  std::string end = DxfText({{0, "ENDSEC"}, {0, "EOF"}});
  struct Case {
    const char* name;
    std::string dxf;
    const char* message;  // empty: no message expected
    bool recognised;
    int lines;
  };
  const Case cases[] = {
      {"empty file", "", "not recognized as a valid DXF", false, 0},
      {"binary DXF", std::string("AutoCAD Binary DXF\r\n\x1a\0\0SECTION\n", 29), "not recognized", false, 0},
      {"no SECTION", line + line, "not recognized", false, 0},
      {"NUL bytes only", std::string(4096, '\0'), "not recognized", false, 0},
      {"cut inside an entity", start + "0\nLINE\n8\n0\n10\n", "Error 62: Input past end of file", true, 1},
      {"cut inside a polyline",
       start +
           DxfText(
               {{0, "POLYLINE"}, {8, "0"}, {0, "VERTEX"}, {10, "1"}, {20, "1"}, {0, "VERTEX"}, {10, "2"}}),
       "Error 62: Input past end of file", true, 1},
      {"group code above 80", start + DxfText({{0, "LINE"}, {100, "AcDbLine"}}) + line,
       "Error 9: Subscript out of range", true, 1},
      {"negative group code", start + DxfText({{0, "LINE"}, {-1, "x"}}), "Error 9", true, 1},
      {"number too large for its field", start + DxfText({{0, "LINE"}, {62, "99999"}}) + line,
       "Error 6: Overflow", true, 1},
      {"group code that is no number", start + "0\nLINE\nabc\n1\n", "Error 13: Type mismatch", true, 1},
      {"coordinate beyond a single", start + DxfText({{0, "LINE"}, {10, "1e300"}}) + end, "Error 6: Overflow",
       true, 1},
      {"megabyte code line", start + "0\nLINE\n" + std::string(1 << 20, '7') + "\n1\n", "Error 6: Overflow",
       true, 1},
      {"megabyte text value", start + DxfText({{0, "TEXT"}, {1, std::string(3 << 20, 'x')}}) + line + end, "",
       true, 2},
      {"NUL bytes in a value", start + DxfText({{0, "TEXT"}, {1, std::string("a\0b", 3)}}) + end, "", true,
       1},
      {"invalid UTF-8", start + DxfText({{0, "TEXT"}, {1, "\xB1\xFF"}}) + end, "", true, 1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    auto loaded = Load(c.dxf);
    const auto& shown = loaded->capture.messages.messages();
    if (*c.message) {
      ASSERT_EQ(shown.size(), 1u);
      EXPECT_NE(shown[0].text.find(c.message), std::string::npos) << shown[0].text;
      EXPECT_FALSE(loaded->outcome.Complete);
    } else {
      EXPECT_TRUE(shown.empty());
      EXPECT_TRUE(loaded->outcome.Complete);
    }
    EXPECT_EQ(loaded->result, c.recognised);
    EXPECT_EQ(loaded->drawing.LineCount(), c.lines);
    if (c.recognised && *c.message) {
      EXPECT_FALSE(loaded->capture.log.lines.empty());
    }
  }
}

TEST(LoadDXF, FilesThatCannotBeOpenedAreReported) {
  struct Case {
    std::string path;
    const char* message;
  };
  const Case cases[] = {
      {"/nonexistent/drawing.dxf", "Error 53: File not found"},
      {std::filesystem::temp_directory_path().string(), "Error 75: Path/File access error"},
  };
  for (const Case& c : cases) {
    testing::Capture capture;
    Drawing d;
    DXFReader reader(d, ReadingProfile::Legacy);
    EXPECT_FALSE(reader.LoadDXF(c.path));
    ASSERT_EQ(capture.messages.messages().size(), 1u);
    EXPECT_NE(capture.messages.messages()[0].text.find(c.message), std::string::npos);
    EXPECT_TRUE(capture.log.Contains("in module Dxfin275 procedure LoadDXF"));
  }
}

TEST(LocateSection, FindsATrimmedSectionLineOnly) {
  EXPECT_TRUE(DXFReader::LocateSection(std::string_view("0\n   SECTION  \n")));
  EXPECT_FALSE(DXFReader::LocateSection(std::string_view("0\nSECTIONS\n0\nsection\n")));
  testing::TempFile file("999\ncomment\n0\nSECTION\n");
  EXPECT_TRUE(DXFReader::LocateSection(file.path()));
  EXPECT_FALSE(DXFReader::LocateSection(std::string("/nonexistent.dxf")));
}

TEST(LoadDXF, ReadsAFileFromDiskWithCrLfEndings) {
  std::string text = LinesFile(3);
  std::string crlf;
  for (char c : text) crlf += c == '\n' ? std::string("\r\n") : std::string(1, c);
  testing::TempFile file(crlf);
  testing::Capture capture;
  Drawing d;
  DXFReader reader(d, ReadingProfile::Legacy);
  EXPECT_TRUE(reader.LoadDXF(file.path()));
  EXPECT_EQ(d.LineCount(), 3);
  EXPECT_EQ(d.Lines[2].Y2, 4);
}

}  // namespace
}  // namespace dxfimport
