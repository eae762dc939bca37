#include "actions/PluginName.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

void ExpectSplit(const char* value, const char* library, const char* function) {
  char text[64];
  std::strcpy(text, value);
  const PluginName name = SplitPluginName(text);
  EXPECT_STREQ(name.library, library) << value;
  EXPECT_STREQ(name.function, function) << value;
}

TEST(PluginNameTest, TheFirstCommaParts) {
  ExpectSplit("p.dll,Run", "p.dll", "Run");
  ExpectSplit("p.dll,Run,More", "p.dll", "Run,More");
  ExpectSplit(",Run", "", "Run");
  ExpectSplit("p.dll,", "p.dll", "");
  ExpectSplit(",", "", "");
  ExpectSplit(" p.dll , Run ", " p.dll ", " Run ");
}

TEST(PluginNameTest, WithoutACommaAllOfItIsTheLibrary) {
  ExpectSplit("p.dll", "p.dll", "");
  ExpectSplit("", "", "");
}

TEST(PluginNameTest, KeptOnlyABackslashMakesANameNotPlain) {
  EXPECT_TRUE(IsPlainFileName("p.dll"));
  EXPECT_TRUE(IsPlainFileName(""));
  EXPECT_TRUE(IsPlainFileName("../p.dll"));
  EXPECT_TRUE(IsPlainFileName("c:p.dll"));
  EXPECT_FALSE(IsPlainFileName("..\\p.dll"));
  EXPECT_FALSE(IsPlainFileName("\\"));
  EXPECT_FALSE(IsPlainFileName("p.dll\\"));
}

}  // namespace
