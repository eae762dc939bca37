#include <gtest/gtest.h>
#include <windows.h>

#include <cstring>
#include <string>

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

TEST(SystemFoldersTest, AFullPathHasNeitherDotElementsNorSlashes) {
  platform::PathBuffer full = "before";
  EXPECT_TRUE(platform::FullPath("C:\\windows\\system32\\..\\x.dll", full));
  EXPECT_STREQ(full, "C:\\windows\\x.dll");
  EXPECT_TRUE(platform::FullPath("C:\\windows\\system32\\a/./b/../../../x.dll", full));
  EXPECT_STREQ(full, "C:\\windows\\x.dll");
  EXPECT_TRUE(platform::FullPath("C:\\windows\\system32\\x.dll", full));
  EXPECT_STREQ(full, "C:\\windows\\system32\\x.dll");
}

TEST(SystemFoldersTest, TheNameOfADeviceLeadsOutOfEveryFolder) {
  platform::PathBuffer full = "before";
  ASSERT_TRUE(platform::FullPath("C:\\windows\\system32\\nul", full));
  EXPECT_FALSE(platform::LiesBelow(full, "C:\\windows\\system32")) << full;
}

TEST(SystemFoldersTest, AFullPathWithoutRoomIsNone) {
  platform::PathBuffer full = "before";
  const std::string longest = "C:\\" + std::string(256, 'x');
  EXPECT_TRUE(platform::FullPath(longest.c_str(), full));
  EXPECT_FALSE(platform::FullPath((longest + "x").c_str(), full));
  EXPECT_STREQ(full, "");
}

}  // namespace
