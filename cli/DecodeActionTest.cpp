#include <gtest/gtest.h>

#include <string>

#include "cli/testing/CtlFixture.h"
#include "client/CommandInfo.h"

// Requests and replies taken apart without a server, natively and on Windows.

namespace cli {
namespace {

class DecodeActionTest : public CtlFixture {
 protected:
  ~DecodeActionTest() override { EXPECT_EQ(server_.Connections(), 0); }
};

TEST_F(DecodeActionTest, ARequestTellsItsCommandAndItsFields) {
  EXPECT_EQ(RunAlone({"decode", "1500 08000000 534F465457415245", "02000000"}), kExitOk);
  EXPECT_TRUE(Says("request, 18 bytes: Reg_EnumKey, code 21\n"));
  EXPECT_TRUE(Says("    key: 8 bytes: \"SOFTWARE\"\n    index: 2 (0x2)\n"));
  EXPECT_EQ(output_.err, "");
}

TEST_F(DecodeActionTest, BytesBehindTheLastFieldAreCounted) {
  EXPECT_EQ(RunAlone({"decode", "1000", "AABBCC"}), kExitOk);
  EXPECT_TRUE(Says("hint: 3 bytes behind the last field; the server does not look there"));
}

TEST_F(DecodeActionTest, ARequestThatTheServerCannotReadFailsWithWhatItWouldAnswer) {
  EXPECT_EQ(RunAlone({"decode", "0100 05000000 41"}), kExitServer);
  EXPECT_TRUE(Says("    key: not there in full\n"));
  EXPECT_TRUE(Complains("would answer 8602: it cannot read every field"));
  EXPECT_EQ(RunAlone({"decode", "FD00 FD"}), kExitServer);
  EXPECT_TRUE(Complains("would answer 5, then 5 and 8602"));
  EXPECT_EQ(RunAlone({"decode", "0400"}), kExitServer);
  EXPECT_TRUE(Complains("would answer 8620: there is no such command"));
  EXPECT_EQ(RunAlone({"decode", "10"}), kExitServer);
  EXPECT_TRUE(Complains("would answer 8620, then 8620 and 8602"));
}

TEST_F(DecodeActionTest, ARequestIsComparedWithTheCommandThatIsNamed) {
  EXPECT_EQ(RunAlone({"decode", "1000", "--command", "nooperation"}), kExitOk);
  EXPECT_EQ(RunAlone({"decode", "1000", "--command", "0x10"}), kExitOk);
  EXPECT_EQ(RunAlone({"decode", "1000", "--command", "Install"}), kExitUsage);
  EXPECT_TRUE(Complains("the request is not one of Install (a reply needs --reply)"));
  EXPECT_EQ(RunAlone({"decode", "1000", "--command", "Instal"}), kExitUsage);
  EXPECT_TRUE(Complains("there is no command 'Instal'"));
  EXPECT_EQ(RunAlone({"decode", "1000", "--command", "4"}), kExitUsage);
}

TEST_F(DecodeActionTest, AReplyHasTheFieldsOfItsCommandAndResult) {
  const Words reply = {"decode", "--reply", "--command", "Reg_GetValue"};
  Words words = reply;
  words.push_back("0400 00000000 04000000 66617374 04000000");
  EXPECT_EQ(RunAlone(words), kExitOk);
  EXPECT_TRUE(Says("reply, 18 bytes: mark 4, result 0 (success)"));
  EXPECT_TRUE(Says("    data: 4 bytes: \"fast\"\n    dataLength: 4 (0x4)\n"));
  words = reply;
  words.push_back("0400 02000000 00000000");
  EXPECT_EQ(RunAlone(words), kExitOk);
  EXPECT_TRUE(Says("result 2 ERROR_FILE_NOT_FOUND"));
  EXPECT_FALSE(Says("    data:"));
}

TEST_F(DecodeActionTest, An8602AloneIsThatOfARequestThatCouldNotBeRead) {
  EXPECT_EQ(RunAlone({"decode", "--reply", "--command", "22", "0400 9A210000"}), kExitOk);
  EXPECT_TRUE(Says("reply, 6 bytes: mark 4, result 8602 BUFFER_OVERFLOW"));
  EXPECT_FALSE(Says("dataLength"));
  EXPECT_EQ(RunAlone({"decode", "--reply", "--command", "22", "0400 9A210000 01200000"}), kExitOk);
  EXPECT_TRUE(Says("    dataLength: 8193 (0x2001)\n"));
}

TEST_F(DecodeActionTest, DoubledRepliesShowTheirParts) {
  EXPECT_EQ(RunAlone({"decode", "--reply", "--command", "StopServer",
                      "0400 05000000 0400 05000000 0400 9A210000"}),
            kExitOk);
  EXPECT_TRUE(Says("the same reply once more, 6 bytes"));
  EXPECT_TRUE(Says("a further reply, 6 bytes: mark 4, result 8602"));
  EXPECT_EQ(RunAlone({"decode", "--reply", "0400 AC210000 0400 AC210000 0400 9A210000"}), kExitOk);
  EXPECT_TRUE(Says("a further reply, 6 bytes: mark 4, result 8602"));
}

TEST_F(DecodeActionTest, AReplyThatIsNotWholeIsShownAsFarAsItGoes) {
  EXPECT_EQ(RunAlone({"decode", "--reply", "--command", "Reg_EnumValue",
                      "0400 00000000 01000000 41 01000000 0900"}),
            kExitServer);
  EXPECT_TRUE(Says("no whole reply, 17 bytes:"));
  EXPECT_TRUE(
      Says("    name: 1 byte: \"A\"\n    nameLength: 1 (0x1)\n    data: not there in full\n"));
  EXPECT_TRUE(Complains("the reply ends too early"));
  EXPECT_EQ(RunAlone({"decode", "--reply", "0500 00000000"}), kExitServer);
  EXPECT_TRUE(Complains("this is no reply to that command"));
  EXPECT_EQ(RunAlone({"decode", "--reply", "04"}), kExitServer);
}

TEST_F(DecodeActionTest, WhatIsBehindAReplyIsShownAndIsAFailure) {
  EXPECT_EQ(RunAlone({"decode", "--reply", "0400 00000000 41424344"}), kExitServer);
  EXPECT_TRUE(Says("behind it, 4 bytes:\n  0006  41 42 43 44"));
  EXPECT_TRUE(Complains("there are more bytes than one reply has"));
  EXPECT_TRUE(Complains("hint: which fields a reply has is known with --command only"));
}

TEST_F(DecodeActionTest, UnusableArgumentsAreUsageErrors) {
  EXPECT_EQ(RunAlone({"decode"}), kExitUsage);
  EXPECT_EQ(RunAlone({"decode", ""}), kExitUsage);
  EXPECT_EQ(RunAlone({"decode", "1"}), kExitUsage);
  EXPECT_EQ(RunAlone({"decode", std::string(2 * 8193, '0')}), kExitUsage);
  EXPECT_EQ(RunAlone({"ping", "--reply"}), kExitUsage);
  EXPECT_TRUE(Complains("ping does not take --reply"));
  EXPECT_EQ(RunAlone({"ping", "--command", "Install"}), kExitUsage);
}

TEST_F(DecodeActionTest, JsonIsValidForEveryCommandAndEveryCutOfItsSmallestRequest) {
  for (const client::CommandInfo& command : client::Commands()) {
    const std::vector<std::uint8_t> request = client::SmallestRequest(command);
    for (std::size_t size = 1; size <= request.size(); ++size) {
      const bool whole = size == request.size();
      EXPECT_EQ(RunAlone({"decode", "--json", client::ToHex(request.data(), size)}),
                whole ? kExitOk : kExitServer)
          << command.name << ' ' << size;
      ExpectJson();
    }
  }
}

TEST_F(DecodeActionTest, JsonIsValidForEveryCutOfAReply) {
  const std::vector<std::uint8_t> reply = client::FromHex(
      "0400 92130000 00000000 00000000 0400 92130000 00000000 00000000 "
      "0400 92130000");
  for (std::size_t size = 1; size <= reply.size(); ++size) {
    EXPECT_EQ(RunAlone({"decode", "--json", "--reply", "--command", "AddIpAddress",
                        client::ToHex(reply.data(), size)}),
              size == reply.size() ? kExitOk : kExitServer)
        << size;
    ExpectJson();
  }
}

}  // namespace
}  // namespace cli
