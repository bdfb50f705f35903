#include "support/texts.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "support/messages.h"
#include "support/temp_file.h"
#include "testing/dxf_fixture.h"

namespace dxfimport {
namespace {

using testing::Capture;

TEST(Texts, LookupFallsBackAndLogsMismatches) {
  Capture capture;
  EXPECT_EQ(LoadResText(99999), "Error");
  EXPECT_EQ(LoadResText(99999, "fallback"), "fallback");
  EXPECT_EQ(LoadResText(1050), "Error: The selected file is not recognized as a valid DXF file.");
  EXPECT_TRUE(capture.log.lines.empty());
  EXPECT_EQ(LoadResText(1010, "ON"), "On");  // case does not count as a mismatch
  EXPECT_TRUE(capture.log.lines.empty());
  EXPECT_EQ(LoadResText(1010, "Onn"), "On");
  ASSERT_EQ(capture.log.lines.size(), 1u);
  EXPECT_EQ(capture.log.lines[0].first, 1);
  EXPECT_NE(capture.log.lines[0].second.find("mismatch at number 1010: Onn<>On"), std::string::npos);
}

TEST(Texts, EveryQuotedNumberExistsInBothLanguages) {
  for (int id : {500, 501, 502, 503, 504}) {
    EXPECT_TRUE(StringTableEntry(id, Language::English)) << id;
    EXPECT_TRUE(StringTableEntry(id, Language::Japanese)) << id;
  }
  for (int id = 1000; id <= 1059; ++id) {
    EXPECT_TRUE(StringTableEntry(id, Language::English)) << id;
    EXPECT_TRUE(StringTableEntry(id, Language::Japanese)) << id;
  }
  SetLanguage(Language::Japanese);
  EXPECT_EQ(LoadResText(1030), "終了(&X)");
  SetLanguage(std::nullopt);
}

TEST(Texts, PlaceholdersAreFilled) {
  SetApplicationTitle("Corvath DXF Import");
  EXPECT_EQ(SubstituteArgs("Version %V.", {}), "Version " + VersionText() + ".");
  EXPECT_EQ(SubstituteArgs("a%Nb%Nc", {}), "a\r\nb\r\nc");
  EXPECT_EQ(SubstituteArgs("%A: %2 then %1, %1", {"one", "two"}), "Corvath DXF Import: two then one, one");
  EXPECT_EQ(SubstituteArgs("at %T", {}).size(), std::string("at 05:34 PM").size());
}

TEST(ReportError, ShowsTheNumberedMessageAndLogsWhere) {
  SetApplicationTitle("Corvath DXF Import");
  Capture capture;
  ReportError("SetLayerState", "LAYER", "Subscript out of range", 9);
  ASSERT_EQ(capture.messages.messages().size(), 1u);
  const auto& shown = capture.messages.messages()[0];
  EXPECT_EQ(shown.icon, MessageIcon::Critical);
  EXPECT_EQ(shown.caption, "Corvath DXF Import");
  EXPECT_EQ(shown.text, "Error encountered.\n\nError 9: Subscript out of range");
  ASSERT_EQ(capture.log.lines.size(), 1u);
  EXPECT_EQ(capture.log.lines[0].first, 3);
  EXPECT_EQ(
      capture.log.lines[0].second,
      "Corvath DXF Import critical condition: Error 9: Subscript out of range in module LAYER procedure "
      "SetLayerState");
}

TEST(Log, EmptyMessagesAreNotWritten) {
  Capture capture;
  LogCritical("");
  LogDebug("");
  EXPECT_TRUE(capture.log.lines.empty());
}

TEST(Log, FileSinkAppendsLevelAndText) {
  std::string path = std::filesystem::temp_directory_path() / "dxfimport-log-test/sub/x.log";
  std::filesystem::remove_all(std::filesystem::path(path).parent_path().parent_path());
  FileLogSink sink(path);
  sink.Write(3, "first");
  sink.Write(1, "second");
  std::ifstream in(path);
  std::string all((std::istreambuf_iterator<char>(in)), {});
  EXPECT_EQ(all, "3\tfirst\n1\tsecond\n");
}

TEST(NewTempFileName, GivesDistinctEmptyFiles) {
  Capture capture;
  std::string a = NewTempFileName(), b = NewTempFileName();
  EXPECT_NE(a, b);
  for (const std::string& name : {a, b}) {
    EXPECT_TRUE(std::filesystem::exists(name));
    EXPECT_EQ(std::filesystem::file_size(name), 0u);
    EXPECT_EQ(std::filesystem::path(name).filename().string().substr(0, 3), "~CV");
    EXPECT_TRUE(capture.log.Contains("temp file name is <" + name + ">"));
    std::filesystem::remove(name);
  }
}

}  // namespace
}  // namespace dxfimport
