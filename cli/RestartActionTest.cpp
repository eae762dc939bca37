#include <gtest/gtest.h>

#include <string>

#include "cli/testing/CtlFixture.h"
#include "client/testing/EventSetter.h"

// The restart and its result, as whole command lines. The server's part on the event is played
// natively against the fake of RestartEvent, on Windows against real events.

namespace cli {
namespace {

constexpr char kEvent[] = "QorlixRestartActionTest";
constexpr char kEventInHex[] =
    "51"
    "6F726C6978"
    "52657374617274"
    "416374696F6E"
    "54657374";
constexpr char kStarted[] = "0400 00000000";

class RestartActionTest : public CtlFixture {
 protected:
  // The requests for the restart of CP and for its result.
  static std::string StartRequest() {
    return std::string(
               "2001"
               "020000004350"
               "17000000") +
           kEventInHex;
  }
  static std::string FetchRequest() {
    return std::string(
               "2101"
               "17000000") +
           kEventInHex;
  }
};

TEST_F(RestartActionTest, AWaitEndsWithTheResult) {
  server_.Answers({kStarted});
  server_.Answers({"0400 00000000"});
  const client::EventSetter server(kEvent);
  EXPECT_EQ(Run({"restart", "CP", "--event", kEvent, "--wait", "10"}), kExitOk);
  EXPECT_EQ(server_.Requests(), (Words{StartRequest(), FetchRequest()}));
  EXPECT_EQ(output_.out,
            "the restart of \"CP\" has been started\nthe restart has ended: 0 (success)\n");
}

TEST_F(RestartActionTest, AnEventIsMadeUpWhenNoneIsNamed) {
  server_.Answers({kStarted});
  EXPECT_EQ(Run({"restart", "CP", "--wait", "0.05", "--json"}), kExitTransport);
  ExpectJson();
  EXPECT_TRUE(Says("\"event\":\"Global\\\\qorlixctl-restart-"));
  EXPECT_TRUE(Says("\"eventExists\":false,\"waitedMs\":"));
  EXPECT_TRUE(Says("\"code\":258,\"name\":\"WAIT_TIMEOUT\""));
  // "Global\qorlixctl-restart-" in the request, too.
  EXPECT_NE(LastRequest().find("476C6F62616C5C716F726C697863746C2D726573746172742D"),
            std::string::npos);
}

TEST_F(RestartActionTest, AWaitThatRunsOutSaysWhatBecomesOfTheResult) {
  server_.Answers({kStarted});
  EXPECT_EQ(Run({"restart", "CP", "--event", kEvent, "--wait", "0.05"}), kExitTransport);
  EXPECT_TRUE(Complains("the restart was started, but had not ended when the time ran out"));
  EXPECT_TRUE(Complains("its result will be dropped"));
  EXPECT_EQ(server_.Requests(), Words{StartRequest()});

  const client::EventHolder other(kEvent);
  server_.Answers({kStarted});
  EXPECT_EQ(Run({"restart", "CP", "--event", kEvent, "--wait", "0.05"}), kExitTransport);
  EXPECT_TRUE(Complains("'qorlixctl restart --fetch QorlixRestartActionTest' tells it then"));
}

TEST_F(RestartActionTest, AnEventThatWasSetBeforeDoesNotEndTheWait) {
  const client::EventHolder setAlready(kEvent);
  server_.Answers({kStarted});
  EXPECT_EQ(Run({"restart", "CP", "--event", kEvent, "--wait", "0.05"}), kExitTransport);
  EXPECT_EQ(server_.Requests().size(), 1u);
}

TEST_F(RestartActionTest, CodesOfTheRestartAreExplained) {
  const struct {
    const char* code;
    const char* text;
  } kCodes[] = {{"03010000", "hint: no result under this name: the restart is not finished"},
                {"16270000", "hint: the restart library returned it; the ring was not checked"},
                {"99210000", "hint: rstagent9.dll in the server's system directory lacks"},
                {"9B210000", "hint: it is rstagent9.dll, which has to be in"},
                {"9C210000", "hint: it was rstagent9.dll, or ringdiag.dll in the ring check"},
                {"57000000", "hint: the code is the restart library's"}};
  for (const auto& line : kCodes) {
    server_.Answers({std::string("0400 ") + line.code});
    EXPECT_EQ(Run({"restart", "--fetch", kEvent}), kExitServer) << line.code;
    EXPECT_EQ(LastRequest(), FetchRequest());
    EXPECT_TRUE(Complains(line.text)) << output_.err;
  }
  server_.Answers({"0400 00000000"});
  EXPECT_EQ(Run({"restart", "--fetch", kEvent}), kExitOk);
  EXPECT_TRUE(Says("the restart has ended: 0 (success)"));
}

TEST_F(RestartActionTest, WithoutAWaitItIsSaidHowToFetchTheResult) {
  server_.Answers({kStarted});
  EXPECT_EQ(Run({"restart", "CP", "--event", kEvent}), kExitOk);
  EXPECT_EQ(LastRequest(), StartRequest());
  EXPECT_TRUE(Says("no program here has an event of this name"));
  {
    const client::EventHolder other(kEvent);
    server_.Answers({kStarted});
    EXPECT_EQ(Run({"restart", "CP", "--event", kEvent}), kExitOk);
    EXPECT_TRUE(
        Says("hint: 'qorlixctl restart --fetch QorlixRestartActionTest' tells its result "
             "once the event is set"));
  }
  server_.Answers({kStarted});
  EXPECT_EQ(Run({"restart", "CP"}), kExitOk);
  EXPECT_TRUE(Says("its result will be dropped, because nobody waits for it; --wait does"));
}

TEST_F(RestartActionTest, ARestartThatIsRefusedIsNotWaitedFor) {
  const client::EventSetter server(kEvent);
  server_.Answers({"0400 9A210000"});
  EXPECT_EQ(Run({"restart", "CP", "--event", kEvent, "--wait", "10"}), kExitServer);
  EXPECT_EQ(server_.Requests().size(), 1u);
}

TEST_F(RestartActionTest, WhatMakesNoRequestIsNotSent) {
  const std::string tooLong(260, 'x');
  const struct {
    Words words;
    const char* error;
  } kLines[] = {
      {{"restart"}, "restart needs NAME, or --fetch EVENT"},
      {{"restart", "CP", "--fetch", "E"}, "--fetch EVENT stands alone"},
      {{"restart", "--fetch", "E", "--wait", "1"}, "--fetch EVENT stands alone"},
      {{"restart", "--fetch", "E", "--event", "F"}, "--fetch EVENT stands alone"},
      {{"restart", "CP", "--wait", "0"}, "--wait takes seconds"},
      {{"restart", tooLong}, "NAME has at most 259 bytes here"},
      {{"restart", "CP", "--event", tooLong}, "an event's name has at most 259 bytes here"},
      {{"restart", "CP", "--event", "No\\Such\\Space", "--wait", "1"}, "cannot be created"}};
  for (const auto& line : kLines) {
    EXPECT_EQ(Run(line.words), kExitUsage) << line.error;
    EXPECT_TRUE(Complains(line.error)) << output_.err;
  }
  EXPECT_EQ(server_.Connections(), 0);
}

}  // namespace
}  // namespace cli
