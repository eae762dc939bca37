#include <gmock/gmock.h>

#include "tests/e2e/BoardSetup.h"
#include "tests/e2e/BoardTable.h"

// What the board and device commands answer, byte by byte, to each thing that the library may do.

namespace e2e {
namespace {

using testing::ElementsAre;

// A fault of one operation that concerns every call.
std::string Fault(const std::string& operation, const std::string& keys) {
  return "[fault " + operation + "]\ncall = *\n" + keys + "\n";
}

// The lengths of a fault: `first`, then 1 for all others.
std::string Lengths(const std::string& first, std::size_t count, const std::string& other = "1") {
  std::string text = "length = " + first;
  for (std::size_t i = 1; i < count; ++i) text += " " + other;
  return text;
}

class BoardAnswerTest : public BoardTest {
 protected:
  // Sends every request and expects the reply that the function has for it.
  template <typename Reply>
  void EachAnswers(const Reply& reply) {
    for (const BoardRow& row : BoardRequests()) {
      EXPECT_TRUE(client_.Answers(row.request.Request(), reply(row))) << row.request.name;
    }
  }

  // The same for the rows whose answer has lengths that the library says.
  template <typename Reply>
  void EachWithLengthsAnswers(const Reply& reply) {
    for (const BoardRow& row : BoardRequests()) {
      if (row.lengths == 0) continue;
      EXPECT_TRUE(client_.Answers(row.request.Request(), reply(row))) << row.request.name;
    }
  }

  template <typename Keys>
  static std::string FaultsWithLengths(const Keys& keys) {
    std::string faults;
    for (const BoardRow& row : BoardRequests()) {
      if (row.lengths != 0) faults += Fault(row.operation, keys(row));
    }
    return faults;
  }
};

TEST_F(BoardAnswerTest, EveryCommandPassesOnWhatItWasAskedAndWhatTheLibrarySays) {
  StartWith(kBoardMachine);
  for (const BoardRow& row : BoardRequests()) {
    EXPECT_TRUE(client_.Answers(row.request.Request(), Wire(row.reply))) << row.request.name;
    EXPECT_THAT(files_.NewCalls(), ElementsAre(std::string(row.call) + " -> " + row.answer));
  }
}

TEST_F(BoardAnswerTest, BytesBehindTheLastFieldAreIgnored) {
  StartWith(kBoardMachine);
  for (const BoardRow& row : BoardRequests()) {
    EXPECT_TRUE(client_.Answers(row.request.Request() + "behind", Wire(row.reply)))
        << row.request.name;
    EXPECT_THAT(files_.NewCalls(), ElementsAre(std::string(row.call) + " -> " + row.answer));
  }
}

TEST_F(BoardAnswerTest, AnErrorOfTheLibraryIsAnsweredWithTheLengthsThatTheCommandHasForIt) {
  std::string faults;
  for (const BoardRow& row : BoardRequests()) {
    std::string lengths = "length =";
    for (std::size_t i = 0; i < row.lengths; ++i) lengths += " " + std::to_string(16 + i);
    faults += Fault(row.operation,
                    "result = 0x80070005\n" + (row.lengths != 0 ? lengths : std::string()));
  }
  StartWith(kBoardMachine + faults);
  EachAnswers([](const BoardRow& row) {
    const bool isState = std::string(row.request.name).starts_with("DeviceState");
    return isState ? Wire(row.reply) : Wire("0400 05000780") + Wire(row.failure);
  });
}

// The room that the client has asked for makes no difference to what a failure carries.
TEST_F(BoardAnswerTest, ALengthOfAFailureMayBeAnyNumber) {
  StartWith(kBoardMachine +
            FaultsWithLengths([](const BoardRow&) { return "result = 234\nlength = 0xFFFFFFFE"; }));
  EachWithLengthsAnswers([](const BoardRow& row) {
    Bytes reply = Wire("0400 EA000000");
    const std::size_t longs = Wire(row.failure).size() / 4;
    for (std::size_t i = 0; i < longs; ++i) {
      const bool isCapacity = std::string(row.request.name) == "EnumBoard" && i == 1;
      reply += isCapacity ? Wire("00200000") : Wire("FEFFFFFF");
    }
    return reply;
  });
}

TEST_F(BoardAnswerTest, AnAnswerOf8160IsSentAsItIs) {
  StartWith(kBoardMachine + FaultsWithLengths([](const BoardRow& row) {
              return Lengths(std::to_string(8160 - (row.lengths - 1)), row.lengths);
            }));
  // Texts go by their end and lengths by what the library says; the two replies that have no text
  // go by the length, and send what lies behind the data.
  EXPECT_TRUE(client_.Answers(BoardRequest("Register").request.Request(), Wire("0400 00000000")));
  EXPECT_TRUE(client_.Answers(BoardRequest("EnumBoard").request.Request(),
                              Wire("0400 00000000 06000000 'NB410A' DE1F0000 01000000 '1' 01000000"
                                   " 06000000 'Line 2' 01000000")));
  EXPECT_TRUE(
      client_.Answers(BoardRequest("EnumInstBoard").request.Request(),
                      Wire("0400 00000000 06000000 'NB410A' DB1F0000 07000000 'HWX7101' 01000000"
                           " 04000000 'Ring' 01000000 15000000 'PCI\\VEN_1F3C&DEV_5101' 01000000"
                           " 05000000 'PCI\\3' 01000000 01000000 '1' 01000000 03000000")));
  EXPECT_TRUE(client_.Answers(
      BoardRequest("EnumAvailableBoard").request.Request(),
      Wire("0400 00000000 05000000 'NB510' DF1F0000 07000000 'HWX7104' 01000000 04030201")));
  EXPECT_TRUE(
      client_.Answers(BoardRequest("EnumAdapters").request.Request(),
                      Wire("0400 00000000 06000000 'Line 2' DF1F0000 01000000 '1' 01000000 C8")));
  EXPECT_TRUE(
      client_.Answers(BoardRequest("EnumConfiguration").request.Request(),
                      Wire("0400 00000000 07000000 'Station' DD1F0000 03000000 'TCP' 01000000"
                           " 08000000 'RFC 1006' 01000000 03000000 'CP1' 01000000")));
  EXPECT_TRUE(client_.Answers(BoardRequest("BoardGetMap").request.Request(),
                              Wire("0400 00000000 01000000 '1' E01F0000")));
  EXPECT_TRUE(client_.Answers(BoardRequest("GetBoardInfo").request.Request(),
                              Wire("0400 00000000 03000000 '5.2' E01F0000")));
  EXPECT_TRUE(client_.Answers(BoardRequest("GetBoardInfoEx").request.Request(),
                              Wire("0400 00000000 E01F0000 08000601") + Bytes(8160 - 4, '\0')));
  // With the fields around it this is a reply of 8191 bytes.
  EXPECT_TRUE(client_.Answers(BoardRequest("GetDeviceChange").request.Request(),
                              Wire("0400 00000000 C8 E01F0000 '\\\\?\\pci#3'") +
                                  Bytes(8160 - 9, '\0') +
                                  Wire("E01F0000 8484C8CA 1575 034C 82E671A87ABAC361")));
}

TEST_F(BoardAnswerTest, AnAnswerOf8161IsToldWithItsLengths) {
  StartWith(kBoardMachine + FaultsWithLengths([](const BoardRow& row) {
              return Lengths(std::to_string(8161 - (row.lengths - 1)), row.lengths);
            }));
  EXPECT_TRUE(client_.Answers(BoardRequest("Register").request.Request(), Wire("0400 00000000")));
  EachWithLengthsAnswers([](const BoardRow& row) {
    Bytes reply = Wire("0400 9A210000");
    for (const std::size_t length : row.tooLong) {
      reply += length == 0 ? Long(static_cast<std::uint32_t>(8161 - (row.lengths - 1))) : Long(1);
    }
    return reply + Wire(row.tooLongTail);
  });
}

// In 32 bits these lengths would add up to a few bytes.
TEST_F(BoardAnswerTest, LengthsThatWrapAroundAreTooLong) {
  StartWith(kBoardMachine + FaultsWithLengths([](const BoardRow& row) {
              return Lengths("0xFFFFFFFF", row.lengths, "2");
            }));
  EXPECT_TRUE(client_.Answers(BoardRequest("Register").request.Request(), Wire("0400 00000000")));
  EachWithLengthsAnswers([](const BoardRow& row) {
    Bytes reply = Wire("0400 9A210000");
    for (const std::size_t length : row.tooLong) reply += Long(length == 0 ? 0xFFFFFFFF : 2);
    return reply + Wire(row.tooLongTail);
  });
}

// --- Texts without an end, and longer than a reply ---

// The whole capacity is letters: what lies behind it ends the text.
TEST_F(BoardAnswerTest, ATextWithoutAnEndGoesUpToItsCapacity) {
  StartWith(kBoardMachine + FaultForAll("fill = unterminated"));
  EXPECT_TRUE(
      client_.Answers(Wire("C100 07000000 'HWX7101' 00000000 08000000 02000000 06000000"),
                      Wire("0400 00000000 08000000 'NB410Axx' 06000000 02000000 '1x' 01000000"
                           " 06000000 'Line 2' 06000000")));
  EXPECT_TRUE(
      client_.Answers(Wire("C000 00000000 07000000 08000000 05000000 16000000 06000000 02000000"),
                      Wire("0400 00000000 07000000 'NB410Ax' 06000000 08000000 'HWX7101x' 07000000"
                           " 05000000 'Ringx' 04000000 16000000 'PCI\\VEN_1F3C&DEV_5101x' 15000000"
                           " 06000000 'PCI\\3x' 05000000 02000000 '1x' 01000000 03000000")));
  EXPECT_TRUE(client_.Answers(
      Wire("C200 00000000 06000000 08000000"),
      Wire("0400 00000000 06000000 'NB510x' 05000000 08000000 'HWX7104x' 07000000 04030201")));
  EXPECT_TRUE(
      client_.Answers(Wire("C500 00000000 07000000 02000000"),
                      Wire("0400 00000000 07000000 'Line 2x' 06000000 02000000 '1x' 01000000 C8")));
  EXPECT_TRUE(
      client_.Answers(Wire("C400 00000000 00000000 00000000 00000000 00000000"
                           " 08000000 04000000 09000000 04000000"),
                      Wire("0400 00000000 08000000 'Stationx' 07000000 04000000 'TCPx' 03000000"
                           " 09000000 'RFC 1006x' 08000000 04000000 'CP1x' 03000000")));
  EXPECT_TRUE(client_.Answers(Wire("A300 00000000 00000000 00000000 03000000"),
                              Wire("0400 00000000 03000000 '1xx' 01000000")));
  EXPECT_TRUE(client_.Answers(Wire("C300 01000000 00000000 00000000 00000000 00000000 04000000"),
                              Wire("0400 00000000 04000000 '5.2x' 03000000")));
  EXPECT_TRUE(client_.Answers(Wire("CF00 02000000 00000000 00000000 00000000 06000000"),
                              Wire("0400 00000000 04000000 08000601")));
}

// What was built up to the text that does not fit stays, and the loop's answer stands behind it.
TEST_F(BoardAnswerTest, ATextThatDoesNotFitTheReplyLeavesItsLengthAndTheLoopsAnswer) {
  StartWith(kBoardMachine +
            FaultsWithLengths([](const BoardRow&) { return "length = 0\nfill = unterminated"; }));
  EXPECT_TRUE(client_.Answers(BoardRequest("Register").request.Request(), Wire("0400 00000000")));
  EachWithLengthsAnswers([](const BoardRow& row) {
    const std::string name = row.request.name;
    if (name == "GetBoardInfoEx") return Wire("0400 00000000 00000000");
    // By its length, not by its text.
    if (name == "GetDeviceChange") {
      return Wire("0400 00000000 C8 00000000 00000000 8484C8CA 1575 034C 82E671A87ABAC361");
    }
    return Wire("0400 00000000 00200000 0400 9A210000");
  });
}

TEST_F(BoardAnswerTest, ALaterTextThatDoesNotFitLeavesTheEarlierOnes) {
  StartWith(kBoardMachine + Fault("BRDX_EnumBoardExBL", "length = 0\nfill = unterminated"));
  // 2 + 4 + 4 + 6 + 4 + 4 + 2 + 4 + 4 bytes without the third text, which may have 8158.
  const Bytes begin = Wire("0400 00000000 06000000 'NB410A' 00000000 02000000 '1x' 00000000");
  const Bytes request = Wire("C100 07000000 'HWX7101' 00000000 06000000 02000000");
  EXPECT_TRUE(client_.Answers(request + Long(8154), begin + Long(8154) + Wire("'Line 2'") +
                                                        Bytes(8148, 'x') + Wire("00000000")));
  // The text fits, its length does not, and neither does the loop's answer: nothing is sent.
  ASSERT_TRUE(client_.Send(request + Long(8158)));
  EXPECT_TRUE(client_.IsBroken());
  ASSERT_TRUE(client_.Connect());
  EXPECT_TRUE(client_.Answers(request + Long(8159), begin + Long(8159) + Wire("0400 9A210000")));
}

// --- Exceptions ---

class BoardExceptionTest : public BoardAnswerTest,
                           public testing::WithParamInterface<const char*> {};

TEST_P(BoardExceptionTest, EveryCommandAnswers8604AndLeavesTheLockFree) {
  StartWith(kBoardMachine + FaultForAll(std::string("raise = ") + GetParam()));
  ForeignBoardLock lock;
  for (const BoardRow& row : BoardRequests()) {
    EXPECT_TRUE(client_.Answers(row.request.Request(), Wire("0400 9C210000"))) << row.request.name;
    EXPECT_TRUE(lock.IsFree()) << row.request.name;
    EXPECT_THAT(files_.NewCalls(), ElementsAre(std::string(row.call) + " -> raise " + GetParam() +
                                               (IsUnderLock(row) ? " lock=held" : " lock=free")));
  }
  EXPECT_TRUE(server_.IsRunning());
}

TEST_P(BoardExceptionTest, ACommandServesAgainAfterAnException) {
  std::string faults;
  for (const BoardRow& row : BoardRequests()) {
    faults +=
        "[fault " + std::string(row.operation) + "]\ncall = 1-2\nraise = " + GetParam() + "\n";
  }
  StartWith(kBoardMachine + faults);
  const std::uint32_t handles = server_.HandleCount();
  for (int i = 0; i < 2; ++i) EachAnswers([](const BoardRow&) { return Wire("0400 9C210000"); });
  EachAnswers([](const BoardRow& row) { return Wire(row.reply); });
  EXPECT_TRUE(server_.ComesBackToHandleCount(handles));
}

INSTANTIATE_TEST_SUITE_P(OfEachKind, BoardExceptionTest,
                         testing::Values("access-violation", "cxx", "divide-by-zero",
                                         "stack-overflow"),
                         [](const auto& kind) {
                           std::string name = kind.param;
                           std::erase(name, '-');
                           return name;
                         });

}  // namespace
}  // namespace e2e
