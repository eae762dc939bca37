#include <gtest/gtest.h>

#include "client/QorlixClient.h"
#include "client/capi/qorlixclient.h"
#include "client/testing/ScriptedServer.h"

// What a client does about who serves the pipe, and about a connection that breaks within a
// request: what no real pipe does on demand, so it runs natively only.

namespace client {
namespace {

class VerificationTest : public testing::Test {
 protected:
  VerificationTest() : client_(server_.PipeName()) {
    for (int i = 0; i < 4; ++i) server_.Answers({"0400 00000000"});
  }

  ScriptedServer server_;
  QorlixClient client_;
};

TEST_F(VerificationTest, APipeOfAnotherUserGetsNoRequest) {
  server_.IsServedBy({77, PipeOwner::Other});
  const Result result = client_.NoOperation();
  EXPECT_EQ(result.origin(), Origin::Verify);
  EXPECT_EQ(result.code(), kForeignServer);
  EXPECT_STREQ(result.text(), client_.Server().text());
  EXPECT_EQ(client_.Server().trust, ServerTrust::Foreign);
  EXPECT_EQ(client_.Server().peer.processId, 77u);
  EXPECT_TRUE(server_.Requests().empty());
}

TEST_F(VerificationTest, APipeOfTheAdministratorsIsTrusted) {
  server_.IsServedBy({77, PipeOwner::Administrators});
  EXPECT_EQ(client_.Server().trust, ServerTrust::NotChecked);
  EXPECT_TRUE(client_.NoOperation().ok());
  EXPECT_EQ(client_.Server().trust, ServerTrust::Trusted);
}

TEST_F(VerificationTest, WhereThePlatformDoesNotTellTheClientGoesOnAndSaysSo) {
  EXPECT_TRUE(client_.NoOperation().ok());
  EXPECT_EQ(client_.Server().trust, ServerTrust::Unknown);
}

TEST_F(VerificationTest, WhoOnlyWantsAWarningGetsThatAndTheReply) {
  server_.IsServedBy({77, PipeOwner::Other});
  client_.SetVerification(Verification::Warn);
  EXPECT_TRUE(client_.NoOperation().ok());
  EXPECT_EQ(client_.Server().trust, ServerTrust::Foreign);
}

TEST_F(VerificationTest, WhoDoesNotAskIsNotTold) {
  server_.IsServedBy({77, PipeOwner::Other});
  client_.SetVerification(Verification::Off);
  EXPECT_TRUE(client_.NoOperation().ok());
  EXPECT_EQ(client_.Server().trust, ServerTrust::NotChecked);
  EXPECT_EQ(client_.Server().peer.processId, 0u);
}

TEST_F(VerificationTest, ThePlainCInterfaceSaysTheSame) {
  server_.IsServedBy({77, PipeOwner::Other});
  qorlix_client* const handle = qorlix_open(server_.PipeName());
  EXPECT_EQ(qorlix_no_operation(handle), QORLIX_ERR_VERIFY);
  EXPECT_EQ(qorlix_code(handle), kForeignServer);
  qorlix_server server = {};
  EXPECT_EQ(qorlix_get_server(handle, &server), QORLIX_OK);
  EXPECT_EQ(server.trust, static_cast<std::uint32_t>(QORLIX_TRUST_FOREIGN));
  EXPECT_EQ(server.process_id, 77u);
  EXPECT_EQ(qorlix_set_verification(handle, QORLIX_VERIFY_WARN), QORLIX_OK);
  EXPECT_EQ(qorlix_no_operation(handle), QORLIX_OK);
  qorlix_close(handle);
}

TEST_F(VerificationTest, ARequestOfWhichSomethingWasTakenIsNotSentAgain) {
  EXPECT_TRUE(client_.NoOperation().ok());
  server_.BreaksWithinTheNextRequest();
  EXPECT_EQ(client_.NoOperation().origin(), Origin::Send);
  EXPECT_EQ(server_.Requests().size(), 1u);
  EXPECT_TRUE(client_.NoOperation().ok());
}

TEST_F(VerificationTest, EveryNewConnectionIsAskedAbout) {
  server_.IsServedBy({77, PipeOwner::System});
  EXPECT_TRUE(client_.NoOperation().ok());
  server_.IsServedBy({78, PipeOwner::Other});
  EXPECT_TRUE(client_.NoOperation().ok());
  server_.Restarts();
  EXPECT_EQ(client_.NoOperation().origin(), Origin::Verify);
  EXPECT_EQ(client_.Server().peer.processId, 78u);
}

}  // namespace
}  // namespace client
