#include <gtest/gtest.h>

#include <QGuiApplication>
#include <cstdlib>

#include "testing/user_folders.h"

int main(int argc, char** argv) {
  dxfimport::testing::UseOwnUserFolders();
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  QGuiApplication app(argc, argv);
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
