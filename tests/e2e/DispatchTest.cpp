#include <gmock/gmock.h>

#include <algorithm>
#include <iterator>

#include "tests/e2e/SharedServerTest.h"

namespace e2e {
namespace {

constexpr std::uint32_t kServedCodes[] = {1,   2,   3,   5,   6,   12,  13,  15,  16,  17,
                                          18,  21,  22,  23,  28,  29,  30,  88,  163, 191,
                                          192, 193, 194, 195, 196, 197, 199, 200, 201, 207,
                                          240, 253, 256, 257, 258, 288, 289, 290, 292};

Bytes Code(std::uint32_t code) { return Long(code).substr(0, 2); }

class DispatchTest : public SharedServerTest {
 protected:
  // One answer too many is found by the answers that follow it.
  void ExpectUnknownUnlessServed(std::uint32_t code) {
    if (std::ranges::find(kServedCodes, code) != std::end(kServedCodes)) return;
    ASSERT_TRUE(client_.Send(Code(code)));
    ASSERT_TRUE(client_.YieldsNext(kUnknown)) << "code " << code;
  }

  // What every code without a command is answered with.
  const Bytes kUnknown = Wire("0400 AC210000");
};

TEST_F(DispatchTest, NoOperationIsAnsweredWithSuccess) {
  EXPECT_TRUE(client_.Answers(Wire("1000"), Wire("0400 00000000")));
}

TEST_F(DispatchTest, NoOperationIgnoresTheBytesBehindItsCode) {
  EXPECT_TRUE(client_.Answers(Wire("1000 FFFFFFFF FD00 'anything'"), Wire("0400 00000000")));
}

TEST_F(DispatchTest, CodeZeroIsUnknown) { EXPECT_TRUE(client_.Answers(Wire("0000"), kUnknown)); }

TEST_F(DispatchTest, CodeFourIsUnknown) { EXPECT_TRUE(client_.Answers(Wire("0400"), kUnknown)); }

TEST_F(DispatchTest, CodeOfAllOnesIsUnknown) {
  EXPECT_TRUE(client_.Answers(Wire("FFFF"), kUnknown));
}

TEST_F(DispatchTest, UnknownCodeIgnoresTheBytesBehindIt) {
  EXPECT_TRUE(client_.Answers(Wire("0400 05000000 'ABCDE' FFFFFFFF"), kUnknown));
}

TEST_F(DispatchTest, BothBytesOfTheCodeCount) {
  EXPECT_TRUE(client_.Answers(Wire("1001"), kUnknown));
  EXPECT_TRUE(client_.Answers(Wire("0010"), kUnknown));
  EXPECT_TRUE(client_.Answers(Wire("1080"), kUnknown));
  EXPECT_TRUE(client_.Answers(Wire("FD01 FD000000"), kUnknown));
}

TEST_F(DispatchTest, EveryLowCodeWithoutCommandIsUnknown) {
  for (std::uint32_t code = 0; code < 0x400; ++code) ExpectUnknownUnlessServed(code);
  EXPECT_TRUE(client_.IsServed());
}

TEST_F(DispatchTest, EveryCodeThatEndsLikeAServedOneIsUnknown) {
  for (const std::uint32_t served : kServedCodes) {
    for (std::uint32_t high = 0x100; high <= 0xFF00; high += 0x100) {
      ExpectUnknownUnlessServed((served + high) & 0xFFFF);
    }
  }
  EXPECT_TRUE(client_.IsServed());
}

TEST_F(DispatchTest, OneByteIsAnsweredAsUnknownAndOnceMoreWithTheOverflowBehindIt) {
  EXPECT_TRUE(client_.Answers(Wire("10"), Wire("0400 AC210000"
                                               "0400 AC210000 0400 9A210000")));
  EXPECT_TRUE(client_.Answers(Wire("FD"), Wire("0400 AC210000"
                                               "0400 AC210000 0400 9A210000")));
}

TEST_F(DispatchTest, OneByteAfterALongRequestDoesNotBorrowItsBytes) {
  EXPECT_TRUE(client_.Answers(Wire("1000 0000 0000"), Wire("0400 00000000")));
  EXPECT_TRUE(client_.Answers(Wire("10"), Wire("0400 AC210000"
                                               "0400 AC210000 0400 9A210000")));
}

TEST_F(DispatchTest, StopWithoutReadableConfirmationIsRefusedAndOnceMoreWithTheOverflowBehindIt) {
  const Bytes refusal = Wire("0400 05000000 0400 05000000 0400 9A210000");
  EXPECT_TRUE(client_.Answers(Wire("FD00"), refusal));
  EXPECT_TRUE(client_.Answers(Wire("FD00 FD"), refusal));
  EXPECT_TRUE(client_.Answers(Wire("FD00 FD00"), refusal));
  EXPECT_TRUE(client_.Answers(Wire("FD00 FD0000"), refusal));
}

TEST_F(DispatchTest, StopWithAnotherConfirmationIsAcceptedAndClosesNothing) {
  WireClient other;
  ASSERT_TRUE(other.Connect());
  ASSERT_TRUE(other.IsServed());
  const Bytes accepted = Wire("0400 E7040000");
  EXPECT_TRUE(client_.Answers(Wire("FD00 00000000"), accepted));
  EXPECT_TRUE(client_.Answers(Wire("FD00 01000000"), accepted));
  EXPECT_TRUE(client_.Answers(Wire("FD00 FC000000"), accepted));
  EXPECT_TRUE(client_.Answers(Wire("FD00 FE000000"), accepted));
  EXPECT_TRUE(client_.Answers(Wire("FD00 00FD0000"), accepted));
  EXPECT_TRUE(client_.Answers(Wire("FD00 FD000100"), accepted));
  EXPECT_TRUE(client_.Answers(Wire("FD00 FD0000FD"), accepted));
  EXPECT_TRUE(client_.Answers(Wire("FD00 FD000080"), accepted));
  EXPECT_TRUE(client_.Answers(Wire("FD00 FFFFFFFF"), accepted));
  EXPECT_TRUE(other.IsServed());
  EXPECT_TRUE(Server().IsRunning());
}

}  // namespace
}  // namespace e2e
