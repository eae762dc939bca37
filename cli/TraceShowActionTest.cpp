#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "cli/Ctl.h"
#include "cli/testing/JsonCheck.h"
#include "tests/fakes/FakeTraceAccess.h"
#include "tests/fakes/trace/FakeTrace.h"
#include "trace/TraceRing.h"

// What the trace commands make of a machine: its configuration, its ring, its counter.

namespace cli {
namespace {

using testing::HasSubstr;
using testing::Not;
using Words = std::vector<std::string>;

class TraceShowTest : public testing::Test {
 protected:
  TraceShowTest() {
    FakeTrace::Reset();
    TheTraceAccess() = {};
  }
  ~TraceShowTest() override {
    FakeTrace::Reset();
    TheTraceAccess() = {};
  }

  int Run(const Words& words) {
    output_ = {};
    return RunCtl(words, output_);
  }
  bool Says(const std::string& text) const { return output_.out.find(text) != std::string::npos; }

  void MakeRing(std::uint32_t size) {
    TheTraceAccess().ring.assign((size + zqotrc::kRingOverhead + 3) / 4, 0);
    ring_ = zqotrc::RingAt(TheTraceAccess().ring.data(), size);
    zqotrc::BeginRing(ring_);
  }

  zqotrc::Ring ring_;
  Output output_;
};

TEST_F(TraceShowTest, WithoutAKeyEverythingIsDefaultAndNothingIsWritten) {
  FakeTrace::TheMachine().keyExists = false;
  EXPECT_EQ(Run({"trace", "show"}), kExitOk);
  EXPECT_TRUE(Says("there is no such key"));
  EXPECT_TRUE(Says("  Level          0x00000000    default;"));
  EXPECT_TRUE(Says("no:  Level is 0"));
  EXPECT_TRUE(Says("C:\\TMP\\ZqFILE1.TRC  not there  <- "));
  EXPECT_TRUE(Says("note: the folder C:\\TMP\\ does not exist, so every line is dropped"));
}

TEST_F(TraceShowTest, EveryBitHasItsYesOrNoAndItsReason) {
  FakeTrace::SetText("Level", "1");
  FakeTrace::SetText("zqserver_level", "0x50");
  FakeTrace::SetText("Path", "D:\\Log\\");
  FakeTrace::SetText("FileName", "run.log");
  FakeTrace::SetText("Output", "Files");
  FakeTrace::SetText("FctName", "Install");
  EXPECT_EQ(Run({"trace", "show"}), kExitOk);
  EXPECT_TRUE(Says("  Level          0x00000001    set to \"1\";"));
  EXPECT_THAT(output_.out, testing::ContainsRegex("  16  error .*yes: zqserver_level 0x00000050"));
  EXPECT_THAT(output_.out, testing::ContainsRegex("  128 result .*no:  .*lacks the bit"));
  EXPECT_TRUE(Says("D:\\Log\\\\run1.TRC"));
  EXPECT_TRUE(Says("note: Path ends in a backslash"));
  EXPECT_TRUE(Says("note: FileName is cut at its first dot"));
  EXPECT_TRUE(Says("note: Output \"Files\" is no output"));
  EXPECT_TRUE(Says("note: FctName INSTALL has to match a whole name"));
}

TEST_F(TraceShowTest, TextsThatAreTakenForSomethingElseAreNoted) {
  FakeTrace::SetText("Level", "all");
  FakeTrace::SetText("zqserver_level", "0x40zz");
  FakeTrace::SetText("Consult", "often");
  FakeTrace::SetText("Byte/File", "1MB");
  FakeTrace::SetText("sm_size", "-3");
  EXPECT_EQ(Run({"trace", "show"}), kExitOk);
  EXPECT_TRUE(Says("note: Level \"all\" is no number and is read as 0x00000000"));
  EXPECT_TRUE(Says("note: zqserver_level \"0x40zz\" is no number and is read as 0x00000040"));
  EXPECT_TRUE(Says("note: Consult \"often\" is no number and is read as 0 seconds"));
  EXPECT_TRUE(Says("note: Byte/File \"1MB\" is no number and is read as 1\n"));
  EXPECT_TRUE(Says("note: sm_size \"-3\" is not above 0 and is ignored"));
  EXPECT_TRUE(Says("set to \"-3\", but not read with Output FILE"));
}

TEST_F(TraceShowTest, WhatIsInOrderIsNotNoted) {
  for (const char* const name : {"Level", "zqserver_level", "Consult", "Byte/File"}) {
    FakeTrace::SetText(name, "64");
  }
  EXPECT_EQ(Run({"trace", "show"}), kExitOk);
  EXPECT_THAT(output_.out, Not(HasSubstr("is no number")));
  EXPECT_THAT(output_.out, Not(HasSubstr("but not read")));
  EXPECT_THAT(output_.out, Not(HasSubstr("misspelt")));
}

TEST_F(TraceShowTest, ValuesThatNobodyReadsAreNamed) {
  TheTraceAccess().valueNames = {"Level", "LEVEL", "Levl", "panel_level"};
  EXPECT_EQ(Run({"trace", "show"}), kExitOk);
  EXPECT_TRUE(Says("note: there is a value \"Levl\", which nobody reads"));
  EXPECT_THAT(output_.out, Not(HasSubstr("\"LEVEL\"")));
  EXPECT_THAT(output_.out, Not(HasSubstr("\"panel_level\"")));
}

TEST_F(TraceShowTest, FolderAndNameInForceAreShown) {
  FakeTrace::SetText("Path", "D:\\Log");
  EXPECT_EQ(Run({"trace", "show"}), kExitOk);
  EXPECT_TRUE(Says("  Path           D:\\Log\\     "));
  EXPECT_TRUE(Says("  FileName       ZqFile        default;"));
}

TEST_F(TraceShowTest, TheRingIsShownWithItsSizeAndWhenAnotherOneTakesEffect) {
  FakeTrace::SetText("Output", "SM");
  FakeTrace::SetText("sm_size", "5000");
  EXPECT_EQ(Run({"trace", "show"}), kExitOk);
  EXPECT_TRUE(Says("there is no ring"));
  MakeRing(400);
  EXPECT_EQ(Run({"trace", "show"}), kExitOk);
  EXPECT_TRUE(Says("the ring exists and has 400 bytes"));
  EXPECT_TRUE(Says("sm_size is 5000, but takes effect only when no process has the ring"));
  MakeRing(5000);
  EXPECT_EQ(Run({"trace", "show"}), kExitOk);
  EXPECT_THAT(output_.out, Not(HasSubstr("but takes effect only")));
  EXPECT_EQ(Run({"trace", "show", "--json"}), kExitOk);
  EXPECT_TRUE(JsonCheck::IsValid(output_.out.substr(0, output_.out.size() - 1))) << output_.out;
  EXPECT_TRUE(Says("\"ring\":{\"exists\":true,\"bytes\":5000}"));
  EXPECT_TRUE(Says("\"origin\":\"program\""));
}

TEST_F(TraceShowTest, ANumericLevelIsShownAsIgnored) {
  FakeTrace::TheMachine().parameters["Level"] = {/*type=*/4, std::string("\x01\0\0\0", 4)};
  EXPECT_EQ(Run({"trace", "show"}), kExitOk);
  EXPECT_TRUE(Says("  Level          0x00000000    there, but ignored;"));
  EXPECT_TRUE(Says("note: Level is ignored: it is a REG_DWORD"));
}

TEST_F(TraceShowTest, AValueThatIsTooLongIsShownAsIgnored) {
  FakeTrace::SetText("FctName", std::string(260, 'x'));
  EXPECT_EQ(Run({"trace", "show"}), kExitOk);
  EXPECT_TRUE(Says("  FctName        all           there, but ignored;"));
  EXPECT_TRUE(Says("note: FctName is ignored: it is longer than the 260 bytes that are read"));
}

TEST_F(TraceShowTest, TheAnswerInJsonIsValidWhateverTheValuesHold) {
  FakeTrace::SetText("Level", "\x01\xff");
  FakeTrace::SetText("Path", "\x80\"\\");
  EXPECT_EQ(Run({"trace", "show", "--json"}), kExitOk);
  EXPECT_TRUE(JsonCheck::IsValid(output_.out.substr(0, output_.out.size() - 1))) << output_.out;
  EXPECT_TRUE(Says("\"bit\":128,\"name\":\"result\",\"written\":false"));
}

TEST_F(TraceShowTest, RefreshCountsUpOrSaysThatNobodyTraces) {
  EXPECT_EQ(Run({"trace", "refresh"}), kExitTransport);
  EXPECT_THAT(output_.err, HasSubstr("no process that traces"));
  TheTraceAccess().hasGeneration = true;
  TheTraceAccess().generation = 4;
  EXPECT_EQ(Run({"trace", "refresh"}), kExitOk);
  EXPECT_EQ(TheTraceAccess().generation, 5u);
  EXPECT_TRUE(Says("(generation 5)"));
}

TEST_F(TraceShowTest, TheRingIsReadWhenItIsAskedForOrConfigured) {
  EXPECT_EQ(Run({"trace", "dump", "--ring"}), kExitUsage);
  EXPECT_THAT(output_.err, HasSubstr("there is no ring"));
  MakeRing(30);
  for (const char* const line : {"F: one \r\n", "F: two \r\n", "F: three \r\n", "F: four \r\n"}) {
    zqotrc::StoreInRing(ring_, line);
  }
  EXPECT_EQ(Run({"trace", "dump", "--ring"}), kExitOk);
  EXPECT_EQ(output_.out, "F                        three\nF                        four\n");
  const std::string asked = output_.out;
  FakeTrace::SetText("Output", "SM");
  EXPECT_EQ(Run({"trace", "dump"}), kExitOk);
  EXPECT_EQ(output_.out, asked);
  EXPECT_EQ(Run({"trace", "follow", "--for", "0.01"}), kExitOk);
  EXPECT_EQ(output_.out, "");
  EXPECT_EQ(Run({"trace", "stats"}), kExitOk);
  EXPECT_TRUE(Says("2 lines"));
  TheTraceAccess().ring[zqotrc::kRingLayout] = 9;
  EXPECT_EQ(Run({"trace", "dump"}), kExitUsage);
  EXPECT_THAT(output_.err, HasSubstr("layout 9"));
  EXPECT_EQ(Run({"trace", "follow"}), kExitUsage);
}

TEST_F(TraceShowTest, AnOutputThatCannotBeReadIsNamed) {
  for (const char* const output : {"DBG", "PIPE", "ZqTRACEENGINE", "VXD"}) {
    FakeTrace::SetText("Output", output);
    EXPECT_EQ(Run({"trace", "dump"}), kExitUsage) << output;
    EXPECT_THAT(output_.err, HasSubstr("there is nothing to read here")) << output;
  }
}

TEST_F(TraceShowTest, SinceCountsBackFromNow) {
  MakeRing(400);
  TheTraceAccess().now = ((20ll * 60 + 22) * 60 + 0) * 1000000;
  zqotrc::StoreInRing(ring_,
                      "L QORLIXSR P000000032T000000036 -- SRV  0  0000 20:10:00,000 a,00001 "
                      "F:  old\r\n");
  zqotrc::StoreInRing(ring_,
                      "L QORLIXSR P000000032T000000036 -- SRV  0  0000 20:21:00,000 a,00001 "
                      "F:  new\r\n");
  EXPECT_EQ(Run({"trace", "dump", "--ring", "--since", "5m"}), kExitOk);
  EXPECT_TRUE(Says("new"));
  EXPECT_THAT(output_.out, Not(HasSubstr("old")));
}

}  // namespace
}  // namespace cli
