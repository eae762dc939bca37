#include "platform/WorkerThread.h"

#include <gtest/gtest.h>

#include <future>
#include <thread>

namespace {

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

}  // namespace
