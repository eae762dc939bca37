#include "tests/fakes/FaultPlan.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <unordered_map>
#include <utility>

#include "tests/fakes/NotOurs.h"

namespace {

// More calls than any session makes: the server goes round and round.
constexpr int kEndless = 1000000;

struct State {
  fault_plan::Plan plan;
  std::map<std::string, fault_plan::Count> counts;
  // By the address of the name, for a look at each call; two may be the same name.
  std::unordered_map<const char*, fault_plan::Count*> places;
  std::vector<fault_plan::Hit> hits;
  int inStep = 0;  // calls of the planned function since the hits were taken
  int total = 0;
};

std::atomic<bool> g_armed = false;
std::mutex g_mutex;  // workers call fakes, too
State g_state;

}  // namespace

namespace fault_plan {

void Arm(const Plan& plan) {
  const std::lock_guard<std::mutex> lock(g_mutex);
  g_state = {};
  g_state.plan = plan;
  g_armed = true;
}

void Disarm() { g_armed = false; }

std::uint32_t CodeFor(const char* function, const char* detail) {
  if (!g_armed) return 0;
  const NotOurs notOurs;
  const std::lock_guard<std::mutex> lock(g_mutex);
  if (++g_state.total > kEndless) {
    (void)std::fprintf(stderr, "endless: the last call is %s\n", function);
    std::abort();
  }
  Count*& place = g_state.places[function];
  if (place == nullptr) place = &g_state.counts[function];
  Count& count = *place;
  ++count.calls;
  if (Guarded::Inside()) {
    ++count.guarded;
  } else if (count.unguarded.find(detail) == count.unguarded.end()) {
    count.unguarded.insert(detail);
  }

  const Plan& plan = g_state.plan;
  if (plan.function != function) return 0;
  ++g_state.inStep;
  if (plan.raises && !Guarded::Inside()) return 0;
  const int nth = plan.raises ? count.guarded : count.calls;
  if (nth != plan.nth && !(plan.onward && nth > plan.nth)) return 0;
  g_state.hits.push_back({detail, g_state.inStep});
  if (plan.raises) throw Raised();
  return plan.code;
}

std::vector<Hit> TakeHits() {
  const std::lock_guard<std::mutex> lock(g_mutex);
  g_state.inStep = 0;
  return std::exchange(g_state.hits, {});
}

std::map<std::string, Count> Counts() {
  const std::lock_guard<std::mutex> lock(g_mutex);
  return g_state.counts;
}

}  // namespace fault_plan
