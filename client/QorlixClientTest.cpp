#include "client/QorlixClient.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "client/Enumeration.h"
#include "client/testing/ScriptedServer.h"

// Runs natively against a fake of the pipe and on Windows against a real one.

namespace client {
namespace {

using Requests = std::vector<std::string>;

class QorlixClientTest : public testing::Test {
 protected:
  QorlixClientTest() : client_(server_.PipeName()) {
    client_.SetTimeouts(/*connectMs=*/5000, /*exchangeMs=*/5000);
  }

  std::string LastRequest() const {
    const Requests requests = server_.Requests();
    return requests.empty() ? "" : requests.back();
  }

  ScriptedServer server_;
  QorlixClient client_;
};

TEST_F(QorlixClientTest, NoOperationSendsItsCodeAndReturnsTheServersResult) {
  server_.Answers({"0400 00000000"});
  server_.Answers({"0400 1F000000"});
  EXPECT_TRUE(client_.NoOperation().ok());
  EXPECT_EQ(LastRequest(), "1000");
  const Result second = client_.NoOperation();
  EXPECT_TRUE(second.fromServer());
  EXPECT_EQ(second.code(), 31u);
  EXPECT_STREQ(second.name(), "ERROR_GEN_FAILURE");
  EXPECT_EQ(server_.Connections(), 1);
}

TEST_F(QorlixClientTest, AReplyThatArrivesInPartsIsReadWhole) {
  server_.Answers({"04", "00 0000", "0000 03000000", "41", "4243 0300", "0000"});
  RegistryData data;
  EXPECT_TRUE(client_.Reg_GetValue("K", "N", data).ok());
  EXPECT_EQ(data.text, "ABC");
  EXPECT_EQ(data.length, 3u);
}

TEST_F(QorlixClientTest, EveryRegistryCommandSendsItsFieldsInOrder) {
  for (int i = 0; i < 8; ++i) server_.Answers({"0400 00000000"});
  EXPECT_TRUE(client_.Reg_CreateKey("K").ok());
  EXPECT_EQ(LastRequest(), "0200010000004B");
  EXPECT_TRUE(client_.Reg_DelKey("K").ok());
  EXPECT_EQ(LastRequest(), "0100010000004B");
  EXPECT_TRUE(client_.Reg_SetValue("K", "N", "V").ok());
  EXPECT_EQ(LastRequest(), "0300010000004B010000004E0100000056");
  EXPECT_TRUE(client_.Reg_DelValue("K", "N").ok());
  EXPECT_EQ(LastRequest(), "1200010000004B010000004E");
  EXPECT_TRUE(client_.Reg_CreateKeyBase(kRootLocalMachine, "K").ok());
  EXPECT_EQ(LastRequest(), "1D0002000080010000004B");
  EXPECT_TRUE(client_.Reg_DelKeyBase(0x80000001, "K").ok());
  EXPECT_EQ(LastRequest(), "1E0001000080010000004B");
  EXPECT_TRUE(client_.Reg_SetValueBase(kRootLocalMachine, "K", "", nullptr).ok());
  EXPECT_EQ(LastRequest(), "1C0002000080010000004B00000000FFFF0000");
}

TEST_F(QorlixClientTest, AReadValueThatIsTooLongComesWithItsLengthAlone) {
  server_.Answers({"0400 EA000000 E8030000"});
  RegistryData data;
  const Result result = client_.Reg_GetValue("K", "N", data);
  EXPECT_TRUE(result.is(kMoreData));
  EXPECT_EQ(LastRequest(), "1600010000004B010000004E");
  EXPECT_EQ(data.text, "");
  EXPECT_EQ(data.length, 1000u);
}

TEST_F(QorlixClientTest, OneEntryOfAnEnumerationIsTakenApart) {
  server_.Answers({"0400 00000000 02000000 4142 02000000 01000000 43 05000000"});
  RegistryEntry entry;
  EXPECT_TRUE(client_.Reg_EnumValue("K", 7, entry).ok());
  EXPECT_EQ(LastRequest(), "1700010000004B07000000");
  EXPECT_EQ(entry.name, "AB");
  EXPECT_EQ(entry.nameLength, 2u);
  EXPECT_EQ(entry.data, "C");
  EXPECT_EQ(entry.dataLength, 5u);
}

TEST_F(QorlixClientTest, KeysAreVisitedUntilThereAreNoMore) {
  server_.Answers({"0400 00000000 01000000 41 01000000"});
  server_.Answers({"0400 00000000 01000000 42 01000000"});
  server_.Answers({"0400 03010000 E01F0000"});
  std::string names;
  const Result result =
      ForEachKey(client_, "K", [&](std::uint32_t index, const Result&, const RegistryEntry& entry) {
        names += std::to_string(index) + std::string(entry.name);
        return true;
      });
  EXPECT_TRUE(result.ok());
  EXPECT_EQ(names, "0A1B");
}

TEST_F(QorlixClientTest, AnEntryThatDoesNotFitAReplyIsVisitedWithItsLengthsAndDoesNotEndTheWalk) {
  server_.Answers({"0400 EA000000 01000000 00300000"});
  server_.Answers({"0400 9A210000 61000000 801F0000"});
  server_.Answers({"0400 00000000 01000000 42 01000000 00000000 00000000"});
  server_.Answers({"0400 03010000 E01F0000 E01F0000"});
  std::vector<std::uint32_t> codes;
  std::vector<std::uint32_t> lengths;
  const Result result =
      ForEachValue(client_, "K", [&](std::uint32_t, const Result& one, const RegistryEntry& entry) {
        codes.push_back(one.code());
        lengths.push_back(entry.dataLength);
        return true;
      });
  EXPECT_TRUE(result.ok());
  EXPECT_EQ(codes, (std::vector<std::uint32_t>{234, 8602, 0}));
  EXPECT_EQ(lengths, (std::vector<std::uint32_t>{0x3000, 0x1F80, 0}));
}

TEST_F(QorlixClientTest, ARequestThatTheServerCannotReadEndsTheWalkAtOnce) {
  server_.Answers({"0400 9A210000"});
  const std::string tooLong(8160, 'k');
  const Result result =
      ForEachValue(client_, tooLong.c_str(),
                   [](std::uint32_t, const Result&, const RegistryEntry&) { return true; });
  EXPECT_TRUE(result.is(BUFFER_OVERFLOW));
  EXPECT_EQ(server_.Requests().size(), 1u);
}

TEST_F(QorlixClientTest, AVisitorMayEndTheWalk) {
  server_.Answers({"0400 00000000 01000000 41 01000000"});
  int visits = 0;
  EXPECT_TRUE(ForEachKey(client_, "K", [&](std::uint32_t, const Result&, const RegistryEntry&) {
                ++visits;
                return false;
              }).ok());
  EXPECT_EQ(visits, 1);
}

TEST_F(QorlixClientTest, AnyOtherErrorEndsTheWalkAndIsReturned) {
  server_.Answers({"0400 05000000 E01F0000"});
  const Result result = ForEachKey(
      client_, "K", [](std::uint32_t, const Result&, const RegistryEntry&) { return true; });
  EXPECT_TRUE(result.is(5));
}

TEST_F(QorlixClientTest, AConfirmedStopSucceedsWhenTheConnectionBreaks) {
  server_.AnswersAndCloses({});
  EXPECT_TRUE(client_.StopServer().ok());
  EXPECT_EQ(LastRequest(), "FD00FD000000");
}

TEST_F(QorlixClientTest, AnUnconfirmedStopReturnsTheServersAnswer) {
  server_.Answers({"0400 E7040000"});
  EXPECT_TRUE(client_.StopServer(/*confirmation=*/0).is(1255));
  EXPECT_EQ(LastRequest(), "FD0000000000");
}

TEST_F(QorlixClientTest, AnUnconfirmedStopAndAnyOtherCommandFailWhenTheConnectionBreaks) {
  server_.AnswersAndCloses({});
  server_.AnswersAndCloses({});
  const Result stop = client_.StopServer(/*confirmation=*/1);
  EXPECT_EQ(stop.origin(), Origin::Receive);
  EXPECT_TRUE(IsPipeBroken(stop.code())) << stop.code();
  const Result result = client_.NoOperation();
  EXPECT_EQ(result.origin(), Origin::Receive);
  EXPECT_TRUE(IsPipeBroken(result.code())) << result.code();
}

TEST_F(QorlixClientTest, AConfirmedStopWhoseReplyBreaksOffIsNoSuccess) {
  server_.AnswersAndCloses({"0400"});
  EXPECT_FALSE(client_.StopServer().ok());
}

TEST_F(QorlixClientTest, AnErrorOfTheTransportIsFollowedByANewConnection) {
  server_.AnswersAndCloses({"0400 00"});
  server_.Answers({"0400 00000000"});
  EXPECT_FALSE(client_.NoOperation().fromServer());
  EXPECT_TRUE(client_.NoOperation().ok());
  EXPECT_EQ(server_.Connections(), 2);
}

TEST_F(QorlixClientTest, NoReplyInTimeIsTold) {
  server_.StaysSilent();
  client_.SetTimeouts(/*connectMs=*/5000, /*exchangeMs=*/80);
  const Result result = client_.NoOperation();
  EXPECT_EQ(result.origin(), Origin::Receive);
  EXPECT_EQ(result.code(), kTimedOut);
}

TEST_F(QorlixClientTest, BytesThatAreNoReplyAreToldAndHandedOver) {
  server_.Answers({"0500 00000000"});
  Reply reply;
  const std::vector<std::uint8_t> request = FromHex("1000");
  const Result result = client_.Exchange(request, reply);
  EXPECT_EQ(result.origin(), Origin::Receive);
  EXPECT_EQ(result.code(), kInvalidReply);
  EXPECT_EQ(ToHex(reply.bytes.data(), reply.bytes.size()), "050000000000");
}

TEST_F(QorlixClientTest, ADoubledReplyIsReadWholeAndTheNextRequestIsInStep) {
  server_.Answers({"0400 AC210000", "0400 AC210000 0400 9A210000"});
  server_.Answers({"0400 00000000"});
  Reply reply;
  const std::vector<std::uint8_t> request = FromHex("10");
  EXPECT_TRUE(client_.Exchange(request, reply).is(SRV_ERR_UNKNOWN_COMMAND));
  EXPECT_EQ(reply.layout.parts, 3u);
  EXPECT_EQ(reply.bytes.size(), 18u);
  EXPECT_TRUE(client_.NoOperation().ok());
  EXPECT_EQ(server_.Connections(), 1);
}

TEST_F(QorlixClientTest, APanelsReplyIsReadWholeWhetherItIsDoubledOrNot) {
  server_.Answers({"0400 00000000"});
  server_.Answers({"0400 00000000", "0400 00000000", "0400 00000000"});
  server_.Answers({"0400 1F000000"});
  Reply reply;
  const std::vector<std::uint8_t> request = FromHex("1100");
  EXPECT_TRUE(client_.Exchange(request, reply).ok());
  EXPECT_EQ(reply.layout.parts, 1u);
  EXPECT_TRUE(client_.Exchange(request, reply).ok());
  EXPECT_EQ(reply.layout.parts, 3u);
  EXPECT_TRUE(client_.NoOperation().is(31));
}

TEST_F(QorlixClientTest, BytesThatNobodyAskedForDoNotMeetTheNextRequest) {
  server_.Answers({"0400 00000000 0400 05000000"});
  server_.Answers({"0400 00000000"});
  EXPECT_TRUE(client_.NoOperation().ok());
  EXPECT_TRUE(client_.NoOperation().ok());
  EXPECT_EQ(server_.Connections(), 2);
}

TEST_F(QorlixClientTest, ALongRequestIsAnsweredOncePerServersBuffer) {
  server_.Answers({"0400 AC210000"});
  server_.Answers({"0400 00000000"});
  std::vector<std::uint8_t> bytes(8192, 0xEE);
  bytes.push_back(0x10);
  bytes.push_back(0x00);
  ASSERT_TRUE(client_.Send(bytes).ok());
  Reply reply;
  EXPECT_TRUE(client_.Receive(Bytes(bytes).first(8192), reply).is(SRV_ERR_UNKNOWN_COMMAND));
  EXPECT_TRUE(client_.Receive(Bytes(bytes).subspan(8192), reply).ok());
  EXPECT_EQ(LastRequest(), "1000");
}

TEST_F(QorlixClientTest, ATextThatNoRequestHoldsIsNotSent) {
  const std::string tooLong(8187, 'k');
  const Result result = client_.Reg_CreateKey(tooLong.c_str());
  EXPECT_EQ(result.origin(), Origin::Request);
  EXPECT_EQ(result.code(), BUFFER_OVERFLOW);
  EXPECT_EQ(server_.Connections(), 0);
}

TEST_F(QorlixClientTest, AServerThatIsNotThereIsTold) {
  server_.IsGone();
  const Result result = client_.NoOperation();
  EXPECT_EQ(result.origin(), Origin::Connect);
  EXPECT_EQ(result.code(), kPipeNotFound);
}

TEST_F(QorlixClientTest, AServerWithoutAFreeConnectionIsTold) {
  server_.IsBusy();
  client_.SetTimeouts(/*connectMs=*/100, /*exchangeMs=*/100);
  const Result result = client_.NoOperation();
  EXPECT_EQ(result.origin(), Origin::Connect);
  EXPECT_EQ(result.code(), kPipeBusy);
}

TEST_F(QorlixClientTest, ReceivingWithoutAConnectionFails) {
  Reply reply;
  const std::vector<std::uint8_t> request = FromHex("1000");
  EXPECT_EQ(client_.Receive(request, reply).origin(), Origin::Receive);
}

}  // namespace
}  // namespace client
