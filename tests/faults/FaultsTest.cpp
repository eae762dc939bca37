#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sanitizer/common_interface_defs.h>
#include <sanitizer/lsan_interface.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <set>

#include "tests/faults/Expectations.h"
#include "tests/faults/RimTable.h"
#include "tests/faults/Session.h"

// The session, over and over: each time another call of the rim fails, and sometimes all behind it.
// With QORLIX_FAULTS=all in the environment no call is left out, which takes long.

namespace {

using expectations::Case;
using fault_session::Result;
using rim_table::Failure;
using rim_table::Functions;

// Every call up to this one fails once; of those behind it, some. A line of the trace is like the
// one before it; a write of the pipe is not, for it depends on the step what its loss means.
constexpr int kAllUpTo = 20;
constexpr int kAllUpToInTrace = 8;
constexpr int kAllUpToOfWrites = 1000;
constexpr int kSamples = 6;

bool IsForAll() {
  const char* const mode = std::getenv("QORLIX_FAULTS");
  return mode != nullptr && std::string_view(mode) == "all";
}

// Where the program is, for a report of a sanitizer, which ends it.
std::string g_case;
void TellCase() {
  (void)std::fprintf(stderr, "while: %s\nin step: %d\n", g_case.c_str(),
                     fault_session::CurrentStep());
}

struct Totals {
  int sessions = 0;
  int faults = 0;
  std::set<std::string> functions;
  std::set<std::string> failures;
};

std::string NameOf(const rim_table::Function& function, const Failure& failure) {
  return std::string(function.name) + ", " + failure.name;
}

class FaultsTest : public testing::Test {
 protected:
  static void SetUpTestSuite() { __sanitizer_set_death_callback(TellCase); }

  static Result RunCase(const Case& which, Totals& totals) {
    g_case = Describe(which);
    Result seen = fault_session::Run(PlanOf(which));
    ++totals.sessions;
    for (const auto& outcome : seen.outcomes) {
      if (outcome.hits.empty()) continue;
      totals.faults += static_cast<int>(outcome.hits.size());
      totals.functions.insert(which.function->name);
      totals.failures.insert(NameOf(*which.function, *which.failure));
    }
    return seen;
  }

  static void Judge(const Case& which, const Result& good, const Result& seen) {
    const std::vector<std::string> differences = Differences(which, good, seen);
    if (differences.empty()) return;
    std::string text = Describe(which);
    for (const std::string& difference : differences) text += "\n  " + difference;
    ADD_FAILURE() << text;
  }

  static void ExpectNoLeak(const char* function) {
    g_case = std::string("leaks after ") + function;
    EXPECT_EQ(__lsan_do_recoverable_leak_check(), 0) << g_case;
  }

  // From the first call to the last, all of the first ones and some of the others.
  static std::vector<int> Chosen(const rim_table::Function& function, int calls) {
    const std::string_view name = function.name;
    int all = kAllUpTo;
    if (name.starts_with("zqotrc::")) all = kAllUpToInTrace;
    if (name == "pipe_io::Write") all = kAllUpToOfWrites;
    if (IsForAll()) all = calls;
    std::vector<int> chosen;
    for (int n = 1; n <= calls && n <= all; ++n) chosen.push_back(n);
    for (int i = 1; i <= kSamples && calls > all; ++i) {
      const int n = all + (calls - all) * i / kSamples;
      if (n > chosen.back()) chosen.push_back(n);
    }
    return chosen;
  }
};

TEST_F(FaultsTest, EachFunctionOfTheRimMayFailInEachWayAtItsFirstCallsAndAtSomeBehind) {
  const auto begin = std::chrono::steady_clock::now();
  Totals totals;
  std::vector<std::pair<Case, Result>> early;
  for (const auto& function : Functions()) {
    for (const Failure& failure : function.failures) {
      for (int n = 1; n <= function.oncePerProcess; ++n) {
        // Whatever is tried again in the session must not go well either.
        const Case which = {&function, &failure, n, /*onward=*/true};
        early.emplace_back(which, RunCase(which, totals));
      }
    }
  }

  g_case = "no failure";
  (void)fault_session::Run({});  // what goes well once in a process, does so here
  const Result good = fault_session::Run({});
  EXPECT_TRUE(good.stopped);
  EXPECT_TRUE(good.leftOver.empty());
  for (const auto& [which, seen] : early) Judge(which, good, seen);

  for (const auto& function : Functions()) {
    const auto count = good.counts.find(function.name);
    if (count == good.counts.end()) continue;
    for (const Failure& failure : function.failures) {
      const int calls = failure.raises ? count->second.guarded : count->second.calls;
      for (const int n : Chosen(function, calls)) {
        const Case which = {&function, &failure, n};
        Judge(which, good, RunCase(which, totals));
      }
      const std::vector<int> onward =
          IsForAll() ? Chosen(function, calls) : std::vector<int>{1, (calls + 1) / 2};
      for (const int n : std::set<int>(onward.begin(), onward.end())) {
        const Case which = {&function, &failure, n, /*onward=*/true};
        if (calls != 0 && !failure.passes) Judge(which, good, RunCase(which, totals));
      }
    }
    // Checked now and then, for a check costs as much as many sessions.
    const bool isLast = &function == &Functions().back();
    if (isLast || std::string_view((&function)[1].header) != function.header) {
      ExpectNoLeak(function.name);
    }
  }

  for (const auto& function : Functions()) {
    for (const Failure& failure : function.failures) {
      EXPECT_TRUE(totals.failures.count(NameOf(function, failure)) != 0)
          << NameOf(function, failure) << " was never seen";
    }
  }
  const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
  (void)std::printf("%zu functions, %zu failures, %d sessions, %d calls failed, %.1f s\n",
                    totals.functions.size(), totals.failures.size(), totals.sessions, totals.faults,
                    seconds.count());
}

// What can raise is called where somebody catches it, but for these.
TEST_F(FaultsTest, OnlyWhatIsMeantToBeIsCalledWithoutAGuard) {
  const Result good = fault_session::Run({});
  std::set<std::string> unguarded;
  for (const auto& function : Functions()) {
    const bool raises = std::any_of(function.failures.begin(), function.failures.end(),
                                    [](const Failure& failure) { return failure.raises; });
    const auto count = good.counts.find(function.name);
    if (!raises || count == good.counts.end()) continue;
    for (const std::string& detail : count->second.unguarded) {
      unguarded.insert(std::string(function.name) + " " + detail);
    }
  }
  // A plug-in's library and its entry point, whose faults are the server's; and the one value that
  // is read before anything of the start-up run is done.
  EXPECT_THAT(unguarded, testing::UnorderedElementsAre(
                             "RegGetValueBL ",
                             "platform::DynamicLibrary::Load C:\\windows\\system32\\plug.dll",
                             "platform::DynamicLibrary::Load C:\\windows\\system32\\unplug.dll"));
}

}  // namespace
