#include <gtest/gtest.h>
#include <windows.h>

#include <cstring>

#include "platform/SystemPath.h"

namespace {

constexpr int kSystemFolder = 0x25;
constexpr int kNoSuchFolder = 0x7F;

TEST(SystemFoldersTest, TheSystemDirectoryComesWithItsLength) {
  platform::PathBuffer path = {};
  const std::uint32_t length = platform::SystemDirectory(path);
  ASSERT_TRUE(platform::IsSystemDirectory(length));
  EXPECT_EQ(std::strlen(path), length);
  EXPECT_NE(GetFileAttributesA(path) & FILE_ATTRIBUTE_DIRECTORY, 0u);
  EXPECT_NE(path[length - 1], '\\');
}

TEST(SystemFoldersTest, TheShellsSystemFolderIsTheSystemDirectory) {
  platform::PathBuffer folder = "before";
  platform::PathBuffer directory = {};
  (void)platform::SystemDirectory(directory);
  ASSERT_TRUE(platform::SpecialFolder(kSystemFolder, folder));
  EXPECT_EQ(lstrcmpiA(folder, directory), 0) << folder << " " << directory;
}

TEST(SystemFoldersTest, AFolderThatDoesNotExistLeavesAnEmptyPath) {
  platform::PathBuffer folder = "before";
  EXPECT_FALSE(platform::SpecialFolder(kNoSuchFolder, folder));
  EXPECT_STREQ(folder, "");
}

}  // namespace
