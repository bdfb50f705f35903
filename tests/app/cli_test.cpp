#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <string>
#include <sys/wait.h>

#include "testing/dxf_fixture.h"

namespace dxfimport {
namespace {

struct ProgramRun {
  int status = -1;
  std::string out;
  std::string err;
};

// Runs the dxfimport program with `args`, capturing both output streams.
ProgramRun Dxfimport(const std::string& args, const std::string& env = "LANG=C.UTF-8") {
  testing::TempFile errFile("", ".err");
  std::string command = env + " " + DXFIMPORT_BIN + " " + args + " 2>" + errFile.path();
  ProgramRun run;
  FILE* pipe = popen(command.c_str(), "r");
  std::array<char, 4096> buffer;
  while (std::size_t n = fread(buffer.data(), 1, buffer.size(), pipe)) run.out.append(buffer.data(), n);
  int raw = pclose(pipe);
  run.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
  FILE* err = fopen(errFile.path().c_str(), "r");
  while (std::size_t n = fread(buffer.data(), 1, buffer.size(), err)) run.err.append(buffer.data(), n);
  fclose(err);
  return run;
}

TEST(CommandLine, StatsOfTheSampleDrawing) {
  const std::string sample = testing::SamplePath();
  ProgramRun run = Dxfimport("stats " + sample);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.out, sample +
                         "\n\nEntities: 89\nLines: 31\nPolylines: 25\nArcs and circles: 13\nSolids: 4\nText: 13\n"
                         "Layers: 9\nBlocks: 4\nAttributes: 3\n\nLeft: -1\nTop: 13\nRight: 21\nBottom: -2\n");
  ProgramRun json = Dxfimport("stats --json " + sample);
  EXPECT_EQ(json.status, 0);
  EXPECT_NE(json.out.find("\"entities\":89"), std::string::npos);
}

TEST(CommandLine, DumpPrintsTablesAsTabSeparatedText) {
  ProgramRun run = Dxfimport("dump " + testing::SamplePath());
  EXPECT_EQ(run.status, 0);
  EXPECT_NE(run.out.find("# Lines\nX1\tY1\tX2\tY2\tLayer\tColor\tLineType\n8\t0\t8\t5\t2\t0\t0\n"), std::string::npos);
  EXPECT_NE(run.out.find("# DrawSeq\nKind\tIndex\n2\t1\n"), std::string::npos);
}

TEST(CommandLine, ReadFailuresGiveTheSystemsMessageAndStatusOne) {
  testing::TempFile notDxf("hello\nworld\n");
  ProgramRun rejected = Dxfimport("stats " + notDxf.path());
  EXPECT_EQ(rejected.status, 1);
  EXPECT_EQ(rejected.out, "");
  EXPECT_EQ(rejected.err, "Error: The selected file is not recognized as a valid DXF file.\n");

  ProgramRun missing = Dxfimport("dump /nonexistent.dxf");
  EXPECT_EQ(missing.status, 1);
  EXPECT_NE(missing.err.find("Error 53: File not found"), std::string::npos);

  testing::TempFile cut(testing::EntitiesFile({{0, "LINE"}, {10, "1"}}).substr(0, 31));
  ProgramRun stopped = Dxfimport("stats " + cut.path());
  EXPECT_EQ(stopped.status, 1);
  EXPECT_NE(stopped.err.find("Error 62: Input past end of file"), std::string::npos);
  EXPECT_NE(stopped.err.find("stopped at line"), std::string::npos);

  ProgramRun japanese = Dxfimport("stats " + notDxf.path(), "LANG=ja_JP.UTF-8");
  EXPECT_EQ(japanese.err, "エラー: 選択したファイルは有効な DXF ファイルとして認識されません。\n");

  EXPECT_EQ(Dxfimport("stats").status, 2);
  EXPECT_EQ(Dxfimport("frobnicate x").status, 2);
}

}  // namespace
}  // namespace dxfimport
