#include "cli/Arguments.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace cli {
namespace {

using Words = std::vector<std::string>;

Invocation Parsed(const Words& words) {
  Invocation invocation;
  EXPECT_EQ(ParseArguments(words, invocation), "");
  return invocation;
}

std::string ErrorOf(const Words& words) {
  Invocation invocation;
  return ParseArguments(words, invocation);
}

TEST(ArgumentsTest, OptionsMayStandAnywhere) {
  const Invocation parsed =
      Parsed({"--json", "reg", "--timeout", "2.5", "get", "K", "--pipe=P", "N"});
  EXPECT_STREQ(parsed.subcommand->name, "reg get");
  EXPECT_EQ(parsed.arguments, (Words{"K", "N"}));
  EXPECT_TRUE(parsed.json);
  EXPECT_EQ(parsed.timeoutMs, 2500u);
  EXPECT_EQ(parsed.pipe, "P");
  EXPECT_FALSE(parsed.anyOwner);
  EXPECT_TRUE(Parsed({"ping", "--any-owner"}).anyOwner);
}

TEST(ArgumentsTest, TextsThatLookLikeOptionsGoBehindTwoDashes) {
  const Invocation parsed = Parsed({"reg", "set", "K", "N", "--", "--json"});
  EXPECT_EQ(parsed.arguments.back(), "--json");
  EXPECT_FALSE(parsed.json);
  EXPECT_EQ(Parsed({"reg", "set", "K", "N", "-5"}).arguments.back(), "-5");
  EXPECT_NE(ErrorOf({"reg", "set", "K", "N", "--text"}).find("--text"), std::string::npos);
}

TEST(ArgumentsTest, EmptyArgumentsCount) {
  EXPECT_EQ(Parsed({"reg", "set", "K", "", ""}).arguments, (Words{"K", "", ""}));
}

TEST(ArgumentsTest, AMistypedBaseDoesNotBecomeData) {
  EXPECT_NE(ErrorOf({"reg", "set", "K", "--base", "HKXX", "N", "T"}).find("'HKXX'"),
            std::string::npos);
  EXPECT_NE(ErrorOf({"reg", "create", "K", "--base", "0x80000002x"}).find("'0x80000002x'"),
            std::string::npos);
}

TEST(ArgumentsTest, TheBaseMayBeLeftOutNamedOrWrittenAsANumber) {
  EXPECT_FALSE(Parsed({"reg", "create", "K"}).hasBase);
  EXPECT_EQ(Parsed({"reg", "create", "K", "--base"}).base, 0x80000002u);
  EXPECT_EQ(Parsed({"reg", "create", "--base", "K"}).base, 0x80000002u);
  EXPECT_EQ(Parsed({"reg", "create", "--base", "hkcu", "K"}).base, 0x80000001u);
  EXPECT_EQ(Parsed({"reg", "create", "--base=0x12", "K"}).base, 0x12u);
  EXPECT_EQ(Parsed({"reg", "create", "K", "--base", "HKEY_LOCAL_MACHINE"}).base, 0x80000002u);
  EXPECT_NE(ErrorOf({"reg", "create", "--base=XY", "K"}).find("'XY'"), std::string::npos);
}

TEST(ArgumentsTest, OptionsOfOtherCommandsAreRefused) {
  EXPECT_NE(ErrorOf({"reg", "get", "K", "N", "--base"}).find("--base"), std::string::npos);
  EXPECT_NE(ErrorOf({"ping", "--server", "x"}).find("--server"), std::string::npos);
  EXPECT_NE(ErrorOf({"stop", "--stay"}).find("--stay"), std::string::npos);
}

TEST(ArgumentsTest, WhatIsMissingOrTooMuchIsNamed) {
  EXPECT_NE(ErrorOf({}), "");
  EXPECT_NE(ErrorOf({"reg"}).find("ls, values"), std::string::npos);
  EXPECT_NE(ErrorOf({"reg", "find"}).find("'reg find'"), std::string::npos);
  EXPECT_NE(ErrorOf({"pong"}).find("'pong'"), std::string::npos);
  EXPECT_NE(ErrorOf({"reg", "get", "K"}).find("PATH NAME"), std::string::npos);
  EXPECT_NE(ErrorOf({"reg", "ls", "My", "Key"}).find("'Key'"), std::string::npos);
  EXPECT_NE(ErrorOf({"raw"}), "");
  EXPECT_NE(ErrorOf({"ping", "--json=1"}), "");
  EXPECT_NE(ErrorOf({"ping", "--pipe"}), "");
  EXPECT_NE(ErrorOf({"ping", "--timeout", "soon"}).find("'soon'"), std::string::npos);
}

TEST(ArgumentsTest, TraceOptionsAreTakenWhereTheyMeanSomething) {
  const Invocation follow =
      Parsed({"trace", "follow", "--level", "error", "--function=F*", "--text", "t", "--since",
              "10m", "--color", "always", "--ring", "--for", "0.5"});
  EXPECT_EQ(follow.trace.level, "error");
  EXPECT_EQ(follow.trace.function, "F*");
  EXPECT_EQ(follow.trace.text, "t");
  EXPECT_EQ(follow.trace.since, "10m");
  EXPECT_EQ(follow.trace.color, "always");
  EXPECT_TRUE(follow.trace.ring);
  EXPECT_EQ(follow.trace.forMs, 500u);
  EXPECT_NE(ErrorOf({"ping", "--level", "error"}).find("ping does not take --level"),
            std::string::npos);
  EXPECT_NE(ErrorOf({"trace", "dump", "--for", "1"}).find("--for"), std::string::npos);
  EXPECT_NE(ErrorOf({"trace", "stats", "--color", "never"}).find("--color"), std::string::npos);
  EXPECT_NE(ErrorOf({"trace", "dump", "--color", "red"}).find("'red'"), std::string::npos);
  EXPECT_NE(ErrorOf({"trace"}).find("show, set, refresh"), std::string::npos);
  EXPECT_NE(ErrorOf({"trace", "it"}).find("'trace it'"), std::string::npos);
}

TEST(ArgumentsTest, HelpAndVersionAreWrongOnlyOfWhatThereIsNot) {
  EXPECT_TRUE(Parsed({"--help"}).help);
  EXPECT_STREQ(Parsed({"reg", "get", "--help"}).subcommand->name, "reg get");
  EXPECT_EQ(Parsed({"trace", "--help"}).group, "trace");
  EXPECT_EQ(ErrorOf({"nonsense", "--help"}), "there is no command 'nonsense'");
  EXPECT_EQ(ErrorOf({"trace", "decode", "--help"}), "there is no command 'trace decode'");
  EXPECT_TRUE(Parsed({"--version"}).version);
}

TEST(ArgumentsTest, OtherWaysOfAskingForHelpWorkWhereNoTextCanBeMeant) {
  for (const char* const word : {"-h", "-?", "/?"}) {
    EXPECT_TRUE(Parsed({word}).help);
    EXPECT_TRUE(Parsed({"ping", word}).help);
    EXPECT_EQ(Parsed({"reg", word}).group, "reg");
    EXPECT_EQ(Parsed({"trace", word}).group, "trace");
    EXPECT_STREQ(Parsed({"reg", "set", word}).subcommand->name, "reg set");
    EXPECT_FALSE(Parsed({"reg", "get", "K", word}).help);
    EXPECT_FALSE(Parsed({"reg", "ls", "--", word}).help);
  }
}

TEST(ArgumentsTest, RootKeysAreNamesOrNumbers) {
  std::uint32_t root = 0;
  EXPECT_TRUE(ParseRootKey("HKU", root));
  EXPECT_EQ(root, 0x80000003u);
  EXPECT_TRUE(ParseRootKey("0xFFFFFFFF", root));
  EXPECT_EQ(root, 0xFFFFFFFFu);
  for (const char* const word : {"", "HK", "80000002", "0x", "0x123456789", "0xG", "HKLMX"}) {
    EXPECT_FALSE(ParseRootKey(word, root)) << word;
  }
}

TEST(ArgumentsTest, ANumberAboveTheLargestIsSaidToBeTooLarge) {
  for (const char* const word : {"4294967296", "0x100000000", "99999999999999999999"}) {
    EXPECT_NE(NumberError("N", word).find("N is too large: '"), std::string::npos) << word;
  }
  for (const char* const word : {"", "0x", "-1", "many", "0xG", "1 "}) {
    EXPECT_NE(NumberError("N", word).find("N is a number, "), std::string::npos) << word;
  }
}

TEST(ArgumentsTest, SecondsHaveUpToThreeDecimalsAndBounds) {
  std::uint32_t milliseconds = 0;
  EXPECT_TRUE(ParseSeconds("10", milliseconds));
  EXPECT_EQ(milliseconds, 10000u);
  EXPECT_TRUE(ParseSeconds("0.001", milliseconds));
  EXPECT_EQ(milliseconds, 1u);
  EXPECT_TRUE(ParseSeconds(".5", milliseconds));
  EXPECT_EQ(milliseconds, 500u);
  EXPECT_TRUE(ParseSeconds("86400", milliseconds));
  EXPECT_EQ(milliseconds, 86400000u);
  for (const char* const word : {"", ".", "0", "0.000", "-1", "1e3", "1.2.3", "1.0001", "86400.001",
                                 "99999999999999999999", " 1", "1s"}) {
    EXPECT_FALSE(ParseSeconds(word, milliseconds)) << word;
  }
}

}  // namespace
}  // namespace cli
