#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cli/Ctl.h"
#include "cli/testing/FakeServerProcess.h"
#include "cli/testing/JsonCheck.h"

namespace cli {
namespace {

using client::StartOutcome;

class StartTest : public testing::Test {
 protected:
  StartTest() { TheServerProcess() = {}; }

  int Start(client::StartReport report, std::vector<std::string> more = {}) {
    TheServerProcess().start = report;
    more.insert(more.begin(), "start");
    output_ = {};
    return RunCtl(more, output_);
  }

  Output output_;
};

TEST_F(StartTest, TheServerBesideTheProgramIsStartedUnlessAnotherIsNamed) {
  EXPECT_EQ(Start({StartOutcome::Ready, 0, 42}), kExitOk);
  EXPECT_EQ(TheServerProcess().program, "C:\\Stack\\QorlixSRV.exe");
  EXPECT_EQ(TheServerProcess().timeoutMs, 10000u);
  EXPECT_NE(output_.out.find("process 42"), std::string::npos);
  EXPECT_EQ(Start({StartOutcome::Ready, 0, 42}, {"--server", "X.exe", "--timeout", "3"}), kExitOk);
  EXPECT_EQ(TheServerProcess().program, "X.exe");
  EXPECT_EQ(TheServerProcess().timeoutMs, 3000u);
}

TEST_F(StartTest, AServerThatEndsFirstIsExplained) {
  EXPECT_EQ(Start({StartOutcome::EndedFirst, 183, 42}), kExitServer);
  EXPECT_NE(output_.err.find("another server is running already"), std::string::npos);
  EXPECT_NE(output_.err.find("183"), std::string::npos);
  EXPECT_EQ(Start({StartOutcome::EndedFirst, 0xC0000135, 42}), kExitServer);
  EXPECT_NE(output_.err.find("boardsvc32.dll"), std::string::npos);
  EXPECT_NE(output_.err.find("0xC0000135"), std::string::npos);
}

TEST_F(StartTest, NoProcessOrNoReadinessIsATransportError) {
  EXPECT_EQ(Start({StartOutcome::NotStarted, 2, 0}), kExitTransport);
  EXPECT_NE(output_.err.find("--server"), std::string::npos);
  EXPECT_EQ(Start({StartOutcome::TimedOut, 258, 42}), kExitTransport);
  EXPECT_NE(output_.err.find("left running"), std::string::npos);
}

TEST_F(StartTest, StayingTellsReadinessAtOnceAndTheExitCodeAtTheEnd) {
  static std::string written;
  written.clear();
  output_.write = [](Output& output) {
    written += output.out;
    output.out.clear();
  };
  TheServerProcess().start = {StartOutcome::Ready, 0, 42};
  EXPECT_EQ(RunCtl(std::vector<std::string>{"start", "--stay"}, output_), kExitOk);
  EXPECT_NE(written.find("ready"), std::string::npos);
  EXPECT_EQ(written.find("ended"), std::string::npos);
  EXPECT_NE(output_.out.find("ended with exit code 1: "), std::string::npos);
}

TEST_F(StartTest, AServerThatEndsOtherwiseThanByAStopIsAFailure) {
  TheServerProcess().exitCode = 0xC0000005;
  EXPECT_EQ(Start({StartOutcome::Ready, 0, 42}, {"--stay"}), kExitServer);
  EXPECT_NE(output_.out.find("0xC0000005"), std::string::npos);
}

TEST_F(StartTest, AServerThatSomebodyEndedHasNoSuccess) {
  TheServerProcess().exitCode = 0;
  EXPECT_EQ(Start({StartOutcome::Ready, 0, 42}, {"--stay"}), kExitServer);
  EXPECT_NE(output_.out.find("the server ended with exit code 0: it did not end by itself"),
            std::string::npos);
  EXPECT_EQ(output_.err.find("success"), std::string::npos) << output_.err;
}

TEST_F(StartTest, StayingDoesNotWaitForAServerThatIsNotThere) {
  EXPECT_EQ(Start({StartOutcome::NotStarted, 2, 0}, {"--stay"}), kExitTransport);
  EXPECT_EQ(output_.out.find("ended"), std::string::npos);
}

TEST_F(StartTest, JsonIsValidForEveryOutcome) {
  for (const StartOutcome outcome : {StartOutcome::Ready, StartOutcome::EndedFirst,
                                     StartOutcome::TimedOut, StartOutcome::NotStarted}) {
    (void)Start({outcome, 183, 42}, {"--json"});
    EXPECT_TRUE(JsonCheck::IsValid(output_.out.substr(0, output_.out.size() - 1))) << output_.out;
  }
}

}  // namespace
}  // namespace cli
