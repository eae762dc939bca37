#include <algorithm>

#include "tests/support/LoopFixture.h"

// Who is served next when several clients ask at the same time, and when the system is asked.

namespace {

using fake_pipe_io::CompleteRead;
using fake_pipe_io::OnWait;
using fake_pipe_io::Op;
using fake_pipe_io::Script;

class LoopTurnsTest : public LoopFixture {
 protected:
  // All instances have clients; then each has sent a request, and has the next one ready.
  static void AllAskTwice() {
    for (int i = 0; i < kPipeInstances; ++i) OnWait([=] { fake_pipe_io::Complete(i); });
    OnWait([] {
      for (int i = 0; i < kPipeInstances; ++i) {
        CompleteRead(i, Wire("1000"));
        fake_pipe_io::ScriptRead(i, Wire("1000"));
      }
    });
  }

  // The instances in the order in which they were answered.
  static std::vector<int> Answered() {
    std::vector<int> instances;
    for (const std::string& call : fake_pipe_io::Calls()) {
      if (call.rfind("write ", 0) == 0) instances.push_back(std::stoi(call.substr(6)));
    }
    return instances;
  }
};

TEST_F(LoopTurnsTest, NobodyIsServedTwiceBeforeAll64ProcessesAreServedOnce) {
  AllAskTwice();
  Run();
  std::vector<int> answered = Answered();
  ASSERT_EQ(answered.size(), 128u);
  answered.resize(64);
  std::sort(answered.begin(), answered.end());
  EXPECT_EQ(std::unique(answered.begin(), answered.end()), answered.end());
}

TEST_F(LoopTurnsTest, All64InstancesOfOneProcessAreServedInRotation) {
  for (int i = 0; i < kPipeInstances; ++i) fake_pipe_io::SetClientProcess(i, 4);
  AllAskTwice();
  Run();
  std::vector<int> inRotation(128);
  for (int i = 0; i < 128; ++i) inRotation[static_cast<std::size_t>(i)] = i % kPipeInstances;
  EXPECT_EQ(Answered(), inRotation);
}

TEST_F(LoopTurnsTest, RequestsOfOneProcessAreServedBehindTheOneServedLast) {
  for (const int i : {2, 7, 30, 60}) {
    fake_pipe_io::SetClientProcess(i, 4);
    OnWait([=] { fake_pipe_io::Complete(i); });
  }
  OnWait([] { CompleteRead(30, Wire("1000")); });
  OnWait([] {
    for (const int i : {2, 7, 30, 60}) CompleteRead(i, Wire("1000"));
  });
  Run();
  // The wait has named the lowest.
  EXPECT_THAT(Answered(), testing::ElementsAre(30, 2, 7, 30, 60));
}

TEST_F(LoopTurnsTest, ACrowdOfOneProcessTakesTurnsWithAClientOfAnother) {
  for (const int i : {0, 1, 2, 3, 40}) {
    fake_pipe_io::SetClientProcess(i, i == 40 ? 8 : 4);
    OnWait([=] { fake_pipe_io::Complete(i); });
  }
  OnWait([] {
    for (const int i : {0, 1, 2, 3}) CompleteRead(i, Wire("1000"));
    CompleteRead(40, Wire("1000"));
  });
  Run();
  const std::vector<int> order = Answered();
  ASSERT_EQ(order.size(), 5u);
  EXPECT_EQ(order[1], 40);
}

TEST_F(LoopTurnsTest, ARequestComesBeforeClientsThatComeAndGo) {
  for (const int i : {1, 2, 40}) OnWait([=] { fake_pipe_io::Complete(i); });
  OnWait([] {
    fake_pipe_io::Complete(0);                                           // named by the wait
    fake_pipe_io::Complete(1, /*success=*/false, 0, ERROR_BROKEN_PIPE);  // gone
    CompleteRead(2, {});                                                 // gone as well
    fake_pipe_io::Complete(3);                                           // has come
    CompleteRead(40, Wire("1000"));
  });
  Run();
  const std::vector<std::string>& calls = fake_pipe_io::Calls();
  const auto at = [&](std::string_view begin) {
    return std::find_if(calls.begin(), calls.end(),
                        [&](const std::string& call) { return call.rfind(begin, 0) == 0; });
  };
  const auto answer = at("write 40");
  ASSERT_NE(answer, calls.end());
  EXPECT_LT(answer, at("disconnect 1"));
  EXPECT_LT(answer, at("disconnect 2"));
  EXPECT_LT(answer, at("read 3"));
  EXPECT_NE(at("disconnect 1"), calls.end());
  EXPECT_NE(at("disconnect 2"), calls.end());
  EXPECT_NE(at("read 3"), calls.end());
}

TEST_F(LoopTurnsTest, AClientWhoseReplyFailedWaitsWithThoseWhoComeAndGo) {
  Script(Op::Write, 5, {false, ERROR_NO_DATA, 0});
  for (const int i : {5, 40, 41}) {
    fake_pipe_io::SetClientProcess(i, 4);
    OnWait([=] { fake_pipe_io::Complete(i); });
  }
  OnWait([] {
    for (const int i : {5, 40, 41}) CompleteRead(i, Wire("1000"));
  });
  Run();
  const std::vector<std::string>& calls = fake_pipe_io::Calls();
  const auto at = [&](std::string_view begin) {
    return std::find_if(calls.begin(), calls.end(),
                        [&](const std::string& call) { return call.rfind(begin, 0) == 0; });
  };
  EXPECT_LT(at("write 40"), at("disconnect 5"));
  EXPECT_LT(at("disconnect 5"), at("write 41"));
  EXPECT_NE(at("write 41"), calls.end());
}

TEST_F(LoopTurnsTest, TheSystemIsAskedNowAndThenAlsoWhenMemoryAlwaysHasWork) {
  OnWait([] {
    fake_pipe_io::Complete(5);
    for (int i = 0; i < 1000; ++i) fake_pipe_io::ScriptRead(5, Wire("1000"));
  });
  Run();
  EXPECT_GE(fake_pipe_io::Polls(), 7);
  EXPECT_LE(fake_pipe_io::Polls(), 20);
}

TEST_F(LoopTurnsTest, NothingIsPolledWhereEveryRequestIsWaitedFor) {
  OnWait([] { fake_pipe_io::Complete(5); });
  for (int i = 0; i < 300; ++i) OnWait([] { CompleteRead(5, Wire("1000")); });
  Run();
  EXPECT_EQ(Answered().size(), 300u);
  EXPECT_EQ(fake_pipe_io::Polls(), 0);
}

TEST_F(LoopTurnsTest, NothingIsPolledWhileNothingIsToDo) {
  ClientSends(5, "1000");
  Run();
  EXPECT_EQ(fake_pipe_io::Polls(), 0);
}

}  // namespace
