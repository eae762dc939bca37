#include "client/ActionCalls.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "client/testing/ScriptedServer.h"

// Runs natively against a fake of the pipe and on Windows against a real one.

namespace client {
namespace {

class ActionCallsTest : public testing::Test {
 protected:
  ActionCallsTest() : client_(server_.PipeName()), calls_(client_) {
    client_.SetTimeouts(/*connectMs=*/5000, /*exchangeMs=*/5000);
  }

  std::string LastRequest() const {
    const std::vector<std::string> requests = server_.Requests();
    return requests.empty() ? "" : requests.back();
  }

  ScriptedServer server_;
  QorlixClient client_;
  ActionCalls calls_;
};

TEST_F(ActionCallsTest, InstallSendsDeviceAndLanguage) {
  server_.Answers({"0400 00000000"});
  EXPECT_TRUE(calls_.Install("D1", "EN").ok());
  EXPECT_EQ(LastRequest(),
            "0500020000004431"
            "02000000454E");
  server_.Answers({"0400 7E000000"});
  EXPECT_TRUE(calls_.Install("D1", nullptr).is(126));
  EXPECT_EQ(LastRequest(),
            "0500020000004431"
            "FFFF0000");
}

TEST_F(ActionCallsTest, DeinstallSendsTheBoardAsWell) {
  server_.Answers({"0400 05000000"});
  EXPECT_TRUE(calls_.Deinstall("D1", "", "B").is(5));
  EXPECT_EQ(LastRequest(),
            "0600020000004431"
            "00000000"
            "0100000042");
}

TEST_F(ActionCallsTest, ADriverThatIsInstalledIsAnsweredTwiceInEitherWayOfArriving) {
  for (const bool apart : {false, true}) {
    if (apart) {
      server_.Answers({"0400 00000000", "0400 00000000 0400 00000000"});
    } else {
      server_.Answers({"0400 00000000 0400 00000000 0400 00000000"});
    }
    SecondSend second;
    EXPECT_TRUE(calls_.InstallWdmDriver_32("S", "I", "T", 0x01020304, second).ok());
    EXPECT_TRUE(second.came);
    EXPECT_FALSE(second.Contradicts(Result()));
  }
  EXPECT_EQ(LastRequest(),
            "0F00"
            "0100000053"
            "0100000049"
            "0100000054"
            "04030201");
  // Nothing was left over, or the next reply would be wrong.
  server_.Answers({"0400 00000000"});
  EXPECT_TRUE(client_.NoOperation().ok());
}

TEST_F(ActionCallsTest, ADriverLibraryThatIsMissingIsAnsweredOnce) {
  server_.Answers({"0400 00000000"});
  SecondSend second{/*came=*/true, 5};
  EXPECT_TRUE(calls_.InstallWdmDriver_32("S", "I", "", 0, second).ok());
  EXPECT_FALSE(second.came);
}

TEST_F(ActionCallsTest, ASecondResultThatDiffersIsSeen) {
  server_.Answers({"0400 1F000000 0400 1F000000 0400 05000000"});
  SecondSend second;
  const Result result = calls_.RunOnlinePanel_32(second);
  EXPECT_TRUE(result.is(31));
  EXPECT_TRUE(second.came);
  EXPECT_EQ(second.result, 5u);
  EXPECT_TRUE(second.Contradicts(result));
  EXPECT_EQ(LastRequest(), "1100");
}

TEST_F(ActionCallsTest, ARepetitionThatDiffersIsNoReply) {
  server_.Answers({"0400 1F000000 0400 20000000 0400 1F000000"});
  SecondSend second;
  const Result result = calls_.RunOnlinePanel_32(second);
  EXPECT_EQ(result.origin(), Origin::Receive);
  EXPECT_EQ(result.code(), kInvalidReply);
  EXPECT_FALSE(second.came);
  EXPECT_FALSE(second.Contradicts(result));
}

TEST_F(ActionCallsTest, RestartAndItsResultGoByTheEventsName) {
  server_.Answers({"0400 00000000"});
  EXPECT_TRUE(calls_.SilentRestart("CP", "E").ok());
  EXPECT_EQ(LastRequest(),
            "2001"
            "020000004350"
            "0100000045");
  server_.Answers({"0400 03010000"});
  EXPECT_TRUE(calls_.GetSilentRestartResult("E").is(kNoRestartResult));
  EXPECT_EQ(LastRequest(),
            "2101"
            "0100000045");
}

TEST_F(ActionCallsTest, AnAddressIsSentInTheOrderInWhichItIsRead) {
  server_.Answers({"0400 00000000 05000000 07000000"});
  AddedAddress added;
  EXPECT_TRUE(
      calls_.AddIpAddress(IpAddress(192, 168, 1, 7), IpAddress(255, 255, 255, 0), 11, added).ok());
  EXPECT_EQ(LastRequest(),
            "0C00"
            "C0A80107"
            "FFFFFF00"
            "0B000000");
  EXPECT_EQ(added.nteContext, 5u);
  EXPECT_EQ(added.nteInstance, 7u);
  EXPECT_FALSE(added.second.came);
}

TEST_F(ActionCallsTest, AnAddressThatIsRefusedIsAnsweredTwice) {
  server_.Answers(
      {"0400 57000000 00000000 00000000", "0400 57000000 00000000 00000000 0400 57000000"});
  AddedAddress added;
  const Result result = calls_.AddIpAddress(1, 2, 3, added);
  EXPECT_TRUE(result.is(87));
  EXPECT_TRUE(added.second.came);
  EXPECT_FALSE(added.second.Contradicts(result));
}

TEST_F(ActionCallsTest, AServerWithoutTheCommandTellsNoAddress) {
  server_.Answers({"0400 AC210000"});
  AddedAddress added{1, 2, {true, 3}};
  EXPECT_TRUE(calls_.AddIpAddress(1, 2, 3, added).is(SRV_ERR_UNKNOWN_COMMAND));
  EXPECT_EQ(added.nteContext, 0u);
  EXPECT_FALSE(added.second.came);
}

TEST_F(ActionCallsTest, AnAddressIsDeletedByItsContext) {
  server_.Answers({"0400 00000000"});
  EXPECT_TRUE(calls_.DelIpAddress(0x10203).ok());
  EXPECT_EQ(LastRequest(),
            "0D00"
            "03020100");
}

TEST_F(ActionCallsTest, ATextThatWasShownComesBack) {
  server_.Answers({"0400 E7030000 02000000 4869"});
  std::string_view shown;
  EXPECT_TRUE(calls_.TestFunction("Hi", shown).is(kTextShown));
  EXPECT_EQ(LastRequest(),
            "F000"
            "020000004869");
  EXPECT_EQ(shown, "Hi");
  server_.Answers({"0400 9A210000"});
  EXPECT_TRUE(calls_.TestFunction("Hi", shown).is(BUFFER_OVERFLOW));
  EXPECT_EQ(shown, "");
}

TEST_F(ActionCallsTest, WhatDoesNotFitARequestIsNotSent) {
  const std::string text(9000, 'a');
  EXPECT_EQ(calls_.Install(text.c_str(), "").origin(), Origin::Request);
  EXPECT_EQ(server_.Connections(), 0);
}

}  // namespace
}  // namespace client
