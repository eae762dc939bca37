#include "tests/fakes/FakeWallClock.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace {

struct State {
  std::int64_t now = 1000 * platform::kTicksPerSecond;
  int sleepers = 0;
  int tickets = 0;
  bool free = false;
};

std::mutex g_mutex;
std::condition_variable g_changed;
State g_state;

}  // namespace

namespace fake_wall_clock {

void Reset() {
  const std::lock_guard<std::mutex> lock(g_mutex);
  g_state = {};
}

void Move(std::int64_t seconds) {
  const std::lock_guard<std::mutex> lock(g_mutex);
  g_state.now += seconds * platform::kTicksPerSecond;
}

void EndOneSleep() {
  std::unique_lock<std::mutex> lock(g_mutex);
  g_changed.wait(lock, [] { return g_state.sleepers > 0; });
  ++g_state.tickets;
  g_changed.notify_all();
  g_changed.wait(lock, [] { return g_state.tickets == 0; });
}

void EndAllSleeps() {
  const std::lock_guard<std::mutex> lock(g_mutex);
  g_state.free = true;
  g_changed.notify_all();
}

bool SomebodySleeps() {
  std::unique_lock<std::mutex> lock(g_mutex);
  return g_changed.wait_for(lock, std::chrono::seconds(5), [] { return g_state.sleepers > 0; });
}

}  // namespace fake_wall_clock

std::int64_t platform::WallClock() {
  const std::lock_guard<std::mutex> lock(g_mutex);
  return g_state.now;
}

void platform::SleepMilliseconds(std::uint32_t milliseconds) {
  if (milliseconds < 1000) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
    return;
  }
  std::unique_lock<std::mutex> lock(g_mutex);
  ++g_state.sleepers;
  g_changed.notify_all();
  g_changed.wait(lock, [] { return g_state.free || g_state.tickets > 0; });
  if (g_state.tickets > 0) --g_state.tickets;
  --g_state.sleepers;
  g_changed.notify_all();
}
