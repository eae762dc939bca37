#include "cli/testing/CtlFixture.h"

#include <gtest/gtest.h>

// What to do about a registry command that fails, said where the cause is likely.

namespace cli {
namespace {

class RegistryCtlTest : public CtlFixture {};

TEST_F(RegistryCtlTest, RefusalsAndPitfallsComeWithAHint) {
  server_.Answers({"0400 05000000"});
  EXPECT_EQ(Run({"reg", "create", "SOFTWARE\\Other"}), kExitServer);
  EXPECT_TRUE(Complains("hint: changes are permitted below SOFTWARE\\Vesmark\\NORVA only"));
  server_.Answers({"0400 05000000"});
  EXPECT_EQ(Run({"reg", "create", "HKLM\\SOFTWARE\\Vesmark\\NORVA"}), kExitServer);
  EXPECT_TRUE(Complains("hint: a path begins below HKEY_LOCAL_MACHINE"));
  server_.Answers({"0400 05000000"});
  EXPECT_EQ(Run({"reg", "create", "hkey_current_User\\SOFTWARE"}), kExitServer);
  EXPECT_TRUE(Complains("hint: a path begins below HKEY_LOCAL_MACHINE"));
  server_.Answers({"0400 05000000"});
  EXPECT_EQ(Run({"reg", "create", "K", "--base", "HKCU"}), kExitServer);
  EXPECT_TRUE(Complains("hint: the server works below HKEY_LOCAL_MACHINE only"));
  server_.Answers({"0400 02000000"});
  EXPECT_EQ(Run({"reg", "delete", "K"}), kExitServer);
  EXPECT_TRUE(Complains("hint: the server removes the tree PATH\\PATH"));
  server_.Answers({"0400 02000000"});
  EXPECT_EQ(Run({"reg", "set", "K", "N", "V"}), kExitServer);
  EXPECT_TRUE(Complains("hint: the key has to exist"));
}

TEST_F(RegistryCtlTest, ARefusedListOfKeysSaysWhatAListNeedsAndOneOfValuesDoesNot) {
  server_.Answers({"0400 05000000 E01F0000"});
  EXPECT_EQ(Run({"reg", "ls", "K"}), kExitServer);
  EXPECT_TRUE(Complains("hint: listing asks for full access to the key"));
  server_.Answers({"0400 05000000 E01F0000 E01F0000"});
  EXPECT_EQ(Run({"reg", "values", "K"}), kExitServer);
  EXPECT_FALSE(Complains("hint:"));
}

TEST_F(RegistryCtlTest, AListOfAWrongPathSaysHowPathsAreWritten) {
  server_.Answers({"0400 02000000 E01F0000"});
  EXPECT_EQ(Run({"reg", "ls", "\\K"}), kExitServer);
  EXPECT_TRUE(Complains("hint: a path has no leading backslash"));
  server_.Answers({"0400 02000000 E01F0000 E01F0000"});
  EXPECT_EQ(Run({"reg", "values", "\\K"}), kExitServer);
  EXPECT_TRUE(Complains("hint: a path has no leading backslash"));
}

}  // namespace
}  // namespace cli
