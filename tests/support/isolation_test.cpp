// Every test process keeps its settings, state and log in folders of its own, never in
// the user's: those ctest gives it, or those its main makes when it is started by hand.
// This checks that they are in force where the program looks for them.
#include <gtest/gtest.h>

#include <QSettings>
#include <cstdlib>
#include <string>

#include "support/log.h"

namespace dxfimport {
namespace {

std::string Env(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "";
}

TEST(Isolation, SettingsAndLogLieOutsideTheUsersFolders) {
  const std::string home = Env("HOME"), config = Env("XDG_CONFIG_HOME");
  ASSERT_FALSE(config.empty());
  const std::string settings = QSettings("Corvath", "dxfimport").fileName().toStdString();
  EXPECT_EQ(settings.rfind(config + "/", 0), 0u) << settings;
  EXPECT_NE(settings.rfind(home + "/.config/", 0), 0u) << settings;
  const std::string log = FileLogSink::DefaultPath();
  EXPECT_FALSE(log.empty());
  EXPECT_NE(log.rfind(home + "/.local/", 0), 0u) << log;
}

}  // namespace
}  // namespace dxfimport
