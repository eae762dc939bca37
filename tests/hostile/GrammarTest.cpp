#include <windows.h>

#include <gmock/gmock.h>

#include <array>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "bench/Support.h"
#include "tests/e2e/Clients.h"
#include "tests/hostile/GrammarConnection.h"
#include "tests/hostile/Surroundings.h"
#include "tests/support/RegistryKeyScratch.h"

// Requests out of the commands' own grammar, right and damaged, on several connections at once,
// while the system checks the server's heap at every step.
//
//   QORLIX_GRAMMAR_SECONDS   how long; the life of one server without it
//   QORLIX_GRAMMAR_SEED      which requests; 1 without it

namespace hostile {
namespace {

constexpr unsigned kConnections = 8;
constexpr unsigned kRounds = 40;       // of the one server of a short run
constexpr unsigned kLongRounds = 400;  // of each server of a long one

unsigned FromEnvironment(const char* name, unsigned otherwise) {
  const char* const text = std::getenv(name);
  return text != nullptr && *text != '\0' ? static_cast<unsigned>(std::strtoul(text, nullptr, 10))
                                          : otherwise;
}

// Has the system check the heap of every process of this program: tails, freed blocks, parameters,
// and the whole heap at every call.
class CheckedHeap {
 public:
  explicit CheckedHeap(const std::string& program)
      : key_("SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Image File Execution Options\\" +
             program) {
    constexpr DWORD kTailFreeParametersAll = 0xF0;
    key_.SetRaw("GlobalFlag", REG_DWORD, e2e::Long(kTailFreeParametersAll));
  }

 private:
  RegistryKeyScratch key_;
};

// What the system has said about heaps so far.
std::vector<std::string> HeapReports() {
  std::vector<std::string> reports;
  const char* const path = std::getenv("QORLIX_STDERR_FILE");
  if (path == nullptr) return reports;
  std::ifstream file("Z:" + std::string(path), std::ios::binary);
  for (std::string line; std::getline(file, line);) {
    if (line.find(":heap:") != std::string::npos) reports.push_back(line);
  }
  return reports;
}

// Runs the program that writes one byte behind a block, and waits for its end.
void RunOverrun() {
  const std::string server = e2e::ServerProcess::Path();
  const std::string path = server.substr(0, server.rfind('\\') + 1) + "heap_overrun.exe";
  STARTUPINFOA startup = {};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION started = {};
  ASSERT_NE(CreateProcessA(path.c_str(), nullptr, nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                           &startup, &started),
            FALSE)
      << path;
  EXPECT_EQ(WaitForSingleObject(started.hProcess, e2e::kPatienceMs), WAIT_OBJECT_0);
  CloseHandle(started.hThread);
  CloseHandle(started.hProcess);
}

class GrammarTest : public testing::Test {
 protected:
  void SetUp() override {
    if (std::getenv("QORLIX_STDERR_FILE") == nullptr) {
      GTEST_SKIP() << "nobody hears what the system says about heaps";
    }
    reportsBefore_ = HeapReports().size();
  }

  void ConnectAll() {
    for (GrammarConnection& connection : connections_) ASSERT_TRUE(connection.Connect());
  }

  // One shot for every connection; all write before anybody is waited for.
  void Round(RequestGrammar& grammar) {
    for (GrammarConnection& connection : connections_) connection.Load(grammar.Next());
    for (bool loaded = true; loaded;) {
      std::vector<GrammarConnection*> fired;
      for (GrammarConnection& connection : connections_) {
        if (!connection.IsLoaded()) continue;
        ASSERT_TRUE(connection.Fire());
        fired.push_back(&connection);
      }
      for (GrammarConnection* connection : fired) {
        ASSERT_TRUE(connection->Collect()) << "beside " << Fired(fired);
      }
      loaded = !fired.empty();
    }
  }

  static std::string Fired(const std::vector<GrammarConnection*>& fired) {
    std::string text;
    for (const GrammarConnection* connection : fired) {
      text += "\n  " + e2e::Describe(connection->Awaited());
    }
    return text;
  }

  // A server from its start on, because the faults of its libraries come in its first calls.
  void Live(RequestGrammar& grammar, unsigned rounds) {
    e2e::ServerProcess server;
    ASSERT_TRUE(server.Start());
    ConnectAll();
    for (unsigned round = 1; round <= rounds; ++round) {
      Round(grammar);
      ASSERT_FALSE(HasFatalFailure())
          << "round " << round << (server.IsRunning() ? "" : ", and the server is gone");
    }
    for (GrammarConnection& connection : connections_) connection.Close();
    EXPECT_TRUE(server.IsRunning());
    EXPECT_TRUE(e2e::AllInstancesServe());
  }

  void PrintSum(unsigned lives, unsigned seed) const {
    std::uint64_t replies = 0;
    std::uint64_t breaks = 0;
    for (const GrammarConnection& connection : connections_) {
      replies += connection.Replies();
      breaks += connection.Breaks();
    }
    std::printf(
        "seed %u: %u servers, %u connections; %llu replies decoded, %llu connections "
        "ended by an answer that did not fit, %zu heap reports\n",
        seed, lives, kConnections, static_cast<unsigned long long>(replies),
        static_cast<unsigned long long>(breaks), HeapReports().size() - reportsBefore_);
  }

  CheckedHeap serversHeap_{"QorlixSRV.exe"};
  std::size_t reportsBefore_ = 0;
  std::array<GrammarConnection, kConnections> connections_;
};

TEST_F(GrammarTest, AnOverrunOfTheHeapIsReported) {
  const CheckedHeap heap("heap_overrun.exe");
  RunOverrun();
  EXPECT_GT(HeapReports().size(), reportsBefore_) << "nothing that the next test could hear";
}

TEST_F(GrammarTest, EveryRequestIsAnsweredByTheGrammarAndTheHeapStaysWhole) {
  const unsigned seconds = FromEnvironment("QORLIX_GRAMMAR_SECONDS", 0);
  const unsigned seed = FromEnvironment("QORLIX_GRAMMAR_SEED", 1);
  const Surroundings surroundings(/*faults=*/true);
  RequestGrammar grammar(seed);
  const double end = bench::Now() + seconds;
  unsigned lives = 0;
  do {
    Live(grammar, seconds != 0 ? kLongRounds : kRounds);
    ++lives;
    ASSERT_FALSE(HasFatalFailure()) << "seed " << seed << ", life " << lives;
  } while (bench::Now() < end);

  const std::vector<std::string> reports = HeapReports();
  EXPECT_EQ(reports.size(), reportsBefore_) << reports.back();
  PrintSum(lives, seed);
}

}  // namespace
}  // namespace hostile
