#include <windows.h>

#include <gmock/gmock.h>

#include <thread>

#include "tests/e2e/BoardSetup.h"
#include "tests/e2e/BoardTable.h"

// A test that takes as long as the server waits for the board-control lock: half a minute.

namespace e2e {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::Ge;
using testing::Le;

constexpr std::uint32_t kLongerThanTheWaitMs = 40000;

class BoardLockWaitTest : public BoardTest {};

TEST_F(BoardLockWaitTest, AfterThirtySecondsTheCommandGoesAheadAndTheOwnerKeepsTheLock) {
  StartWith(kBoardMachine);
  ForeignBoardLock lock;
  ASSERT_TRUE(lock.Take(kPatienceMs));

  const ULONGLONG begin = GetTickCount64();
  ASSERT_TRUE(client_.Send(Wire("C700")));
  EXPECT_TRUE(client_.YieldsNext(Wire("0400 00000000"), kLongerThanTheWaitMs));
  EXPECT_THAT(GetTickCount64() - begin, AllOf(Ge(29500u), Le(35000u)));
  EXPECT_THAT(files_.NewCalls(), ElementsAre("BRDX_ScanBL -> 0 lock=held"));

  // The server has not released what it never had.
  bool free = true;
  std::thread([&] { free = ForeignBoardLock().IsFree(); }).join();
  EXPECT_FALSE(free);
  lock.Release();

  EXPECT_TRUE(client_.Answers(Wire("C700"), Wire("0400 00000000")));
  EXPECT_TRUE(ForeignBoardLock().IsFree());
}

}  // namespace
}  // namespace e2e
