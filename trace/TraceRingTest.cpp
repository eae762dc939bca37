#include "trace/TraceRing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "tests/fakes/trace/TraceModels.h"

namespace {

using zqotrc::Ring;

/// A ring in memory of exactly the size that its mapping would have.
class Memory {
 public:
  explicit Memory(std::uint32_t size)
      : words_((size + zqotrc::kRingOverhead + 3) / 4), ring_(zqotrc::RingAt(words_.data(), size)) {
    zqotrc::BeginRing(ring_);
  }
  const Ring& ring() const { return ring_; }
  std::uint32_t& Word(std::uint32_t index) { return ring_.header[index]; }
  std::string Data() const { return {ring_.data, ring_.size}; }
  void Store(std::string_view bytes) { zqotrc::StoreInRing(ring_, bytes); }

 private:
  std::vector<std::uint32_t> words_;
  Ring ring_;
};

TEST(TraceRingTest, ANewRingDescribesItself) {
  Memory memory(100);
  EXPECT_EQ(memory.Word(zqotrc::kRingOffset), 0u);
  EXPECT_EQ(memory.Word(zqotrc::kRingSize), 100u);
  EXPECT_EQ(memory.Word(zqotrc::kRingWraps), 0u);
  EXPECT_EQ(memory.Word(zqotrc::kRingEnabled), 1u);
  EXPECT_EQ(memory.Word(zqotrc::kRingAttached), 1u);
  EXPECT_EQ(memory.Word(zqotrc::kRingLayout), 1u);
  EXPECT_EQ(memory.ring().data - reinterpret_cast<char*>(memory.ring().header), 64);
}

TEST(TraceRingTest, TheWordsStandInTheirOrder) {
  EXPECT_EQ(zqotrc::kRingOffset, 0u);
  EXPECT_EQ(zqotrc::kRingSize, 1u);
  EXPECT_EQ(zqotrc::kRingWraps, 2u);
  EXPECT_EQ(zqotrc::kRingEnabled, 3u);
  EXPECT_EQ(zqotrc::kRingAttached, 4u);
  EXPECT_EQ(zqotrc::kRingLayout, 5u);
}

TEST(TraceRingTest, JoiningCountsAndLeavingCountsBack) {
  Memory memory(100);
  EXPECT_TRUE(zqotrc::JoinRing(memory.ring()));
  EXPECT_EQ(memory.Word(zqotrc::kRingAttached), 2u);
  zqotrc::LeaveRing(memory.ring());
  EXPECT_EQ(memory.Word(zqotrc::kRingAttached), 1u);
}

TEST(TraceRingTest, ARingOfAnotherLayoutIsNotJoined) {
  for (const std::uint32_t layout : {0u, 2u, 0xFFFFFFFFu}) {
    Memory memory(100);
    memory.Word(zqotrc::kRingLayout) = layout;
    EXPECT_FALSE(zqotrc::JoinRing(memory.ring()));
    EXPECT_EQ(memory.Word(zqotrc::kRingAttached), 1u);
  }
}

TEST(TraceRingTest, ASizeWhoseMappingWouldHaveNoSizeIsNone) {
  Memory memory(100);
  EXPECT_EQ(zqotrc::AnnouncedRingSize(memory.ring().header), 100u);
  memory.Word(zqotrc::kRingSize) = 0xFFFFFFFF - 68;
  EXPECT_EQ(zqotrc::AnnouncedRingSize(memory.ring().header), 0xFFFFFFFF - 68);
  memory.Word(zqotrc::kRingSize) = 0xFFFFFFFF - 67;
  EXPECT_EQ(zqotrc::AnnouncedRingSize(memory.ring().header), 0u);
}

TEST(TraceRingTest, ALineThatCrossesTheEndGoesOnAtTheStart) {
  Memory memory(100);
  memory.Word(zqotrc::kRingOffset) = 80;
  const std::string line = std::string(20, 'e') + std::string(20, 's') + "\r\n";
  memory.Store(line);
  EXPECT_EQ(memory.Data().substr(80), std::string(20, 'e'));
  EXPECT_EQ(memory.Data().substr(0, 22), std::string(20, 's') + "\r\n");
  EXPECT_EQ(memory.Word(zqotrc::kRingOffset), 22u);
  EXPECT_EQ(memory.Word(zqotrc::kRingWraps), 1u);
}

TEST(TraceRingTest, ALineThatEndsAtTheEndDoesNotWrapYet) {
  Memory memory(100);
  memory.Word(zqotrc::kRingOffset) = 90;
  memory.Store(std::string(10, 'x'));
  EXPECT_EQ(memory.Word(zqotrc::kRingOffset), 100u);
  EXPECT_EQ(memory.Word(zqotrc::kRingWraps), 0u);
  memory.Store("yz");
  EXPECT_EQ(memory.Data().substr(0, 2), "yz");
  EXPECT_EQ(memory.Word(zqotrc::kRingOffset), 2u);
  EXPECT_EQ(memory.Word(zqotrc::kRingWraps), 1u);
}

TEST(TraceRingTest, TheWrapCountStaysAtItsLargest) {
  Memory memory(10);
  memory.Word(zqotrc::kRingWraps) = UINT32_MAX;
  memory.Store(std::string(15, 'x'));
  EXPECT_EQ(memory.Word(zqotrc::kRingWraps), UINT32_MAX);
  memory.Word(zqotrc::kRingWraps) = UINT32_MAX - 1;
  memory.Store(std::string(45, 'x'));
  EXPECT_EQ(memory.Word(zqotrc::kRingWraps), UINT32_MAX);
}

TEST(TraceRingTest, AForeignOffsetIsBroughtIntoRange) {
  for (const std::uint32_t offset : {101u, 102u, 1000u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    Memory memory(100);
    memory.Word(zqotrc::kRingOffset) = offset;
    memory.Store("line\r\n");
    EXPECT_NE(memory.Data().find(offset % 100 <= 94 ? "line\r\n" : "l"), std::string::npos);
    EXPECT_LE(memory.Word(zqotrc::kRingOffset), 100u);
  }
}

TEST(TraceRingTest, AForeignSizeWordChangesNothing) {
  Memory memory(100);
  memory.Word(zqotrc::kRingSize) = 0xFFFFFF00;
  memory.Word(zqotrc::kRingOffset) = 98;
  memory.Store("abcd");
  EXPECT_EQ(memory.Data().substr(98), "ab");
  EXPECT_EQ(memory.Data().substr(0, 2), "cd");
}

TEST(TraceRingTest, OfALineLongerThanTheRingTheEndRemains) {
  Memory memory(4);
  memory.Store("abcdefghij");
  EXPECT_EQ(memory.Data(), "ijgh");
  EXPECT_EQ(memory.Word(zqotrc::kRingOffset), 2u);
  EXPECT_EQ(memory.Word(zqotrc::kRingWraps), 2u);
}

TEST(TraceRingTest, AgreesWithARingThatIsWrittenByteByByte) {
  std::mt19937 random(4711);  // NOLINT: the same lines in every run
  for (int ring = 0; ring < 200; ++ring) {
    const auto size = static_cast<std::uint32_t>(1 + random() % 300);
    Memory memory(size);
    trace_models::Ring model(size);
    for (int line = 0; line < 200; ++line) {
      std::string bytes(random() % 421, ' ');
      for (char& byte : bytes) byte = static_cast<char>(random());
      memory.Store(bytes);
      model.Store(bytes);
      ASSERT_EQ(memory.Data(), model.data);
      ASSERT_EQ(memory.Word(zqotrc::kRingOffset), model.offset);
      ASSERT_EQ(memory.Word(zqotrc::kRingWraps), model.wraps);
    }
  }
}

}  // namespace
