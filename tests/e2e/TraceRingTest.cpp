#include <windows.h>

#include <gmock/gmock.h>

#include <memory>

#include "tests/e2e/TraceTest.h"

// Lines in the shared-memory ring, read and damaged as any other process could.

namespace e2e {
namespace {

using testing::Optional;

constexpr DWORD kExitMs = 10000;
constexpr std::uint32_t kDataAt = 64;
constexpr std::uint32_t kOverhead = 68;
enum : std::uint32_t { kOffset, kSize, kWraps, kEnabled, kAttached, kLayout, kWords = 16 };

// With the line of the code, one for each request: 28 bytes in the ring.
TraceParameters RingOf(const std::string& size, const std::string& text = "opCode") {
  return AllLinesWith({{"Output", "SM"}, {"sm_size", size}, {"String", text}});
}

class TraceRingTest : public OwnServerTraceTest {
 protected:
  TraceRingTest() { trace_setup::ReplaceQuietly(RingOf("1000")); }

  // Serves one client behind a start; lines before the first request are filtered away.
  void Start() {
    ASSERT_TRUE(server_.Start());
    ASSERT_TRUE(client_.Connect());
    // Whoever looks at the ring finds the start behind it.
    ASSERT_TRUE(client_.Answers(Wire("0400"), Wire("0400 AC210000")));
  }

  void Request(std::uint32_t code) {
    ASSERT_TRUE(client_.Send(Long(code).substr(0, 2)));
    ASSERT_TRUE(client_.YieldsNext(Wire("0400 AC210000")));
  }

  // A ring as another process would have made it.
  std::unique_ptr<SharedWords> ForeignRing(std::uint32_t announced, std::uint32_t layout,
                                           std::uint32_t bytes) {
    auto ring = std::make_unique<SharedWords>(SharedWords::kRing, bytes);
    SharedWords& words = *ring;
    words[kSize] = announced;
    words[kEnabled] = 1;
    words[kAttached] = 1;
    words[kLayout] = layout;
    return ring;
  }

  WireClient client_;
};

// The lines of the first two requests: an unknown code, and the one that asks behind it.
const Bytes kFirstLines = "RunSrvLoop:  opCode 0x4 \r\nRunSrvLoop:  opCode 0x10 \r\n";

TEST_F(TraceRingTest, ANewRingDescribesItselfAndHoldsTheLines) {
  Start();
  SharedWords ring(SharedWords::kRing);
  ASSERT_TRUE(ring.IsThere());
  const std::uint32_t expected[kWords] = {
      static_cast<std::uint32_t>(kFirstLines.size()), 1000, 0, 1, 1, 1};
  for (std::uint32_t i = 0; i < kWords; ++i) EXPECT_EQ(ring[i], expected[i]) << i;
  EXPECT_EQ(ring.Data(kDataAt, 1000), kFirstLines + Bytes(1000 - kFirstLines.size(), '\0'));
}

TEST_F(TraceRingTest, ASizeThatIsNotAboveZeroIsTheDefault) {
  trace_setup::ReplaceQuietly(RingOf("-1"));
  Start();
  SharedWords ring(SharedWords::kRing);
  ASSERT_TRUE(ring.IsThere());
  EXPECT_EQ(ring[kSize], 2000000u);
}

TEST_F(TraceRingTest, TheRingGoesRoundAndCountsIt) {
  Start();
  SharedWords ring(SharedWords::kRing);
  ASSERT_TRUE(ring.IsThere());
  Bytes all = kFirstLines;
  for (std::uint32_t code = 0x400; code < 0x400 + 100; ++code) {
    char line[64];
    all.append(line, static_cast<std::size_t>(
                         snprintf(line, sizeof(line), "RunSrvLoop:  opCode 0x%x \r\n", code)));
    Request(code);
  }
  const std::size_t offset = all.size() % 1000;
  EXPECT_EQ(ring[kOffset], offset);
  EXPECT_EQ(ring[kWraps], all.size() / 1000);
  EXPECT_EQ(ring.Data(kDataAt, offset), all.substr(all.size() - offset));
  EXPECT_EQ(ring.Data(kDataAt + offset, 1000 - offset),
            all.substr(all.size() - 1000, 1000 - offset));
  for (const std::uint32_t spare : {6u, 7u, 15u}) EXPECT_EQ(ring[spare], 0u);
}

TEST_F(TraceRingTest, ATextWithLineEndsMakesALineThatTheServerNeverWrote) {
  trace_setup::ReplaceQuietly(RingOf("1000", "?Read?Param*"));
  Start();
  const Bytes deviceId = "X \r\nRunSrvLoop:  opCode 0xfd \r\nY";
  ASSERT_TRUE(client_.Answers(Wire("0500") + Text(deviceId) + Text("de"), Wire("0400 02000000")));
  SharedWords ring(SharedWords::kRing);
  ASSERT_TRUE(ring.IsThere());
  const Bytes lines =
      "Install  Read Param SUCCESS: lpszDeviceID=" + deviceId + " lpszLanguageExt=de \r\n";
  EXPECT_EQ(ring[kOffset], lines.size());
  EXPECT_EQ(ring.Data(kDataAt, 1000), lines + Bytes(1000 - lines.size(), '\0'));
}

// A line of 40 bytes at offset 80 of 100: 20 at the end, 22 with its two characters at the start.
TEST_F(TraceRingTest, ALineThatCrossesTheEndGoesOnAtTheStart) {
  constexpr char kText[] = "<< result = 0x219a Value";
  // A blank would begin another pattern.
  trace_setup::ReplaceQuietly(RingOf("5000", "<<?result?=?0x219a?Value"));
  const auto ring = ForeignRing(100, 1, 100 + kOverhead);
  Start();
  (*ring)[kOffset] = 80;
  ASSERT_TRUE(client_.Answers(Wire("0300 00000000 00000000 01"), Wire("0400 9A210000")));
  const Bytes line = Bytes("Reg_SetValue:  ") + kText + " ";
  ASSERT_EQ(line.size(), 40u);
  EXPECT_EQ(ring->Data(kDataAt + 80, 20), line.substr(0, 20));
  EXPECT_EQ(ring->Data(kDataAt, 22), line.substr(20) + "\r\n");
  EXPECT_EQ(ring->Data(kDataAt + 22, 58), Bytes(58, '\0'));
  EXPECT_EQ((*ring)[kOffset], 22u);
  EXPECT_EQ((*ring)[kWraps], 1u);
}

TEST_F(TraceRingTest, TheWrapCountStaysAtAllBits) {
  const auto ring = ForeignRing(100, 1, 100 + kOverhead);
  Start();
  (*ring)[kWraps] = 0xFFFFFFFF;
  for (std::uint32_t code = 0x400; code < 0x400 + 10; ++code) Request(code);
  EXPECT_EQ((*ring)[kWraps], 0xFFFFFFFFu);
}

TEST_F(TraceRingTest, ARingThatExistsIsJoinedInItsOwnSizeAndLeftAtTheEnd) {
  const auto ring = ForeignRing(500, 1, 500 + kOverhead);
  Start();
  EXPECT_EQ((*ring)[kSize], 500u);
  EXPECT_EQ((*ring)[kAttached], 2u);
  EXPECT_EQ((*ring)[kOffset], kFirstLines.size());
  EXPECT_EQ(ring->Data(kDataAt, kFirstLines.size()), kFirstLines);

  ASSERT_TRUE(client_.Send(Wire("FD00 FD000000")));
  ASSERT_THAT(server_.ExitCode(kExitMs), Optional(1u));
  EXPECT_EQ((*ring)[kAttached], 1u);
}

TEST_F(TraceRingTest, ALastOneThatLeavesCountsToNothing) {
  Start();
  SharedWords ring(SharedWords::kRing);
  ASSERT_TRUE(ring.IsThere());
  ASSERT_TRUE(client_.Send(Wire("FD00 FD000000")));
  ASSERT_THAT(server_.ExitCode(kExitMs), Optional(1u));
  EXPECT_EQ(ring[kAttached], 0u);
}

TEST_F(TraceRingTest, ARingThatIsNoneIsLeftAlone) {
  struct Case {
    const char* what;
    std::uint32_t announced, layout, bytes;
  };
  const Case cases[] = {{"another layout", 500, 2, 500 + kOverhead},
                        {"no layout yet", 500, 0, 500 + kOverhead},
                        {"more announced than mapped", 0x40000000, 1, 500 + kOverhead},
                        {"the most announced", 0xFFFFFFFF, 1, 500 + kOverhead},
                        {"a size that wraps with its overhead", 0xFFFFFFF0, 1, 500 + kOverhead},
                        {"nothing announced", 0, 1, 500 + kOverhead}};
  for (const Case& one : cases) {
    const auto ring = ForeignRing(one.announced, one.layout, one.bytes);
    const Bytes before = ring->Data(0, one.bytes);
    Start();
    Request(0x400);
    EXPECT_TRUE(server_.IsRunning()) << one.what;
    EXPECT_EQ(ring->Data(0, one.bytes), before) << one.what;
    client_.Close();
    server_.Kill();
  }
}

TEST_F(TraceRingTest, WordsThatOthersWriteWhileItServesDoNoHarm) {
  const auto ring = ForeignRing(1000, 1, 1000 + kOverhead);
  Start();
  std::uint32_t code = 0x400;
  for (const std::uint32_t word : {0xFFFFFFFFu, 0x80000000u, 0x7FFFFFFFu, 1001u, 1000u, 999u, 0u}) {
    for (std::uint32_t i = 0; i < kWords; ++i) {
      (*ring)[i] = word;
      Request(code++);
      EXPECT_LE((*ring)[kOffset], 1000u) << "word " << i << " was " << word;
    }
  }
  EXPECT_TRUE(client_.IsServed());
}

TEST_F(TraceRingTest, OfALineLongerThanTheRingTheEndRemains) {
  const auto ring = ForeignRing(10, 1, 10 + kOverhead);
  Start();
  Request(0x4711);
  EXPECT_EQ(ring->Data(kDataAt, 10 + 4).substr(10), Bytes(4, '\0'));
  const std::uint32_t offset = (*ring)[kOffset];
  ASSERT_LE(offset, 10u);
  const Bytes data = ring->Data(kDataAt, 10);
  EXPECT_EQ(data.substr(offset) + data.substr(0, offset), " 0x4711 \r\n");
}

}  // namespace
}  // namespace e2e
