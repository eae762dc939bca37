// The sample inventories are machines that answer what their comments promise.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "standins/boardsvc32/BoardModel.h"
#include "standins/boardsvc32/InventoryFile.h"
#include "standins/boardsvc32/ResultCode.h"
#include "standins/boardsvc32/testing/LogDeviceSetup.h"
#include "standins/boardsvc32/testing/SamplePath.h"

namespace boardsim {
namespace {

using log_device_setup::Exists;
using testing::ElementsAre;

class SamplesTest : public testing::Test {
 protected:
  void SetUp() override { log_device_setup::Clear(); }
  void TearDown() override { log_device_setup::Clear(); }

  static InventoryFile Load(const std::string& name) {
    InventoryFile file = LoadInventory(SamplePath(name));
    for (const InventoryError& error : file.errors) {
      ADD_FAILURE() << name << ':' << error.line << ": " << error.text;
    }
    return file;
  }
};

TEST_F(SamplesTest, TwoBoardsAnswersEveryBoardCommand) {
  const InventoryFile file = Load("two-boards.ini");
  BoardModel model(file.inventory);
  EXPECT_EQ(file.logFile, "boardsvc32.log");
  EXPECT_THAT(model.EnumBoard("HWX7101", 0).texts,
              ElementsAre("NB410A", "1", "Local Area Connection 2"));
  EXPECT_EQ(model.EnumInstBoard(1).texts.at(0), "NB510");
  EXPECT_EQ(model.EnumInstBoard(2).result, kNoMoreItems);
  EXPECT_EQ(model.EnumAvailableBoards(1).result, 0u);
  EXPECT_EQ(model.EnumAdapters(0).result, 0u);
  EXPECT_THAT(model.EnumConfiguration(0, "NB410A", "1", "HWX7101", "").texts,
              ElementsAre("Station", "TCP", "RFC 1006", "CP1"));
  EXPECT_THAT(model.BoardGetMap("HWX7104", "", "").texts, ElementsAre("2"));
  EXPECT_THAT(model.GetBoardInfo(1, "NB410A", "", "", "").texts, ElementsAre("Firmware 5.2"));
  EXPECT_EQ(model.GetBoardInfoEx(1, "NB410A", "", "").texts.at(0).size(), 6u);
  EXPECT_THAT(model.GetDeviceInstance("PCI\\VEN_1F3C&DEV_5101&SUBSYS_51011F3C", nullptr).numbers,
              ElementsAre(1u));
  EXPECT_EQ(model.Register(file.inventory.changes.at(0).guid, "HWX7101").result, 0u);
  EXPECT_THAT(model.GetDeviceChange("HWX7101").numbers, ElementsAre(1u));
}

TEST_F(SamplesTest, ThePlantsBoardsComeAndGo) {
  const InventoryFile file = Load("plant.ini");
  Inventory before;
  before.boards.push_back(file.inventory.boards.at(4));
  before.boards[0].present = true;
  (void)BoardModel(before).CreateAllLogdevices();
  ASSERT_TRUE(Exists("NB520.5"));

  BoardModel model(file.inventory);
  (void)model.Scan();
  (void)model.RemoveAbandonLogDevices();
  (void)model.CreateAllLogdevices();
  EXPECT_FALSE(Exists("NB520.5"));
  EXPECT_TRUE(Exists("NB410A.2"));
  EXPECT_FALSE(Exists("NB410B.6"));
  EXPECT_TRUE(Exists("KWTUSB Programmer"));

  (void)model.Scan();
  (void)model.Scan();
  (void)model.RemoveAbandonLogDevices();
  (void)model.CreateAllLogdevices();
  EXPECT_TRUE(Exists("NB410B.6"));
  EXPECT_FALSE(Exists("KWTUSB Programmer"));
  EXPECT_THAT(model.EnumInstBoard(4).numbers, ElementsAre(45u));
}

TEST_F(SamplesTest, ThePlantsLibraryIsSlowAndBreaksDownOnce) {
  FaultScript script(Load("plant.ini").faults);
  EXPECT_EQ(script.NextCall(Operation::kScan)->delay, 20u);
  EXPECT_EQ(script.NextCall(Operation::kScan)->delay, 150u);
  EXPECT_EQ(script.NextCall(Operation::kScan)->delay, 20u);
  EXPECT_EQ(script.NextCall(Operation::kGetBoardInfoEx), nullptr);
  EXPECT_EQ(script.NextCall(Operation::kGetBoardInfoEx), nullptr);
  EXPECT_EQ(script.NextCall(Operation::kGetBoardInfoEx)->raised, Raised::kAccessViolation);
  EXPECT_EQ(script.NextCall(Operation::kGetBoardInfoEx), nullptr);
}

}  // namespace
}  // namespace boardsim
