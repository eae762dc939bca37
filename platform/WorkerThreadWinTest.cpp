#include <gtest/gtest.h>
#include <windows.h>

#include <memory>
#include <vector>

#include "platform/WorkerThread.h"
#include "tests/support/BrokenFunction.h"

// What only the platform's own threads show.

namespace {

constexpr LONG kThreads = 2000;
constexpr LONG kAtOnce = 50;  // so few that there is memory for their stacks
constexpr ULONGLONG kPatienceMs = 10000;

// Ends as soon as it has begun.
class Count final : public platform::Work {
 public:
  explicit Count(volatile LONG& count) : count_(count) {}
  void Run() override { (void)InterlockedIncrement(&count_); }

 private:
  volatile LONG& count_;
};

// They end before, while and after whoever started them lets go of them.
TEST(WorkerThreadWinTest, ThousandsThatEndAtOnceHaveAllRun) {
  static volatile LONG count = 0;
  for (LONG i = 0; i < kThreads; ++i) {
    ASSERT_TRUE(platform::StartWorker(std::make_unique<Count>(count)));
    while (count < i - kAtOnce) Sleep(0);
  }
  const ULONGLONG end = GetTickCount64() + kPatienceMs;
  while (count < kThreads && GetTickCount64() < end) Sleep(1);
  EXPECT_EQ(count, kThreads);
}

// All that is left in pieces of this size; given back at the end.
class TakenRoom {
 public:
  explicit TakenRoom(SIZE_T piece) {
    while (void* const room = VirtualAlloc(nullptr, piece, MEM_RESERVE, PAGE_NOACCESS)) {
      pieces_.push_back(room);
    }
  }
  ~TakenRoom() {
    for (void* const room : pieces_) (void)VirtualFree(room, 0, MEM_RELEASE);
  }
  TakenRoom(const TakenRoom&) = delete;
  TakenRoom& operator=(const TakenRoom&) = delete;

 private:
  std::vector<void*> pieces_;
};

// There would be room for tens of stacks; a library of some size could not be loaded any more.
TEST(WorkerThreadWinTest, NoneIsStartedThatWouldTakeTheLastRoom) {
  static volatile LONG count = 0;
  {
    const TakenRoom taken(128 * 1024 * 1024);
    EXPECT_FALSE(platform::StartWorker(std::make_unique<Count>(count)));
  }
  ASSERT_TRUE(platform::StartWorker(std::make_unique<Count>(count)));
  const ULONGLONG end = GetTickCount64() + kPatienceMs;
  while (count == 0 && GetTickCount64() < end) Sleep(1);
  EXPECT_EQ(count, 1);
}

// Says whether it has run, and that it is gone.
class Trail final : public platform::Work {
 public:
  Trail(bool& hasRun, bool& isGone) : hasRun_(hasRun), isGone_(isGone) {}
  ~Trail() override { isGone_ = true; }
  void Run() override { hasRun_ = true; }

 private:
  bool& hasRun_;
  bool& isGone_;
};

TEST(WorkerThreadWinTest, WorkThatGetsNoThreadIsDestroyedUnrun) {
  const BrokenFunction broken("msvcrt.dll", "_beginthreadex", 0, 0);
  bool hasRun = false;
  bool isGone = false;
  EXPECT_FALSE(platform::StartWorker(std::make_unique<Trail>(hasRun, isGone)));
  EXPECT_FALSE(hasRun);
  EXPECT_TRUE(isGone);
}

}  // namespace
