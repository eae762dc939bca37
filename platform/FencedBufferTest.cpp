#include "platform/FencedBuffer.h"

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

TEST(FencedBufferTest, ThereIsOneForTheProcess) {
  EXPECT_EQ(platform::FencedBuffer(), platform::FencedBuffer());
}

}  // namespace
