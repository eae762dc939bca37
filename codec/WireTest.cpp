#include "codec/Wire.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <memory>

namespace {

constexpr std::array<std::uint8_t, 8> kBytes = {0x01, 0x02, 0x03, 0x04, 0x85, 0x86, 0x87, 0x88};
constexpr std::uint32_t kHighest = std::numeric_limits<std::uint32_t>::max();

TEST(WireTest, LoadReadsTheLowestByteFirstAndNeedsNoAlignment) {
  EXPECT_EQ(wire::Load<std::uint8_t>(kBytes.data()), 0x01u);
  EXPECT_EQ(wire::Load<std::uint16_t>(kBytes.data() + 1), 0x0302u);
  EXPECT_EQ(wire::Load<std::uint32_t>(kBytes.data() + 1), 0x85040302u);
  EXPECT_EQ(wire::Load<std::uint64_t>(kBytes.data()), 0x8887868504030201u);
}

TEST(WireTest, StoreWritesTheLowestByteFirstAndNothingBehindTheValue) {
  std::array<std::uint8_t, 6> bytes{};
  bytes.fill(0xEE);
  wire::Store(bytes.data() + 1, std::uint32_t{0x85040302});
  EXPECT_EQ(bytes, (std::array<std::uint8_t, 6>{0xEE, 0x02, 0x03, 0x04, 0x85, 0xEE}));
}

TEST(WireTest, TakeMovesTheCursorBehindTheValue) {
  std::uint32_t cursor = 0;
  std::uint16_t first = 0;
  std::uint32_t second = 0;
  ASSERT_TRUE(wire::Take(kBytes.data(), 6, cursor, first));
  ASSERT_TRUE(wire::Take(kBytes.data(), 6, cursor, second));
  EXPECT_EQ(first, 0x0201u);
  EXPECT_EQ(second, 0x86850403u);
  EXPECT_EQ(cursor, 6u);
}

TEST(WireTest, TakeOfMoreThanIsLeftChangesNothing) {
  for (std::uint32_t size = 0; size < 4; ++size) {
    // An allocation of exactly that size lets the address sanitizer see a single byte too many.
    const auto data = std::make_unique<std::uint8_t[]>(size);
    std::uint32_t cursor = 0;
    std::uint32_t value = 77;
    EXPECT_FALSE(wire::Take(data.get(), size, cursor, value)) << size;
    EXPECT_EQ(cursor, 0u);
    EXPECT_EQ(value, 77u);
  }
}

TEST(WireTest, ACursorBehindItsBoundTakesAndPutsNothing) {
  for (const std::uint32_t behind : {5u, kHighest - 1, kHighest}) {
    std::array<std::uint8_t, 4> data{};
    std::uint32_t cursor = behind;
    std::uint8_t value = 77;
    EXPECT_FALSE(wire::Take(data.data(), 4, cursor, value));
    EXPECT_FALSE(wire::Put(data.data(), 4, cursor, value));
    EXPECT_FALSE(wire::PutBytes(data.data(), 4, cursor, kBytes.data(), 2));
    EXPECT_EQ(cursor, behind);
    EXPECT_EQ(value, 77u);
  }
}

TEST(WireTest, PutFillsTheBufferToItsLastByteAndNotOneFurther) {
  const auto data = std::make_unique<std::uint8_t[]>(7);
  std::uint32_t cursor = 0;
  ASSERT_TRUE(wire::Put(data.get(), 7, cursor, std::uint16_t{0x0201}));
  ASSERT_TRUE(wire::Put(data.get(), 7, cursor, std::uint32_t{0x06050403}));
  EXPECT_FALSE(wire::Put(data.get(), 7, cursor, std::uint16_t{0xFFFF}));
  EXPECT_EQ(cursor, 6u);
  EXPECT_EQ(data[6], 0u);
  ASSERT_TRUE(wire::Put(data.get(), 7, cursor, std::uint8_t{7}));
  for (std::uint8_t i = 0; i < 7; ++i) EXPECT_EQ(data[i], i + 1);
}

TEST(WireTest, BytesMoveOnlyWhenAllOfThemFit) {
  std::array<std::uint8_t, 4> data{};
  std::uint32_t cursor = 1;
  EXPECT_FALSE(wire::PutBytes(data.data(), 4, cursor, kBytes.data(), 4));
  EXPECT_EQ(cursor, 1u);
  ASSERT_TRUE(wire::PutBytes(data.data(), 4, cursor, kBytes.data(), 3));
  EXPECT_EQ(data, (std::array<std::uint8_t, 4>{0x00, 0x01, 0x02, 0x03}));

  std::array<std::uint8_t, 3> taken{};
  cursor = 1;
  EXPECT_FALSE(wire::TakeBytes(data.data(), 4, cursor, taken.data(), 4));
  EXPECT_EQ(cursor, 1u);
  ASSERT_TRUE(wire::TakeBytes(data.data(), 4, cursor, taken.data(), 3));
  EXPECT_EQ(taken, (std::array<std::uint8_t, 3>{0x01, 0x02, 0x03}));
  EXPECT_EQ(cursor, 4u);
}

TEST(WireTest, ALengthNearTwoToThe32IsComparedWithWhatIsLeftAndRefused) {
  std::array<std::uint8_t, 4> data{};
  for (const std::uint32_t length : {kHighest - 1, kHighest, std::uint32_t{0x80000000}}) {
    std::uint32_t cursor = 2;
    EXPECT_FALSE(wire::PutBytes(data.data(), 4, cursor, kBytes.data(), length));
    EXPECT_FALSE(wire::TakeBytes(kBytes.data(), 4, cursor, data.data(), length));
    EXPECT_EQ(cursor, 2u);
  }
}

TEST(WireTest, NoBytesMoveFromAndToNowhere) {
  std::uint32_t cursor = 4;
  EXPECT_TRUE(wire::PutBytes(nullptr, 4, cursor, nullptr, 0));
  EXPECT_TRUE(wire::TakeBytes(nullptr, 4, cursor, nullptr, 0));
  EXPECT_EQ(cursor, 4u);
}

TEST(WireTest, EveryLengthIsCopiedWholeAndNothingBesideIt) {
  std::array<std::uint8_t, 200> from;
  for (std::size_t i = 0; i < from.size(); ++i) from[i] = static_cast<std::uint8_t>(i + 1);
  for (std::uint32_t length = 0; length <= 100; ++length) {
    std::array<std::uint8_t, 200> to = {};
    wire::CopyBytes(to.data() + 10, from.data() + 7, length);
    for (std::uint32_t i = 0; i < to.size(); ++i) {
      const bool copied = i >= 10 && i < 10 + length;
      ASSERT_EQ(to[i], copied ? from[i - 3] : 0) << length << " at " << i;
    }
  }
}

}  // namespace
