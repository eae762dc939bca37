#include "standins/script/CallScript.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

namespace standin {
namespace {

std::string ErrorsOf(std::string_view text) {
  std::string all;
  for (const ScriptError& error : ParseScript(text).errors) {
    all += std::to_string(error.line) + ": " + error.text + '\n';
  }
  return all;
}

TEST(CallScriptTest, AnAnswerHasEveryValueOfItsSection) {
  const CallScript script = ParseScript(
      "[log]\nfile = calls.log\n"
      "[answer IE_AddIPAddressEx]\ncall = 3-5\nresult = 0x1f\ndelay = 20\nlast-error = 6\n"
      "nte-context = 7\nnte-instance = 4294967295\nraise = int-overflow\n");
  ASSERT_TRUE(script.errors.empty()) << script.errors[0].text;
  EXPECT_EQ(script.logFile, "calls.log");
  ASSERT_EQ(script.answers.size(), 1u);
  const ScriptAnswer& answer = script.answers[0];
  EXPECT_EQ(answer.line, 3u);
  EXPECT_EQ(answer.which, Export::kAddIpAddress);
  EXPECT_EQ(answer.first, 3u);
  EXPECT_EQ(answer.last, 5u);
  EXPECT_EQ(answer.result, 31u);
  EXPECT_EQ(answer.delay, 20u);
  EXPECT_EQ(answer.lastError, 6u);
  EXPECT_EQ(answer.outs[0], 7u);
  EXPECT_EQ(answer.outs[1], 4294967295u);
  EXPECT_EQ(answer.raised, Raised::kIntOverflow);
}

TEST(CallScriptTest, WhatIsNotSaidIsLeftOpen) {
  const CallScript script = ParseScript("[answer EpIsCpInRing]\ncall = *\n");
  ASSERT_EQ(script.answers.size(), 1u);
  const ScriptAnswer& answer = script.answers[0];
  EXPECT_EQ(answer.first, 1u);
  EXPECT_EQ(answer.last, UINT32_MAX);
  EXPECT_FALSE(answer.result || answer.delay || answer.lastError || answer.outs[0]);
  EXPECT_EQ(answer.raised, Raised::kNothing);
}

TEST(CallScriptTest, TheFirstAnswerInTheFileThatFitsIsTaken) {
  const CallScript script = ParseScript(
      "[answer DllEntryFktSilent]\ncall = 2\nresult = 2\n"
      "[answer EpIsCpInRing]\ncall = *\nresult = 9\n"
      "[answer DllEntryFktSilent]\ncall = 2-3\nresult = 3\n");
  EXPECT_EQ(script.Find(Export::kSilentRestart, 1), nullptr);
  EXPECT_EQ(script.Find(Export::kSilentRestart, 2)->result, 2u);
  EXPECT_EQ(script.Find(Export::kSilentRestart, 3)->result, 3u);
  EXPECT_EQ(script.Find(Export::kSilentRestart, 4), nullptr);
  EXPECT_EQ(script.Find(Export::kIsCpInRing, 4000000000)->result, 9u);
}

TEST(CallScriptTest, WhatDoesNotFitIsReportedWithItsLine) {
  EXPECT_EQ(ErrorsOf("[fault X]\n"), "1: no section has the name \"fault\"\n");
  EXPECT_EQ(ErrorsOf("[answer X]\ncall = 1\n"), "1: no export has the name \"X\"\n");
  EXPECT_EQ(ErrorsOf("[answer EpIsCpInRing]\nresult = 1\n"), "1: [answer] needs the key call\n");
  EXPECT_EQ(ErrorsOf("[answer EpIsCpInRing]\ncall = 1\nnte-context = 1\n"),
            "3: [answer] has no key nte-context\n");
  EXPECT_EQ(ErrorsOf("[answer EpIsCpInRing]\ncall = 1\nresult = -1\n"),
            "3: a number from 0 to 4294967295 is wanted\n");
  EXPECT_EQ(ErrorsOf("[answer EpIsCpInRing]\ncall = 1\nresult = 4294967296\n"),
            "3: a number from 0 to 4294967295 is wanted\n");
  EXPECT_EQ(ErrorsOf("[answer EpIsCpInRing]\ncall = 1\ndelay = 600001\n"),
            "3: a number from 0 to 600000 is wanted\n");
  EXPECT_EQ(ErrorsOf("[answer EpIsCpInRing]\ncall = 1\nraise = fire\n"),
            "3: one of these is wanted: access-violation, cxx, divide-by-zero, int-overflow, "
            "stack-overflow\n");
  EXPECT_EQ(ErrorsOf("[log]\n"), "1: [log] needs the key file\n");
  EXPECT_EQ(ErrorsOf("[log]\nfile = a\n[log]\nfile = b\n"), "3: a second section [log]\n");
  EXPECT_EQ(ErrorsOf("[log x]\nfile = a\n"), "1: this section has a name only\n");
  EXPECT_EQ(ErrorsOf("[log]\nfile = \"\"\n"), "2: the log's name is empty\n");
}

TEST(CallScriptTest, CallsAreCountedFromOneAndInOrder) {
  for (const char* calls : {"0", "3-2", "x", "1-", "-1", "1,2", "* 1", "0x"}) {
    EXPECT_EQ(ErrorsOf(std::string("[answer EpIsCpInRing]\ncall = ") + calls),
              "2: calls are * or 3 or 3-5, counted from 1\n")
        << calls;
  }
}

TEST(CallScriptTest, AScriptWithAnErrorHasNoAnswersAndKeepsItsLog) {
  const CallScript script = ParseScript(
      "[answer EpIsCpInRing]\ncall = 1\n[answer EpIsCpInRing]\n[log]\nfile = calls.log\n");
  EXPECT_TRUE(script.answers.empty());
  EXPECT_EQ(script.logFile, "calls.log");
}

TEST(CallScriptTest, AFileThatIsNotThereIsAnError) {
  const CallScript script = LoadScript("no such folder/script.ini");
  ASSERT_EQ(script.errors.size(), 1u);
  EXPECT_EQ(script.errors[0].line, 0u);
  EXPECT_EQ(script.errors[0].text, "the file cannot be opened");
}

TEST(CallScriptTest, AFileAboveOneMebibyteIsAnError) {
  const std::string path = testing::TempDir() + "/qorlix_large_script.ini";
  std::ofstream(path) << std::string(1024 * 1024, '\n');
  EXPECT_TRUE(LoadScript(path).errors.empty());
  std::ofstream(path) << std::string(1024 * 1024 + 1, '\n');
  const CallScript script = LoadScript(path);
  std::filesystem::remove(path);
  ASSERT_EQ(script.errors.size(), 1u);
  EXPECT_EQ(script.errors[0].text, "the file is above 1 MiB");
}

}  // namespace
}  // namespace standin
