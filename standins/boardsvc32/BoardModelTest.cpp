#include "standins/boardsvc32/BoardModel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "standins/boardsvc32/InventoryFile.h"
#include "standins/boardsvc32/LogDeviceStore.h"
#include "standins/boardsvc32/ResultCode.h"
#include "standins/boardsvc32/testing/LogDeviceSetup.h"

namespace boardsim {
namespace {

using log_device_setup::Exists;
using log_device_setup::Value;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;
using testing::StrEq;

constexpr BRDX_GUID kClass{0xCAC88484, 0x7515, 0x4C03, {1, 2, 3, 4, 5, 6, 7, 8}};
constexpr BRDX_GUID kOtherClass{0xCAC88484, 0x7515, 0x4C03, {1, 2, 3, 4, 5, 6, 7, 9}};

// Over the logical devices in memory natively, and over the registry on Windows.
class BoardModelTest : public testing::Test {
 protected:
  void SetUp() override { log_device_setup::Clear(); }
  void TearDown() override { log_device_setup::Clear(); }

  static BoardModel ModelOf(std::string_view text) {
    InventoryFile file = ParseInventory(text);
    for (const InventoryError& error : file.errors) {
      ADD_FAILURE() << error.line << ": " << error.text;
    }
    return BoardModel(std::move(file.inventory));
  }

  static BoardModel TwoBoards() {
    return ModelOf(
        "[board]\nname=NB410A\ndevice-id=HWX7101\nnet-type=IE\nhardware-id=PCI\\1\n"
        "hardware-instance-id=PCI\\1\\7\nmap=1\nadapter=LAN\nstate=3\n"
        "[board]\nname=NB510\ndevice-id=HWX7104\nhardware-id=PCI\\2\nmap=2\npresent=no\n");
  }
};

TEST_F(BoardModelTest, WithoutInventoryThereIsNothing) {
  BoardModel model;
  EXPECT_EQ(model.Scan().result, 0u);
  EXPECT_EQ(model.CreateAllLogdevices().result, 0u);
  EXPECT_EQ(model.RemoveAbandonLogDevices().result, 0u);
  EXPECT_EQ(model.HasUninitializedInstances().result, 0u);
  EXPECT_EQ(model.UpdateLogdevicesForDevice("HWX7101", "PCI").result, kNotFound);
  EXPECT_EQ(model.EnumBoard("", 0).result, kNoMoreItems);
  EXPECT_EQ(model.EnumInstBoard(0).result, kNoMoreItems);
  EXPECT_EQ(model.EnumAvailableBoards(0).result, kNoMoreItems);
  EXPECT_EQ(model.EnumAdapters(0).result, kNoMoreItems);
  EXPECT_EQ(model.EnumConfiguration(0, "", "", "", "").result, kNoMoreItems);
  EXPECT_EQ(model.BoardGetMap("", "", "").result, kNotFound);
  EXPECT_EQ(model.GetBoardInfo(0, "", "", "", "").result, kNotFound);
  EXPECT_EQ(model.GetBoardInfoEx(0, "", "", "").result, kNotFound);
  EXPECT_EQ(model.Register(kClass, nullptr).result, kNotFound);
  EXPECT_EQ(model.Unregister(kClass, nullptr).result, kNotFound);
  EXPECT_EQ(model.GetDeviceChange("").result, kNoMoreItems);
  EXPECT_EQ(model.GetBoardInformation({}, 0).result, kNotFound);
  EXPECT_EQ(model.GetDeviceInstance("", nullptr).result, kNotFound);
}

TEST_F(BoardModelTest, PresentBoardsAreEnumeratedByDeviceId) {
  const BoardModel model = TwoBoards();
  EXPECT_THAT(model.EnumBoard("hwx7101", 0).texts, ElementsAre("NB410A", "1", "LAN"));
  EXPECT_EQ(model.EnumBoard("HWX7101", 1).result, kNoMoreItems);
  EXPECT_EQ(model.EnumBoard("HWX7104", 0).result, kNoMoreItems);
  EXPECT_THAT(model.EnumBoard(nullptr, 0).texts, ElementsAre("NB410A", "1", "LAN"));
  EXPECT_EQ(model.EnumBoard("", 1).result, kNoMoreItems);
  EXPECT_EQ(model.EnumBoard("", 0xFFFFFFFF).result, kNoMoreItems);
}

TEST_F(BoardModelTest, InstalledBoardsAreThoseAndTheAbandonedOnes) {
  const BoardModel model = TwoBoards();
  const Answer present = model.EnumInstBoard(0);
  EXPECT_THAT(present.texts, ElementsAre("NB410A", "HWX7101", "IE", "PCI\\1", "PCI\\1\\7", "1"));
  EXPECT_THAT(present.numbers, ElementsAre(3u));
  EXPECT_THAT(model.EnumInstBoard(1).numbers, ElementsAre(1u));
  EXPECT_EQ(model.EnumInstBoard(2).result, kNoMoreItems);
}

TEST_F(BoardModelTest, BoardsAppearAndVanishByScans) {
  BoardModel model = ModelOf(
      "[board]\nname=Late\ndevice-id=D\nappears-at-scan=1\n"
      "[board]\nname=Short\ndevice-id=D\nappears-at-scan=1\nvanishes-at-scan=2\n");
  EXPECT_EQ(model.EnumBoard("D", 0).result, kNoMoreItems);
  (void)model.Scan();
  EXPECT_EQ(model.EnumBoard("D", 1).texts.at(0), "Short");
  (void)model.Scan();
  EXPECT_EQ(model.EnumBoard("D", 0).texts.at(0), "Late");
  EXPECT_EQ(model.EnumBoard("D", 1).result, kNoMoreItems);
}

TEST_F(BoardModelTest, CreatingMakesALogicalDeviceForEveryPresentBoard) {
  BoardModel model = TwoBoards();
  EXPECT_EQ(model.CreateAllLogdevices().result, 0u);
  EXPECT_THAT(Value("NB410A.1", "Board"), Optional(StrEq("NB410A")));
  EXPECT_THAT(Value("NB410A.1", "DeviceId"), Optional(StrEq("HWX7101")));
  EXPECT_THAT(Value("NB410A.1", "NetType"), Optional(StrEq("IE")));
  EXPECT_THAT(Value("NB410A.1", "BoardMap"), Optional(StrEq("1")));
  EXPECT_THAT(Value("NB410A.1", "Adapter"), Optional(StrEq("LAN")));
  EXPECT_THAT(Value("NB410A.1", "HardwareId"), Optional(StrEq("PCI\\1")));
  EXPECT_THAT(Value("NB410A.1", "HardwareInstanceId"), Optional(StrEq("PCI\\1\\7")));
  EXPECT_THAT(Value("NB410A.1", "Present"), Optional(StrEq("1")));
  EXPECT_THAT(Value("NB410A.1", "Simulated"), Optional(StrEq("1")));
  EXPECT_FALSE(Exists("NB510.2"));
}

TEST_F(BoardModelTest, CreatingLeavesWhatIsThere) {
  log_device_setup::AddForeign("nb410a.1", "mine");
  EXPECT_EQ(TwoBoards().CreateAllLogdevices().result, 0u);
  EXPECT_THAT(Value("NB410A.1", "HardwareId"), Optional(StrEq("mine")));
  EXPECT_EQ(Value("NB410A.1", "Simulated"), std::nullopt);
}

TEST_F(BoardModelTest, AScanNotesWhichBoardsArePresent) {
  BoardModel model = ModelOf("[board]\nname=A\ndevice-id=D\nvanishes-at-scan=2\n");
  log_device_setup::AddForeign("Other", "mine");
  (void)model.CreateAllLogdevices();
  EXPECT_EQ(model.Scan().result, 0u);
  EXPECT_THAT(Value("A", "Present"), Optional(StrEq("1")));
  EXPECT_EQ(model.Scan().result, 0u);
  EXPECT_THAT(Value("A", "Present"), Optional(StrEq("0")));
  EXPECT_EQ(Value("Other", "Present"), std::nullopt);
}

TEST_F(BoardModelTest, RemovingTakesAbandonedSimulatedDevicesOnly) {
  (void)ModelOf(
      "[board]\nname=Old\ndevice-id=D\n[board]\nname=Older\ndevice-id=D\n"
      "[board]\nname=Kept\ndevice-id=D\n")
      .CreateAllLogdevices();
  log_device_setup::AddForeign("Users", "mine");
  EXPECT_EQ(ModelOf("[board]\nname=kept\ndevice-id=D\n[board]\nname=Old\ndevice-id=D\npresent=no\n")
                .RemoveAbandonLogDevices()
                .result,
            0u);
  EXPECT_FALSE(Exists("Old"));
  EXPECT_FALSE(Exists("Older"));
  EXPECT_TRUE(Exists("Kept"));
  EXPECT_TRUE(Exists("Users"));
}

TEST_F(BoardModelTest, UpdatingRewritesTheDevicesOfADeviceId) {
  BoardModel model = TwoBoards();
  EXPECT_EQ(model.UpdateLogdevicesForDevice("HWX7101", nullptr).result, 0u);
  EXPECT_THAT(Value("NB410A.1", "HardwareId"), Optional(StrEq("PCI\\1")));
  log_device_setup::SetText("NB410A.1", "HardwareId", "spoilt");
  EXPECT_EQ(model.UpdateLogdevicesForDevice("HWX7101", "PCI\\9").result, kNotFound);
  EXPECT_THAT(Value("NB410A.1", "HardwareId"), Optional(StrEq("spoilt")));
  EXPECT_EQ(model.UpdateLogdevicesForDevice("hwx7101", "pci\\1").result, 0u);
  EXPECT_THAT(Value("NB410A.1", "HardwareId"), Optional(StrEq("PCI\\1")));
}

TEST_F(BoardModelTest, UpdatingNeedsAPresentBoardAndSparesForeignDevices) {
  BoardModel model = TwoBoards();
  EXPECT_EQ(model.UpdateLogdevicesForDevice(nullptr, "PCI\\1").result, kInvalidParameter);
  EXPECT_EQ(model.UpdateLogdevicesForDevice("", "PCI\\1").result, kInvalidParameter);
  EXPECT_EQ(model.UpdateLogdevicesForDevice("HWX7104", nullptr).result, kNotFound);
  EXPECT_FALSE(Exists("NB510.2"));
  log_device_setup::AddForeign("NB410A.1", "mine");
  EXPECT_EQ(model.UpdateLogdevicesForDevice("HWX7101", nullptr).result, 0u);
  EXPECT_THAT(Value("NB410A.1", "HardwareId"), Optional(StrEq("mine")));
}

TEST_F(BoardModelTest, ListsAreEnumeratedInTheirOrder) {
  const BoardModel model = ModelOf(
      "[machine]\nuninitialized-instances=1\n"
      "[available-board]\nname=A\ndevice-id=D\nvalue=7\n[available-board]\nname=B\ndevice-id=E\n"
      "[adapter]\nname=L\nmap=1\nvalue=200\n");
  EXPECT_EQ(model.HasUninitializedInstances().result, 1u);
  EXPECT_THAT(model.EnumAvailableBoards(0).texts, ElementsAre("A", "D"));
  EXPECT_THAT(model.EnumAvailableBoards(0).numbers, ElementsAre(7u));
  EXPECT_THAT(model.EnumAvailableBoards(1).texts, ElementsAre("B", "E"));
  EXPECT_EQ(model.EnumAvailableBoards(2).result, kNoMoreItems);
  EXPECT_THAT(model.EnumAdapters(0).texts, ElementsAre("L", "1"));
  EXPECT_THAT(model.EnumAdapters(0).numbers, ElementsAre(200u));
  EXPECT_EQ(model.EnumAdapters(1).result, kNoMoreItems);
}

TEST_F(BoardModelTest, ConfigurationsAreThoseThatFitTheBoard) {
  const BoardModel model = ModelOf(
      "[configuration]\nboard=A\nconfiguration=one\n"
      "[configuration]\nmap=2\nconfiguration=two\nprotocol-type=P\nlayer4-protocol=T\nunit=U\n"
      "[configuration]\nhardware-instance-id=I\ndevice-id=D\nconfiguration=three\n");
  EXPECT_THAT(model.EnumConfiguration(1, "b", "2", "D", "J").texts, IsEmpty());
  EXPECT_THAT(model.EnumConfiguration(0, "b", "2", "D", "J").texts,
              ElementsAre("two", "P", "T", "U"));
  EXPECT_EQ(model.EnumConfiguration(0, "a", "1", "E", "I").texts.at(0), "one");
  EXPECT_EQ(model.EnumConfiguration(1, "a", "1", "E", "I").result, kNoMoreItems);
  EXPECT_EQ(model.EnumConfiguration(2, nullptr, nullptr, nullptr, nullptr).texts.at(0), "three");
}

TEST_F(BoardModelTest, AMapComesFromAnEntryAndElseFromAPresentBoard) {
  const BoardModel model = ModelOf(
      "[map]\ndevice-id=D\nadapter=L\nhardware-id=H\nmap=9\n"
      "[board]\nname=A\ndevice-id=D\nadapter=M\nmap=3\n"
      "[board]\nname=B\ndevice-id=E\nmap=4\npresent=no\n");
  EXPECT_THAT(model.BoardGetMap("D", "L", "H").texts, ElementsAre("9"));
  EXPECT_THAT(model.BoardGetMap("D", "M", nullptr).texts, ElementsAre("3"));
  EXPECT_EQ(model.BoardGetMap("D", "N", "").result, kNotFound);
  EXPECT_EQ(model.BoardGetMap("E", "", "").result, kNotFound);
}

TEST_F(BoardModelTest, InfosAreFoundByTypeAndBoard) {
  const BoardModel model = ModelOf(
      "[info]\ntype=1\nboard=A\ntext=a\n[info]\ntype=1\ntext=any\n[info]\ntype=2\ndevice-id=D\n"
      "text=d\n[info-ex]\ntype=1\nhardware-instance-id=I\nbytes=000102\n");
  EXPECT_THAT(model.GetBoardInfo(1, "A", "", "", "").texts, ElementsAre("a"));
  EXPECT_THAT(model.GetBoardInfo(1, "B", "", "", "").texts, ElementsAre("any"));
  EXPECT_EQ(model.GetBoardInfo(2, "A", "", "E", "").result, kNotFound);
  EXPECT_EQ(model.GetBoardInfo(3, "A", "", "", "").result, kNotFound);
  EXPECT_THAT(model.GetBoardInfoEx(1, "A", "", "i").texts, ElementsAre(std::string("\0\1\2", 3)));
  EXPECT_EQ(model.GetBoardInfoEx(1, "A", "", "J").result, kNotFound);
  EXPECT_EQ(model.GetBoardInfoEx(2, "A", "", "I").result, kNotFound);
}

TEST_F(BoardModelTest, ChangesAreDeliveredOnceInOrderToWhomIsRegistered) {
  const std::string guid = "guid={cac88484-7515-4c03-0102-030405060708}\n";
  BoardModel model = ModelOf("[change]\ndevice-id=D\nkind=1\n" + guid + "text=first\n" +
                             "[change]\ndevice-id=E\nkind=2\n" + guid + "text=other\n" +
                             "[change]\ndevice-id=D\nkind=3\n" + guid);
  EXPECT_EQ(model.GetDeviceChange("D").result, kNoMoreItems);
  EXPECT_EQ(model.Register(kOtherClass, "D").result, 0u);
  EXPECT_EQ(model.GetDeviceChange("D").result, kNoMoreItems);
  EXPECT_EQ(model.Register(kClass, "d").result, 0u);

  const Answer first = model.GetDeviceChange("D");
  EXPECT_THAT(first.texts, ElementsAre("first"));
  EXPECT_THAT(first.numbers, ElementsAre(1u));
  EXPECT_EQ(first.guid.Data4[7], 8u);
  EXPECT_THAT(model.GetDeviceChange("D").texts, ElementsAre("first"));
  model.Delivered(first);
  const Answer second = model.GetDeviceChange(nullptr);
  EXPECT_THAT(second.numbers, ElementsAre(3u));
  model.Delivered(second);
  EXPECT_EQ(model.GetDeviceChange(nullptr).result, kNoMoreItems);
  EXPECT_EQ(model.GetDeviceChange("E").result, kNoMoreItems);

  EXPECT_EQ(model.Register(kClass, nullptr).result, 0u);
  EXPECT_THAT(model.GetDeviceChange("D").texts, IsEmpty());
  EXPECT_THAT(model.GetDeviceChange("E").texts, ElementsAre("other"));
}

TEST_F(BoardModelTest, ARegistrationEndsOnce) {
  BoardModel model =
      ModelOf("[change]\ndevice-id=D\nkind=1\nguid={cac88484-7515-4c03-0102-030405060708}\n");
  EXPECT_EQ(model.Register(kClass, "X").result, kNotFound);
  EXPECT_EQ(model.Register(kClass, "D").result, 0u);
  EXPECT_EQ(model.Register(kClass, "D").result, 0u);
  EXPECT_EQ(model.Unregister(kOtherClass, "D").result, kNotFound);
  EXPECT_EQ(model.Unregister(kClass, "E").result, kNotFound);
  EXPECT_EQ(model.Unregister(kClass, "D").result, 0u);
  EXPECT_EQ(model.Unregister(kClass, "D").result, kNotFound);
  EXPECT_EQ(model.GetDeviceChange("D").result, kNoMoreItems);
}

TEST_F(BoardModelTest, BoardInformationIsFoundByWhatItIsFor) {
  const BoardModel model = ModelOf(
      "[board-information]\nvalue1=1\nvalue3=3\nlast=4\nvalue=5\narea1=01\narea2=0203\nresult1=6\n"
      "result2=7\n[board-information]\nvalue2=9\nresult=31\n");
  BRDX_INFO_INPUT input{};
  input.value1 = 1;
  input.value3 = 3;
  const Answer answer = model.GetBoardInformation(input, 4);
  EXPECT_EQ(answer.result, 0u);
  EXPECT_THAT(answer.texts, ElementsAre("\x01", "\x02\x03"));
  EXPECT_THAT(answer.numbers, ElementsAre(5u, 6u, 7u));
  EXPECT_EQ(model.GetBoardInformation(input, 5).result, kNotFound);
  input.value2 = 9;
  EXPECT_EQ(model.GetBoardInformation(input, 5).result, 31u);
}

TEST_F(BoardModelTest, AnInstanceWithAnOptionIsFoundWithItOnly) {
  const BoardModel model = ModelOf(
      "[instance]\nhardware-id=H\ninstance=1\n[instance]\nhardware-id=H\noption=5\ninstance=2\n"
      "[instance]\nhardware-id=J\noption=0\ninstance=3\n");
  const std::uint32_t zero = 0;
  const std::uint32_t five = 5;
  EXPECT_THAT(model.GetDeviceInstance("h", nullptr).numbers, ElementsAre(1u));
  EXPECT_THAT(model.GetDeviceInstance("H", &five).numbers, ElementsAre(2u));
  EXPECT_THAT(model.GetDeviceInstance("H", &zero).numbers, ElementsAre(1u));
  EXPECT_THAT(model.GetDeviceInstance("J", &zero).numbers, ElementsAre(3u));
  EXPECT_EQ(model.GetDeviceInstance("J", nullptr).result, kNotFound);
  EXPECT_EQ(model.GetDeviceInstance("J", &five).result, kNotFound);
  EXPECT_EQ(model.GetDeviceInstance(nullptr, &five).result, kNotFound);
}

TEST_F(BoardModelTest, ADeviceThatIsGoneIsReportedByItsRegistryCode) {
  EXPECT_EQ(log_device_store::MarkPresent("nobody", true), kNotFound);
  EXPECT_EQ(log_device_store::Remove("nobody"), kNotFound);
  EXPECT_THAT(log_device_store::List(), IsEmpty());
}

}  // namespace
}  // namespace boardsim
