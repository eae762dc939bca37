#include "platform/WorkerThread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <thread>

namespace {

using std::chrono_literals::operator""ms;
using std::chrono_literals::operator""s;

// Tells who ran it, and that it is gone.
class Probe final : public platform::Work {
 public:
  Probe(std::promise<std::thread::id>& ran, std::promise<void>& destroyed)
      : ran_(ran), destroyed_(destroyed) {}
  ~Probe() override { destroyed_.set_value(); }
  void Run() override { ran_.set_value(std::this_thread::get_id()); }

 private:
  std::promise<std::thread::id>& ran_;
  std::promise<void>& destroyed_;
};

TEST(WorkerThreadTest, TheWorkRunsOnAThreadOfItsOwnAndIsDestroyedThen) {
  static std::promise<std::thread::id> ran;
  static std::promise<void> destroyed;
  ASSERT_TRUE(platform::StartWorker(std::make_unique<Probe>(ran, destroyed)));
  std::future<std::thread::id> who = ran.get_future();
  ASSERT_EQ(who.wait_for(10s), std::future_status::ready);
  EXPECT_NE(who.get(), std::this_thread::get_id());
  EXPECT_EQ(destroyed.get_future().wait_for(10s), std::future_status::ready);
}

// Ends as soon as it has begun.
class Count final : public platform::Work {
 public:
  explicit Count(std::atomic<int>& count) : count_(count) {}
  void Run() override { ++count_; }

 private:
  std::atomic<int>& count_;
};

// They end before, while and after whoever started them lets go of them.
TEST(WorkerThreadTest, ThousandsThatEndAtOnceHaveAllRun) {
  constexpr int kThreads = 2000;
  static std::atomic<int> count;
  count = 0;
  for (int i = 0; i < kThreads; ++i) {
    ASSERT_TRUE(platform::StartWorker(std::make_unique<Count>(count)));
    // So few at once that there is memory for their stacks.
    while (count < i - 50) std::this_thread::yield();
  }
  const auto end = std::chrono::steady_clock::now() + 10s;
  while (count < kThreads && std::chrono::steady_clock::now() < end)
    std::this_thread::sleep_for(1ms);
  EXPECT_EQ(count, kThreads);
}

}  // namespace
