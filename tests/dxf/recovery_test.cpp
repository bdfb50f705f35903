// A record the modern profile cannot read costs that record alone, in every section: it
// is left out (or held at its bound), named in the load report with its line, and the
// load goes on and is complete.
#include <gtest/gtest.h>

#include <algorithm>

#include "testing/dxf_fixture.h"

namespace dxfimport {
namespace {

using testing::DxfText;
using testing::Pairs;

const ReportEntry* Find(const LoadReport& report, const std::string& kind) {
  const auto& entries = report.Entries();
  auto found =
      std::find_if(entries.begin(), entries.end(), [&](const ReportEntry& e) { return e.Kind == kind; });
  return found == entries.end() ? nullptr : &*found;
}

std::string Section(const std::string& name, const Pairs& pairs) {
  Pairs all = {{0, "SECTION"}, {2, name}};
  all.insert(all.end(), pairs.begin(), pairs.end());
  all.push_back({0, "ENDSEC"});
  return DxfText(all);
}

const Pairs kTwoLines = {{0, "LINE"}, {10, "0"}, {20, "0"}, {11, "10"}, {21, "10"},
                         {0, "LINE"}, {10, "5"}, {20, "0"}, {11, "5"},  {21, "10"}};

struct Case {
  const char* section;
  std::string file;
  std::string reported;  // the kind the report names
  int32_t lines;         // lines drawn in the end
};

std::vector<Case> Cases() {
  const std::string entities = Section("ENTITIES", kTwoLines) + DxfText({{0, "EOF"}});
  return {
      {"HEADER",
       Section("HEADER", {{9, "$EXTMIN"}, {10, "1e400"}, {20, "0"}, {9, "$LTSCALE"}, {40, "2"}}) + entities,
       "header variable left out: $EXTMIN", 2},
      {"CLASSES", Section("CLASSES", {{0, "CLASS"}, {1, "X"}}) + DxfText({{-99999999, "x"}}) + entities,
       "unreadable group code", 2},
      {"TABLES",
       Section("TABLES", {{0, "TABLE"},
                          {2, "LTYPE"},
                          {0, "LTYPE"},
                          {2, "BAD"},
                          {49, "1e400"},
                          {0, "LTYPE"},
                          {2, "DASHED"},
                          {49, "1"},
                          {49, "-1"},
                          {0, "ENDTAB"}}) +
           entities,
       "table entry left out: LTYPE", 2},
      {"BLOCKS",
       Section("BLOCKS", {{0, "BLOCK"},
                          {2, "BROKEN"},
                          {10, "1e400"},
                          {0, "LINE"},
                          {11, "1"},
                          {0, "ENDBLK"},
                          {0, "BLOCK"},
                          {2, "GOOD"},
                          {0, "LINE"},
                          {10, "1e999"},
                          {0, "LINE"},
                          {11, "1"},
                          {0, "ENDBLK"}}) +
           Section("ENTITIES", {{0, "INSERT"}, {2, "BROKEN"}, {0, "INSERT"}, {2, "GOOD"}, {0, "LINE"}}) +
           DxfText({{0, "EOF"}}),
       "block definition left out: BROKEN", 2},
      {"ENTITIES",
       Section("ENTITIES", {{0, "LINE"}, {10, "1e400"}, {0, "CIRCLE"}, {40, "1"}, {0, "LINE"}, {11, "1"}}) +
           DxfText({{0, "EOF"}}),
       "entity left out: LINE", 1},
      // A code line that is no number: the record is left out; reading goes on at the next
      // code 0 that a name follows (a value "0" is no place to start again).
      {"ENTITIES",
       "0\nSECTION\n2\nENTITIES\n0\nLINE\n10\n1\nabc\n1\n20\n0\n0\nLINE\n11\n1\n0\nENDSEC\n0\nEOF\n",
       "unreadable group code", 1},
      {"OBJECTS",
       Section("ENTITIES", kTwoLines) +
           "0\nSECTION\n2\nOBJECTS\n0\nLAYOUT\n1\nLayout1\n70000\nx\n0\nENDSEC\n0\nEOF\n",
       "unreadable group code", 2},
  };
}

TEST(Recovery, OneBadRecordCostsThatRecordInEverySection) {
  for (const Case& c : Cases()) {
    SCOPED_TRACE(std::string(c.section) + ": " + c.reported);
    auto loaded = testing::LoadModern(c.file);
    EXPECT_TRUE(loaded->outcome.Complete);
    EXPECT_TRUE(loaded->capture.messages.messages().empty());  // no error box: the report says it
    EXPECT_EQ(loaded->drawing.LineCount(), c.lines);
    const ReportEntry* entry = Find(loaded->outcome.Report, c.reported);
    ASSERT_NE(entry, nullptr);
    EXPECT_GT(entry->Line, 0u);
  }
}

TEST(Recovery, AGradientHatchInABlockKeepsTheRestOfTheDrawing) {
  // As a 2010 CAD tool writes a gradient fill: true colours of both ends, the gradient's
  // name and its extended data.
  const Pairs hatch = {
      {0, "HATCH"},      {8, "0"},        {70, "1"},           {91, "1"},      {92, "7"},
      {72, "0"},         {73, "1"},       {93, "4"},           {10, "0"},      {20, "0"},
      {10, "10"},        {20, "0"},       {10, "10"},          {20, "10"},     {10, "0"},
      {20, "10"},        {97, "0"},       {75, "1"},           {76, "1"},      {98, "0"},
      {450, "1"},        {451, "0"},      {452, "0"},          {453, "2"},     {460, "0"},
      {461, "0"},        {462, "1"},      {463, "0"},          {421, "255"},   {463, "1"},
      {421, "16776960"}, {470, "LINEAR"}, {420, "4294967295"}, {1001, "ACAD"}, {1071, "-1023410175"}};
  Pairs block = {{0, "BLOCK"}, {2, "G"}, {10, "0"}, {20, "0"}};
  block.insert(block.end(), hatch.begin(), hatch.end());
  block.push_back({0, "ENDBLK"});
  const std::string file =
      Section("BLOCKS", block) +
      Section("ENTITIES",
              {{0, "INSERT"}, {2, "G"}, {10, "20"}, {20, "20"}, {0, "LINE"}, {11, "5"}, {21, "5"}}) +
      DxfText({{0, "EOF"}});
  auto loaded = testing::LoadModern(file);
  EXPECT_TRUE(loaded->outcome.Complete);
  EXPECT_EQ(loaded->drawing.LineCount(), 1);
  EXPECT_EQ(loaded->drawing.Hatches.size(), 1u);
}

}  // namespace
}  // namespace dxfimport
