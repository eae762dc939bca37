#include <gmock/gmock.h>

#include "tests/e2e/BoardSetup.h"
#include "tests/e2e/BoardTable.h"

// What the library gets to see of a request: the log of the simulated library tells it.

namespace e2e {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// The part of a call that came in.
std::vector<std::string> Asked(const std::vector<std::string>& calls) {
  std::vector<std::string> asked;
  for (const std::string& call : calls) asked.push_back(call.substr(0, call.find(" -> ")));
  return asked;
}

class BoardArgumentTest : public BoardTest {
 protected:
  void SetUp() override { StartWith(kBoardMachine); }

  // Sends a request whose answer is not of interest. \returns what the library was asked for it.
  std::vector<std::string> AskedFor(const Bytes& request) {
    EXPECT_TRUE(client_.Send(request));
    EXPECT_TRUE(client_.HasWaiting(6));
    (void)client_.Receive(client_.Waiting());
    EXPECT_TRUE(client_.IsServed());
    return Asked(files_.NewCalls());
  }

  // Which fields of a request are capacities.
  static std::vector<std::size_t> Rooms(const BoardRow& row) {
    std::vector<std::size_t> rooms;
    for (std::size_t i = 0; i < row.request.fields.size(); ++i) {
      if (std::string(row.request.fields[i]) == "00200000") rooms.push_back(i);
    }
    return rooms;
  }
};

TEST_F(BoardArgumentTest, ALengthIsBoundedTo8192ForEveryBuffer) {
  struct {
    std::uint32_t asked, lent;
  } const lengths[] = {{0, 0},
                       {1, 1},
                       {8191, 8191},
                       {8192, 8192},
                       {8193, 8192},
                       {65535, 8192},
                       {0x7FFFFFFF, 8192},
                       {0x80000000, 8192},
                       {0x80000001, 8192},
                       {0xFFFFFFFF, 8192}};
  std::size_t rooms = 0;
  for (const BoardRow& row : BoardRequests()) {
    // Kept: one command compares signed, so a length with its top bit set goes through.
    const bool isSigned = std::string(row.request.name) == "GetBoardInfoEx";
    const std::vector<std::size_t> fields = Rooms(row);
    rooms += fields.size();
    for (std::size_t n = 0; n < fields.size(); ++n) {
      for (const auto& [asked, lent] : lengths) {
        const bool passes = isSigned && asked >= 0x80000000;
        EXPECT_THAT(AskedFor(row.request.RequestWith(fields[n], Long(asked))),
                    ElementsAre(row.CallWithCapacity(n, passes ? asked : lent)));
      }
    }
  }
  EXPECT_EQ(rooms, 20u);
}

TEST_F(BoardArgumentTest, AnAbsentTextReachesTheLibraryAsNone) {
  for (const BoardRow& row : BoardRequests()) {
    for (std::size_t n = 0; n < row.request.texts.size(); ++n) {
      EXPECT_THAT(AskedFor(row.request.RequestWith(row.request.texts[n], Wire("FFFF0000"))),
                  ElementsAre(row.CallWithText(n, "(null)")));
    }
  }
}

TEST_F(BoardArgumentTest, AnEmptyTextReachesTheLibraryAsAnEmptyOne) {
  for (const BoardRow& row : BoardRequests()) {
    for (std::size_t n = 0; n < row.request.texts.size(); ++n) {
      EXPECT_THAT(AskedFor(row.request.RequestWith(row.request.texts[n], Wire("00000000"))),
                  ElementsAre(row.CallWithText(n, "\"\"")));
    }
  }
}

TEST_F(BoardArgumentTest, ATextReachesTheLibraryByteByByteUpToItsFirstZero) {
  for (const BoardRow& row : BoardRequests()) {
    for (std::size_t n = 0; n < row.request.texts.size(); ++n) {
      const Bytes text = Wire("0A000000 'Stra' DF 'e' 01 20 00 'c'");
      EXPECT_THAT(AskedFor(row.request.RequestWith(row.request.texts[n], text)),
                  ElementsAre(row.CallWithText(n, "\"Stra\\xdfe\\x01 \"")));
    }
  }
}

// Whatever a request carries fits the 8192 bytes of a text; a device id of 260 bytes does not fit.
TEST_F(BoardArgumentTest, ATextMayFillTheRequest) {
  for (const BoardRow& row : BoardRequests()) {
    const bool isShort = std::string(row.operation).ends_with("DeviceChangeNotifications") ||
                         std::string(row.operation) == "BRDX_GetDeviceChange";
    for (std::size_t n = 0; n < row.request.texts.size(); ++n) {
      const std::size_t field = row.request.texts[n];
      const std::size_t others = row.request.RequestWith(field, {}).size() + 4;
      const std::string longest(isShort ? 259 : kLongestRequest - others, 'L');
      EXPECT_THAT(AskedFor(row.request.RequestWith(field, Text(longest))),
                  ElementsAre(row.CallWithText(n, '"' + longest + '"')));
      if (!isShort) continue;
      EXPECT_TRUE(client_.Answers(row.request.RequestWith(field, Text(longest + "L")),
                                  Wire("0400 9A210000")));
      EXPECT_THAT(files_.NewCalls(), IsEmpty());
    }
  }
}

TEST_F(BoardArgumentTest, NumbersArePassedOnUnchanged) {
  EXPECT_THAT(AskedFor(Wire("C500 FEFFFFFF 01000000 02000000")),
              ElementsAre("BRDX_EnumAdaptersBL index=4294967294 adapter[1] boardMap[2]"));
  EXPECT_THAT(AskedFor(Wire("C200 00000080 01000000 02000000")),
              ElementsAre("BRDX_EnumAvailableBoardsBL index=2147483648 board[1] deviceId[2]"));
  EXPECT_THAT(AskedFor(Wire("C100 00000000 FFFFFFFF 01000000 02000000 03000000")),
              ElementsAre("BRDX_EnumBoardExBL deviceId=\"\" index=4294967295 board[1] boardMap[2] "
                          "adapter[3] zero=0"));
  EXPECT_THAT(AskedFor(Wire("C000 04030201 01000000 02000000 03000000 04000000 05000000 06000000")),
              ElementsAre("BRDX_EnumInstBoardBL index=16909060 board[1] deviceId[2] netType[3] "
                          "hardwareId[4] hardwareInstanceId[5] boardMap[6]"));
  EXPECT_THAT(
      AskedFor(Wire("C400 FFFFFFFF 01000000 'b' 01000000 'm' 01000000 'd' 01000000 'i'"
                    " 01000000 02000000 03000000 04000000")),
      ElementsAre("BRDX_EnumConfigurationBL index=4294967295 board=\"b\" boardMap=\"m\" "
                  "deviceId=\"d\" hardwareInstanceId=\"i\" configuration[1] protocolType[2] "
                  "layer4Protocol[3] unit[4]"));
  EXPECT_THAT(AskedFor(Wire("C300 FFFFFFFF 01000000 'b' 01000000 'm' 01000000 'd' 01000000 'i'"
                            " 01000000")),
              ElementsAre("BRDX_GetBoardInfoBL infoType=4294967295 board=\"b\" boardMap=\"m\" "
                          "deviceId=\"d\" hardwareInstanceId=\"i\" value[1]"));
  EXPECT_THAT(AskedFor(Wire("CF00 FFFFFFFF 01000000 'b' 01000000 'm' 01000000 'i' 01000000")),
              ElementsAre("BRDX_GetBoardInfoExBL infoType=4294967295 board=\"b\" boardMap=\"m\" "
                          "hardwareInstanceId=\"i\" buffer[1]"));
}

// The library is told a capacity that nobody has, and writes no further than what it was lent.
TEST_F(BoardArgumentTest, ALibraryThatFillsAnUnboundedCapacityIsToldToTheClient) {
  StartWith(std::string(kBoardMachine) +
            "[fault BRDX_GetBoardInfoExBL]\ncall = *\nfill = capacity\n");
  EXPECT_TRUE(client_.Answers(Wire("CF00 02000000 00000000 00000000 00000000 FFFFFFFF"),
                              Wire("0400 9A210000 FFFFFFFF")));
  EXPECT_TRUE(client_.Answers(Wire("CF00 02000000 00000000 00000000 00000000 00200000"),
                              Wire("0400 9A210000 00200000")));
  EXPECT_TRUE(client_.Answers(Wire("CF00 02000000 00000000 00000000 00000000 E01F0000"),
                              Wire("0400 00000000 E01F0000") + Bytes(8160, 'x')));
}

// --- Requests that are cut short ---

class DamagedBoardRequestTest : public BoardArgumentTest {
 protected:
  const Bytes kOverflow = Wire("0400 9A210000");
};

TEST_F(DamagedBoardRequestTest, EveryPrefixIsRefusedAndTheLibraryIsNotCalled) {
  for (const BoardRow& row : BoardRequests()) {
    const Bytes request = row.request.Request();
    for (std::size_t size = 2; size < request.size(); ++size) {
      EXPECT_TRUE(client_.Answers(request.substr(0, size), kOverflow))
          << row.request.name << " " << size << " bytes";
    }
  }
  EXPECT_THAT(files_.NewCalls(), IsEmpty());
}

TEST_F(DamagedBoardRequestTest, ALengthPastTheReceivedBytesIsRefused) {
  for (const BoardRow& row : BoardRequests()) {
    for (const std::size_t field : row.request.texts) {
      const Bytes text = Wire(row.request.fields[field]).substr(4);
      std::size_t left = 0;
      for (std::size_t i = field; i < row.request.fields.size(); ++i) {
        left += Wire(row.request.fields[i]).size();
      }
      const auto oneMore = static_cast<std::uint32_t>(left - 4 + 1);
      for (const std::uint32_t length : {oneMore, 65534u, 65536u, 0x7FFFFFFFu, 0x80000000u,
                                         0xFFFFFFC0u, 0xFFFFFFF0u, 0xFFFFFFFEu, 0xFFFFFFFFu}) {
        EXPECT_TRUE(client_.Answers(row.request.RequestWith(field, Long(length) + text), kOverflow))
            << row.request.name << " " << field << " " << length;
      }
    }
  }
  EXPECT_THAT(files_.NewCalls(), IsEmpty());
}

TEST_F(DamagedBoardRequestTest, AnAbsentTextDoesNotHideALaterFieldThatIsCut) {
  for (const BoardRow& row : BoardRequests()) {
    for (const std::size_t field : row.request.texts) {
      if (field + 1 == row.request.fields.size()) continue;
      const Bytes request = row.request.RequestWith(field, Wire("FFFF0000"));
      EXPECT_TRUE(client_.Answers(request.substr(0, request.size() - 1), kOverflow))
          << row.request.name << " " << field;
    }
  }
  EXPECT_THAT(files_.NewCalls(), IsEmpty());
}

// Without this the tests above would also pass for requests that nobody understands.
TEST_F(DamagedBoardRequestTest, UndamagedRequestsReachTheLibrary) {
  for (const BoardRow& row : BoardRequests()) {
    EXPECT_THAT(AskedFor(row.request.Request()), ElementsAre(row.call)) << row.request.name;
  }
}

}  // namespace
}  // namespace e2e
