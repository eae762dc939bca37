#include "platform/SystemPath.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

using platform::AppendToPath;
using platform::PathBuffer;

TEST(SystemPathTest, ATextIsAppended) {
  PathBuffer path = "C:\\windows";
  EXPECT_EQ(AppendToPath(path, "\\x.dll"), 0u);
  EXPECT_STREQ(path, "C:\\windows\\x.dll");
  EXPECT_EQ(AppendToPath(path, ""), 0u);
  EXPECT_STREQ(path, "C:\\windows\\x.dll");
}

TEST(SystemPathTest, APathOf259CharactersFitsAndOneMoreDoesNot) {
  PathBuffer path = {};
  EXPECT_EQ(AppendToPath(path, std::string(200, 'a').c_str()), 0u);
  EXPECT_EQ(AppendToPath(path, std::string(59, 'b').c_str()), 0u);
  EXPECT_EQ(std::string(path), std::string(200, 'a') + std::string(59, 'b'));

  PathBuffer other = {};
  EXPECT_EQ(AppendToPath(other, std::string(200, 'a').c_str()), 0u);
  EXPECT_EQ(AppendToPath(other, std::string(60, 'b').c_str()), 34u);
  EXPECT_STREQ(other, "");
}

TEST(SystemPathTest, ATextFarLongerThanTheBufferIsRefused) {
  PathBuffer path = "C:";
  EXPECT_EQ(AppendToPath(path, std::string(70000, 'a').c_str()), 34u);
  EXPECT_STREQ(path, "");
}

TEST(SystemPathTest, ABufferWithoutTerminatorTakesNothing) {
  PathBuffer path;
  std::memset(path, 'a', sizeof(path));
  EXPECT_EQ(AppendToPath(path, ""), 34u);
  EXPECT_STREQ(path, "");
}

TEST(SystemPathTest, TheSystemDirectoryIsKnownByTheLengthThatTheCallReturned) {
  EXPECT_FALSE(platform::IsSystemDirectory(0));
  EXPECT_TRUE(platform::IsSystemDirectory(1));
  EXPECT_TRUE(platform::IsSystemDirectory(260));
  EXPECT_FALSE(platform::IsSystemDirectory(261));
  EXPECT_FALSE(platform::IsSystemDirectory(0xFFFFFFFF));
}

TEST(SystemPathTest, TheSystemHasADirectory) {
  PathBuffer path = {};
  const std::uint32_t length = platform::SystemDirectory(path);
  ASSERT_TRUE(platform::IsSystemDirectory(length));
  EXPECT_EQ(std::strlen(path), length);
  EXPECT_EQ(path[1], ':');
}

TEST(SystemPathTest, WhatLiesBelowAFolderIsToldByItsElements) {
  const char* const folder = "C:\\windows\\system32";
  EXPECT_TRUE(platform::LiesBelow("C:\\windows\\system32\\x.dll", folder));
  EXPECT_TRUE(platform::LiesBelow("c:\\WINDOWS\\System32\\deeper\\x.dll", folder));
  for (const char* other : {"", "C:\\windows", "C:\\windows\\system32", "C:\\windows\\system32\\",
                            "C:\\windows\\system", "C:\\windows\\system32x\\x.dll",
                            "C:\\windows\\x.dll", "D:\\windows\\system32\\x.dll", "\\\\.\\nul"}) {
    EXPECT_FALSE(platform::LiesBelow(other, folder)) << other;
  }
}

}  // namespace
