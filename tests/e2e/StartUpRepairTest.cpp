#include <windows.h>

#include <gmock/gmock.h>

#include <algorithm>

#include "tests/e2e/BoardSetup.h"
#include "tests/e2e/EventLogTail.h"
#include "tests/e2e/RegistryTree.h"
#include "tests/e2e/TraceTest.h"

// What the server does to the configuration when it starts, and what it traces of that.

namespace e2e {
namespace {

using testing::IsEmpty;

constexpr char kGate[] = "SOFTWARE\\Vesmark\\Shared Tools\\MIREL";
constexpr char kBoards[] = "SOFTWARE\\Vesmark\\NORVA\\DefDevices\\DeviceId";
constexpr char kDefLogDevices[] = "SOFTWARE\\Vesmark\\NORVA\\DefDevices\\DefaultLogDevices";
constexpr char kLogDevices[] = "SOFTWARE\\Vesmark\\NORVA\\LogDevices";
constexpr char kLogNames[] = "SOFTWARE\\Vesmark\\NORVA\\LogNames";
constexpr char kHardwareId[] = "HardwareId";

const Lines kStart = {"BRDX_RunPlausibilitaet:  >> Start"};
const Lines kEnd = {"BRDX_RunPlausibilitaet:  << End"};
const Lines kGateIsClosed = kStart +
                            Lines{
                                "BRDX_RunPlausibilitaet:  Warning: Setup l\xE4"
                                "uft, keine BRDX_Plausibilitaet m\xF6"
                                "glich"} +
                            kEnd;
const Lines kGateIsMissing =
    kStart + Lines{"BRDX_RunPlausibilitaet:  Error in RegGetValueBL --> Can't run Plausibilitaet!"};

// The lines of an open gate, with those of the keys in each area and of the logical names.
Lines GateIsOpen(const Lines& boards = {}, const Lines& defLogDevices = {},
                 const Lines& logDevices = {}, const Lines& logNames = {}) {
  return kStart + Lines{"HwIdRepair:  --> start", "HwIdRepair:  Checking Boards for wrong HW Ids"} +
         boards + Lines{"HwIdRepair:  Checking DefLogDevs for wrong HW Ids"} + defLogDevices +
         Lines{"HwIdRepair:  Checking LogDevices for wrong HW Ids"} + logDevices +
         Lines{"BC_PlausibilitaetBL:  --> start", "BC_PlausibilitaetBL:  BRDX_Scan result = 0x0",
               "BC_PlausibilitaetBL:  BRDX_RemoveAbandonLogDevices result = 0x0",
               "BC_PlausibilitaetBL:  Step 3: checke LogNames"} +
         logNames + Lines{"BC_PlausibilitaetBL:  <-- End"} + kEnd;
}

class StartUpRepairTest : public OwnServerTraceTest {
 protected:
  // Starts a server and waits for its loop. \returns the lines in front of that which are of the
  // maintenance.
  Lines LinesOfAStart(const std::string& inventory = "") {
    server_.Kill();
    trace_setup::Replace(AllLinesWith());
    files_.Write(inventory);
    EXPECT_TRUE(server_.Start());
    Lines lines = AllLinesOnceItWaits();
    const auto begin = std::find(lines.begin(), lines.end(), kStart[0]);
    const auto end = std::find_if(begin, lines.end(), [](const std::string& line) {
      return line.starts_with("RunSrvLoop:");
    });
    return {begin, end};
  }

  void OpenGate() { gate_.SetText("SetupSucceeded", "1"); }

  BoardFiles files_;
  RegistryKeyScratch gate_{kGate};
  RegistryKeyScratch defDevices_{"SOFTWARE\\Vesmark\\NORVA\\DefDevices"};
  RegistryKeyScratch logDevices_{kLogDevices};
  RegistryKeyScratch logNames_{kLogNames};
  EventLogTail log_;
};

// --- The gate ---

struct GateRow {
  DWORD type;
  Bytes data;
  bool open;
};

TEST_F(StartUpRepairTest, RunsWhereTheGateIsATextThatIsNeitherEmptyNorZero) {
  const GateRow rows[] = {
      {REG_SZ, Wire("'1' 00"), true},
      {REG_SZ, Wire("'0' 00"), false},
      {REG_SZ, Wire("00"), false},
      {REG_SZ, Wire("'00' 00"), true},
      {REG_SZ, Wire("'0 ' 00"), true},
      {REG_SZ, Wire("' 0' 00"), true},
      {REG_SZ, Wire("'no' 00"), true},
      {REG_EXPAND_SZ, Wire("'0' 00"), false},
      {REG_DWORD, Long(0), false},
      {REG_DWORD, Long(1), true},
      {REG_DWORD, Long(256), false},
      {REG_DWORD, Long(0x30), false},
      {REG_DWORD, Long(0x130), true},
      {REG_BINARY, Wire("'0'"), false},
      {REG_BINARY, Wire("'1'"), true},
      {REG_BINARY, {}, false},
      {REG_MULTI_SZ, Wire("'0' 00 '1' 00 00"), false},
      {REG_SZ, Bytes(8159, '1') + '\0', true},
  };
  for (const GateRow& row : rows) {
    gate_.SetRaw("SetupSucceeded", row.type, row.data);
    EXPECT_TRUE(LinesAre(LinesOfAStart(), row.open ? GateIsOpen() : kGateIsClosed))
        << "type " << row.type << " " << Describe(row.data);
    EXPECT_EQ(files_.NewCalls().size(), row.open ? 5u : 1u);
  }
  EXPECT_THAT(log_.Texts(), IsEmpty());
}

TEST_F(StartUpRepairTest, RunsNothingWithoutAGate) {
  EXPECT_TRUE(LinesAre(LinesOfAStart(), kGateIsMissing));
  gate_.SetText("Setup", "1");
  EXPECT_TRUE(LinesAre(LinesOfAStart(), kGateIsMissing));
  gate_.SetText("SetupSucceeded", std::string(8160, '1'));
  EXPECT_TRUE(LinesAre(LinesOfAStart(), kGateIsMissing));
}

TEST_F(StartUpRepairTest, TouchesNothingBehindAClosedGate) {
  gate_.SetText("SetupSucceeded", "0");
  RegistryTree::SetText(std::string(kBoards) + "\\HWX7101", kHardwareId, "PCI\\VEN_1F3C&DEV_5101");
  RegistryTree::SetText(std::string(kLogNames) + "\\Name", "LogDevice", "Gone");
  const RegistryTree before("SOFTWARE\\Vesmark\\NORVA\\DefDevices");
  const RegistryTree namesBefore(kLogNames);
  EXPECT_TRUE(LinesAre(LinesOfAStart(), kGateIsClosed));
  EXPECT_EQ(RegistryTree("SOFTWARE\\Vesmark\\NORVA\\DefDevices"), before);
  EXPECT_EQ(RegistryTree(kLogNames), namesBefore);
}

// --- The repair ---

struct RepairRow {
  const char* deviceId;
  const char* model;
  const char* incomplete;
  const char* complete;
};
const RepairRow kRows[] = {
    {"HWX7101", "NB410A", "PCI\\VEN_1F3C&DEV_5101", "PCI\\VEN_1F3C&DEV_5101&SUBSYS_51011F3C"},
    {"HWX7102", "NB420A", "PCI\\VEN_1F3C&DEV_5101", "PCI\\VEN_1F3C&DEV_5101&SUBSYS_D1011F3C"},
    {"HWX7104", "NB510", "PCI\\VEN_1F3C&DEV_5202", "PCI\\VEN_1F3C&DEV_5202&SUBSYS_52021F3C"},
    {"HWX7105", "NB520", "PCI\\VEN_1F3C&DEV_5202", "PCI\\VEN_1F3C&DEV_5202&SUBSYS_D2021F3C"},
    {"HWX7106", "NB410B", "PCI\\VEN_1F3C&DEV_5303", "PCI\\VEN_1F3C&DEV_5303&SUBSYS_53031F3C"},
    {"HWX7090", "NB300", "PCI\\VEN_1F3C&DEV_2404", "PCI\\VEN_1F3C&DEV_5404&SUBSYS_54041F3C"},
};

std::string LowerCase(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

// Keys and their identifiers in one area, with what they are expected to become.
class Area {
 public:
  explicit Area(const char* path) : path_(path) {}

  void Add(const std::string& name, std::uint32_t type, const Bytes& data,
           const std::string& becomes = "") {
    RegistryTree::Set(path_ + '\\' + name, kHardwareId, type, data);
    if (!becomes.empty()) changes_.emplace_back(name, becomes);
  }
  void AddText(const std::string& name, const std::string& text, const std::string& becomes = "") {
    Add(name, REG_SZ, text + '\0', becomes);
  }

  // The whole area as it should be after a repair.
  RegistryTree Repaired() const {
    RegistryTree tree(path_);
    for (const auto& [name, becomes] : changes_) {
      tree.values.at(name + '|' + kHardwareId) = {REG_SZ, becomes + '\0'};
    }
    return tree;
  }
  RegistryTree Now() const { return RegistryTree(path_); }

 private:
  std::string path_;
  std::vector<std::pair<std::string, std::string>> changes_;
};

TEST_F(StartUpRepairTest, RewritesEveryIncompleteIdentifierInEveryAreaAndNothingElse) {
  OpenGate();
  Area boards(kBoards), defLogDevices(kDefLogDevices), logDevices(kLogDevices);
  for (const RepairRow& row : kRows) {
    boards.AddText(std::string("ABC_") + row.deviceId + "_1", row.incomplete, row.complete);
    boards.AddText(std::string(row.deviceId) + " lower", LowerCase(row.incomplete), row.complete);
    boards.AddText(std::string(row.model) + " no device id", row.incomplete);
    boards.AddText(LowerCase(row.deviceId) + " name in another case", row.incomplete);
    boards.AddText(std::string(row.deviceId) + " complete", row.complete);
    boards.AddText(std::string(row.deviceId) + " empty", "");
    boards.AddText(std::string(row.deviceId) + " longer", std::string(row.incomplete) + "&");
    boards.AddText(std::string(row.deviceId) + " shorter",
                   std::string(row.incomplete, std::string(row.incomplete).size() - 1));
    boards.Add(std::string(row.deviceId) + " binary", REG_BINARY, row.incomplete, row.complete);
    boards.Add(std::string(row.deviceId) + " number", REG_DWORD, Long(1));
    for (Area* const area : {&defLogDevices, &logDevices}) {
      area->AddText(std::string("x") + row.model + "x", row.incomplete, row.complete);
      area->AddText(std::string(row.model) + " lower", LowerCase(row.incomplete), row.complete);
      area->AddText(std::string(row.deviceId) + " no model", row.incomplete);
      area->AddText(LowerCase(row.model) + " name in another case", row.incomplete);
      area->AddText(std::string(row.model) + " complete", row.complete);
    }
  }
  // Both rows fit the name; the first rewrites, and then the second does not match any more.
  boards.AddText("HWX7102 HWX7101", kRows[0].incomplete, kRows[0].complete);
  boards.AddText("HWX7101 HWX7104", kRows[2].incomplete, kRows[2].complete);
  boards.AddText("HWX7101\\HWX7101", kRows[0].incomplete);
  boards.AddText("HWX7101 other board", kRows[2].incomplete);
  logDevices.AddText("NB410C", kRows[0].incomplete);

  RegistryTree::SetText(std::string(kBoards) + "\\HWX7101 other value", "HardwareIds",
                        kRows[0].incomplete);
  const RegistryTree expected[] = {boards.Repaired(), defLogDevices.Repaired(),
                                   logDevices.Repaired()};
  (void)LinesOfAStart();
  EXPECT_EQ(boards.Now(), expected[0]);
  EXPECT_EQ(defLogDevices.Now(), expected[1]);
  EXPECT_EQ(logDevices.Now(), expected[2]);
  EXPECT_THAT(log_.Texts(), IsEmpty());
}

// The lines of a key that only row `n` fits, with the row's own behind its start.
Lines StepLines(const std::string& function, const std::string& what, const std::string& name,
                std::size_t n, const Lines& own) {
  Lines lines;
  for (std::size_t row = 0; row < std::size(kRows); ++row) {
    lines.push_back(function + ":  --> start for " + what + ": " + name);
    if (row != n) continue;
    for (const std::string& line : own) lines.push_back(function + ":  " + line);
  }
  return lines;
}

TEST_F(StartUpRepairTest, IsTracedLineByLine) {
  OpenGate();
  RegistryTree::SetText(std::string(kBoards) + "\\ABC_HWX7101_1", kHardwareId,
                        "pci\\ven_1f3c&dev_5101");
  RegistryTree::CreateKey(std::string(kDefLogDevices) + "\\NB510 x");
  RegistryTree::SetText(std::string(kLogDevices) + "\\NB300", kHardwareId, "l\xE4nger");
  RegistryTree::SetText(std::string(kLogDevices) + "\\NB410B", kHardwareId, std::string(250, 'i'));
  RegistryTree::SetText(std::string(kLogDevices) + "\\NB420A", kHardwareId, std::string(256, 'i'));
  RegistryTree::SetText(std::string(kLogNames) + "\\Line", "LogDevice", "NB300");
  RegistryTree::SetText(std::string(kLogNames) + "\\Prommer", "LogDevice", "Gone,KWTUSB,NB300");
  RegistryTree::SetText(std::string(kLogNames) +
                            "\\Stra\xDF"
                            "e",
                        "LogDevice", "Gone");
  const std::string begin = "BC_PlausibilitaetBL:  ";
  EXPECT_TRUE(LinesAre(
      LinesOfAStart(),
      GateIsOpen(
          StepLines(
              "RepairBoard", "board", "ABC_HWX7101_1", 0,
              {"... found HwId=pci\\ven_1f3c&dev_5101", "... cmp   HwId=PCI\\VEN_1F3C&DEV_5101",
               "... Set new HwId=PCI\\VEN_1F3C&DEV_5101&SUBSYS_51011F3C",
               "RegistrySetValue returned with result: 0", "<-- end"}),
          StepLines("RepairDefLogDev", "DefLogDev", "NB510 x", 2,
                    {"RegistryGetValue failed with result: 2"}),
          StepLines(
              "RepairLogDev", "LogDev", "NB300", 5,
              {"... found HwId=l\xE4nger", "... cmp   HwId=PCI\\VEN_1F3C&DEV_2404", "<-- end"}) +
              StepLines("RepairLogDev", "LogDev", "NB410B", 4,
                        {"... found HwId=" + std::string(256 - 15, 'i'),
                         "... cmp   HwId=PCI\\VEN_1F3C&DEV_5303", "<-- end"}) +
              StepLines("RepairLogDev", "LogDev", "NB420A", 1,
                        {"RegistryGetValue failed with result: 234"}),
          {begin + "checke LogName: Line", begin + "checke LogName: Prommer",
           begin + "-> externer USB-Prommer gefunden, nehme Namen auseinander", begin + "-> Gone",
           begin + "-> LogDevice Gone nicht gefunden. Zuordnung aufheben", begin + "-> KWTUSB",
           begin + "-> LogDevice Gone nicht gefunden. Zuordnung aufheben", begin + "-> NB300",
           begin + "checke LogName: Stra\xDF"
                   "e",
           begin + "-> LogDevice Gone nicht gefunden. Zuordnung aufheben"})));
  EXPECT_THAT(log_.Texts(), IsEmpty());
}

TEST_F(StartUpRepairTest, AFailedWriteIsTracedAndLeavesTheValue) {
  OpenGate();
  const std::string key = std::string(kBoards) + "\\HWX7101";
  RegistryTree::SetText(key, kHardwareId, kRows[0].incomplete);
  RegistryScratch scratch;
  scratch.DenyWriting(key, true);
  EXPECT_TRUE(LinesAre(
      LinesOfAStart(),
      GateIsOpen(StepLines(
          "RepairBoard", "board", "HWX7101", 0,
          {"... found HwId=PCI\\VEN_1F3C&DEV_5101", "... cmp   HwId=PCI\\VEN_1F3C&DEV_5101",
           "... Set new HwId=PCI\\VEN_1F3C&DEV_5101&SUBSYS_"
           "51011F3C",
           "RegistrySetValue returned with result: 5", "<-- end"}))));
  scratch.DenyWriting(key, false);
  EXPECT_EQ(scratch.Value(key, kHardwareId),
            (StoredValue{REG_SZ, std::string(kRows[0].incomplete) + '\0'}));
}

TEST_F(StartUpRepairTest, IsDoneBeforeTheCheckBeginsAndBothBeforeAnyoneIsServed) {
  OpenGate();
  RegistryTree::SetText(std::string(kBoards) + "\\HWX7101", kHardwareId, kRows[0].incomplete);
  RegistryTree::SetText(std::string(kLogNames) + "\\Name", "LogDevice", "Gone");
  files_.Write("[fault BRDX_ScanBL]\ncall = 1\ndelay = 300\n");
  ASSERT_TRUE(server_.Start());
  ForeignBoardLock lock;
  const ULONGLONG end = GetTickCount64() + kPatienceMs;
  while (lock.IsFree() && GetTickCount64() < end) Sleep(1);

  RegistryScratch scratch;
  EXPECT_EQ(scratch.Value(std::string(kBoards) + "\\HWX7101", kHardwareId),
            (StoredValue{REG_SZ, std::string(kRows[0].complete) + '\0'}));
  EXPECT_EQ(scratch.Value(std::string(kLogNames) + "\\Name", "LogDevice"),
            (StoredValue{REG_SZ, Wire("'Gone' 00")}));
  WireClient client;
  ASSERT_TRUE(client.Connect());
  ASSERT_TRUE(client.Send(Wire("1000")));
  EXPECT_TRUE(client.YieldsNext(Wire("0400 00000000")));
  EXPECT_EQ(scratch.Value(std::string(kLogNames) + "\\Name", "LogDevice"),
            (StoredValue{REG_SZ, Bytes(1, '\0')}));
  const auto calls = files_.NewCalls();
  ASSERT_EQ(calls.size(), 5u);
  EXPECT_EQ(calls.back(), "StartHardwareDetection -> 0 lock=free");
}

TEST_F(StartUpRepairTest, AnExceptionInTheCheckIsTracedAndTheServerServes) {
  OpenGate();
  const Lines lines =
      LinesOfAStart("[fault BRDX_RemoveAbandonLogDevices]\ncall = *\nraise = cxx\n");
  EXPECT_TRUE(LinesAre(
      lines,
      kStart +
          Lines{"HwIdRepair:  --> start", "HwIdRepair:  Checking Boards for wrong HW Ids",
                "HwIdRepair:  Checking DefLogDevs for wrong HW Ids",
                "HwIdRepair:  Checking LogDevices for wrong HW Ids",
                "BC_PlausibilitaetBL:  --> start", "BC_PlausibilitaetBL:  BRDX_Scan result = 0x0",
                "BC_PlausibilitaetBL:  Exception: BC_PlausibilitaetBL",
                "BC_PlausibilitaetBL:  <-- End"} +
          kEnd));
  EXPECT_TRUE(ForeignBoardLock().IsFree());
  WireClient client;
  ASSERT_TRUE(client.Connect());
  EXPECT_TRUE(client.IsServed());
}

// --- The check that a client asks for ---

// A client may write the text that comes into the line, and it may be longer than a line.
TEST_F(StartUpRepairTest, AClientsTextOfAnyLengthIsCutAtTheEndOfTheLine) {
  RegistryTree::CreateKey(std::string(kLogNames) + "\\Name");
  files_.Write("");
  ASSERT_TRUE(server_.Start());
  WireClient client;
  ASSERT_TRUE(client.Connect());
  for (const std::size_t size : {199u, 200u, 240u, 300u, 8000u}) {
    const std::string device(size, 'd');
    ASSERT_TRUE(client.Answers(
        Wire("0300") + Text(std::string(kLogNames) + "\\Name") + Text("LogDevice") + Text(device),
        Wire("0400 00000000")));
    trace_setup::Replace(AllLinesWith());
    ASSERT_TRUE(client.Answers(Wire("2401"), Wire("0400 00000000")));
    Lines lines;
    for (const std::string& line : AllLinesOnceItWaits()) {
      // The last line of the request before this one may come late.
      if (lines.empty() && !line.ends_with("--> start")) continue;
      if (line.starts_with("BC_Plausibilitaet") || line.starts_with("Send:")) lines.push_back(line);
    }
    const std::string begin = "BC_PlausibilitaetBL:  ";
    const std::string text = "-> LogDevice " + device + " nicht gefunden. Zuordnung aufheben";
    const Lines expected = Lines{begin + "--> start",
                                 begin + "BRDX_Scan result = 0x0",
                                 begin + "BRDX_RemoveAbandonLogDevices result = 0x0",
                                 begin + "Step 3: checke LogNames",
                                 begin + "checke LogName: Name",
                                 begin + text.substr(0, 256)} +
                           lines::SendLong("0x0") + Lines{begin + "<-- End"} +
                           lines::SendLong("0x0");
    EXPECT_TRUE(LinesAre(lines, expected)) << size;
  }
}

}  // namespace
}  // namespace e2e
