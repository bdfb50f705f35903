#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QImage>
#include <algorithm>
#include <array>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "app/child_process.h"
#include "app/program_run.h"
#include "testing/dxf_fixture.h"

namespace dxfimport {
namespace {

TEST(CommandLine, StatsOfTheSampleDrawing) {
  const std::string sample = testing::SamplePath();
  ProgramRun run = Dxfimport("stats " + sample);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.out,
            sample +
                "\n\nEntities: 91\nLines: 31\nPolylines: 25\nArcs and circles: 13\nSolids: 6\nText: 13\n"
                "Layers: 9\nBlocks: 4\nAttributes: 3\n\nLeft: -0.5\nTop: 12.5\nRight: 20.5\nBottom: -1.6\n"
                "\nLoaded cleanly: nothing was skipped, repaired or left out.\n"
                "\nImport check: fit with warnings\n"
                "  warning: units not declared ($INSUNITS): the host must be told the drawing's unit\n"
                "  note: SHX fonts drawn in DejaVu Sans: romans, txt\n"
                "  note: coordinate reference system not known\n");
  ProgramRun json = Dxfimport("stats --json " + sample);
  EXPECT_EQ(json.status, 0);
  EXPECT_NE(json.out.find("\"entities\":91"), std::string::npos);
  EXPECT_NE(json.out.find("\"importCheck\":{\"reasons\":["), std::string::npos) << json.out;
  EXPECT_NE(json.out.find("\"verdict\":\"fit with warnings\""), std::string::npos);
  EXPECT_NE(json.out.find("\"loadedCleanly\":true,"), std::string::npos);
  ProgramRun legacy = Dxfimport("stats --legacy " + sample);
  EXPECT_NE(legacy.out.find("Entities: 89\n"), std::string::npos);
  EXPECT_NE(legacy.out.find("Left: -1\nTop: 13\nRight: 21\nBottom: -2\n"), std::string::npos);
}

TEST(CommandLine, DumpPrintsTablesAsTabSeparatedText) {
  ProgramRun run = Dxfimport("dump " + testing::SamplePath());
  EXPECT_EQ(run.status, 0);
  EXPECT_NE(run.out.find("# Lines\nX1\tY1\tX2\tY2\tLayer\tColor\tLineType\n8\t0\t8\t5\t2\t0\t0\n"),
            std::string::npos);
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

  ProgramRun host = Dxfimport("--automation");  // no file named: the viewer returns at once
  EXPECT_EQ(host.status, 0);
  EXPECT_EQ(host.out, "\n");

  EXPECT_EQ(Dxfimport("stats").status, 2);
  EXPECT_EQ(Dxfimport("frobnicate x").status, 2);
}

TEST(CommandLine, RenderWritesTheSamePictureInEveryBitmapFormat) {
  std::string dir = std::filesystem::temp_directory_path() / "dxfimport-render-test";
  std::filesystem::create_directories(dir);
  ProgramRun bmp = Dxfimport("render " + testing::SamplePath() + " -o " + dir + "/s.bmp");
  ASSERT_EQ(bmp.status, 0) << bmp.err;
  EXPECT_EQ(bmp.err, "");
  ProgramRun png = Dxfimport("render " + testing::SamplePath() + " -o " + dir + "/s.png --size 640x480");
  ASSERT_EQ(png.status, 0);
  QImage fromBmp(QString::fromStdString(dir + "/s.bmp")), fromPng(QString::fromStdString(dir + "/s.png"));
  ASSERT_EQ(fromBmp.size(), QSize(640, 480));
  EXPECT_EQ(fromBmp.convertToFormat(QImage::Format_RGB32), fromPng.convertToFormat(QImage::Format_RGB32));
  EXPECT_EQ(fromBmp.pixel(0, 0) & 0xFFFFFF, 0xFFFFFFu);

  // The network layer off: its magenta is gone; a black background and mono depth.
  auto magenta = [](const QImage& image) {
    int n = 0;
    for (int y = 0; y < image.height(); ++y)
      for (int x = 0; x < image.width(); ++x) n += (image.pixel(x, y) & 0xFFFFFF) == 0xFF00FF;
    return n;
  };
  EXPECT_GT(magenta(fromPng), 50);
  ASSERT_EQ(
      Dxfimport("render " + testing::SamplePath() + " -o " + dir + "/off.png --layer-off NETWORK").status, 0);
  EXPECT_EQ(magenta(QImage(QString::fromStdString(dir + "/off.png"))), 0);
  ASSERT_EQ(
      Dxfimport("render " + testing::SamplePath() + " -o " + dir + "/m.bmp --depth mono --background black")
          .status,
      0);
  EXPECT_EQ(QImage(QString::fromStdString(dir + "/m.bmp")).depth(), 1);

  ProgramRun svg = Dxfimport("render " + testing::SamplePath() + " -o " + dir + "/s.svg");
  ASSERT_EQ(svg.status, 0);
  ProgramRun pdf = Dxfimport("render " + testing::SamplePath() + " -o " + dir + "/s.pdf");
  ASSERT_EQ(pdf.status, 0);
  EXPECT_GT(std::filesystem::file_size(dir + "/s.svg"), 1000u);
  EXPECT_GT(std::filesystem::file_size(dir + "/s.pdf"), 1000u);
  std::filesystem::remove_all(dir);
}

// The six numbers of a world file.
std::vector<double> WorldFile(const std::string& path) {
  std::vector<double> numbers;
  std::ifstream in(path);
  for (double v; in >> v;) numbers.push_back(v);
  return numbers;
}

// Checks that each drawing point lights a pixel within half a pixel of where the world
// file puts it.
void ExpectPointsWhereTheWorldFileSays(const QImage& picture, const std::vector<double>& w,
                                       const std::vector<std::pair<double, double>>& points) {
  ASSERT_EQ(w.size(), 6u);
  for (auto [x, y] : points) {
    const double column = (x - w[4]) / w[0], row = (y - w[5]) / w[3];
    double nearest = 1e9, dx = 0, dy = 0;
    for (int r = 0; r < picture.height(); ++r)
      for (int c = 0; c < picture.width(); ++c)
        if (qGray(picture.pixel(c, r)) < 128 && std::hypot(c - column, r - row) < nearest)
          nearest = std::hypot(c - column, r - row), dx = c - column, dy = r - row;
    EXPECT_LE(std::abs(dx), 0.5) << x << "," << y;
    EXPECT_LE(std::abs(dy), 0.5) << x << "," << y;
  }
}

TEST(CommandLine, APictureAtAScaleCarriesItsPlacementAndResolution) {
  // Metres; three points, the middle one where neither extent nor window puts it.
  testing::TempFile drawing(
      testing::DxfText({{0, "SECTION"}, {2, "HEADER"}, {9, "$INSUNITS"}, {70, "6"}, {0, "ENDSEC"}}) +
      testing::EntitiesFile({{0, "POINT"},
                             {8, "0"},
                             {10, "0"},
                             {20, "0"},
                             {0, "POINT"},
                             {8, "0"},
                             {10, "10"},
                             {20, "8"},
                             {0, "POINT"},
                             {8, "0"},
                             {10, "3.7"},
                             {20, "2.2"}}));
  const std::string dir = std::filesystem::temp_directory_path() / "dxfimport-placement-test";
  std::filesystem::create_directories(dir);
  ProgramRun all = Dxfimport("render " + drawing.path() + " -o " + dir +
                             "/p.bmp --window -1,9,11,-1 --scale 1:100 --dpi 100 --world-file");
  ASSERT_EQ(all.status, 0) << all.err;
  QImage bmp(QString::fromStdString(dir + "/p.bmp"));
  // 100 dpi at 1:100: 1 m of drawing is 10 mm of paper, 39.37 pixels.
  EXPECT_EQ(bmp.size(), QSize(473, 394));
  EXPECT_EQ(bmp.dotsPerMeterX(), 3937);
  const std::vector<double> w = WorldFile(dir + "/p.bpw");
  ASSERT_EQ(w.size(), 6u);
  EXPECT_NEAR(w[0], 0.0254, 1e-12);
  EXPECT_EQ(w[1], 0);
  EXPECT_EQ(w[2], 0);
  EXPECT_NEAR(w[3], -0.0254, 1e-12);
  ExpectPointsWhereTheWorldFileSays(bmp, w, {{0, 0}, {10, 8}, {3.7, 2.2}});

  // A zoomed window, as PNG: the same numbers in the picture's text and beside it.
  ProgramRun part = Dxfimport("render " + drawing.path() + " -o " + dir +
                              "/z.png --window 3,3,5,1 --scale 1:50 --dpi 300 --world-file");
  ASSERT_EQ(part.status, 0) << part.err;
  QImage png(QString::fromStdString(dir + "/z.png"));
  EXPECT_EQ(png.dotsPerMeterX(), 11811);
  const std::vector<double> z = WorldFile(dir + "/z.pgw");
  ExpectPointsWhereTheWorldFileSays(png, z, {{3.7, 2.2}});
  std::ifstream pgw(dir + "/z.pgw");
  std::string text((std::istreambuf_iterator<char>(pgw)), std::istreambuf_iterator<char>());
  EXPECT_EQ(png.text("WorldFile").toStdString(), text);

  // stats --json gives the placement of the same window and size.
  ProgramRun stats = Dxfimport("stats --json " + drawing.path() + " --window 3,3,5,1 --size " +
                               std::to_string(png.width()) + "x" + std::to_string(png.height()));
  EXPECT_NE(stats.out.find("\"pixelHeight\":-"), std::string::npos) << stats.out;

  // Without units in the drawing --units is needed; with it the scale holds.
  testing::TempFile unitless(
      testing::EntitiesFile({{0, "LINE"}, {8, "0"}, {10, "0"}, {20, "0"}, {11, "254"}, {21, "0"}}));
  ProgramRun asked = Dxfimport("render " + unitless.path() + " -o " + dir + "/u.bmp --scale 1:10 --dpi 100");
  EXPECT_EQ(asked.status, 2);
  EXPECT_NE(asked.err.find("--units"), std::string::npos);
  ASSERT_EQ(Dxfimport("render " + unitless.path() + " -o " + dir +
                      "/u.bmp --window 0,1,254,0 --scale 1:10 --dpi 100 --units mm")
                .status,
            0);
  EXPECT_EQ(QImage(QString::fromStdString(dir + "/u.bmp")).width(), 100);
  std::filesystem::remove_all(dir);
}

TEST(CommandLine, AnInsertOverTheEntityBudgetIsNamedAndTheRestIsDrawn) {
  testing::TempFile grid(testing::DxfText({{0, "SECTION"},
                                           {2, "BLOCKS"},
                                           {0, "BLOCK"},
                                           {2, "POLE"},
                                           {0, "CIRCLE"},
                                           {40, "1"},
                                           {0, "ENDBLK"},
                                           {0, "ENDSEC"}}) +
                         testing::EntitiesFile({{0, "INSERT"},
                                                {8, "POLES"},
                                                {2, "POLE"},
                                                {70, "100"},
                                                {71, "100"},
                                                {44, "3"},
                                                {45, "3"},
                                                {0, "LINE"},
                                                {11, "100"},
                                                {21, "100"}}));
  const std::string png = (std::filesystem::temp_directory_path() / "dxfimport-budget.png").string();
  ProgramRun run = Dxfimport("render " + grid.path() + " -o " + png + " --max-entities 500");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err,
            "dxfimport: Block POLE on layer POLES (10,000 entities) left out: over the entity budget\n");
  EXPECT_TRUE(std::filesystem::exists(png));
  ProgramRun stats = Dxfimport("stats --json --max-entities 500 " + grid.path());
  EXPECT_NE(stats.out.find("\"entities\":1,"), std::string::npos);
  EXPECT_NE(stats.out.find("{\"count\":1,\"kind\":\"insert over the entity budget: POLE\",\"line\":"),
            std::string::npos);
  EXPECT_EQ(Dxfimport("stats --json " + grid.path()).out.find("left out"),
            std::string::npos);  // the default budget
  EXPECT_EQ(Dxfimport("stats --max-entities 0 " + grid.path()).status, 2);
}

TEST(CommandLine, RenderFailuresWriteNoFile) {
  std::string dir = std::filesystem::temp_directory_path() / "dxfimport-render-fail";
  std::filesystem::remove_all(dir);
  std::filesystem::create_directories(dir);
  testing::TempFile empty(testing::EntitiesFile({}));
  ProgramRun nothing = Dxfimport("render " + empty.path() + " -o " + dir + "/e.bmp");
  EXPECT_EQ(nothing.status, 1);
  EXPECT_EQ(nothing.err.substr(0, 37), "Error: There are no entities to draw.");
  ProgramRun noDir = Dxfimport("render " + testing::SamplePath() + " -o " + dir + "/missing/x.bmp");
  EXPECT_EQ(noDir.status, 1);
  EXPECT_TRUE(std::filesystem::is_empty(dir));

  std::string layers = testing::DxfText({{0, "SECTION"},
                                         {2, "TABLES"},
                                         {0, "TABLE"},
                                         {2, "LAYER"},
                                         {0, "LAYER"},
                                         {2, "0"},
                                         {0, "ENDTAB"},
                                         {0, "ENDSEC"}});
  testing::TempFile far(layers + testing::EntitiesFile({{0, "LINE"},
                                                        {10, "0"},
                                                        {20, "0"},
                                                        {11, "1"},
                                                        {21, "1"},
                                                        {0, "LINE"},
                                                        {10, "3e38"},
                                                        {20, "0"},
                                                        {11, "3e38"},
                                                        {21, "1"}}));
  ProgramRun overflow = Dxfimport("render " + far.path() + " -o " + dir + "/o.png --window 0,1,1,0 --legacy");
  EXPECT_EQ(overflow.status, 0);
  EXPECT_NE(overflow.err.find("Error 6: Overflow"), std::string::npos);
  EXPECT_TRUE(std::filesystem::exists(dir + "/o.png"));
  // The modern profile clips what lies beyond the view instead.
  ProgramRun clipped = Dxfimport("render " + far.path() + " -o " + dir + "/m.png --window 0,1,1,0");
  EXPECT_EQ(clipped.status, 0);
  EXPECT_EQ(clipped.err, "");

  std::filesystem::remove_all(dir);
}

TEST(CommandLine, UsageErrorsEndWithStatusTwoAndWriteNothing) {
  const char* const usages[] = {
      "-o x.gif",                        // no such format
      "-o x.bmp --size big",             // a size is WIDTHxHEIGHT
      "-o x.bmp --depth 8",              // no such depth
      "-o x.bmp --window 1,2",           // a window has four sides
      "-o x.bmp --background nocolour",  // no such colour
  };
  for (const char* usage : usages) {
    SCOPED_TRACE(usage);
    ProgramRun run = Dxfimport("render " + testing::SamplePath() + " " + usage);
    EXPECT_EQ(run.status, 2);
    EXPECT_FALSE(run.err.empty());
  }
  EXPECT_FALSE(std::filesystem::exists("x.bmp"));
}

TEST(CommandLine, RenderDrawsAPaperSpaceLayoutWhenModelSpaceIsEmptyOrOneIsAsked) {
  std::string dir = std::filesystem::temp_directory_path() / "dxfimport-render-layout";
  std::filesystem::create_directories(dir);
  std::string paper = testing::DxfText({{0, "SECTION"},
                                        {2, "BLOCKS"},
                                        {0, "BLOCK"},
                                        {2, "*Paper_Space"},
                                        {0, "ENDBLK"},
                                        {0, "BLOCK"},
                                        {2, "*Paper_Space0"},
                                        {0, "LINE"},
                                        {10, "0"},
                                        {20, "0"},
                                        {11, "5"},
                                        {21, "5"},
                                        {0, "ENDBLK"},
                                        {0, "ENDSEC"}}) +
                      testing::EntitiesFile({{0, "CIRCLE"}, {67, "1"}, {10, "0"}, {20, "0"}, {40, "10"}});
  testing::TempFile file(paper);
  ProgramRun active = Dxfimport("render " + file.path() + " -o " + dir + "/a.png");
  EXPECT_EQ(active.status, 0);
  EXPECT_EQ(active.err, "dxfimport: Model space is empty; the layout *Paper_Space is shown.\n");
  ProgramRun other = Dxfimport("render " + file.path() + " -o " + dir + "/b.png --layout '*Paper_Space0'");
  EXPECT_EQ(other.status, 0);
  EXPECT_EQ(other.err, "dxfimport: Model space is empty; the layout *Paper_Space0 is shown.\n");
  EXPECT_NE(QImage(QString::fromStdString(dir + "/a.png")), QImage(QString::fromStdString(dir + "/b.png")));
  ProgramRun weights = Dxfimport("render " + testing::SamplePath() + " -o " + dir + "/w.png --lineweights");
  EXPECT_EQ(weights.status, 0);
  std::filesystem::remove_all(dir);
}

}  // namespace
}  // namespace dxfimport

namespace dxfimport {
namespace {

TEST(CommandLine, ABatchDrawsAFolderAndSumsUpEveryFile) {
  namespace fs = std::filesystem;
  const fs::path in = fs::temp_directory_path() / "dxfimport-batch-in",
                 out = fs::temp_directory_path() / "dxfimport-batch-out";
  fs::remove_all(in), fs::remove_all(out);
  fs::create_directories(in / "sub");
  fs::copy_file(testing::SamplePath(), in / "plan.dxf");
  fs::copy_file(testing::SamplePath(), in / "sub" / "plan.DXF");
  std::ofstream(in / "broken.dxf") << "this is not a drawing\n";
  std::ofstream(in / "notes.txt") << "not a .dxf file: not drawn\n";

  ProgramRun run = Dxfimport("render " + in.string() + " -o " + out.string() + " --format png --jobs 2");
  EXPECT_EQ(run.status, 1) << run.err;
  EXPECT_NE(run.out.find("| " + (in / "broken.dxf").string() + " | failed |"), std::string::npos) << run.out;
  EXPECT_NE(run.out.find("not recognized as a valid DXF file"), std::string::npos) << run.out;
  EXPECT_NE(run.out.find("| " + (in / "plan.dxf").string() + " | ok |"), std::string::npos) << run.out;
  EXPECT_NE(run.out.find("3 files in"), std::string::npos) << run.out;
  EXPECT_NE(run.err.find("[3/3]"), std::string::npos) << run.err;
  // Two files of one name: the second picture is numbered.
  EXPECT_TRUE(fs::exists(out / "plan.png"));
  EXPECT_TRUE(fs::exists(out / "plan-2.png"));
  EXPECT_FALSE(fs::exists(out / "broken.png"));
  EXPECT_EQ(QImage(QString::fromStdString((out / "plan.png").string())),
            QImage(QString::fromStdString((out / "plan-2.png").string())));

  // A picture in strips, reduced for line art, is the picture drawn whole; the dithered
  // depths need the whole picture and say so beyond what one image holds.
  const std::string sample = testing::SamplePath();
  ASSERT_EQ(
      Dxfimport("render " + sample + " -o " + (out / "whole.png").string() + " --size 700x500 --depth grey")
          .status,
      0);
  ASSERT_EQ(Dxfimport("render " + sample + " -o " + (out / "strips.png").string() +
                      " --size 700x500 --depth grey --strip-rows 33")
                .status,
            0);
  EXPECT_EQ(
      QImage(QString::fromStdString((out / "whole.png").string())).convertToFormat(QImage::Format_RGB32),
      QImage(QString::fromStdString((out / "strips.png").string())).convertToFormat(QImage::Format_RGB32));
  ProgramRun dithered =
      Dxfimport("render " + sample + " -o " + (out / "x.bmp").string() + " --size 40000x30000 --depth 256");
  EXPECT_EQ(dithered.status, 2);
  EXPECT_NE(dithered.err.find("palette, bw and grey take any size"), std::string::npos) << dithered.err;
  fs::remove_all(in), fs::remove_all(out);
}

}  // namespace
}  // namespace dxfimport

namespace dxfimport {
namespace {

// What is no drawing gets one line that says what it is, status 1, and no picture.
TEST(NonDrawings, EachGetsOneClearLineAndNothingIsWritten) {
  namespace fs = std::filesystem;
  const fs::path dir = fs::temp_directory_path() / "dxfimport-not-drawings";
  fs::remove_all(dir);
  fs::create_directories(dir / "folder.dxf");
  std::ofstream(dir / "plan.dwg", std::ios::binary) << std::string("AC1027\0\0\0\0\0\x01\x02", 13);
  std::ofstream(dir / "empty.dxf").flush();
  std::ofstream(dir / "photo.dxf", std::ios::binary) << "\x89PNG\r\n\x1a\n....";
  struct Case {
    const char* file;
    const char* says;
  };
  const Case cases[] = {
      {"plan.dwg", "is a DWG drawing (AutoCAD 2013 format, AC1027); dxfimport reads DXF: save it as DXF"},
      {"empty.dxf", "is empty"},
      {"folder.dxf", "is a folder, not a drawing"},
      {"photo.dxf", "is a PNG image, not a DXF drawing"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.file);
    const std::string path = (dir / c.file).string();
    std::vector<std::string> commands = {"stats " + path, "dump " + path};
    // A folder given to render is a batch of the drawings in it.
    if (!fs::is_directory(path)) commands.push_back("render " + path + " -o " + (dir / "out.png").string());
    for (const std::string& command : commands) {
      ProgramRun run = Dxfimport(command);
      EXPECT_EQ(run.status, 1);
      EXPECT_EQ(run.err.rfind("dxfimport: " + path + " " + c.says, 0), 0u) << run.err;
      EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
      EXPECT_FALSE(fs::exists(dir / "out.png"));
    }
  }
  // A background a picture cannot hold is refused before anything is drawn.
  ProgramRun clear = Dxfimport("render " + testing::SamplePath() + " -o " + (dir / "t.bmp").string() +
                               " --background transparent");
  EXPECT_EQ(clear.status, 2);
  EXPECT_NE(clear.err.find("opaque"), std::string::npos);
  EXPECT_FALSE(fs::exists(dir / "t.bmp"));
  fs::remove_all(dir);
}

// A file that never ends (a pipe nobody writes) is ended at its time limit; the others
// are drawn.
TEST(CommandLine, ABatchEndsAFileAtItsTimeLimitAndGoesOn) {
  namespace fs = std::filesystem;
  const fs::path in = fs::temp_directory_path() / "dxfimport-timeout-in",
                 out = fs::temp_directory_path() / "dxfimport-timeout-out";
  fs::remove_all(in), fs::remove_all(out);
  fs::create_directories(in);
  ASSERT_EQ(mkfifo((in / "stuck.dxf").c_str(), 0600), 0);
  fs::copy_file(testing::SamplePath(), in / "plan.dxf");
  ProgramRun run = Dxfimport("render " + (in / "stuck.dxf").string() + " " + (in / "plan.dxf").string() +
                             " -o " + out.string() + " --format png --jobs 1 --file-timeout 1");
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.out.find("| " + (in / "stuck.dxf").string() + " | timed out |"), std::string::npos)
      << run.out;
  EXPECT_NE(run.out.find("ended after 1 s (--file-timeout)"), std::string::npos) << run.out;
  EXPECT_NE(run.out.find("| " + (in / "plan.dxf").string() + " | ok |"), std::string::npos) << run.out;
  EXPECT_TRUE(fs::exists(out / "plan.png"));
  EXPECT_EQ(Dxfimport("render " + testing::SamplePath() + " -o x.png --file-timeout -1").status, 2);
  fs::remove_all(in), fs::remove_all(out);
}

TEST(ChildProcess, ACrashOrAnExitIsSeenAndSiblingsDoNotHoldEachOthersInput) {
  ChildProcess crash(
      [](int out, int) {
        if (write(out, "before\n", 7) != 7) return 1;
        std::abort();
        return 0;
      },
      0);
  ChildProcess exits([](int, int) { return std::fprintf(stderr, "said on stderr\n") > 0 ? 3 : 4; }, 0, true);
  crash.Finish(), exits.Finish();
  EXPECT_EQ(crash.Signal(), SIGABRT);
  EXPECT_EQ(crash.Output(), "before\n");
  EXPECT_EQ(exits.ExitCode(), 3);
  EXPECT_EQ(exits.Output(), "said on stderr\n");

  // Two children that echo their input until it ends: the first ends when its input is
  // closed, though the second (forked after it) is still running.
  auto echo = [](int out, int in) {
    char c;
    while (read(in, &c, 1) == 1)
      if (write(out, &c, 1) != 1) return 1;
    return 0;
  };
  ChildProcess first(echo, 10), second(echo, 10);
  ASSERT_TRUE(first.Send("a", 1) && second.Send("b", 1));
  first.Finish();
  EXPECT_EQ(first.ExitCode(), 0);
  EXPECT_EQ(first.Output(), "a");
  second.Finish();
  EXPECT_EQ(second.Output(), "b");
}

}  // namespace
}  // namespace dxfimport
