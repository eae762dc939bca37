#include "platform/SystemPath.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

using platform::PathBuffer;

TEST(SystemPathTest, ATextIsAppendedWithItsTerminator) {
  PathBuffer path = "C:\\a";
  EXPECT_EQ(platform::AppendToPath(path, "\\b.dll"), 0u);
  EXPECT_STREQ(path, "C:\\a\\b.dll");
}

TEST(SystemPathTest, APathOf259BytesFitsAndALongerOneIsRefusedAndEmpty) {
  PathBuffer path = "12345";
  EXPECT_EQ(platform::AppendToPath(path, std::string(254, 'x').c_str()), 0u);
  EXPECT_EQ(std::strlen(path), 259u);
  EXPECT_EQ(platform::AppendToPath(path, ""), 0u);
  EXPECT_EQ(platform::AppendToPath(path, "y"), 34u);
  EXPECT_STREQ(path, "");

  std::strcpy(path, "12345");
  EXPECT_EQ(platform::AppendToPath(path, std::string(255, 'x').c_str()), 34u);
  EXPECT_STREQ(path, "");
}

TEST(SystemPathTest, ABufferWithoutATerminatorIsFull) {
  PathBuffer path;
  std::memset(path, 'x', sizeof(path));
  EXPECT_EQ(platform::AppendToPath(path, ""), 34u);
  EXPECT_STREQ(path, "");
}

TEST(SystemPathTest, ASystemDirectoryIsALengthFrom1To260) {
  EXPECT_FALSE(platform::IsSystemDirectory(0));
  EXPECT_TRUE(platform::IsSystemDirectory(1));
  EXPECT_TRUE(platform::IsSystemDirectory(260));
  EXPECT_FALSE(platform::IsSystemDirectory(261));
}

}  // namespace
