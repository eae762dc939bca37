#include "trace/TraceShared.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <thread>

namespace {

using zqotrc::CloseSection;
using zqotrc::MapSection;
using zqotrc::OpenedSection;
using zqotrc::OpenSection;
using zqotrc::UnmapSection;

/// What the shared objects of the platform and their stand-ins have in common.
class TraceSharedTest : public testing::Test {
 protected:
  ~TraceSharedTest() override {
    zqotrc::CloseTraceMutex();
    zqotrc::CloseGeneration();
  }
};

TEST_F(TraceSharedTest, ASectionIsCreatedOnceAndIsZeroThen) {
  const OpenedSection first = OpenSection("TraceSharedTest.A", /*security=*/nullptr, 168);
  ASSERT_NE(first.section, nullptr);
  EXPECT_FALSE(first.existed);
  const OpenedSection second = OpenSection("TraceSharedTest.A", /*security=*/nullptr, 4);
  EXPECT_TRUE(second.existed);

  auto* const one = static_cast<char*>(MapSection(first.section, 168));
  auto* const other = static_cast<char*>(MapSection(second.section, 168));
  ASSERT_NE(one, nullptr);
  ASSERT_NE(other, nullptr);
  for (int byte = 0; byte < 168; ++byte) EXPECT_EQ(one[byte], 0);
  std::strcpy(one + 100, "seen");
  EXPECT_STREQ(other + 100, "seen");

  UnmapSection(one);
  UnmapSection(other);
  CloseSection(second.section);
  CloseSection(first.section);
}

TEST_F(TraceSharedTest, MoreThanTheSectionHoldsIsNotMapped) {
  const OpenedSection opened = OpenSection("TraceSharedTest.B", /*security=*/nullptr, 4096);
  EXPECT_EQ(MapSection(opened.section, 4097), nullptr);
  EXPECT_EQ(MapSection(opened.section, 0xFFFFFFFF), nullptr);
  void* const view = MapSection(opened.section, 4096);
  EXPECT_NE(view, nullptr);
  UnmapSection(view);
  CloseSection(opened.section);
}

TEST_F(TraceSharedTest, TheMutexIsThereBetweenCreatingAndClosing) {
  EXPECT_FALSE(zqotrc::HasTraceMutex());
  EXPECT_EQ(zqotrc::CreateTraceMutex(/*security=*/nullptr), ERROR_SUCCESS);
  EXPECT_TRUE(zqotrc::HasTraceMutex());
  EXPECT_EQ(zqotrc::WaitForTraceMutex(0), WAIT_OBJECT_0);
  zqotrc::ReleaseTraceMutex();
  zqotrc::CloseTraceMutex();
  EXPECT_FALSE(zqotrc::HasTraceMutex());
}

TEST_F(TraceSharedTest, TheGenerationCanBeCountedUpAndStaysReadableWhenItIsClosed) {
  std::uint32_t error = 0;
  std::atomic<std::uint32_t>* const counter = zqotrc::OpenGeneration(error);
  ASSERT_NE(counter, nullptr);
  const std::uint32_t before = *counter;
  ++*counter;
  zqotrc::CloseGeneration();
  EXPECT_EQ(*counter, before + 1);
}

TEST_F(TraceSharedTest, TheProcessLockKeepsThreadsApartAndLetsItsOwnerInAgain) {
  zqotrc::EnterProcessLock();
  zqotrc::EnterProcessLock();
  std::atomic<bool> isInside = false;
  std::thread other([&] {
    zqotrc::EnterProcessLock();
    isInside = true;
    zqotrc::LeaveProcessLock();
  });
  zqotrc::LeaveProcessLock();
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_FALSE(isInside);
  zqotrc::LeaveProcessLock();
  other.join();
  EXPECT_TRUE(isInside);
}

}  // namespace
