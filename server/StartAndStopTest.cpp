#include <stdexcept>

#include "tests/support/LoopFixture.h"

namespace {

using fake_pipe_io::Op;
using fake_pipe_io::Script;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;

class StartAndStopTest : public LoopFixture {};

TEST_F(StartAndStopTest, ThePoolIs64InstancesOfOneNameEachWithAConnect) {
  Run();
  for (int i = 0; i < kPipeInstances; ++i) {
    EXPECT_EQ(Count("create " + std::to_string(i) + " \\\\.\\pipe\\QorlixSRVPIPE32"), 1);
    EXPECT_EQ(Count("connect " + std::to_string(i)), 1);
    EXPECT_EQ(Pipe[i].dwState, CONNECTING_STATE);
    EXPECT_EQ(Pipe[i].fPendingIO, 1u);
  }
}

TEST_F(StartAndStopTest, TheStartEventIsSetBehindThePoolAndBeforeTheHardwareDetection) {
  bool eventWasSet = false;
  std::size_t pipeCalls = 0;
  fake_board_library::OnStartHardwareDetection([&] {
    const std::vector<std::string> calls = fake_named_object::Calls();
    eventWasSet =
        std::find(calls.begin(), calls.end(), "set _QorlixSRVStartSRVEvent") != calls.end();
    pipeCalls = fake_pipe_io::Calls().size();
  });
  Run();
  EXPECT_TRUE(eventWasSet);
  EXPECT_EQ(pipeCalls, 128u);
}

TEST_F(StartAndStopTest, AnExceptionInTheHardwareDetectionDoesNotStopTheStart) {
  fake_board_library::OnStartHardwareDetection([] { throw std::runtime_error("fault"); });
  ClientSends(0, "1000");
  Run();
  EXPECT_EQ(fake_pipe_io::Written(0), Wire("0400 00000000"));
}

TEST_F(StartAndStopTest, AnEventThatCannotBeCreatedEndsTheStart) {
  Script(Op::CreateEvent, 10, {false, 8, 0});
  Run();
  EXPECT_EQ(Count("create 9 \\\\.\\pipe\\QorlixSRVPIPE32"), 1);
  EXPECT_EQ(Count("create 10 \\\\.\\pipe\\QorlixSRVPIPE32"), 0);
  EXPECT_EQ(fake_pipe_io::Waits(), 0);
  EXPECT_THAT(fake_named_object::Calls(), Not(Contains("set _QorlixSRVStartSRVEvent")));
}

TEST_F(StartAndStopTest, AnInstanceThatCannotBeCreatedEndsTheStartAndTheOthersStayOpen) {
  Script(Op::CreatePipe, 10, {false, 5, 0});
  Run();
  EXPECT_EQ(fake_pipe_io::Waits(), 0);
  EXPECT_EQ(Count("close 0"), 0);

  srv_.CloseSRV();
  for (int i = 0; i < 10; ++i) EXPECT_EQ(Count("close " + std::to_string(i)), 1);
  EXPECT_EQ(Count("close 10"), 0);
}

TEST_F(StartAndStopTest, CloseDoesNothingTheSecondTime) {
  Run();
  srv_.CloseSRV();
  srv_.CloseSRV();
  EXPECT_EQ(Count("close 0"), 1);
}

TEST_F(StartAndStopTest, AFailedWaitEndsTheLoop) {
  Run();
  EXPECT_EQ(fake_pipe_io::Waits(), 1);
}

TEST(BoardControlLockTest, TheObjectCreatesTheLockAndReleasesItAtItsEnd) {
  fake_named_object::Reset();
  {
    CQorlixSRVPipe srv(nullptr);
    EXPECT_EQ(srv.BCLockWait(), WAIT_OBJECT_0);
    EXPECT_EQ(srv.BCLockRelease(), 0u);
  }
  EXPECT_THAT(fake_named_object::Calls(),
              ElementsAre("create QorlixSrv_BC_Lock_Mutex", "wait 30000", "release", "release"));
}

TEST(BoardControlLockTest, TheResultOfTheWaitIsHandedOn) {
  fake_named_object::Reset();
  CQorlixSRVPipe srv(nullptr);
  for (const std::uint32_t result : {WAIT_ABANDONED, WAIT_TIMEOUT, WAIT_FAILED}) {
    fake_named_object::AnswerWait(result);
    EXPECT_EQ(srv.BCLockWait(), result);
  }
}

TEST(BoardControlLockTest, WithoutALockNobodyWaits) {
  fake_named_object::Reset();
  fake_named_object::RefuseMutexes();
  CQorlixSRVPipe srv(nullptr);
  EXPECT_EQ(srv.BCLockWait(), 6u);
  EXPECT_EQ(srv.BCLockRelease(), 1u);
  EXPECT_THAT(fake_named_object::Calls(), ElementsAre("create QorlixSrv_BC_Lock_Mutex"));
}

}  // namespace
