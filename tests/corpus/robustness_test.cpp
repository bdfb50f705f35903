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

}  // namespace
}  // namespace dxfimport
