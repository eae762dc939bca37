#include <gmock/gmock.h>

#include "tests/e2e/BoardSetup.h"
#include "tests/e2e/BoardTable.h"

// What the commands of device changes, device states and board information have for themselves.

namespace e2e {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const Bytes kOverflow = Wire("0400 9A210000");

// --- Device changes ---

constexpr char kChanges[] = R"([change]
device-id = A
kind = 0
guid = {00000001-0002-0003-0405-060708090a0b}
[change]
device-id = A
kind = 255
guid = {00000001-0002-0003-0405-060708090a0b}
text = "Ger\xe4t"
[change]
device-id = B
kind = 1
guid = {fffefdfc-fbfa-f9f8-f7f6-f5f4f3f2f1f0}
text = b
)";
constexpr char kGuidA[] = "01000000 0200 0300 04 05 06 07 08 09 0A 0B";
constexpr char kGuidB[] = "FCFDFEFF FAFB F8F9 F7 F6 F5 F4 F3 F2 F1 F0";

class DeviceChangeTest : public BoardTest {
 protected:
  testing::AssertionResult Answers(const std::string& request, const std::string& reply) {
    return client_.Answers(Wire(request), Wire(reply));
  }
};

TEST_F(DeviceChangeTest, AreDeliveredToWhomAskedForTheirClass) {
  StartWith(kChanges);
  const std::string a = std::string("01000000 'A' ") + kGuidA;
  const std::string b = std::string("01000000 'B' ") + kGuidB;
  EXPECT_TRUE(Answers("0201 01000000 'A'", "0400 03010000"));
  EXPECT_TRUE(Answers("0001" + a, "0400 00000000"));
  EXPECT_TRUE(Answers("0001" + b, "0400 00000000"));
  EXPECT_TRUE(Answers("0201 01000000 'A'", "0400 00000000 00 00000000 00000000" +
                                               std::string("01000000 0200 0300 0405060708090A0B")));
  EXPECT_TRUE(Answers("0201 01000000 'B'", "0400 00000000 01 01000000 'b' 01000000" +
                                               std::string("FCFDFEFF FAFB F8F9 F7F6F5F4F3F2F1F0")));
  EXPECT_TRUE(Answers("0201 01000000 'A'", "0400 00000000 FF 05000000 'Ger' E4 't' 05000000" +
                                               std::string("01000000 0200 0300 0405060708090A0B")));
  EXPECT_TRUE(Answers("0201 01000000 'A'", "0400 03010000"));
  EXPECT_TRUE(Answers("0101" + a, "0400 00000000"));
  EXPECT_TRUE(Answers("0101" + a, "0400 02000000"));
}

TEST_F(DeviceChangeTest, HaveTheirClassPassedByValueByteByByte) {
  StartWith(kChanges);
  EXPECT_TRUE(Answers(std::string("0001 01000000 'B' ") + kGuidB, "0400 00000000"));
  EXPECT_TRUE(Answers(std::string("0101 01000000 'B' ") + kGuidB, "0400 00000000"));
  EXPECT_THAT(files_.NewCalls(),
              ElementsAre("BRDX_RegisterForDeviceChangeNotifications "
                          "interfaceClass={fffefdfc-fbfa-f9f8-f7f6-f5f4f3f2f1f0} deviceId=\"B\" "
                          "-> 0 lock=free",
                          "BRDX_UnregisterForDeviceChangeNotifications "
                          "interfaceClass={fffefdfc-fbfa-f9f8-f7f6-f5f4f3f2f1f0} deviceId=\"B\" "
                          "-> 0 lock=free"));
}

// The reply has room for 8160 bytes of text, though not all of a record behind it.
TEST_F(DeviceChangeTest, WithTextsAreToldTooLongByTheirLengthAlone) {
  const std::string change =
      "[change]\ndevice-id = A\nkind = 7\nguid = {00000001-0002-0003-0405-060708090a0b}\n";
  StartWith(change + "text = " + std::string(8160, 't') + "\n" + change +
            "text = " + std::string(8161, 'u') + "\n");
  EXPECT_TRUE(Answers(std::string("0001 01000000 'A' ") + kGuidA, "0400 00000000"));
  EXPECT_TRUE(client_.Answers(Wire("0201 01000000 'A'"),
                              Wire("0400 00000000 07 E01F0000") + Bytes(8160, 't') +
                                  Wire("E01F0000 01000000 0200 0300 0405060708090A0B")));
  EXPECT_TRUE(Answers("0201 01000000 'A'", "0400 9A210000 E11F0000 10000000"));
}

// --- Device states ---

// The answer that tells what the configuration manager of this machine says of an instance.
Bytes StateOf(std::uint32_t instance) {
  const DevNode node(instance);
  return Wire("0400 00000000") + Long(node.status) + Long(node.problem);
}

class DeviceStateTest : public BoardTest {};

TEST_F(DeviceStateTest, IsWhatTheConfigurationManagerLeftOfIt) {
  std::string instances;
  for (const std::uint32_t instance : {0u, 1u, 2u, 0x10u, 0xFFFFFFFFu}) {
    instances += "[instance]\nhardware-id = ID" + std::to_string(instance) +
                 "\ninstance = " + std::to_string(instance) + "\n";
  }
  StartWith(instances);
  for (const std::uint32_t instance : {0u, 1u, 2u, 0x10u, 0xFFFFFFFFu}) {
    const Bytes id = Text("ID" + std::to_string(instance));
    EXPECT_TRUE(client_.Answers(Wire("2201") + id + Wire("FFFFFFFF"), StateOf(instance)));
    EXPECT_TRUE(client_.Answers(Wire("2201") + id + Wire("00000000"), StateOf(instance)));
  }
}

TEST_F(DeviceStateTest, OfAnUnknownHardwareIdIsASuccess) {
  StartWith("");
  EXPECT_TRUE(client_.Answers(Wire("2201 04000000 'None' FFFFFFFF"), StateOf(0)));
  EXPECT_TRUE(client_.Answers(Wire("2201 04000000 'None' 01000000"), StateOf(0)));
  EXPECT_TRUE(client_.Answers(Wire("2201 FFFF0000 01000000"), StateOf(0)));
}

TEST_F(DeviceStateTest, IsLookedUpWithoutAnOptionForOneNumberOnly) {
  StartWith(kBoardMachine);
  struct {
    const char* option;
    const char* call;
  } const rows[] = {
      {"FFFFFFFF",
       "BRDX_GetDeviceInstance hardwareId=\"PCI\\\\3\" -> 0 instance=4275878553 lock=free"},
      {"00000000",
       "BRDX_GetDeviceInstanceOpt hardwareId=\"PCI\\\\3\" option=0 -> 0 instance=4275878553 "
       "lock=free"},
      {"07000000",
       "BRDX_GetDeviceInstanceOpt hardwareId=\"PCI\\\\3\" option=7 -> 0 instance=4275878552 "
       "lock=free"},
      {"FEFFFFFF",
       "BRDX_GetDeviceInstanceOpt hardwareId=\"PCI\\\\3\" option=4294967294 -> 0 "
       "instance=4275878553 lock=free"},
      {"FFFFFF7F",
       "BRDX_GetDeviceInstanceOpt hardwareId=\"PCI\\\\3\" option=2147483647 -> 0 "
       "instance=4275878553 lock=free"},
  };
  for (const auto& [option, call] : rows) {
    EXPECT_TRUE(client_.Answers(Wire("2201 05000000 'PCI\\3'") + Wire(option),
                                Wire("0400 00000000 00000000 00000000")));
    EXPECT_THAT(files_.NewCalls(), ElementsAre(call));
  }
}

TEST_F(DeviceStateTest, LeavesNothingOpenBehind) {
  StartWith(kBoardMachine);
  const Bytes request = BoardRequest("DeviceStateEx").request.Request();
  const Bytes reply = Wire("0400 00000000 00000000 00000000");
  ASSERT_TRUE(client_.Answers(request, reply));
  const std::uint32_t handles = server_.HandleCount();
  for (int i = 0; i < 100; ++i) ASSERT_TRUE(client_.Answers(request, reply));
  EXPECT_TRUE(server_.ComesBackToHandleCount(handles));
}

// --- Board information ---

// The eight fields, of which a test replaces some.
struct Information {
  Bytes block1 = Text("key");
  Bytes values[3] = {Text(Long(7)), Text(Long(8)), Text(Long(9))};
  Bytes block2 = Text("\xAB\xCD");
  Bytes area1 = Text(Long(4));
  Bytes area2 = Text(Long(2));
  Bytes last = Text(Long(10));

  Bytes Request() const {
    return Wire("BF00") + block1 + values[0] + values[1] + values[2] + block2 + area1 + area2 +
           last;
  }
};

// Any request finds its entry, and nothing is written to an area.
constexpr char kEmptyInformation[] =
    "[board-information]\nvalue = 0x01020304\nresult1 = 0x11\nresult2 = 0x22\n";

class BoardInformationTest : public BoardTest {
 protected:
  // The call that a request leads to.
  std::string CallFor(const Information& information) {
    EXPECT_TRUE(client_.Send(information.Request()));
    EXPECT_TRUE(client_.HasWaiting(6));
    (void)client_.Receive(client_.Waiting());
    EXPECT_TRUE(client_.IsServed());
    const auto calls = files_.NewCalls();
    if (calls.size() != 1) return std::to_string(calls.size()) + " calls";
    return calls[0].substr(0, calls[0].find(" -> "));
  }
};

TEST_F(BoardInformationTest, SendsAreasOfTheSizeThatWasAskedFor) {
  StartWith(kEmptyInformation);
  for (const std::uint32_t size1 : {0u, 1u, 4u, 4000u}) {
    for (const std::uint32_t size2 : {0u, 3u, 4u, 4154u}) {
      Information information;
      information.area1 = Text(Long(size1));
      information.area2 = Text(Long(size2));
      const Bytes reply = Wire("0400 00000000") + Long(size1) + Bytes(size1, '\0') +
                          Wire("04000000 04030201") + Long(size2) + Bytes(size2, '\0') +
                          Wire("11000000 22000000");
      EXPECT_TRUE(client_.Answers(information.Request(), reply)) << size1 << " " << size2;
    }
  }
}

// 30 bytes of a reply are not of an area.
TEST_F(BoardInformationTest, SendsWhatFitsAndBehindTheRestTheLoopsAnswer) {
  StartWith(kEmptyInformation);
  Information information;
  information.area2 = Text(Long(0));
  information.area1 = Text(Long(8162));
  const Bytes begin = Wire("0400 00000000");
  EXPECT_TRUE(client_.Answers(information.Request(),
                              begin + Long(8162) + Bytes(8162, '\0') +
                                  Wire("04000000 04030201 00000000 11000000 22000000")));
  information.area1 = Text(Long(8163));
  ASSERT_TRUE(client_.Send(information.Request()));
  EXPECT_TRUE(client_.IsBroken());
  ASSERT_TRUE(client_.Connect());
  information.area1 = Text(Long(8192));
  EXPECT_TRUE(client_.Answers(information.Request(), begin + Long(8192) + kOverflow));
  information.area1 = Text(Long(8183));
  EXPECT_TRUE(client_.Answers(information.Request(), begin + Long(8183) + kOverflow));

  information.area1 = Text(Long(0));
  information.area2 = Text(Long(8192));
  EXPECT_TRUE(client_.Answers(information.Request(),
                              begin + Wire("00000000 04000000 04030201") + Long(8192) + kOverflow));
}

TEST_F(BoardInformationTest, RefusesAreasThatCouldNeverFitBeforeTheLibraryIsCalled) {
  StartWith(kEmptyInformation);
  for (const std::uint32_t size : {8193u, 65535u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    Information first;
    first.area1 = Text(Long(size));
    EXPECT_TRUE(client_.Answers(first.Request(), kOverflow)) << size;
    Information second;
    second.area2 = Text(Long(size));
    EXPECT_TRUE(client_.Answers(second.Request(), kOverflow)) << size;
    second.area1 = Text(Long(size));
    EXPECT_TRUE(client_.Answers(second.Request(), kOverflow)) << size;
  }
  EXPECT_THAT(files_.NewCalls(), IsEmpty());
}

TEST_F(BoardInformationTest, TakesTheFirstFourBytesOfANumber) {
  StartWith(kEmptyInformation);
  struct {
    Bytes field;
    const char* number;
  } const rows[] = {
      {Wire("00000000"), "0"},
      {Wire("FFFF0000"), "0"},
      {Wire("01000000 FF"), "255"},
      {Wire("02000000 FFFF"), "65535"},
      {Wire("03000000 FFFFFF"), "16777215"},
      {Wire("04000000 FFFFFFFF"), "4294967295"},
      {Wire("05000000 04030201 FF"), "16909060"},
      {Text(Long(16909060) + Bytes(5000, '\xFF')), "16909060"},
  };
  const auto call = [](const std::string& one, const std::string& two, const std::string& three,
                       const std::string& last) {
    return "BRDX_GetBoardInformation value1=" + one + " value2=" + two + " value3=" + three +
           " data=abcd area1[4] area2[2] last=" + last;
  };
  for (const auto& [field, number] : rows) {
    Information one, two, three, last;
    one.values[0] = two.values[1] = three.values[2] = last.last = field;
    EXPECT_EQ(CallFor(one), call(number, "8", "9", "10"));
    EXPECT_EQ(CallFor(two), call("7", number, "9", "10"));
    EXPECT_EQ(CallFor(three), call("7", "8", number, "10"));
    EXPECT_EQ(CallFor(last), call("7", "8", "9", number));
  }
}

TEST_F(BoardInformationTest, TakesTheFirstFourBytesOfTheSizeOfAnArea) {
  StartWith(kEmptyInformation);
  struct {
    Bytes field;
    const char* size;
  } const rows[] = {{Wire("00000000"), "0"},           {Wire("FFFF0000"), "0"},
                    {Wire("01000000 07"), "7"},        {Wire("02000000 0110"), "4097"},
                    {Wire("03000000 011000"), "4097"}, {Wire("08000000 05000000 FFFFFFFF"), "5"}};
  for (const auto& [field, size] : rows) {
    Information first, second;
    first.area1 = second.area2 = field;
    const std::string begin = "BRDX_GetBoardInformation value1=7 value2=8 value3=9 data=abcd ";
    EXPECT_EQ(CallFor(first), begin + "area1[" + size + "] area2[2] last=10");
    EXPECT_EQ(CallFor(second), begin + "area1[4] area2[" + size + "] last=10");
  }
}

TEST_F(BoardInformationTest, PassesBlocksOnAsTheyCame) {
  StartWith(kEmptyInformation);
  const std::string begin = "BRDX_GetBoardInformation value1=7 value2=8 value3=9 data=";
  const std::string end = " area1[4] area2[2] last=10";
  Information information;
  information.block2 = Wire("00000000");
  EXPECT_EQ(CallFor(information), begin + end);
  information.block2 = Wire("FFFF0000");
  EXPECT_EQ(CallFor(information), begin + end);
  information.block2 = Wire("04000000 00FF0080");
  EXPECT_EQ(CallFor(information), begin + "00ff0080" + end);
  // As long as the request leaves room for, with the other block empty, and the other way round.
  information.block1 = Wire("00000000");
  information.block2.clear();
  const std::size_t room = kLongestRequest - information.Request().size() - 4;
  information.block2 = Text(Bytes(room, '\x5A'));
  std::string hex;
  for (std::size_t i = 0; i < room; ++i) hex += "5a";
  EXPECT_EQ(CallFor(information), begin + hex + end);
  std::swap(information.block1, information.block2);
  EXPECT_EQ(CallFor(information), begin + end);
}

TEST_F(BoardInformationTest, ABlockOfMoreThan8160BytesIsRefused) {
  StartWith(kEmptyInformation);
  // Only a request without its other fields has room for one, and would be refused for that.
  const auto request = [](std::size_t size) { return Wire("BF00") + Text(Bytes(size, 'b')); };
  EXPECT_TRUE(client_.Answers(request(8160), kOverflow));
  EXPECT_TRUE(client_.Answers(request(8161), kOverflow));
  EXPECT_TRUE(client_.Answers(request(8186), kOverflow));
  EXPECT_THAT(files_.NewCalls(), IsEmpty());
}

TEST_F(BoardInformationTest, TheAreasOfARequestShowNothingOfTheOneBefore) {
  StartWith(
      std::string("[board-information]\nvalue1 = 7\narea1 = 01020304\narea2 = 0506\n"
                  "value = 9\nresult1 = 1\nresult2 = 2\n[board-information]\n"));
  Information information;
  EXPECT_TRUE(client_.Answers(information.Request(),
                              Wire("0400 00000000 04000000 01020304 04000000 09000000"
                                   " 02000000 0506 01000000 02000000")));
  information.values[0] = Text(Long(1));
  EXPECT_TRUE(client_.Answers(information.Request(),
                              Wire("0400 00000000 04000000 00000000 04000000 00000000"
                                   " 02000000 0000 00000000 00000000")));
}

}  // namespace
}  // namespace e2e
