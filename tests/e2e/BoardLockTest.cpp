#include <windows.h>

#include <gmock/gmock.h>

#include <thread>

#include "tests/e2e/BoardSetup.h"
#include "tests/e2e/BoardTable.h"

// The board-control lock as another process of the machine sees it.

namespace e2e {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr DWORD kPollMs = 2;
constexpr std::uint32_t kMomentMs = 25;
constexpr std::uint32_t kQuietMs = 100;

const Bytes kScan = Wire("C700");
const Bytes kCheck = Wire("2401");

class BoardLockTest : public BoardTest {
 protected:
  // Whether the lock is held while the request is served. The library looks at the lock, too, and
  // has it for a moment.
  bool IsHeldBeforeTheReply() {
    ForeignBoardLock lock;
    const ULONGLONG end = GetTickCount64() + kPatienceMs;
    while (client_.Waiting() == 0 && GetTickCount64() < end) {
      if (!lock.Take(kMomentMs)) return true;
      lock.Release();
      Sleep(kPollMs);
    }
    return false;
  }

  // The request while somebody else has the lock.
  testing::AssertionResult WaitsForTheLock(const Bytes& request, const Bytes& reply) {
    ForeignBoardLock lock;
    if (!lock.Take(kPatienceMs)) return testing::AssertionFailure() << "the lock is taken";
    auto result = client_.Send(request);
    if (result) result = client_.IsQuiet(kQuietMs);
    const auto calls = files_.NewCalls();
    lock.Release();
    if (result && !calls.empty()) result = testing::AssertionFailure() << "called meanwhile";
    if (result) result = client_.Yields(reply);
    if (result && !lock.IsFree()) result = testing::AssertionFailure() << "it was not released";
    return result;
  }
};

TEST_F(BoardLockTest, IsHeldDuringTheCallsOfTheBoardCommandsAlone) {
  StartWith(kBoardMachine + FaultForAll("delay = 150"));
  for (const BoardRow& row : BoardRequests()) {
    ASSERT_TRUE(client_.Send(row.request.Request()));
    EXPECT_EQ(IsHeldBeforeTheReply(), IsUnderLock(row)) << row.request.name;
    EXPECT_TRUE(client_.Yields(Wire(row.reply))) << row.request.name;
    EXPECT_TRUE(ForeignBoardLock().IsFree()) << row.request.name;
  }
}

TEST_F(BoardLockTest, ThatSomebodyElseHasDelaysTheBoardCommands) {
  StartWith(kBoardMachine);
  for (const BoardRow& row : BoardRequests()) {
    if (!IsUnderLock(row)) continue;
    EXPECT_TRUE(WaitsForTheLock(row.request.Request(), Wire(row.reply))) << row.request.name;
    EXPECT_THAT(files_.NewCalls(), ElementsAre(std::string(row.call) + " -> " + row.answer));
  }
}

TEST_F(BoardLockTest, ThatSomebodyElseHasDoesNotConcernTheOtherCommands) {
  StartWith(kBoardMachine);
  ForeignBoardLock lock;
  ASSERT_TRUE(lock.Take(kPatienceMs));
  for (const BoardRow& row : BoardRequests()) {
    if (IsUnderLock(row)) continue;
    EXPECT_TRUE(client_.Answers(row.request.Request(), Wire(row.reply))) << row.request.name;
  }
  lock.Release();
}

// A request that cannot be read is refused before anybody waits, and so is one of areas.
TEST_F(BoardLockTest, IsNotWaitedForWhileTheRequestIsRead) {
  StartWith(kBoardMachine);
  ForeignBoardLock lock;
  ASSERT_TRUE(lock.Take(kPatienceMs));
  for (const BoardRow& row : BoardRequests()) {
    if (!IsUnderLock(row) || row.request.fields.empty()) continue;
    const Bytes request = row.request.Request();
    EXPECT_TRUE(client_.Answers(request.substr(0, request.size() - 1), Wire("0400 9A210000")))
        << row.request.name;
  }
  lock.Release();
}

TEST_F(BoardLockTest, WhoseOwnerEndedIsTaken) {
  StartWith(kBoardMachine);
  const HANDLE mutex = OpenMutexA(MUTEX_ALL_ACCESS, FALSE, "QorlixSrv_BC_Lock_Mutex");
  ASSERT_NE(mutex, nullptr);
  std::thread owner([mutex] { EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_OBJECT_0); });
  owner.join();
  EXPECT_TRUE(client_.Answers(kScan, Wire("0400 00000000")));
  EXPECT_THAT(files_.NewCalls(), ElementsAre("BRDX_ScanBL -> 0 lock=held"));
  EXPECT_TRUE(ForeignBoardLock().IsFree());
  (void)CloseHandle(mutex);
}

TEST_F(BoardLockTest, DelaysThePlausibilityCheckAndIsHeldFromItsScanToItsEnd) {
  StartWith(std::string(kBoardMachine) + "[fault BRDX_ScanBL]\ncall = *\ndelay = 200\n");
  EXPECT_TRUE(WaitsForTheLock(kCheck, Wire("0400 00000000")));
  const auto calls =
      ElementsAre("BRDX_ScanBL -> 0 lock=held", "BRDX_RemoveAbandonLogDevices -> 0 lock=held",
                  "BRDX_UpdateRoute -> 0 lock=held", "BRDX_CreateAllLogdevicesBL -> 0 lock=held");
  EXPECT_THAT(files_.NewCalls(), calls);

  // Whoever waits for it gets it when all of that is done, and not in between.
  ForeignBoardLock lock;
  ASSERT_TRUE(client_.Send(kCheck));
  ASSERT_TRUE(IsHeldBeforeTheReply());
  ASSERT_TRUE(lock.Take(kPatienceMs));
  EXPECT_THAT(files_.NewCalls(), calls);
  lock.Release();
  EXPECT_TRUE(client_.Yields(Wire("0400 00000000")));
}

}  // namespace
}  // namespace e2e
