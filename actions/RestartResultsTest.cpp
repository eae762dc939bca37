#include "actions/RestartResults.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace {

TEST(RestartResultsTest, AResultIsTakenOnce) {
  RestartResults results;
  std::uint32_t result = 99;
  EXPECT_FALSE(results.Take("e", result));
  EXPECT_EQ(result, 99u);
  EXPECT_TRUE(results.File("e", 5));
  EXPECT_TRUE(results.Take("e", result));
  EXPECT_EQ(result, 5u);
  EXPECT_FALSE(results.Take("e", result));
}

TEST(RestartResultsTest, ResultsOfOneNameAreTakenInTheOrderFiled) {
  RestartResults results;
  std::uint32_t result = 0;
  for (std::uint32_t i = 1; i <= 3; ++i) {
    EXPECT_TRUE(results.File("e", i));
    EXPECT_TRUE(results.File("other", 10 * i));
  }
  for (std::uint32_t i = 1; i <= 3; ++i) {
    EXPECT_TRUE(results.Take("e", result));
    EXPECT_EQ(result, i);
  }
  EXPECT_TRUE(results.Take("other", result));
  EXPECT_EQ(result, 10u);
}

TEST(RestartResultsTest, NamesAreComparedByteByByte) {
  RestartResults results;
  std::uint32_t result = 0;
  EXPECT_TRUE(results.File("Event", 1));
  EXPECT_FALSE(results.Take("event", result));
  EXPECT_FALSE(results.Take("Even", result));
  EXPECT_FALSE(results.Take("Event1", result));
  EXPECT_FALSE(results.Take("", result));
  EXPECT_TRUE(results.File("", 2));
  EXPECT_TRUE(results.Take("", result));
  EXPECT_EQ(result, 2u);
}

TEST(RestartResultsTest, RemoveTakesEveryResultOfTheNameAndCountsThem) {
  RestartResults results;
  std::uint32_t result = 0;
  EXPECT_EQ(results.Remove("e"), 0);
  EXPECT_TRUE(results.File("e", 1));
  EXPECT_TRUE(results.File("other", 2));
  EXPECT_TRUE(results.File("e", 3));
  EXPECT_EQ(results.Remove("e"), 2);
  EXPECT_FALSE(results.Take("e", result));
  EXPECT_TRUE(results.Take("other", result));
}

TEST(RestartResultsTest, ThreadsFileAndTakeAtTheSameTime) {
  constexpr int kThreads = 4;
  constexpr int kEach = 500;
  RestartResults results;
  std::atomic<int> taken = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&results, &taken, name = std::to_string(i % 2)] {
      for (int n = 0; n < kEach; ++n) {
        std::uint32_t result = 0;
        (void)results.File(name.c_str(), 1);
        if (results.Take(name.c_str(), result)) ++taken;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(taken, kThreads * kEach);
}

}  // namespace
