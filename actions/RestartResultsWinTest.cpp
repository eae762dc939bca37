#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <new>

#include "actions/RestartResults.h"

// Memory that runs out. This program takes its memory here; the native one leaves that to the
// sanitizer, which looks at it.

namespace {

bool g_noMemory = false;

TEST(RestartResultsWinTest, WithoutMemoryAResultIsNotFiledAndNoneIsLost) {
  RestartResults results;
  ASSERT_TRUE(results.File("before", 5));
  g_noMemory = true;
  const bool filed = results.File("e", 6);
  g_noMemory = false;
  EXPECT_FALSE(filed);
  std::uint32_t result = 0;
  EXPECT_FALSE(results.Take("e", result));
  EXPECT_TRUE(results.Take("before", result));
  EXPECT_EQ(result, 5u);
  EXPECT_TRUE(results.File("e", 7)) << "once there is memory again";
}

}  // namespace

void* operator new(std::size_t size) {
  void* const block = g_noMemory ? nullptr : std::malloc(size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
