#include <windows.h>

#include <gmock/gmock.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "tests/e2e/ServerProcess.h"
#include "tests/e2e/Tool.h"
#include "tests/e2e/WireClient.h"
#include "tests/support/RegistryKeyScratch.h"

// The trace commands of the real qorlixctl on the real server: what one sets, the other writes, and
// the first reads.

namespace e2e {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

constexpr DWORD kPatience = 20000;

std::string Contents(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

class TraceToolTest : public testing::Test {
 protected:
  TraceToolTest() { Clear(); }
  ~TraceToolTest() override {
    server_.Kill();
    Clear();
  }
  static void Clear() {
    (void)RegDeleteTreeA(HKEY_LOCAL_MACHINE, kTraceKey);
    for (const int index : {1, 2}) (void)DeleteFileA(TraceFile(index).c_str());
  }
  static std::string TraceFile(int index) {
    return TemporaryFolder() + "QorlixTool" + std::to_string(index) + ".TRC";
  }

  static std::string Run(const std::string& arguments, DWORD expected = 0) {
    return Tool::Run(arguments, expected);
  }
  static void Set(const std::string& name, const std::string& value) {
    (void)Run("trace set " + name + " " + value);
  }
  void StartTracing() {
    ASSERT_TRUE(server_.Start());
    Set("Level", "all");
    Set("zqserver_level", "all");
    const std::string folder = TemporaryFolder();
    Set("Path", folder.substr(0, folder.size() - 1));
    Set("FileName", "QorlixTool");
  }

  /// A code that no command has, to be found again in the trace.
  static void Ask(WireClient& client, int number) {
    char request[8];
    (void)std::snprintf(request, sizeof(request), "%02X10", static_cast<unsigned>(number));
    ASSERT_TRUE(client.Answers(Wire(request), Wire("0400 AC210000")));
  }
  static std::string TraceOf(int number) {
    char text[32];
    (void)std::snprintf(text, sizeof(text), "opCode 0x10%02x", static_cast<unsigned>(number));
    return text;
  }

  ServerProcess server_;
  WireClient client_;
};

TEST_F(TraceToolTest, WhatIsSetIsWrittenAndReadFromTheFiles) {
  StartTracing();
  EXPECT_THAT(Run("trace show"), ContainsRegex("64 +progress .*yes: "));
  // The running server has not read any of it yet.
  ASSERT_TRUE(client_.Connect());
  Ask(client_, 1);
  (void)Run("trace dump", 2);
  EXPECT_THAT(Run("trace refresh"), HasSubstr("(generation "));
  Ask(client_, 2);
  Ask(client_, 3);
  const std::string lines = Run("trace dump");
  EXPECT_THAT(lines, Not(HasSubstr(TraceOf(1))));
  EXPECT_THAT(lines, HasSubstr(TraceOf(2)));
  EXPECT_LT(lines.find(TraceOf(2)), lines.find(TraceOf(3)));
  EXPECT_THAT(lines,
              ContainsRegex("^\\d\\d:\\d\\d:\\d\\d,\\d\\d\\d P\\d+ +T\\d+ +-- all      SRV 0 "
                            "0000   \\w+\\.c\\w*:\\d+ +RunSrvLoop "));
  EXPECT_EQ(Run("trace dump \"" + TraceFile(1) + "\""), lines);
  EXPECT_EQ(Run("trace dump --text \"" + TraceOf(3) + "\"").find(TraceOf(2)), std::string::npos);
  EXPECT_THAT(Run("trace stats --function Send"), ContainsRegex("Send +\\d+ +\\d"));
  EXPECT_THAT(Run("trace show"), HasSubstr("QorlixTool1.TRC"));
}

TEST_F(TraceToolTest, TheRingIsReadAndFollowed) {
  StartTracing();
  Set("Output", "SM");
  Set("sm_size", "3000");
  (void)Run("trace dump", 2);
  (void)Run("trace refresh");
  ASSERT_TRUE(client_.Connect());
  for (int number = 1; number <= 20; ++number) Ask(client_, number);
  const std::string lines = Run("trace dump");
  EXPECT_THAT(lines, HasSubstr(TraceOf(20)));
  EXPECT_THAT(lines, Not(HasSubstr(TraceOf(1))));
  EXPECT_THAT(lines, ContainsRegex("^\\d\\d:\\d\\d:\\d\\d"));

  const Tool follow("trace follow --ring --for 60 --text opCode*");
  for (int i = 0; !follow.Shows(TraceOf(0x30), /*milliseconds=*/200); ++i) {
    ASSERT_LT(i, 100) << follow.Output();
    Ask(client_, 0x30);
  }
  Ask(client_, 0x31);
  EXPECT_TRUE(follow.Shows(TraceOf(0x31), kPatience));
  EXPECT_THAT(follow.Output(), Not(HasSubstr(TraceOf(20))));
}

TEST_F(TraceToolTest, FollowGoesOnAcrossRotationsInOrderWithoutALineLost) {
  StartTracing();
  Set("Byte/File", "3000");
  (void)Run("trace refresh");
  ASSERT_TRUE(client_.Connect());
  const Tool follow("trace follow --for 60");
  for (int i = 0; !follow.Shows(TraceOf(0), /*milliseconds=*/200); ++i) {
    ASSERT_LT(i, 100) << follow.Output();
    Ask(client_, 0);
  }
  constexpr int kLast = 25;
  for (int number = 1; number <= kLast; ++number) {
    Ask(client_, number);
    ASSERT_TRUE(follow.Shows(TraceOf(number), kPatience)) << number;
  }
  const std::string shown = follow.Output();
  std::size_t at = 0;
  for (int number = 1; number <= kLast; ++number) {
    const std::size_t found = shown.find(TraceOf(number), at);
    ASSERT_NE(found, std::string::npos) << number;
    EXPECT_EQ(shown.find(TraceOf(number)), found) << number << " comes twice or too early";
    at = found;
  }
  // Both files were written anew meanwhile.
  EXPECT_THAT(Contents(TraceFile(1)) + Contents(TraceFile(2)), Not(HasSubstr(TraceOf(1))));
}

TEST_F(TraceToolTest, FollowEndsByItselfAndRefreshSaysWhenNobodyTraces) {
  (void)Run("trace follow --for 0.2");
  EXPECT_THAT(Run("trace refresh", 3), HasSubstr("no process that traces"));
  EXPECT_THAT(Run("trace follow --ring --for 0.2", 2), HasSubstr("there is no ring"));
}

}  // namespace
}  // namespace e2e
