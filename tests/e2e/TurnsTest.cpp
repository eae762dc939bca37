#include <windows.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <vector>

#include "tests/e2e/BoardSetup.h"
#include "tests/e2e/BoardTable.h"
#include "tests/e2e/Clients.h"
#include "tests/e2e/TraceLines.h"
#include "tests/e2e/TraceSetup.h"
#include "tests/support/RunAgain.h"

// Processes take turns, whatever instances their clients have and however many these are. All ask
// while the server waits for the board-control lock, so that it finds all requests at once.

namespace e2e {
namespace {

constexpr std::size_t kCrowd = 10;
constexpr std::size_t kOurs = 2;
constexpr DWORD kPollMs = 2;

const Bytes kScan = Wire("C700");
const Bytes kNoCommand = Wire("0400");
const Bytes kUnknown = Wire("0400 AC210000");
constexpr char kScanned[] = "RunSrvLoop:  opCode 0xc7";
constexpr char kOfCrowd[] = "RunSrvLoop:  opCode 0x10";
constexpr char kOfOurs[] = "RunSrvLoop:  opCode 0x4";

// --- The other process ---

constexpr char kIsCrowd[] = "QORLIX_TURNS_CROWD";

// A moment that one process tells the other of.
class Moment {
 public:
  explicit Moment(const char* name) : event_(CreateEventA(nullptr, FALSE, FALSE, name)) {}
  ~Moment() { (void)CloseHandle(event_); }
  Moment(const Moment&) = delete;
  Moment& operator=(const Moment&) = delete;
  void HasCome() { (void)SetEvent(event_); }
  bool Comes() { return WaitForSingleObject(event_, 4 * kPatienceMs) == WAIT_OBJECT_0; }

 private:
  const HANDLE event_;
};

struct Moments {
  Moment isThere{"QorlixTurnsCrowdIsThere"};
  Moment ask{"QorlixTurnsCrowdAsks"};
  Moment hasAsked{"QorlixTurnsCrowdHasAsked"};
};

// \returns the exit code: 0 when everything came as it should.
int BeCrowd() {
  Moments moments;
  std::vector<WireClient> crowd;
  if (!ConnectMore(crowd, kCrowd) || !AreServedAtOnce(crowd)) return 2;
  moments.isThere.HasCome();
  if (!moments.ask.Comes()) return 3;
  for (WireClient& client : crowd) {
    if (!client.Send(Wire("1000"))) return 4;
  }
  moments.hasAsked.HasCome();
  for (WireClient& client : crowd) {
    if (!client.YieldsNext(Wire("0400 00000000"), 4 * kPatienceMs)) return 5;
  }
  return 0;
}

// Before the program's environments, which would take the configuration of the trace away.
class CrowdWhereAsked : public testing::EmptyTestEventListener {
  void OnTestProgramStart(const testing::UnitTest& /*program*/) override {
    if (std::getenv(kIsCrowd) != nullptr) std::exit(BeCrowd());
  }
};

[[maybe_unused]] const bool g_isListening = [] {
  testing::UnitTest::GetInstance()->listeners().Append(new CrowdWhereAsked);
  return true;
}();

// --- What looks at it ---

class TurnsTest : public BoardTest {
 protected:
  TurnsTest() { trace_setup::Replace(AllLinesWith()); }
  ~TurnsTest() override {
    server_.Kill();
    trace_setup::Clear();
  }

  void StartCrowd() {
    (void)SetEnvironmentVariableA(kIsCrowd, "1");
    crowd_ = StartAgain();
    (void)SetEnvironmentVariableA(kIsCrowd, nullptr);
    ASSERT_TRUE(moments_.isThere.Comes());
  }
  void ConnectOurs() {
    ASSERT_TRUE(ConnectMore(ours_, kOurs));
    ASSERT_TRUE(AreServedAtOnce(ours_));
  }

  static Lines AllLines() { return TextLines(trace_setup::ReadFile(trace_setup::FileName(1))); }
  static bool IsCode(const std::string& line) { return line.starts_with("RunSrvLoop:  opCode "); }

  // The lines from this one on that name the code of a request.
  static Lines CodesBehind(const std::string& first) {
    const Lines all = AllLines();
    Lines codes;
    std::copy_if(std::find(all.begin(), all.end(), first), all.end(), std::back_inserter(codes),
                 IsCode);
    return codes;
  }

  // Who is served gets the reply first, and the read for the next request in a turn of its own.
  static bool AllAreReadFrom(std::ptrdiff_t clients) {
    const Lines all = AllLines();
    const auto reads = std::count_if(all.begin(), all.end(), [](const std::string& line) {
      return line.starts_with("RunSrvLoop:  READING_STATE -> ReadFile: ");
    });
    return reads == std::count_if(all.begin(), all.end(), IsCode) + clients;
  }

  template <typename Condition>
  static bool Comes(const Condition& condition) {
    const ULONGLONG end = GetTickCount64() + kPatienceMs;
    while (!condition()) {
      if (GetTickCount64() >= end) return false;
      Sleep(kPollMs);
    }
    return true;
  }

  void ExpectTurnsOfAllThatAskDuringAScan() {
    ASSERT_TRUE(Comes([] { return AllAreReadFrom(1 + kOurs + kCrowd); }));
    ForeignBoardLock lock;
    ASSERT_TRUE(lock.Take(kPatienceMs));
    ASSERT_TRUE(client_.Send(kScan));
    ASSERT_TRUE(Comes([] { return !CodesBehind(kScanned).empty(); }));
    moments_.ask.HasCome();
    ASSERT_TRUE(moments_.hasAsked.Comes());
    for (WireClient& client : ours_) ASSERT_TRUE(client.Send(kNoCommand));
    lock.Release();

    EXPECT_TRUE(client_.YieldsNext(Wire("0400 00000000")));
    for (WireClient& client : ours_) EXPECT_TRUE(client.YieldsNext(kUnknown));
    EXPECT_EQ(EndOf(crowd_).exitCode, 0u);
    Lines turns = {kScanned, kOfCrowd, kOfOurs, kOfCrowd, kOfOurs};
    turns.resize(1 + kCrowd + kOurs, kOfCrowd);
    EXPECT_EQ(CodesBehind(kScanned), turns);
  }

  Moments moments_;
  std::vector<WireClient> ours_;
  PROCESS_INFORMATION crowd_ = {};
};

TEST_F(TurnsTest, TwoClientsBehindACrowdOfAnotherProcessHaveEverySecondTurn) {
  StartWith(kBoardMachine);
  StartCrowd();
  ConnectOurs();
  ExpectTurnsOfAllThatAskDuringAScan();
}

TEST_F(TurnsTest, TwoClientsBeforeACrowdOfAnotherProcessHaveEverySecondTurn) {
  StartWith(kBoardMachine);
  ConnectOurs();
  StartCrowd();
  ExpectTurnsOfAllThatAskDuringAScan();
}

}  // namespace
}  // namespace e2e
