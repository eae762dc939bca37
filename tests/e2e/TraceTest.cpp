#include "tests/e2e/TraceTest.h"

#include <windows.h>

#include <functional>

namespace e2e {
namespace {

constexpr DWORD kPollMs = 2;
constexpr char kWaits[] = "RunSrvLoop:  while - WaitForMultipleObjects";

// Bytes of the first file that a test has seen.
std::size_t g_seen = 0;

// What stands before the wait when nothing is due: an instance that reads, or waits for a client.
bool HasNothingToDo(const Lines& lines) {
  if (lines.size() < 2 || lines.back() != kWaits) return false;
  const std::string& before = lines[lines.size() - 2];
  return before == "RunSrvLoop:  ReadFile: ReceivePointer=0 Byte" ||
         before == "RunSrvLoop:  >> Start receiving loop " ||
         before.starts_with("DisconnectAndReconnect:  DisconnectAndReconnect for Pipe(");
}

Lines LinesWhen(const std::function<bool(const Lines&)>& complete, std::size_t& seen) {
  const ULONGLONG end = GetTickCount64() + kPatienceMs;
  for (;;) {
    const Bytes content = trace_setup::ReadFile(trace_setup::FileName(1));
    Lines lines = TextLines(content.substr(std::min(seen, content.size())));
    const bool isComplete = complete(lines);
    if (!isComplete && GetTickCount64() < end) {
      Sleep(kPollMs);
      continue;
    }
    EXPECT_TRUE(isComplete) << "the last of " << lines.size() << " lines is "
                            << (lines.empty() ? "none" : lines.back());
    seen = content.size();
    return lines;
  }
}

bool EndsWith(const Lines& lines, const std::string& last) {
  return !lines.empty() && lines.back() == last;
}

}  // namespace

void TraceTest::SetUpTestSuite() {
  trace_setup::Replace(AllLinesWith());
  g_seen = 0;
  SharedServerTest::SetUpTestSuite();
  (void)NewLines();
}

void TraceTest::TearDownTestSuite() {
  SharedServerTest::TearDownTestSuite();
  trace_setup::Clear();
}

void TraceTest::SetUp() {
  ASSERT_TRUE(client_.Connect());
  (void)NewLines();
}

// Ends as it began, whatever the test has configured.
void TraceTest::TearDown() {
  Configure(AllLinesWith());
  CloseAndWait(client_);
}

Lines TraceTest::NewLines() { return LinesWhen(HasNothingToDo, g_seen); }

Lines TraceTest::NewLinesUpTo(const std::string& last) {
  return LinesWhen([&](const Lines& lines) { return EndsWith(lines, last); }, g_seen);
}

void TraceTest::Configure(const TraceParameters& parameters) {
  trace_setup::Replace(parameters);
  g_seen = 0;
  LetItFinish();
  if (parameters == AllLinesWith()) (void)NewLines();
}

Lines TraceTest::LinesOf(const Bytes& request) {
  EXPECT_TRUE(client_.Send(request));
  Lines lines = NewLines();
  ReadAway();
  return lines;
}

void TraceTest::ReadAway() {
  if (client_.Waiting() != 0) (void)client_.Receive(client_.Waiting());
}

// A request that is answered says that all before it is done.
void TraceTest::LetItFinish() {
  ReadAway();
  ASSERT_TRUE(client_.IsServed());
  ASSERT_TRUE(client_.IsServed());
}

void TraceTest::CloseAndWait(WireClient& client) {
  client.Close();
  EXPECT_TRUE(LinesWhen(
                  [](const Lines& lines) {
                    return HasNothingToDo(lines) &&
                           lines[lines.size() - 2].starts_with("DisconnectAndReconnect");
                  },
                  g_seen)
                  .size() > 0);
}

Lines OwnServerTraceTest::AllLinesOnceItWaits() {
  std::size_t seen = 0;
  return LinesWhen(HasNothingToDo, seen);
}

}  // namespace e2e
