#include <gtest/gtest.h>

#include "cli/testing/CtlFixture.h"

// Who serves the pipe is scripted, so this runs natively only.

namespace cli {
namespace {

class OwnerCtlTest : public CtlFixture {};

TEST_F(OwnerCtlTest, APipeOfAnotherUserIsUsedOnlyByThoseWhoSaySo) {
  server_.IsServedBy({77, client::PipeOwner::Other});
  server_.Answers({"0400 00000000"});
  EXPECT_EQ(Run({"ping"}), kExitTransport);
  EXPECT_TRUE(Complains("belongs to another user"));
  EXPECT_EQ(LastRequest(), "");
  EXPECT_EQ(Run({"ping", "--json"}), kExitTransport);
  EXPECT_TRUE(Says("\"origin\":\"verify\"") || Says("\"origin\": \"verify\"")) << output_.out;
  EXPECT_EQ(Run({"ping", "--any-owner"}), kExitOk);
}

}  // namespace
}  // namespace cli
