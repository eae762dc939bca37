#include "tests/support/LoopFixture.h"

namespace {

using fake_pipe_io::CompleteRead;
using fake_pipe_io::OnWait;
using fake_pipe_io::Written;

const Bytes kDone = Wire("0400 00000000");
const Bytes kUnknown = Wire("0400 AC210000");

class DispatchTest : public LoopFixture {
 protected:
  // What a client of a fresh server reads after this one request.
  Bytes Answer(const Bytes& request) {
    ClientSends(0, request);
    Run();
    return Written(0);
  }
};

TEST_F(DispatchTest, NoOperationAnswersZeroAndIgnoresWhatFollows) {
  EXPECT_EQ(Answer(Wire("1000 FFFFFFFF")), kDone);
}

TEST_F(DispatchTest, CodesWithoutACommandAreUnknown) {
  ClientSends(0, "0000");
  for (const char* request : {"0400", "FFFF", "1001 0000", "3201"}) {
    OnWait([=] { CompleteRead(0, Wire(request)); });
  }
  Run();
  EXPECT_EQ(Written(0), kUnknown + kUnknown + kUnknown + kUnknown + kUnknown);
}

TEST_F(DispatchTest, AHandlerThatCannotReadItsFieldsIsAnsweredByTheLoop) {
  EXPECT_EQ(Answer(Wire("0100 0500")), Wire("0400 9A210000"));
}

TEST_F(DispatchTest, AHandlersOwnReplyIsTheOnlyOne) {
  EXPECT_EQ(Answer(Wire("0100 FFFF0000")), Wire("0400 57000000"));
}

TEST_F(DispatchTest, StopWithAnotherConfirmationAnswers1255AndServesOn) {
  ClientSends(0, "FD00 00000000");
  OnWait([] { CompleteRead(0, Wire("1000")); });
  Run();
  EXPECT_EQ(Written(0), Wire("0400 E7040000") + kDone);
  EXPECT_EQ(Count("close 0"), 0);
  EXPECT_EQ(Count("give way"), 1);
}

TEST_F(DispatchTest, StopWithoutAConfirmationAnswersFiveAndThenFiveWithTheFailure) {
  const Bytes denied = Wire("0400 05000000");
  EXPECT_EQ(Answer(Wire("FD00 FD0000")), denied + denied + Wire("0400 9A210000"));
}

TEST_F(DispatchTest, AConfirmedStopClosesEveryInstanceInOrderAndEndsTheLoop) {
  ClientSends(3, "FD00 FD000000");
  ClientSends(4, "1000");
  Run();
  EXPECT_TRUE(Written(3).empty());
  EXPECT_TRUE(Written(4).empty());
  for (int i = 0; i < kPipeInstances; ++i) {
    EXPECT_EQ(Count("disconnect " + std::to_string(i)), 1) << i;
    EXPECT_EQ(Count("close " + std::to_string(i)), 1) << i;
    EXPECT_EQ(Pipe[i].hPipe, nullptr);
  }
}

TEST_F(DispatchTest, AStopFlushesAllConnectedClientsTogetherBeforeAnyIsDisconnected) {
  OnWait([] { fake_pipe_io::Complete(7); });
  ClientSends(3, "FD00 FD000000");
  Run();
  const std::vector<std::string>& calls = fake_pipe_io::Calls();
  const auto flush = std::find(calls.begin(), calls.end(), "flush for 2000: 3 7");
  ASSERT_NE(flush, calls.end());
  EXPECT_EQ(*(flush + 1), "disconnect 0");
  EXPECT_EQ(*(flush + 2), "close 0");
}

}  // namespace
