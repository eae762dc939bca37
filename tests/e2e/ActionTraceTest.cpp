#include "tests/e2e/ActionTraceTest.h"

#include <windows.h>

#include <memory>

namespace e2e {
namespace {

constexpr DWORD kPollMs = 2;

std::unique_ptr<StandIns> g_libraries;
std::uint32_t g_threads = 0;

Lines TracedSoFar() { return SplitLines(trace_setup::ReadFile(trace_setup::FileName(1))); }

}  // namespace

BitLines operator+(BitLines first, const BitLines& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

BitLines SendsLong(const std::string& result, int length) {
  const Of send("Send: ");
  return {send(kStep, ">> Begin CQorlixSRVPipe::Send(long)"),
          send(kStep, "<< CQorlixSRVPipe::Send SendResult=" + result +
                          " writeResult=0x1  DataLength=" + std::to_string(length))};
}

BitLine CutLength() { return Of("ReadLong: ")(kError, "ReadLong exit with BUFFER_OVERFLOW"); }
BitLine CutText() { return Of("ReadString: ")(kError, "ReadString exit with BUFFER_OVERFLOW"); }

void ActionTraceTest::SetUpTestSuite() {
  g_libraries = std::make_unique<StandIns>();
  g_libraries->PlaceAll();
  TraceTest::SetUpTestSuite();
  g_threads = Server().ThreadCount();
}

void ActionTraceTest::TearDownTestSuite() {
  TraceTest::TearDownTestSuite();
  g_libraries.reset();
}

void ActionTraceTest::SetUp() {
  TraceTest::SetUp();
  g_libraries->Script("");
}

StandIns& ActionTraceTest::Libraries() { return *g_libraries; }

void ActionTraceTest::ExpectLines(const Bytes& request, std::size_t replySize,
                                  const BitLines& expected, const std::string& filter) {
  const bool withSends = filter.find("SEND") != std::string::npos;
  for (const std::uint32_t mask : {0xFFFFFFFFu, kEnter, kError, kStep, kAnswered, ~0xD8u}) {
    Lines wanted;
    for (const BitLine& line : expected) {
      if ((line.bit & mask) == 0) continue;
      wanted.push_back("S QORLIXSR -- " + line.component + "  0  0000 " + line.text);
    }
    Configure(AllLinesWith(
        {{"Format", "SHORT"}, {"FctName", filter}, {"zqserver_level", std::to_string(mask)}}));
    EXPECT_TRUE(LinesAre(
        Traced(request, replySize, wanted.size(), withSends && (mask & kStep) != 0), wanted))
        << "bits " << mask;
  }
}

// The lines of the request. Those of the replies that say that all is done come last.
Lines ActionTraceTest::Traced(const Bytes& request, std::size_t replySize, std::size_t count,
                              bool withSends) {
  // A reply's last line is written behind the reply.
  const auto repliesAreTraced = [] {
    const Lines lines = TracedSoFar();
    return !lines.empty() && lines.back().find("<< CQorlixSRVPipe::Send") != std::string::npos;
  };
  const ULONGLONG end = GetTickCount64() + kPatienceMs;
  while (withSends && !repliesAreTraced() && GetTickCount64() < end) Sleep(kPollMs);
  const std::size_t before = TracedSoFar().size();
  const std::size_t behind = withSends ? 2 * SendsLong("").size() : 0;
  EXPECT_TRUE(client_.Send(request));
  EXPECT_EQ(client_.Receive(replySize).size(), replySize);
  LetItFinish();

  EXPECT_TRUE(Server().ComesBackToThreadCount(g_threads)) << "a worker has not ended";
  while (TracedSoFar().size() < before + count + behind && GetTickCount64() < end) Sleep(kPollMs);
  Lines lines = TracedSoFar();
  lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(before));
  lines.resize(lines.size() - std::min(lines.size(), behind));
  return lines;
}

}  // namespace e2e
