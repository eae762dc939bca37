#include "platform/FencedBuffer.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

#include "platform/GuardedCall.h"

namespace {

constexpr std::size_t kSize = 65536;

bool CanWriteAt(std::size_t offset) {
  volatile char* const place = platform::FencedBuffer() + offset;
  std::uint32_t ignored = 0;
  return GuardedCall(ignored, [place] {
    *place = 'x';
    return 0u;
  });
}

TEST(FencedBufferTest, AllOfItCanBeWrittenAndReadBack) {
  char* const buffer = platform::FencedBuffer();
  ASSERT_NE(buffer, nullptr);
  std::memset(buffer, 'a', kSize);
  EXPECT_EQ(buffer[kSize - 1], 'a');
  EXPECT_TRUE(CanWriteAt(kSize - 1));
}

TEST(FencedBufferTest, NothingBehindItCanBeWritten) {
  EXPECT_FALSE(CanWriteAt(kSize));
  EXPECT_FALSE(CanWriteAt(kSize + (1 << 20) - 1));
}

// Whoever believes in a capacity of 2^32 - 1 ends its text two bytes in front of the buffer.
TEST(FencedBufferTest, NothingInFrontOfItCanBeWritten) {
  constexpr std::size_t kFence = 1 << 20;
  for (const std::size_t distance : {std::size_t{1}, std::size_t{2}, std::size_t{4096}, kFence}) {
    EXPECT_FALSE(CanWriteAt(std::size_t{0} - distance)) << distance;
    // Not by luck either: the place is ours, so nobody else's can come to lie there.
    MEMORY_BASIC_INFORMATION place = {};
    ASSERT_NE(VirtualQuery(platform::FencedBuffer() - distance, &place, sizeof(place)), 0u);
    EXPECT_EQ(place.State, static_cast<DWORD>(MEM_RESERVE)) << distance;
  }
}

TEST(FencedBufferTest, ThereIsOneForTheProcess) {
  EXPECT_EQ(platform::FencedBuffer(), platform::FencedBuffer());
}

}  // namespace
