#include <gtest/gtest.h>
#include <windows.h>

#include "platform/GuardedCall.h"

namespace {

// How the chain of exception frames begins; a guard leaves it as it found it.
void* HeadOfChain() {
  void* head;
  asm volatile("movl %%fs:0, %0" : "=r"(head));
  return head;
}

// Reads where nothing is; the compiler cannot know that.
std::uint32_t Fault() {
  static volatile std::uintptr_t address = 16;
  return *reinterpret_cast<const volatile std::uint32_t*>(address);
}

class GuardedCallWinTest : public testing::Test {
 protected:
  GuardedCallWinTest() : before_(HeadOfChain()) {}
  ~GuardedCallWinTest() override { EXPECT_EQ(HeadOfChain(), before_); }

  std::uint32_t result_ = 7;

 private:
  void* const before_;
};

TEST_F(GuardedCallWinTest, AnAccessViolationIsCaught) {
  EXPECT_FALSE(GuardedCall(result_, [] { return Fault(); }));
  EXPECT_EQ(result_, 7u);
}

TEST_F(GuardedCallWinTest, ADivisionByZeroIsCaught) {
  volatile int zero = 0;
  EXPECT_FALSE(GuardedCall(result_, [&] { return static_cast<std::uint32_t>(5 / zero); }));
}

TEST_F(GuardedCallWinTest, AForeignCompilersExceptionIsCaught) {
  EXPECT_FALSE(GuardedCall(result_, [] {
    RaiseException(0xE06D7363, EXCEPTION_NONCONTINUABLE, 0, nullptr);
    return 1u;
  }));
}

TEST_F(GuardedCallWinTest, AnyRaisedCodeIsCaught) {
  for (const DWORD code : {0x12345678ul, 0x80000003ul, 0xC000001Dul, 0xE0000001ul}) {
    EXPECT_FALSE(GuardedCall(result_, [code] {
      RaiseException(code, 0, 0, nullptr);
      return 1u;
    })) << code;
  }
}

TEST_F(GuardedCallWinTest, ACallIntoNowhereIsCaught) {
  using Function = std::uint32_t (*)();
  volatile std::uintptr_t nowhere = 4;
  EXPECT_FALSE(GuardedCall(result_, [&] { return reinterpret_cast<Function>(nowhere)(); }));
}

TEST_F(GuardedCallWinTest, LocalsOutsideSurviveAndTheGuardWorksAgain) {
  std::uint32_t sum = 0;
  for (std::uint32_t i = 0; i < 1000; ++i) {
    if (GuardedCall(result_, [] { return Fault(); })) FAIL();
    sum += i;
  }
  EXPECT_EQ(sum, 499500u);
}

TEST_F(GuardedCallWinTest, FloatingPointWorksAfterAFault) {
  EXPECT_FALSE(GuardedCall(result_, [] {
    asm volatile("fld1; fld1; fld1; fld1; fld1; fld1; fld1; fld1");  // a full x87 stack
    return Fault();
  }));
  volatile double two = 2.0;
  EXPECT_EQ(two * 3.0, 6.0);
}

TEST_F(GuardedCallWinTest, AnInnerGuardCatchesFirst) {
  std::uint32_t inner = 0;
  EXPECT_TRUE(GuardedCall(result_, [&] {
    const bool returned = GuardedCall(inner, [] {
      RaiseException(0xC0000005, 0, 0, nullptr);
      return 1u;
    });
    return returned ? 1u : 2u;
  }));
  EXPECT_EQ(result_, 2u);
}

// Uses a page of stack per call; far more calls than any stack has pages.
__attribute__((noinline)) std::uint32_t Overflow(std::uint32_t depth) {
  volatile char room[4096];
  room[0] = static_cast<char>(depth);
  if (depth == 0) return 0;
  return Overflow(depth - 1) + static_cast<std::uint32_t>(room[0]);
}

DWORD WINAPI OverflowTwice(void* caught) {
  platform::ReserveStackForGuards();
  std::uint32_t result = 0;
  for (int i = 0; i < 2; ++i) {
    if (!GuardedCall(result, [] { return Overflow(1'000'000); })) ++*static_cast<int*>(caught);
  }
  return 0;
}

TEST_F(GuardedCallWinTest, AStackOverflowIsSurvivedMoreThanOnce) {
  int caught = 0;
  const HANDLE thread = CreateThread(nullptr, 0, OverflowTwice, &caught, 0, nullptr);
  ASSERT_NE(thread, nullptr);
  EXPECT_EQ(WaitForSingleObject(thread, 10000), WAIT_OBJECT_0);
  EXPECT_EQ(caught, 2);
  (void)CloseHandle(thread);
}

constexpr std::size_t kPlaces = 64;

// Half a page per call, from another place in its page each time.
__attribute__((noinline)) std::uint32_t OverflowFrom(std::size_t bytes,
                                                     std::uint32_t depth = 1'000'000) {
  auto* const room = static_cast<volatile char*>(__builtin_alloca(bytes));
  room[0] = static_cast<char>(depth);
  if (depth == 0) return 0;
  return OverflowFrom(2048, depth - 1) + static_cast<std::uint32_t>(room[0]);
}

struct Place {
  std::size_t offset;
  int caught;
};

DWORD WINAPI OverflowTwiceFrom(void* raw) {
  auto* const place = static_cast<Place*>(raw);
  platform::ReserveStackForGuards();
  std::uint32_t result = 0;
  for (int i = 0; i < 2; ++i) {
    if (!GuardedCall(result, [=] { return OverflowFrom(place->offset); })) ++place->caught;
  }
  return 0;
}

// Somebody else's, who looks at every exception and needs a page for it.
LONG CALLBACK LookOn(EXCEPTION_POINTERS* pointers) {
  volatile char room[4096];
  for (volatile char& byte : room) byte = 1;
  return pointers != nullptr && room[0] == 1 ? EXCEPTION_CONTINUE_SEARCH : 0;
}

// The last frame may lie anywhere in its page; what is behind it must do for the catching. A thread
// of its own for each place, because the first overflow of a stack is the one that has least room.
TEST_F(GuardedCallWinTest, AStackOverflowIsSurvivedWhereverItsLastFrameLies) {
  void* const onlooker = AddVectoredExceptionHandler(/*First=*/1, LookOn);
  for (std::size_t i = 0; i < kPlaces; ++i) {
    Place place = {16 + i * 4096 / kPlaces, 0};
    const HANDLE thread = CreateThread(nullptr, 0x40000, OverflowTwiceFrom, &place,
                                       STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
    ASSERT_NE(thread, nullptr);
    EXPECT_EQ(WaitForSingleObject(thread, 10000), WAIT_OBJECT_0);
    EXPECT_EQ(place.caught, 2) << place.offset;
    (void)CloseHandle(thread);
  }
  (void)RemoveVectoredExceptionHandler(onlooker);
}

}  // namespace
