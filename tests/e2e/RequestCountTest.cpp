#include <gmock/gmock.h>

#include <windows.h>

#include <algorithm>
#include <map>
#include <optional>

#include "bench/HeapCalls.h"
#include "bench/PipeClients.h"
#include "bench/RegistryWork.h"
#include "bench/ServerProcess.h"
#include "bench/Workload.h"
#include "tests/e2e/BoardSetup.h"
#include "tests/e2e/BoardTable.h"
#include "tests/e2e/CommandWork.h"
#include "tests/e2e/ServerLog.h"

// What a request costs, in numbers that no neighbour on the machine can change: calls that leave
// the server's process, and blocks that it takes from the heap. Less fails as well: a count that
// goes down is lowered here, and one that goes up needs a reason.

namespace e2e {
namespace {

using bench::Pace;
using bench::PipeClients;
using bench::ServerProgram;
using bench::Workload;

constexpr unsigned kWarmUp = 3;
constexpr unsigned kRoundTrips = 11;

/// One round trip on a connection that waits for its request: wake-up and what was read, the write,
/// the next read and the wait.
constexpr std::size_t kRoundTrip = 7;
/// A connection that comes, asks once and goes, that round trip included.
constexpr std::size_t kConnection = 18;
/// The same of the server, which asks once who its client is, for the log of requests.
constexpr std::size_t kServerConnection = kConnection + 2;
/// A connection that comes and goes beside a client who stays, and asks for nothing.
constexpr std::size_t kSilentConnection = 11;
/// Around each call of the board-control library.
constexpr std::size_t kLock = 2;

/// What a command asks for beside the round trip: the lock, and its work, which is the registry's
/// calls or those of the (simulated) library. What it takes from the heap is all its work's.
struct Cost {
  const char* name;
  std::size_t lock;
  std::size_t work;
  std::size_t heapCalls;
};

constexpr Cost kNoWork[] = {{"NoOperation", 0, 0, 0}};

constexpr Cost kRegistryCosts[] = {
    {"Reg_GetValue", 0, 3, 1}, {"Reg_SetValue", 0, 3, 2},  {"Reg_DelValue", 0, 3, 1},
    {"Reg_EnumKey", 0, 3, 0},  {"Reg_EnumValue", 0, 3, 0}, {"Reg_CreateKey", 0, 2, 1},
    {"Reg_DelKey", 0, 9, 2},
};

constexpr Cost kBoardCosts[] = {
    {"EnumBoard", kLock, 0, 1},
    {"EnumInstBoard", kLock, 0, 4},
    {"EnumAvailableBoard", kLock, 0, 2},
    {"EnumAdapters", kLock, 0, 2},
    {"EnumConfiguration", kLock, 0, 1},
    {"BoardGetMap", kLock, 0, 1},
    {"GetBoardInfo", kLock, 0, 1},
    {"GetBoardInfoEx", kLock, 0, 1},
    {"Scan", kLock, 10, 8},
    {"CreateAllLogdevices", kLock, 7, 5},
    {"HasUninitializedInstances", kLock, 0, 0},
    {"UpdateLogDevicesForDevice", kLock, 18, 24},
    {"Register", 0, 0, 0},
    {"GetDeviceChange", 0, 0, 2},
    {"Unregister", 0, 0, 0},
    {"DeviceStateEx", 0, 17, 6},
    {"DeviceStateExWithoutOption", 0, 17, 6},
    {"BoardInformation", 0, 0, 2},
};

void PrintTo(const Cost& cost, std::ostream* out) { *out << cost.name; }

std::string Folder() {
  const std::string path = ServerProcess::Path();
  return path.substr(0, path.rfind('\\') + 1);
}

ServerProgram Product() { return {"product", "\"" + ServerProcess::Path() + "\"", kPipeName}; }

ServerProgram Yardstick() {
  return {"yardstick", "\"" + Folder() + "yardstick.exe\" QorlixCountYardstick",
          "\\\\.\\pipe\\QorlixCountYardstick"};
}

std::size_t Median(std::vector<std::size_t> counts) {
  std::sort(counts.begin(), counts.end());
  return counts.at(counts.size() / 2);
}

// The stretch with the median count: now and then a read finds its request there already, or a wait
// is broken off and taken up again, and that is no round trip like the others.
ServerLog::Requests Typical(std::vector<ServerLog::Requests> stretches) {
  EXPECT_EQ(stretches.size(), kRoundTrips);
  if (stretches.empty()) return {};
  const auto middle = stretches.begin() + static_cast<std::ptrdiff_t>(stretches.size() / 2);
  std::nth_element(stretches.begin(), middle, stretches.end(),
                   [](const auto& a, const auto& b) { return a.size() < b.size(); });
  return *middle;
}

// What the server's thread asks for while the step is done once.
template <typename Step>
ServerLog::Requests TypicalRequests(std::uint32_t thread, const Step& step) {
  for (unsigned i = 0; i < kWarmUp; ++i) step();
  ServerLog log;
  for (unsigned i = 0; i < kRoundTrips; ++i) {
    step();
    log.Mark();
  }
  return Typical(log.Of(thread));
}

testing::AssertionResult Are(const ServerLog::Requests& requests, std::size_t count) {
  if (requests.size() == count) return testing::AssertionSuccess();
  return testing::AssertionFailure() << requests.size() << " requests, not " << count << ": "
                                     << testing::PrintToString(requests);
}

class RequestCountTest : public testing::Test {
 protected:
  void SetUp() override {
    if (!ServerLog::IsVisible()) GTEST_SKIP() << "nothing shows what the server asks for";
  }

  static void RoundTrip(PipeClients& client, const Workload& workload) {
    (void)client.Burst(workload, 1, Pace::ClosedLoop, nullptr);
  }

  // A connection that is seen to come, served, and seen to go.
  static ServerLog::Requests RequestsOfAConnection(const bench::ServerProcess& server) {
    return TypicalRequests(server.ThreadId(), [&] {
      PipeClients client(server.PipeName(), 1);
      Sleep(kStepMs);
      RoundTrip(client, bench::NoOperation());
      Sleep(kStepMs);
    });
  }

  // The same without a request, while another client is connected and at rest.
  static ServerLog::Requests RequestsOfASilentConnection(const bench::ServerProcess& server) {
    PipeClients whoStays(server.PipeName(), 1);
    RoundTrip(whoStays, bench::NoOperation());
    return TypicalRequests(server.ThreadId(), [&] {
      const PipeClients client(server.PipeName(), 1);
      Sleep(kStepMs);
    });
  }

  static ServerLog::Requests RequestsOfARoundTrip(const bench::ServerProcess& server) {
    PipeClients client(server.PipeName(), 1);
    return TypicalRequests(server.ThreadId(), [&] { RoundTrip(client, bench::NoOperation()); });
  }

  // Time for the server to see it, also beside others who want its processor.
  static constexpr DWORD kStepMs = 25;
};

TEST_F(RequestCountTest, TheLogShowsARequestMore) {
  const DWORD thread = GetCurrentThreadId();
  const HANDLE event = CreateEventA(nullptr, TRUE, TRUE, nullptr);
  const auto once = TypicalRequests(thread, [&] { SetEvent(event); });
  const auto twice = TypicalRequests(thread, [&] {
    SetEvent(event);
    ResetEvent(event);
  });
  EXPECT_EQ(once, (ServerLog::Requests{"event_op"}));
  EXPECT_EQ(twice, (ServerLog::Requests{"event_op", "event_op"}));
  CloseHandle(event);
}

TEST_F(RequestCountTest, ABareServerAsksForAsMuchAsTheTableSays) {
  const bench::ServerProcess yardstick(Yardstick());
  EXPECT_TRUE(Are(RequestsOfARoundTrip(yardstick), kRoundTrip));
  EXPECT_TRUE(Are(RequestsOfAConnection(yardstick), kConnection));
  EXPECT_TRUE(Are(RequestsOfASilentConnection(yardstick), kSilentConnection));
}

TEST_F(RequestCountTest, TheServerAsksForNoMoreThanABareOneAndOnceWhoItsClientIs) {
  const bench::ServerProcess server(Product());
  EXPECT_TRUE(Are(RequestsOfARoundTrip(server), kRoundTrip));
  EXPECT_TRUE(Are(RequestsOfAConnection(server), kServerConnection));
}

TEST_F(RequestCountTest, AConnectionThatAsksForNothingCostsTheServerNoMoreThanABareOne) {
  const bench::ServerProcess server(Product());
  EXPECT_TRUE(Are(RequestsOfASilentConnection(server), kSilentConnection));
}

// --- Commands ---

bench::Bytes AsBytes(const Bytes& text) { return {text.begin(), text.end()}; }

// Every command whose cost is told above, in an order in which each finds what it needs, again and
// again.
std::vector<Workload> Commands() {
  std::vector<Workload> commands = {bench::NoOperation(), bench::GetValue(), bench::EnumKey(),
                                    bench::EnumValue(),   bench::SetValue(), bench::DelValue(),
                                    bench::CreateKey(),   bench::DelKey()};
  for (const BoardRow& row : BoardRequests()) {
    commands.push_back(
        {row.request.name, AsBytes(row.request.Request()), AsBytes(Wire(row.reply))});
  }
  return commands;
}

// The machine of all board requests; a change is told once, so there is one for every round.
std::string Machine() {
  const std::string machine = kBoardMachine;
  const std::size_t begin = machine.find("[change]");
  const std::string change = machine.substr(begin, machine.find("[board-information]") - begin);
  std::string all = machine;
  for (unsigned i = 0; i < 2 * (kWarmUp + kRoundTrips); ++i) all += change;
  return all;
}

struct Measured {
  ServerLog::Requests requests;
  std::size_t heapCalls = 0;
};
using Figures = std::map<std::string, Measured>;

// Every command's typical requests of the thread while `work` does each in turn; how many rounds it
// did in all.
template <typename Work>
void Measure(const std::vector<Workload>& commands, std::uint32_t thread, const Work& work,
             Figures& figures) {
  for (unsigned i = 0; i < kWarmUp; ++i) std::for_each(commands.begin(), commands.end(), work);
  ServerLog log;
  HeapTrace heap;
  for (unsigned i = 0; i < kRoundTrips; ++i) {
    for (const Workload& command : commands) {
      work(command);
      log.Mark();
      heap.Mark();
    }
  }

  const auto requests = log.Of(thread);
  const auto heapCalls = heap.CallsOf(thread);
  ASSERT_EQ(requests.size(), kRoundTrips * commands.size());
  ASSERT_EQ(heapCalls.size(), requests.size());
  for (std::size_t i = 0; i < commands.size(); ++i) {
    std::vector<ServerLog::Requests> own;
    std::vector<std::size_t> ownHeapCalls;
    for (std::size_t at = i; at < requests.size(); at += commands.size()) {
      own.push_back(requests[at]);
      ownHeapCalls.push_back(heapCalls[at]);
    }
    figures[commands[i].name] = {Typical(own), Median(ownHeapCalls)};
  }
}

// What every command costs in a server of its own, asked by one client in turn, and what its work
// costs in this process.
class CommandCountTest : public RequestCountTest, public testing::WithParamInterface<Cost> {
 protected:
  static void SetUpTestSuite() {
    if (!ServerLog::IsVisible() || !inServer_.empty()) return;
    BoardFiles files;
    files.Write(Machine());
    BoardFiles::KeepNoLog();
    const RegistryKeyScratch logDevices("SOFTWARE\\Vesmark\\NORVA\\LogDevices");
    const bench::RegistryFixture registry;
    const std::vector<Workload> commands = Commands();
    {
      std::optional<HeapTrace::Shown> shown(std::in_place);
      const bench::ServerProcess server(Product());
      shown.reset();
      PipeClients client(server.PipeName(), 1);
      Measure(
          commands, server.ThreadId(), [&](const Workload& one) { RoundTrip(client, one); },
          inServer_);
    }
    Measure(
        commands, GetCurrentThreadId(), [](const Workload& one) { DoWorkOf(one.name); },
        inProcess_);
    for (unsigned i = 0; i < kWarmUp; ++i) {
      for (const Workload& one : commands) {
        if (!inProcess_.contains(one.name)) continue;
        inProcess_[one.name].heapCalls = bench::HeapCallsOf([&] { DoWorkOf(one.name); });
      }
    }
  }

  static Figures inServer_;
  static Figures inProcess_;
};
Figures CommandCountTest::inServer_;
Figures CommandCountTest::inProcess_;

TEST_P(CommandCountTest, TheServerAsksForABareRoundTripAndTheWork) {
  EXPECT_TRUE(
      Are(inServer_[GetParam().name].requests, kRoundTrip + GetParam().lock + GetParam().work));
}

TEST_P(CommandCountTest, TheServerTakesNothingFromTheHeapBesideTheWork) {
  ASSERT_TRUE(inServer_.contains(GetParam().name));
  // Not fewer either: a trace that shows none is none of this server's.
  EXPECT_EQ(inServer_[GetParam().name].heapCalls, GetParam().heapCalls);
}

TEST_P(CommandCountTest, TheWorkAloneCostsWhatTheTableSays) {
  // Nothing is what the table says of some, and so is what was not measured.
  ASSERT_TRUE(inProcess_.contains(GetParam().name));
  const Measured& work = inProcess_[GetParam().name];
  EXPECT_EQ(work.requests.size(), GetParam().work) << testing::PrintToString(work.requests);
  EXPECT_EQ(work.heapCalls, GetParam().heapCalls);
}

INSTANTIATE_TEST_SUITE_P(Plain, CommandCountTest, testing::ValuesIn(kNoWork));
INSTANTIATE_TEST_SUITE_P(Registry, CommandCountTest, testing::ValuesIn(kRegistryCosts));
INSTANTIATE_TEST_SUITE_P(Board, CommandCountTest, testing::ValuesIn(kBoardCosts));

}  // namespace
}  // namespace e2e
