#include <gtest/gtest.h>

#include "testing/user_folders.h"

int main(int argc, char** argv) {
  dxfimport::testing::UseOwnUserFolders();
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
