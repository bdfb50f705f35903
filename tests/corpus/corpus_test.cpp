#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>

#include "dxf/reader.h"
#include "testing/dxf_fixture.h"

namespace dxfimport {
namespace {

namespace fs = std::filesystem;

constexpr int kSecondsPerFile = 30;
constexpr int kExitReported = 3;

// Loads one file in a child process, so that a crash or a hang fails only that file.
int LoadInChild(const fs::path& file) {
  pid_t pid = fork();
  if (pid == 0) {
    alarm(kSecondsPerFile);
    testing::Capture capture;
    Drawing d;
    DXFReader reader(d);
    bool loaded = reader.LoadDXF(file.string());
    _exit(loaded && capture.messages.messages().empty() ? 0 : kExitReported);
  }
  int status = 0;
  waitpid(pid, &status, 0);
  return status;
}

TEST(Corpus, EveryRealDrawingLoadsWithoutCrashOrHang) {
  const fs::path dir = testing::CorpusDir();
  if (!fs::is_directory(dir)) GTEST_SKIP() << "no corpus at " << dir;
  int files = 0, reported = 0;
  for (const fs::directory_entry& entry : fs::directory_iterator(dir)) {
    std::string ext = entry.path().extension().string();
    if (ext != ".dxf" && ext != ".DXF") continue;
    ++files;
    int status = LoadInChild(entry.path());
    ASSERT_TRUE(WIFEXITED(status)) << entry.path()
                                   << (WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM
                                           ? " did not finish in time"
                                           : " crashed");
    ASSERT_TRUE(WEXITSTATUS(status) == 0 || WEXITSTATUS(status) == kExitReported)
        << entry.path() << " ended with status " << WEXITSTATUS(status);
    if (WEXITSTATUS(status) == kExitReported) ++reported;
  }
  EXPECT_GT(files, 0);
  std::printf("corpus: %d files loaded, %d ended through the error routine\n", files, reported);
}

}  // namespace
}  // namespace dxfimport
