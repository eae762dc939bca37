#include "server/PipeIo.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "server/PipeInstance.h"

// The rim over a real pipe, whose other end is in this process.

namespace {

class PipeIoTest : public testing::Test {
 protected:
  PipeIoTest() {
    overlapped_.hEvent = event_;
    pipe_ = Create(pipe_io::Claim::Any);
  }
  ~PipeIoTest() override {
    CloseClient();
    if (pipe_ != nullptr) pipe_io::Close(pipe_);
    (void)CloseHandle(event_);
  }

  HANDLE Create(pipe_io::Claim claim) {
    return pipe_io::CreateInstance(name_.c_str(), /*security=*/nullptr, claim, error_);
  }

  void OpenClient() {
    client_ = CreateFileA(name_.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0,
                          nullptr);
    ASSERT_NE(client_, INVALID_HANDLE_VALUE);
  }
  void CloseClient() {
    if (client_ != INVALID_HANDLE_VALUE) (void)CloseHandle(client_);
    client_ = INVALID_HANDLE_VALUE;
  }
  // A client that was there before it was waited for.
  void Connect() {
    OpenClient();
    const pipe_io::Outcome connect = pipe_io::Connect(pipe_, overlapped_);
    EXPECT_FALSE(connect.success);
    ASSERT_EQ(connect.error, static_cast<std::uint32_t>(ERROR_PIPE_CONNECTED));
  }
  bool IsSignalled() const { return WaitForSingleObject(event_, 0) == WAIT_OBJECT_0; }
  static DWORD Handles() {
    DWORD count = 0;
    (void)GetProcessHandleCount(GetCurrentProcess(), &count);
    return count;
  }

  const std::string name_ =
      "\\\\.\\pipe\\qorlix_pipe_io_test_" + std::to_string(GetCurrentProcessId());
  std::uint32_t error_ = 0;
  const HANDLE event_ = pipe_io::CreateInstanceEvent();
  OVERLAPPED overlapped_ = {};
  HANDLE pipe_ = nullptr;
  HANDLE client_ = INVALID_HANDLE_VALUE;
};

TEST_F(PipeIoTest, AnEventBeginsSignalledAndIsResetByHand) {
  EXPECT_TRUE(IsSignalled());
  EXPECT_TRUE(IsSignalled()) << "a look does not reset it";
  pipe_io::Unsignal(event_);
  EXPECT_FALSE(IsSignalled());
  pipe_io::Signal(event_);
  EXPECT_TRUE(IsSignalled());
}

TEST_F(PipeIoTest, AWaitReportsTheLowestEventAPassedTimeOrAnError) {
  const HANDLE second = pipe_io::CreateInstanceEvent();
  const HANDLE events[] = {event_, second};
  EXPECT_EQ(pipe_io::WaitAny(events, 2, 0, error_), 0u);
  pipe_io::Unsignal(event_);
  EXPECT_EQ(pipe_io::WaitAny(events, 2, 0, error_), 1u);
  pipe_io::Unsignal(second);
  error_ = 1;
  EXPECT_EQ(pipe_io::WaitAny(events, 2, 10, error_), static_cast<std::uint32_t>(WAIT_TIMEOUT));
  EXPECT_EQ(error_, 0u);
  (void)CloseHandle(second);
  EXPECT_EQ(pipe_io::WaitAny(events, 2, 10, error_), WAIT_FAILED);
  EXPECT_EQ(error_, static_cast<std::uint32_t>(ERROR_INVALID_HANDLE));
}

TEST_F(PipeIoTest, ARequestAndItsReply) {
  ASSERT_NE(pipe_, nullptr);
  Connect();
  EXPECT_EQ(pipe_io::ClientProcess(pipe_), GetCurrentProcessId());

  char request[8] = {};
  const pipe_io::Outcome read = pipe_io::Read(pipe_, request, sizeof(request), overlapped_);
  EXPECT_FALSE(read.success);
  ASSERT_EQ(read.error, static_cast<std::uint32_t>(ERROR_IO_PENDING));
  EXPECT_FALSE(pipe_io::IsComplete(overlapped_));
  EXPECT_EQ(pipe_io::Completion(pipe_, overlapped_).error,
            static_cast<std::uint32_t>(ERROR_IO_INCOMPLETE));

  DWORD count = 0;
  ASSERT_TRUE(WriteFile(client_, "abc", 3, &count, nullptr));
  ASSERT_EQ(pipe_io::WaitAny(&event_, 1, 5000, error_), 0u);
  EXPECT_TRUE(pipe_io::IsComplete(overlapped_));
  EXPECT_TRUE(pipe_io::HasTransferred(overlapped_));
  const pipe_io::Outcome done = pipe_io::Completion(pipe_, overlapped_);
  EXPECT_TRUE(done.success);
  EXPECT_EQ(done.count, 3u);
  EXPECT_STREQ(request, "abc");

  const pipe_io::Outcome write = pipe_io::Write(pipe_, "defg", 4, overlapped_);
  EXPECT_TRUE(write.success || write.error == ERROR_IO_PENDING);
  char reply[8] = {};
  ASSERT_TRUE(ReadFile(client_, reply, sizeof(reply), &count, nullptr));
  EXPECT_STREQ(reply, "defg");
}

TEST_F(PipeIoTest, AReadThatIsAbandonedIsThroughAndGetsNothingMore) {
  Connect();
  char request[8] = {};
  ASSERT_EQ(pipe_io::Read(pipe_, request, sizeof(request), overlapped_).error,
            static_cast<std::uint32_t>(ERROR_IO_PENDING));
  pipe_io::Abandon(pipe_, overlapped_);
  ASSERT_TRUE(pipe_io::IsComplete(overlapped_));
  EXPECT_FALSE(pipe_io::HasTransferred(overlapped_));
  const pipe_io::Outcome outcome = pipe_io::Completion(pipe_, overlapped_);
  EXPECT_FALSE(outcome.success);
  EXPECT_EQ(outcome.error, static_cast<std::uint32_t>(ERROR_OPERATION_ABORTED));

  DWORD count = 0;
  ASSERT_TRUE(WriteFile(client_, "abc", 3, &count, nullptr));
  Sleep(50);
  EXPECT_STREQ(request, "");
}

TEST_F(PipeIoTest, AReadWhoseClientHasGoneIsThroughAndHasTransferredNothing) {
  Connect();
  EXPECT_FALSE(pipe_io::HasTransferred(overlapped_)) << "a client who came";
  char request[8] = {};
  ASSERT_EQ(pipe_io::Read(pipe_, request, sizeof(request), overlapped_).error,
            static_cast<std::uint32_t>(ERROR_IO_PENDING));
  CloseClient();
  ASSERT_EQ(pipe_io::WaitAny(&event_, 1, 5000, error_), 0u);
  EXPECT_TRUE(pipe_io::IsComplete(overlapped_));
  EXPECT_FALSE(pipe_io::HasTransferred(overlapped_));
}

TEST_F(PipeIoTest, WhatIsThroughIsAbandonedAtOnce) {
  Connect();
  DWORD count = 0;
  ASSERT_TRUE(WriteFile(client_, "abc", 3, &count, nullptr));
  char request[8] = {};
  (void)pipe_io::Read(pipe_, request, sizeof(request), overlapped_);
  ASSERT_EQ(pipe_io::WaitAny(&event_, 1, 5000, error_), 0u);
  pipe_io::Abandon(pipe_, overlapped_);
  EXPECT_TRUE(pipe_io::Completion(pipe_, overlapped_).success);
  EXPECT_STREQ(request, "abc");
}

TEST_F(PipeIoTest, AClientThatIsDisconnectedMakesRoomForTheNext) {
  Connect();
  EXPECT_TRUE(pipe_io::Disconnect(pipe_).success);
  char reply = 0;
  DWORD count = 0;
  EXPECT_FALSE(ReadFile(client_, &reply, 1, &count, nullptr));
  CloseClient();

  ASSERT_EQ(pipe_io::Connect(pipe_, overlapped_).error,
            static_cast<std::uint32_t>(ERROR_IO_PENDING));
  OpenClient();
  ASSERT_EQ(pipe_io::WaitAny(&event_, 1, 5000, error_), 0u);
  EXPECT_TRUE(pipe_io::Completion(pipe_, overlapped_).success);
}

TEST_F(PipeIoTest, FailuresHandTheirErrorsBack) {
  constexpr auto kInvalid = static_cast<std::uint32_t>(ERROR_INVALID_HANDLE);
  char byte = 0;
  EXPECT_EQ(pipe_io::Connect(nullptr, overlapped_).error, kInvalid);
  EXPECT_EQ(pipe_io::Disconnect(nullptr).error, kInvalid);
  EXPECT_EQ(pipe_io::Read(nullptr, &byte, 1, overlapped_).error, kInvalid);
  EXPECT_EQ(pipe_io::Write(nullptr, &byte, 1, overlapped_).error, kInvalid);
  EXPECT_EQ(pipe_io::ClientProcess(nullptr), 0u);
  EXPECT_EQ(pipe_io::CreateInstance("no pipe", nullptr, pipe_io::Claim::Any, error_), nullptr);
  EXPECT_NE(error_, 0u);
}

TEST_F(PipeIoTest, AConnectThatThePipeRefusesResetsTheEventAndOneThatNeverReachesItDoesNot) {
  Connect();
  EXPECT_FALSE(IsSignalled());
  CloseClient();
  pipe_io::Signal(event_);
  EXPECT_EQ(pipe_io::Connect(pipe_, overlapped_).error, static_cast<std::uint32_t>(ERROR_NO_DATA));
  EXPECT_FALSE(IsSignalled());
  pipe_io::Signal(event_);
  EXPECT_EQ(pipe_io::Connect(nullptr, overlapped_).error,
            static_cast<std::uint32_t>(ERROR_INVALID_HANDLE));
  EXPECT_TRUE(IsSignalled());
}

TEST_F(PipeIoTest, AFlushWaitsForItsReaderNoLongerThanTold) {
  Connect();
  (void)pipe_io::Write(pipe_, "abc", 3, overlapped_);
  const ULONGLONG start = GetTickCount64();
  pipe_io::FlushAll(&pipe_, 1, 200);
  EXPECT_LT(GetTickCount64() - start, 5000u);
  char reply[4] = {};
  DWORD count = 0;
  ASSERT_TRUE(ReadFile(client_, reply, 3, &count, nullptr));
  EXPECT_STREQ(reply, "abc");
  pipe_io::FlushAll(&pipe_, 1, 60000);
  EXPECT_LT(GetTickCount64() - start, 30000u)
      << "with everything read there is nothing to wait for";
}

// It is left out, and costs neither the wait nor a handle.
TEST_F(PipeIoTest, WhatCannotBeFlushedIsPassedOver) {
  Connect();
  const HANDLE pipes[] = {nullptr, pipe_, nullptr};
  const ULONGLONG start = GetTickCount64();
  pipe_io::FlushAll(pipes, 3, 60000);
  ASSERT_LT(GetTickCount64() - start, 30000u);
  const DWORD before = Handles();
  for (int i = 0; i < 20; ++i) pipe_io::FlushAll(pipes, 1, 60000);
  EXPECT_EQ(Handles(), before);
}

TEST_F(PipeIoTest, TheClockRunsInMilliseconds) {
  const std::uint64_t start = pipe_io::Now();
  Sleep(100);
  pipe_io::GiveWay();
  EXPECT_GE(pipe_io::Now() - start, 50u);
  EXPECT_LT(pipe_io::Now() - start, 30000u);
}

// What the traces show in place of an error: a place that can be called, and tells the error.
TEST_F(PipeIoTest, TheErrorQueryIsThePlatformsOwn) {
  const auto query = reinterpret_cast<decltype(&GetLastError)>(pipe_io::ErrorQueryAddress());
  SetLastError(4711);
  EXPECT_EQ(query(), 4711u);
}

}  // namespace
