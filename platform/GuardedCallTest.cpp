#include "platform/GuardedCall.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

TEST(GuardedCallTest, ACallThatReturnsHandsItsResultOver) {
  std::uint32_t result = 7;
  EXPECT_TRUE(GuardedCall(result, [] { return 42u; }));
  EXPECT_EQ(result, 42u);
}

TEST(GuardedCallTest, ACallThatThrowsIsCaughtAndLeavesTheResult) {
  std::uint32_t result = 7;
  EXPECT_FALSE(GuardedCall(result, []() -> std::uint32_t { throw std::runtime_error("x"); }));
  EXPECT_EQ(result, 7u);
  EXPECT_FALSE(GuardedCall(result, []() -> std::uint32_t { throw 5; }));
  EXPECT_EQ(result, 7u);
}

TEST(GuardedCallTest, GuardsNest) {
  std::uint32_t inner = 0;
  std::uint32_t outer = 0;
  EXPECT_TRUE(GuardedCall(outer, [&]() -> std::uint32_t {
    const bool returned = GuardedCall(inner, []() -> std::uint32_t { throw 1; });
    return returned ? 1 : 2;
  }));
  EXPECT_EQ(outer, 2u);
}

}  // namespace
