#include "maintenance/HardwareIdRepair.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/fakes/FakeEventLog.h"
#include "tests/fakes/FakeRegistry.h"
#include "tests/fakes/trace/FakeTrace.h"
#include "tests/support/PoolFixture.h"
#include "tests/support/RegistrySetup.h"
#include "trace/Zqotrc.h"

namespace {

using registry_setup::kBinary;
using registry_setup::kSz;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

const std::string kStack = "Software\\Vesmark\\Norva";
const std::string kDevices = kStack + "\\DefDevices\\DeviceId";
const std::string kDefaultLogDevices = kStack + "\\DefDevices\\DefaultLogDevices";
const std::string kLogDevices = kStack + "\\Logdevices";

class HardwareIdRepairTest : public testing::Test {
 protected:
  HardwareIdRepairTest() {
    registry_setup::DeleteTree(kStack);
    (void)fake_event_log::Take();
  }
  ~HardwareIdRepairTest() override {
    fake_registry::OnCall({});
    registry_setup::DeleteTree(kStack);
    FakeTrace::Reset();
  }

  static void Add(const std::string& key, const std::string& id) {
    registry_setup::SetValue(key, "HardwareId", kSz, TextBytes(id) + Bytes{0});
  }
  // The value's text, "?" when it is not a terminated text.
  static std::string IdOf(const std::string& key) {
    const auto value = registry_setup::Value(key, "HardwareId");
    if (!value || value->size() < 2 || value->front() != kSz || value->back() != 0) return "?";
    return {value->begin() + 1, value->end() - 1};
  }
  static void Run() { HwIdRepair().Run(); }
  static std::vector<std::string> Trace(std::uint32_t mask = TRC_PROGRESS | TRC_ERROR |
                                                             TRC_RESULT) {
    FakeTrace::Collect(mask);
    Run();
    return FakeTrace::Texts();
  }
};

struct Row {
  const char* deviceId;
  const char* model;
  const char* incomplete;
  const char* complete;
};

const Row kRows[] = {
    {"HWX7101", "NB410A", "PCI\\VEN_1F3C&DEV_5101", "PCI\\VEN_1F3C&DEV_5101&SUBSYS_51011F3C"},
    {"HWX7102", "NB420A", "PCI\\VEN_1F3C&DEV_5101", "PCI\\VEN_1F3C&DEV_5101&SUBSYS_D1011F3C"},
    {"HWX7104", "NB510", "PCI\\VEN_1F3C&DEV_5202", "PCI\\VEN_1F3C&DEV_5202&SUBSYS_52021F3C"},
    {"HWX7105", "NB520", "PCI\\VEN_1F3C&DEV_5202", "PCI\\VEN_1F3C&DEV_5202&SUBSYS_D2021F3C"},
    {"HWX7106", "NB410B", "PCI\\VEN_1F3C&DEV_5303", "PCI\\VEN_1F3C&DEV_5303&SUBSYS_53031F3C"},
    {"HWX7090", "NB300", "PCI\\VEN_1F3C&DEV_2404", "PCI\\VEN_1F3C&DEV_5404&SUBSYS_54041F3C"},
};

class HardwareIdRepairRowTest : public HardwareIdRepairTest,
                                public testing::WithParamInterface<Row> {};
INSTANTIATE_TEST_SUITE_P(Rows, HardwareIdRepairRowTest, testing::ValuesIn(kRows),
                         [](const auto& info) { return std::string(info.param.deviceId); });

TEST_P(HardwareIdRepairRowTest, TheIncompleteIdIsCompletedInAllThreeAreas) {
  const Row& row = GetParam();
  Add(kDevices + "\\" + row.deviceId, row.incomplete);
  Add(kDefaultLogDevices + "\\" + row.model, row.incomplete);
  Add(kLogDevices + "\\" + row.model, row.incomplete);
  Run();
  EXPECT_EQ(IdOf(kDevices + "\\" + row.deviceId), row.complete);
  EXPECT_EQ(IdOf(kDefaultLogDevices + "\\" + row.model), row.complete);
  EXPECT_EQ(IdOf(kLogDevices + "\\" + row.model), row.complete);
}

TEST_P(HardwareIdRepairRowTest, TheNameMayStandAnywhereInTheKeys) {
  const Row& row = GetParam();
  Add(kDevices + "\\ABC_" + row.deviceId + "_1", row.incomplete);
  Add(kLogDevices + "\\CP(" + row.model + ")", row.incomplete);
  Run();
  EXPECT_EQ(IdOf(kDevices + "\\ABC_" + row.deviceId + "_1"), row.complete);
  EXPECT_EQ(IdOf(kLogDevices + "\\CP(" + row.model + ")"), row.complete);
}

TEST_P(HardwareIdRepairRowTest, AnAreaKnowsItsOwnKindOfNameOnly) {
  const Row& row = GetParam();
  Add(kDevices + "\\" + row.model, row.incomplete);
  Add(kDefaultLogDevices + "\\" + row.deviceId, row.incomplete);
  Add(kLogDevices + "\\" + row.deviceId, row.incomplete);
  Run();
  EXPECT_EQ(IdOf(kDevices + "\\" + row.model), row.incomplete);
  EXPECT_EQ(IdOf(kDefaultLogDevices + "\\" + row.deviceId), row.incomplete);
  EXPECT_EQ(IdOf(kLogDevices + "\\" + row.deviceId), row.incomplete);
}

TEST_P(HardwareIdRepairRowTest, NothingButTheIncompleteIdIsReplaced) {
  const Row& row = GetParam();
  const std::string incomplete = row.incomplete;
  const std::string key = kDevices + "\\" + row.deviceId;
  for (const std::string& id :
       {std::string(row.complete), incomplete + "&", incomplete.substr(0, incomplete.size() - 1),
        " " + incomplete, incomplete + "&SUBSYS_00000000", std::string("PCI"),
        std::string("PCI\\VEN_1F3C&DEV_9999")}) {
    Add(key, id);
    Run();
    EXPECT_EQ(IdOf(key), id);
  }
}

TEST_P(HardwareIdRepairRowTest, TheIdMayBeInAnyCaseAndTheNameNot) {
  const Row& row = GetParam();
  const auto lower = [](std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
  };
  Add(kDevices + "\\" + row.deviceId, lower(row.incomplete));
  Add(kLogDevices + "\\" + lower(row.model), row.incomplete);
  Run();
  EXPECT_EQ(IdOf(kDevices + "\\" + row.deviceId), row.complete);
  EXPECT_EQ(IdOf(kLogDevices + "\\" + lower(row.model)), row.incomplete);
}

TEST_F(HardwareIdRepairTest, OneWrittenInTheNameOfAnotherIsNotMistakenForIt) {
  // A log device of one model is not one of the next.
  Add(kLogDevices + "\\NB410A", "PCI\\VEN_1F3C&DEV_5303");
  Add(kLogDevices + "\\NB410B", "PCI\\VEN_1F3C&DEV_5101");
  Run();
  EXPECT_EQ(IdOf(kLogDevices + "\\NB410A"), "PCI\\VEN_1F3C&DEV_5303");
  EXPECT_EQ(IdOf(kLogDevices + "\\NB410B"), "PCI\\VEN_1F3C&DEV_5101");
}

TEST_F(HardwareIdRepairTest, OfSeveralNamesInOneKeyTheFirstRowWins) {
  Add(kDevices + "\\HWX7102_HWX7101", "PCI\\VEN_1F3C&DEV_5101");
  Add(kLogDevices + "\\NB520 NB510", "PCI\\VEN_1F3C&DEV_5202");
  // The rows that match by name are tried one by one, so a later one may be the right one.
  Add(kLogDevices + "\\NB410A NB300", "PCI\\VEN_1F3C&DEV_2404");
  Run();
  EXPECT_EQ(IdOf(kDevices + "\\HWX7102_HWX7101"), "PCI\\VEN_1F3C&DEV_5101&SUBSYS_51011F3C");
  EXPECT_EQ(IdOf(kLogDevices + "\\NB520 NB510"), "PCI\\VEN_1F3C&DEV_5202&SUBSYS_52021F3C");
  EXPECT_EQ(IdOf(kLogDevices + "\\NB410A NB300"), "PCI\\VEN_1F3C&DEV_5404&SUBSYS_54041F3C");
}

TEST_F(HardwareIdRepairTest, EmptyMissingAndOverlongValuesAreLeftAlone) {
  Add(kDevices + "\\HWX7101 a", "");
  registry_setup::CreateKey(kDevices + "\\HWX7101 b");
  const Bytes overlong = TextBytes("PCI\\VEN_1F3C&DEV_5101") + Bytes(236, 0);
  registry_setup::SetValue(kDevices + "\\HWX7101 c", "HardwareId", kBinary, overlong);
  Run();
  EXPECT_EQ(IdOf(kDevices + "\\HWX7101 a"), "");
  EXPECT_FALSE(registry_setup::Value(kDevices + "\\HWX7101 b", "HardwareId").has_value());
  EXPECT_EQ(registry_setup::Value(kDevices + "\\HWX7101 c", "HardwareId"),
            Bytes{kBinary} + overlong);
}

TEST_F(HardwareIdRepairTest, ValuesOfOtherTypesCountByTheirBytesAndBecomeTexts) {
  const Bytes id = TextBytes("PCI\\VEN_1F3C&DEV_5101");
  registry_setup::SetValue(kDevices + "\\HWX7101 a", "HardwareId", kBinary, id);
  registry_setup::SetValue(kDevices + "\\HWX7101 b", "HardwareId", kBinary, id + Bytes(235, 0));
  Run();
  EXPECT_EQ(IdOf(kDevices + "\\HWX7101 a"), "PCI\\VEN_1F3C&DEV_5101&SUBSYS_51011F3C");
  EXPECT_EQ(IdOf(kDevices + "\\HWX7101 b"), "PCI\\VEN_1F3C&DEV_5101&SUBSYS_51011F3C");
}

TEST_F(HardwareIdRepairTest, AValueOf256BytesWithoutTerminatorIsComparedWithinItsBytes) {
  const Bytes value = TextBytes("PCI\\VEN_1F3C&DEV_5101") + Bytes(235, 'x');
  ASSERT_EQ(value.size(), 256u);
  registry_setup::SetValue(kDevices + "\\HWX7101", "HardwareId", kBinary, value);
  const std::vector<std::string> lines = Trace();
  EXPECT_EQ(registry_setup::Value(kDevices + "\\HWX7101", "HardwareId"), Bytes{kBinary} + value);
  EXPECT_THAT(lines, Contains(HasSubstr("... found HwId=PCI\\VEN_1F3C&DEV_5101xxx")));
}

TEST_F(HardwareIdRepairTest, AKeyNameOf255BytesIsRepairedIfItsPathIsWithinThePolicy) {
  const std::string longest = "HWX7101" + std::string(248, 'n');
  const std::string fitting = "HWX7101" + std::string(200, 'n');
  Add(kDevices + "\\" + longest, "PCI\\VEN_1F3C&DEV_5101");
  Add(kDevices + "\\" + fitting, "PCI\\VEN_1F3C&DEV_5101");
  Run();
  EXPECT_EQ(IdOf(kDevices + "\\" + longest), "PCI\\VEN_1F3C&DEV_5101");
  EXPECT_EQ(IdOf(kDevices + "\\" + fitting), "PCI\\VEN_1F3C&DEV_5101&SUBSYS_51011F3C");
}

TEST_F(HardwareIdRepairTest, ANameThatCannotBeReadEndsItsAreaOnly) {
  Add(kDevices + "\\A" + std::string(255, 'n'), "x");
  Add(kDevices + "\\HWX7101", "PCI\\VEN_1F3C&DEV_5101");
  Add(kLogDevices + "\\NB410A", "PCI\\VEN_1F3C&DEV_5101");
  Run();
  EXPECT_EQ(IdOf(kDevices + "\\HWX7101"), "PCI\\VEN_1F3C&DEV_5101");
  EXPECT_EQ(IdOf(kLogDevices + "\\NB410A"), "PCI\\VEN_1F3C&DEV_5101&SUBSYS_51011F3C");
}

TEST_F(HardwareIdRepairTest, ARunWritesNothingThatTheNextWouldWriteAgain) {
  Add(kDevices + "\\HWX7090", "PCI\\VEN_1F3C&DEV_2404");
  Run();
  EXPECT_THAT(Trace(), Not(Contains(HasSubstr("... Set new HwId"))));
  EXPECT_THAT(fake_event_log::Take(), IsEmpty());
}

TEST_F(HardwareIdRepairTest, AnExceptionAtAnyPrimitiveEndsTheRun) {
  Add(kDevices + "\\HWX7101", "PCI\\VEN_1F3C&DEV_5101");
  Add(kLogDevices + "\\NB410A", "PCI\\VEN_1F3C&DEV_5101");
  int calls = 0;
  int raiseAt = 0;
  fake_registry::OnCall([&] {
    if (++calls == raiseAt) throw std::runtime_error("fault");
  });
  Run();
  const int whole = calls;
  // Enumerate, read, write, enumerate; enumerate; enumerate, read, write, enumerate.
  ASSERT_EQ(whole, 9);
  for (raiseAt = 1; raiseAt <= whole; ++raiseAt) {
    calls = 0;
    Add(kDevices + "\\HWX7101", "PCI\\VEN_1F3C&DEV_5101");
    Add(kLogDevices + "\\NB410A", "PCI\\VEN_1F3C&DEV_5101");
    EXPECT_THAT(Trace(TRC_ERROR), ElementsAre("HwIdRepair: Exception: HwIdRepair")) << raiseAt;
    EXPECT_EQ(calls, raiseAt);
    EXPECT_EQ(IdOf(kDevices + "\\HWX7101").size() > 21, raiseAt > 3) << raiseAt;
    EXPECT_EQ(IdOf(kLogDevices + "\\NB410A").size() > 21, raiseAt > 8) << raiseAt;
  }
}

// --- Trace ---

TEST_F(HardwareIdRepairTest, MissingAreasProduceTheLinesOfTheirPhasesOnly) {
  const auto expected =
      ElementsAre("HwIdRepair: --> start", "HwIdRepair: Checking Boards for wrong HW Ids",
                  "HwIdRepair: Checking DefLogDevs for wrong HW Ids",
                  "HwIdRepair: Checking LogDevices for wrong HW Ids");
  EXPECT_THAT(Trace(), expected);
  registry_setup::CreateKey(kDevices);
  registry_setup::CreateKey(kDefaultLogDevices);
  registry_setup::CreateKey(kLogDevices);
  EXPECT_THAT(Trace(), expected);
  EXPECT_THAT(Trace(TRC_ERROR | TRC_RESULT), IsEmpty());
}

// The lines of one phase, the policy's and the phases' own left out.
std::vector<std::string> StepsIn(const std::vector<std::string>& lines) {
  std::vector<std::string> steps;
  for (const std::string& line : lines) {
    if (line.rfind("Repair", 0) == 0) steps.push_back(line);
  }
  return steps;
}

TEST_F(HardwareIdRepairTest, EveryRowOfEverySubkeyIsTracedBeforeTheNameIsLookedAt) {
  registry_setup::CreateKey(kDevices + "\\none");
  registry_setup::CreateKey(kDefaultLogDevices + "\\none");
  registry_setup::CreateKey(kLogDevices + "\\none");
  const std::string board = "RepairBoard: --> start for board: none";
  const std::string defLogDev = "RepairDefLogDev: --> start for DefLogDev: none";
  const std::string logDev = "RepairLogDev: --> start for LogDev: none";
  EXPECT_THAT(StepsIn(Trace()), ElementsAre(board, board, board, board, board, board, defLogDev,
                                            defLogDev, defLogDev, defLogDev, defLogDev, defLogDev,
                                            logDev, logDev, logDev, logDev, logDev, logDev));
}

TEST_F(HardwareIdRepairTest, ARepairIsTracedStepByStep) {
  Add(kLogDevices + "\\NB420A", "pci\\ven_1f3c&dev_5101");
  const std::string start = "RepairLogDev: --> start for LogDev: NB420A";
  EXPECT_THAT(StepsIn(Trace()),
              ElementsAre(start, start, "RepairLogDev: ... found HwId=pci\\ven_1f3c&dev_5101",
                          "RepairLogDev: ... cmp   HwId=PCI\\VEN_1F3C&DEV_5101",
                          "RepairLogDev: ... Set new HwId=PCI\\VEN_1F3C&DEV_5101&SUBSYS_D1011F3C",
                          "RepairLogDev: RegistrySetValue returned with result: 0",
                          "RepairLogDev: <-- end", start, start, start, start));
}

TEST_F(HardwareIdRepairTest, AValueOfAnotherBoardIsTracedAndLeft) {
  Add(kDefaultLogDevices + "\\NB300", "other");
  const std::string start = "RepairDefLogDev: --> start for DefLogDev: NB300";
  EXPECT_THAT(
      StepsIn(Trace()),
      ElementsAre(start, start, start, start, start, start, "RepairDefLogDev: ... found HwId=other",
                  "RepairDefLogDev: ... cmp   HwId=PCI\\VEN_1F3C&DEV_2404",
                  "RepairDefLogDev: <-- end"));
}

TEST_F(HardwareIdRepairTest, AMissingValueYieldsTheFailureWithItsNumberAndNoEnd) {
  registry_setup::CreateKey(kDevices + "\\HWX7101");
  EXPECT_THAT(Trace(TRC_ERROR), ElementsAre("RepairBoard: RegistryGetValue failed with result: 2"));
  EXPECT_THAT(StepsIn(Trace()), Not(Contains("RepairBoard: <-- end")));
  registry_setup::SetValue(kDevices + "\\HWX7101", "HardwareId", kBinary, Bytes(257, 'x'));
  EXPECT_THAT(Trace(TRC_ERROR),
              ElementsAre("RepairBoard: RegistryGetValue failed with result: 234"));
}

TEST_F(HardwareIdRepairTest, ARefusedWriteIsTracedWithItsNumber) {
  // The path is too long for the policy.
  const std::string name = "HWX7101" + std::string(240, 'n');
  Add(kDevices + "\\" + name, "PCI\\VEN_1F3C&DEV_5101");
  EXPECT_THAT(Trace(), AllOf(Contains("RepairBoard: RegistrySetValue returned with result: 5"),
                             Contains("RepairBoard: <-- end")));
  EXPECT_EQ(IdOf(kDevices + "\\" + name), "PCI\\VEN_1F3C&DEV_5101");
  EXPECT_EQ(fake_event_log::Take().size(), 1u);
}

}  // namespace
