#pragma once

#include <stdlib.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace dxfimport::testing {

// Every test process keeps its settings, state, cache and log in folders of its own,
// never in the user's: those the test runner gave it (ctest names them in
// DXFIMPORT_TEST_FOLDERS), or else, for a test program started by hand, a temporary
// folder made here and removed when the process ends. Call before anything reads a
// setting or writes a log line.
inline void UseOwnUserFolders() {
  if (const char* given = std::getenv("DXFIMPORT_TEST_FOLDERS"); given && *given) return;
  static const std::string root = [] {
    const char* tmp = std::getenv("TMPDIR");
    std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/dxfimport-test-XXXXXX";
    return std::string(mkdtemp(pattern.data()) ? pattern : std::string());
  }();
  if (root.empty()) std::abort();  // no folder of its own: better no test than the user's settings
  static const struct Removed {
    ~Removed() {
      std::error_code ec;
      std::filesystem::remove_all(root, ec);
    }
  } removed;
  setenv("XDG_CONFIG_HOME", (root + "/config").c_str(), 1);
  setenv("XDG_STATE_HOME", (root + "/state").c_str(), 1);
  setenv("XDG_CACHE_HOME", (root + "/cache").c_str(), 1);
  setenv("XDG_DATA_HOME", (root + "/data").c_str(), 1);
  setenv("DXFIMPORT_LOG", (root + "/dxfimport.log").c_str(), 1);
  setenv("DXFIMPORT_TEST_FOLDERS", root.c_str(), 1);
}

}  // namespace dxfimport::testing
