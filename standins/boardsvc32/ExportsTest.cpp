// The library's exports, called as the server calls them, on a fake machine.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "board/boardsvc32.h"
#include "standins/boardsvc32/ResultCode.h"
#include "standins/boardsvc32/Simulator.h"
#include "standins/boardsvc32/testing/FakeHost.h"
#include "standins/boardsvc32/testing/LogDeviceSetup.h"
#include "standins/boardsvc32/testing/SamplePath.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr BRDX_GUID kChangeClass{
    0xCAC88484, 0x7515, 0x4C03, {0x82, 0xE6, 0x71, 0xA8, 0x7A, 0xBA, 0xC3, 0x61}};

struct Room {
  std::vector<char> bytes = std::vector<char>(8192);
  std::uint32_t length = 8192;

  std::string Text() const { return {bytes.data(), length}; }
};

class ExportsTest : public testing::Test {
 protected:
  void SetUp() override {
    folder_ = std::filesystem::temp_directory_path() / "boardsvc32_exports_test";
    std::filesystem::remove_all(folder_);
    std::filesystem::create_directory(folder_);
    fake_host::Reset();
    fake_host::SetLibraryFolder(folder_.string());
    boardsim::Reset();
    log_device_setup::Clear();
  }
  void TearDown() override { std::filesystem::remove_all(folder_); }

  std::string Path(const std::string& name) const { return (folder_ / name).string(); }

  void Inventory(const std::string& text, const std::string& name = "boardsvc32.ini") const {
    std::ofstream(Path(name), std::ios::binary) << text;
  }

  std::vector<std::string> Log(const std::string& name) const {
    std::ifstream file(Path(name), std::ios::binary);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    return lines;
  }

  static std::uint32_t EnumBoard(const char* deviceId, std::uint32_t index,
                                 std::array<Room, 3>& rooms) {
    std::string id = deviceId;
    return BRDX_EnumBoardExBL(id.data(), index, rooms[0].bytes.data(), &rooms[0].length,
                              rooms[1].bytes.data(), &rooms[1].length, rooms[2].bytes.data(),
                              &rooms[2].length, 0);
  }

  static std::uint32_t GetMap(Room& room) {
    return BRDX_BoardGetMapBL(nullptr, nullptr, nullptr, room.bytes.data(), &room.length);
  }

  std::filesystem::path folder_;
};

constexpr char kOneMap[] = "[map]\nmap=abc\n";

TEST_F(ExportsTest, WithoutFileThereAreNoBoardsAndNoComplaint) {
  Room room;
  EXPECT_EQ(StartHardwareDetection(), 0u);
  EXPECT_EQ(GetMap(room), 2u);
  EXPECT_EQ(room.length, 0u);
  EXPECT_THAT(fake_host::DebugLines(), IsEmpty());
}

TEST_F(ExportsTest, TheFileBesideTheLibraryIsTaken) {
  Inventory(kOneMap);
  Room room;
  EXPECT_EQ(GetMap(room), 0u);
  EXPECT_EQ(room.Text(), "abc");
}

TEST_F(ExportsTest, TheNamedFileComesBeforeTheOneBesideTheLibrary) {
  Inventory(kOneMap);
  Inventory("[map]\nmap=named\n", "other.ini");
  fake_host::SetEnvironment("QORLIX_BOARD_INVENTORY", Path("other.ini"));
  Room room;
  EXPECT_EQ(GetMap(room), 0u);
  EXPECT_EQ(room.Text(), "named");
}

TEST_F(ExportsTest, ANamedFileThatIsMissingIsAnErrorOfEveryCall) {
  fake_host::SetEnvironment("QORLIX_BOARD_INVENTORY", Path("missing.ini"));
  Room room;
  EXPECT_EQ(GetMap(room), boardsim::kBadInventory);
  EXPECT_THAT(fake_host::DebugLines(), ElementsAre(HasSubstr("missing.ini:0: the file cannot")));
}

TEST_F(ExportsTest, AFileWithAnErrorAnswers13EverywhereAndSaysWhy) {
  Inventory("[log]\nfile=calls.log\n[map]\nmap=abc\nmaps=1\n");
  Room room;
  std::uint32_t number = 5;
  EXPECT_EQ(StartHardwareDetection(), 13u);
  EXPECT_EQ(BRDX_ScanBL(), 13u);
  EXPECT_EQ(BRDX_UpdateRoute(), 13u);
  EXPECT_EQ(BRDX_HasUninitializedInstancesBL(), 13u);
  EXPECT_EQ(GetMap(room), 13u);
  EXPECT_EQ(room.length, 0u);
  EXPECT_EQ(BRDX_GetDeviceInstanceBL(nullptr, &number), 13u);
  EXPECT_EQ(number, 0u);
  EXPECT_THAT(fake_host::DebugLines(),
              ElementsAre(HasSubstr("boardsvc32.ini:5: [map] has no key maps")));
  const auto log = Log("calls.log");
  ASSERT_THAT(log, SizeIs(7));
  EXPECT_THAT(log[0], HasSubstr("boardsvc32.ini:5: [map] has no key maps"));
  EXPECT_EQ(log[1], "1 StartHardwareDetection -> 13 lock=none thread=77");
}

TEST_F(ExportsTest, EveryCallIsOneLineOfTheLog) {
  Inventory(kOneMap);
  fake_host::SetEnvironment("QORLIX_BOARD_LOG", Path("calls.log"));
  Room room;
  EXPECT_EQ(BRDX_ScanBL(), 0u);
  fake_host::SetLock(boardsim::LockState::kHeld);
  EXPECT_EQ(GetMap(room), 0u);
  EXPECT_THAT(Log("calls.log"),
              ElementsAre("1 BRDX_ScanBL -> 0 lock=none thread=77",
                          "2 BRDX_BoardGetMapBL deviceId=(null) adapter=(null) hardwareId=(null) "
                          "boardMap[8192] -> 0 boardMap=3 lock=held thread=77"));
}

TEST_F(ExportsTest, TheVariableComesBeforeTheLogOfTheFile) {
  Inventory("[log]\nfile=calls.log\n");
  fake_host::SetEnvironment("QORLIX_BOARD_LOG", Path("mine.log"));
  (void)BRDX_ScanBL();
  EXPECT_THAT(Log("calls.log"), IsEmpty());
  EXPECT_THAT(Log("mine.log"), SizeIs(1));
}

TEST_F(ExportsTest, ALogThatCannotBeWrittenIsToldToTheDebugger) {
  fake_host::SetEnvironment("QORLIX_BOARD_LOG", Path("missing/calls.log"));
  EXPECT_EQ(BRDX_ScanBL(), 0u);
  EXPECT_THAT(fake_host::DebugLines(), ElementsAre(HasSubstr("the log cannot be written")));
}

TEST_F(ExportsTest, AFaultAnswersInPlaceOfTheModel) {
  Inventory("[map]\nmap=abc\n[fault BRDX_BoardGetMapBL]\ncall=2\nresult=31\ndelay=40\nlength=9\n");
  fake_host::SetEnvironment("QORLIX_BOARD_LOG", Path("calls.log"));
  Room room;
  EXPECT_EQ(GetMap(room), 0u);
  EXPECT_EQ(fake_host::SleptMilliseconds(), 0u);
  room.length = 8192;
  EXPECT_EQ(GetMap(room), 31u);
  EXPECT_EQ(room.length, 9u);
  EXPECT_EQ(fake_host::SleptMilliseconds(), 40u);
  EXPECT_THAT(Log("calls.log").at(1), HasSubstr("-> 31 boardMap=9 lock=none thread=77 fault=3"));
}

TEST_F(ExportsTest, AFaultOfResult0ClaimsASuccessThatIsNone) {
  Inventory("[fault BRDX_EnumBoardExBL]\ncall=*\nresult=0\nfill=capacity\nlength=- 8161 0\n");
  std::array<Room, 3> rooms;
  rooms[0].length = 5;
  EXPECT_EQ(EnumBoard("", 7, rooms), 0u);
  EXPECT_EQ(rooms[0].length, 5u);
  EXPECT_EQ(rooms[1].length, 8161u);
  EXPECT_EQ(rooms[2].length, 0u);
  EXPECT_EQ(std::string(rooms[0].bytes.data(), 6), std::string("xxxxx\0", 6));
  EXPECT_EQ(rooms[2].bytes[8191], 'x');
}

TEST_F(ExportsTest, ACallThatRaisesIsLoggedAndLeavesTheNextOneAlone) {
  Inventory("[fault BRDX_ScanBL]\ncall=1\nraise=divide-by-zero\n");
  fake_host::SetEnvironment("QORLIX_BOARD_LOG", Path("calls.log"));
  EXPECT_THROW((void)BRDX_ScanBL(), fake_host::RaisedException);
  EXPECT_EQ(BRDX_ScanBL(), 0u);
  EXPECT_THAT(Log("calls.log"),
              ElementsAre("1 BRDX_ScanBL -> raise divide-by-zero lock=none thread=77 fault=1",
                          "2 BRDX_ScanBL -> 0 lock=none thread=77"));
}

TEST_F(ExportsTest, AChangeThatDoesNotFitIsNotLost) {
  Inventory(
      "[change]\ndevice-id=D\nkind=7\nguid={cac88484-7515-4c03-82e6-71a87abac361}\ntext=abcd\n");
  char id[] = "D";
  ASSERT_EQ(BRDX_RegisterForDeviceChangeNotifications(kChangeClass, id), 0u);
  std::uint8_t kind = 1;
  BRDX_GUID guid{};
  char text[5] = "";
  std::uint32_t length = 3;
  EXPECT_EQ(BRDX_GetDeviceChange(id, &kind, &guid, text, &length), 234u);
  EXPECT_EQ(length, 4u);
  EXPECT_EQ(kind, 0u);
  EXPECT_EQ(BRDX_GetDeviceChange(id, &kind, &guid, text, &length), 0u);
  EXPECT_STREQ(text, "abcd");
  EXPECT_EQ(kind, 7u);
  EXPECT_EQ(guid.Data4[7], 0x61u);
  EXPECT_EQ(BRDX_GetDeviceChange(id, &kind, &guid, text, &length), 259u);
  EXPECT_EQ(BRDX_UnregisterForDeviceChangeNotifications(kChangeClass, id), 0u);
  EXPECT_EQ(BRDX_UnregisterForDeviceChangeNotifications(kChangeClass, id), 2u);
}

TEST_F(ExportsTest, BoardInformationFillsItsAreas) {
  Inventory(
      "[board-information]\nvalue1=1\nlast=9\nvalue=5\narea1=0102\narea2=03\nresult1=6\n"
      "result2=7\n");
  fake_host::SetEnvironment("QORLIX_BOARD_LOG", Path("calls.log"));
  std::uint8_t data[] = {0xAB};
  std::uint8_t area1[2] = {};
  std::uint8_t area2[3] = {};
  std::uint32_t value = 0;
  BRDX_INFO_INPUT input{1, 2, 3, data, 1, area1, 2, &value};
  BRDX_INFO_OUTPUT output{area2, 3, 0, 0};
  EXPECT_EQ(BRDX_GetBoardInformation(data, &input, &output, 9), 0u);
  EXPECT_THAT(area1, ElementsAre(1, 2));
  EXPECT_THAT(area2, ElementsAre(3, 0, 0));
  EXPECT_EQ(value, 5u);
  EXPECT_EQ(output.result1, 6u);
  EXPECT_EQ(output.result2, 7u);
  EXPECT_EQ(input.cbArea1, 2u);
  EXPECT_EQ(
      Log("calls.log").at(0),
      "1 BRDX_GetBoardInformation value1=1 value2=2 value3=3 data=ab area1[2] area2[3] last=9 "
      "-> 0 area1=2 value=5 area2=1 result1=6 result2=7 lock=none thread=77");

  input.cbArea1 = 1;
  EXPECT_EQ(BRDX_GetBoardInformation(data, &input, &output, 9), 234u);
  EXPECT_EQ(BRDX_GetBoardInformation(nullptr, nullptr, &output, 9), 87u);
}

TEST_F(ExportsTest, TheOtherExportsReachTheirAnswers) {
  fake_host::SetEnvironment("QORLIX_BOARD_INVENTORY", SamplePath("plant.ini"));
  fake_host::SetEnvironment("QORLIX_BOARD_LOG", Path("calls.log"));
  std::array<Room, 6> r;
  std::uint32_t number = 0;
  std::uint8_t byte = 0;
  char id[] = "USB\\VID_1F3C&PID_0024";
  char board[] = "NB410A";
  char usb[] = "HWX7090";
  EXPECT_EQ(BRDX_HasUninitializedInstancesBL(), 1u);
  EXPECT_EQ(BRDX_CreateAllLogdevicesBL(), 0u);
  EXPECT_TRUE(log_device_setup::Exists("NB510.4"));
  EXPECT_EQ(BRDX_UpdateLogdevicesForDeviceBL(usb, id), 0u);
  EXPECT_EQ(BRDX_RemoveAbandonLogDevices(), 0u);
  EXPECT_EQ(BRDX_UpdateRoute(), 0u);
  EXPECT_EQ(BRDX_EnumInstBoardBL(2, r[0].bytes.data(), &r[0].length, r[1].bytes.data(),
                                 &r[1].length, r[2].bytes.data(), &r[2].length, r[3].bytes.data(),
                                 &r[3].length, r[4].bytes.data(), &r[4].length, r[5].bytes.data(),
                                 &r[5].length, &number),
            0u);
  EXPECT_EQ(r[1].Text(), "HWX7102");
  EXPECT_EQ(r[5].Text(), "3");
  EXPECT_EQ(number, 4u);
  r = {};
  EXPECT_EQ(BRDX_EnumAvailableBoardsBL(0, r[0].bytes.data(), &r[0].length, r[1].bytes.data(),
                                       &r[1].length, &number),
            0u);
  EXPECT_EQ(number, 2u);
  r = {};
  EXPECT_EQ(BRDX_EnumAdaptersBL(2, r[0].bytes.data(), &r[0].length, r[1].bytes.data(), &r[1].length,
                                &byte),
            0u);
  EXPECT_EQ(byte, 255u);
  r = {};
  EXPECT_EQ(
      BRDX_EnumConfigurationBL(1, board, nullptr, nullptr, nullptr, r[0].bytes.data(), &r[0].length,
                               r[1].bytes.data(), &r[1].length, r[2].bytes.data(), &r[2].length,
                               r[3].bytes.data(), &r[3].length),
      0u);
  EXPECT_EQ(r[2].Text(), "TP4");
  r = {};
  EXPECT_EQ(
      BRDX_GetBoardInfoBL(1, board, nullptr, nullptr, nullptr, r[0].bytes.data(), &r[0].length),
      0u);
  EXPECT_EQ(r[0].Text(), "Firmware 5.2");
  std::array<std::uint8_t, 8> bytes{};
  std::uint32_t cbBytes = 8;
  EXPECT_EQ(BRDX_GetBoardInfoExBL(1, board, nullptr, nullptr, bytes.data(), &cbBytes), 0u);
  EXPECT_THAT(bytes, ElementsAre(8, 0, 6, 1, 0x23, 0x45, 0, 0));
  EXPECT_EQ(BRDX_GetDeviceInstanceBL(id, &number), 0u);
  EXPECT_EQ(number, 0x10u);
  EXPECT_EQ(BRDX_GetDeviceInstanceBL(id, 1, &number), 0u);
  EXPECT_EQ(number, 0x11u);
  EXPECT_THAT(Log("calls.log").at(5), HasSubstr("6 BRDX_EnumInstBoardBL index=2 board[8192] "));
}

TEST_F(ExportsTest, CallsOfSeveralThreadsAreAllCounted) {
  Inventory("[fault BRDX_UpdateRoute]\ncall=101\nresult=1\n");
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([] {
      for (int call = 0; call < 25; ++call) EXPECT_EQ(BRDX_UpdateRoute(), 0u);
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(BRDX_UpdateRoute(), 1u);
}

}  // namespace
