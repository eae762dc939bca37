#include <sanitizer/allocator_interface.h>

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "server/CommandTable.h"
#include "tests/fakes/FakeDynamicLibrary.h"
#include "tests/fakes/FakeMessageBox.h"
#include "tests/fakes/FakeSystemPath.h"
#include "tests/fakes/FakeWorkerThread.h"
#include "tests/fakes/NotOurs.h"
#include "tests/fakes/ScriptedBoardLibrary.h"
#include "tests/fakes/trace/FakeTrace.h"
#include "tests/support/LoopFixture.h"
#include "tests/support/RegistrySetup.h"

// Between two waits the server takes nothing from the heap: whatever a request brings, it cannot
// fail for want of memory, and memory does not fragment over months.

namespace {

using fake_pipe_io::CompleteRead;
using fake_pipe_io::OnWait;

const std::string kTree = "SOFTWARE\\Vesmark\\NORVA\\AllocationTest";

bool g_counting = false;
int g_allocations = 0;

// Every allocation of the process comes by here.
void OnAllocation(const volatile void*, std::size_t) {
  if (g_counting && !NotOurs::Inside()) ++g_allocations;
}

class AllocationTest : public LoopFixture {
 protected:
  AllocationTest() {
    static const int kInstalled =
        __sanitizer_install_malloc_and_free_hooks(OnAllocation, [](const volatile void*) {});
    EXPECT_GT(kInstalled, 0);
    registry_setup::CreateKey(kTree + "\\sub");
    registry_setup::SetValue(kTree, "v", registry_setup::kSz, TextBytes("text") + Bytes{0});
    FakeTrace::Collect(0);
  }

  // Allocations between the arrival of the request and the wait behind it.
  int AllocationsOf(const Bytes& request) {
    OnWait([] { fake_pipe_io::Complete(5); });
    OnWait([=] {
      CompleteRead(5, request);
      g_allocations = 0;
      g_counting = true;
    });
    OnWait([] { g_counting = false; });
    Run();
    g_counting = false;
    return g_allocations;
  }
};

TEST_F(AllocationTest, TheCountSeesAnAllocation) {
  g_allocations = 0;
  g_counting = true;
  delete new std::string(100, 'x');
  g_counting = false;
  EXPECT_GE(g_allocations, 2);
}

class CommandAllocationTest : public AllocationTest, public testing::WithParamInterface<Bytes> {};

TEST_P(CommandAllocationTest, ARequestTakesNothingFromTheHeap) {
  EXPECT_EQ(AllocationsOf(GetParam()), 0);
}

// A library that fills its buffers, and a configuration that is checked and mended.
class BoardAllocationTest : public AllocationTest, public testing::WithParamInterface<Bytes> {
 protected:
  BoardAllocationTest() {
    fake_board_library::Reset();
    registry_setup::DeleteTree(kStack);
    registry_setup::SetValue(kStack + "\\LogNames\\a", "LogDevice", registry_setup::kSz,
                             TextBytes("KWTUSB1,gone") + Bytes{0});
  }
  ~BoardAllocationTest() override {
    fake_board_library::Reset();
    registry_setup::DeleteTree(kStack);
  }

  // Every length that the library reports is the same.
  static void Report(std::uint32_t length, std::uint32_t result) {
    scripted_board_library::Install([=](const scripted_board_library::Call& call) {
      for (const scripted_board_library::Out& out : call.outs) {
        out.bytes[0] = 'x';
        *out.length = length;
      }
      return result;
    });
    fake_board_library::Lib().getDeviceChange = [=](auto, auto, auto, auto, std::uint32_t* cb) {
      *cb = length;
      return result;
    };
    fake_board_library::Lib().getBoardInformation = [=](auto, auto, auto, auto) { return result; };
  }

  const std::string kStack = "SOFTWARE\\Vesmark\\NORVA";
};

TEST_P(BoardAllocationTest, ARequestTakesNothingFromTheHeap) {
  Report(1, 0);
  EXPECT_EQ(AllocationsOf(GetParam()), 0);
}

TEST_P(BoardAllocationTest, AnAnswerThatIsTooLongTakesNothingFromTheHeap) {
  Report(8192, 0);
  EXPECT_EQ(AllocationsOf(GetParam()), 0);
}

TEST_P(BoardAllocationTest, AFailureTakesNothingFromTheHeap) {
  Report(1, 31);
  EXPECT_EQ(AllocationsOf(GetParam()), 0);
}

const Bytes kPath = TextField(kTree);
const Bytes kRoot = Wire("02000080");
const Bytes kIndex = Wire("00000000");

const std::vector<Bytes> kPlainRequests = {
    Wire("1000"), Wire("FFFF"), Wire("10"), Wire("FD00 00000000"), Wire("0100") + kPath,
    Wire("0200") + kPath, Wire("0300") + kPath + TextField("n") + TextField("t"),
    Wire("1200") + kPath + TextField("v"), Wire("1500") + kPath + kIndex,
    Wire("1600") + kPath + TextField("v"), Wire("1700") + kPath + kIndex,
    Wire("1C00") + kRoot + kPath + TextField("n") + TextField("t"), Wire("1D00") + kRoot + kPath,
    Wire("1E00") + kRoot + kPath,
    // refusals and bad fields as well
    Wire("0200") + TextField("SOFTWARE\\Elsewhere"), Wire("1D00") + kIndex + kPath,
    Wire("0200 FFFFFFFF")};

INSTANTIATE_TEST_SUITE_P(Commands, CommandAllocationTest, testing::ValuesIn(kPlainRequests));

const Bytes kText = TextField("x");
const Bytes kRoom = Wire("00200000");
const Bytes kAll = Wire("FFFFFFFF");
const Bytes kGuid = Wire("33221100 5544 7766 8899AABBCCDDEEFF");
const Bytes kOne = Wire("04000000 01000000");

const std::vector<Bytes> kBoardRequests = {
    Wire("5800"), Wire("C700"), Wire("C900"), Wire("C800") + kText + kText,
    Wire("A300") + kText + kText + kText + kRoom,
    Wire("C000") + kIndex + kRoom + kRoom + kRoom + kRoom + kRoom + kRoom,
    Wire("C100") + kText + kIndex + kRoom + kRoom + kRoom, Wire("C200") + kIndex + kRoom + kRoom,
    Wire("C300") + kIndex + kText + kText + kText + kText + kRoom,
    Wire("C400") + kIndex + kText + kText + kText + kText + kRoom + kRoom + kRoom + kRoom,
    Wire("C500") + kIndex + kRoom + kRoom, Wire("CF00") + kIndex + kText + kText + kText + kRoom,
    Wire("CF00") + kIndex + kText + kText + kText + kAll, Wire("2401"),
    Wire("0001") + kText + kGuid, Wire("0101") + kText + kGuid, Wire("0201") + kText,
    Wire("2201") + kText + kIndex, Wire("2201") + kText + kAll,
    Wire("BF00") + kText + kOne + kOne + kOne + kText + kOne + kOne + kOne,
    // bad fields as well
    Wire("C100"), Wire("0001") + kText, Wire("BF00") + kText + kOne,
    Wire("BF00") + kText + kOne + kOne + kOne + kText + kOne + kText};

INSTANTIATE_TEST_SUITE_P(Commands, BoardAllocationTest, testing::ValuesIn(kBoardRequests));

const std::string kDevice = "SOFTWARE\\Vesmark\\NORVA\\DefDevices\\DeviceID\\AllocationTest";
const std::string kSystem = "C:\\windows\\system32";

std::uint32_t InstallPlugin(char*, const char*, char*, std::uint32_t) { return 5; }
std::uint32_t RemovePlugin(char*, const char*, char*, std::uint32_t, char*) { return 5; }
std::uint32_t InstallDriver(char*, char*, char*, std::uint32_t) { return 5; }
std::uint32_t RunPanel(std::uint32_t, std::uint32_t) { return 1; }
std::uint32_t AddAddress(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t*,
                         std::uint32_t*) {
  return 0;
}
std::uint32_t DeleteAddress(std::uint32_t) { return 0; }

class ActionAllocationTest : public AllocationTest, public testing::WithParamInterface<Bytes> {
 protected:
  ActionAllocationTest() { Forget(); }
  ~ActionAllocationTest() override { Forget(); }

  static void Forget() {
    fake_dynamic_library::Reset();
    fake_system_path::Reset();
    fake_message_box::Shown().clear();
    registry_setup::DeleteTree(kDevice);
  }

  static void AddLibraries() {
    using fake_dynamic_library::Add;
    using fake_dynamic_library::Export;
    fake_system_path::SetSpecialFolder(kSystem);
    registry_setup::SetValue(kDevice, "HardwareID", registry_setup::kSz, TextBytes("HW"));
    registry_setup::SetValue(kDevice, "Installer", registry_setup::kSz, TextBytes("p.dll,In"));
    registry_setup::SetValue(kDevice, "Deinstaller", registry_setup::kSz, TextBytes("p.dll,De"));
    Add(kSystem + "\\p.dll", {{"In", Export(InstallPlugin)}, {"De", Export(RemovePlugin)}});
    Add("drvinstx.dll", {{"EINST_InstallWdmDriver", Export(InstallDriver)}});
    Add("onlpanelx.cpl", {{"RunEpromPanelAsAdmin", Export(RunPanel)}});
    Add(kSystem + "\\ipcfgx.dll", {{"IE_AddIPAddressEx", Export(AddAddress)},
                                   {"IE_DeleteIPAddressEx", Export(DeleteAddress)}});
  }
};

TEST_P(ActionAllocationTest, ItTakesNothingFromTheHeap) {
  AddLibraries();
  EXPECT_EQ(AllocationsOf(GetParam()), 0);
  EXPECT_FALSE(fake_pipe_io::Written(5).empty());
}

TEST_P(ActionAllocationTest, NorDoesItWithoutTheLibrary) {
  EXPECT_EQ(AllocationsOf(GetParam()), 0);
  EXPECT_FALSE(fake_pipe_io::Written(5).empty());
}

const Bytes kActionText = TextField("x");

const std::vector<Bytes> kActionRequests = {
    Wire("0500") + TextField("AllocationTest") + kActionText,
    Wire("0600") + TextField("AllocationTest") + kActionText + kActionText,
    Wire("0F00") + kActionText + kActionText + kActionText + kIndex,
    Wire("1100"),
    Wire("0C00 01000000 02000000 03000000"),
    Wire("0D00 01000000"),
    Wire("F000") + TextField("a text that no small string holds"),
    Wire("2101") + TextField("an event that nobody has filed")};

INSTANTIATE_TEST_SUITE_P(Actions, ActionAllocationTest, testing::ValuesIn(kActionRequests));

// What the worker of a silent restart owns outlives the request: two texts, and itself. It is not
// started here, for what it takes while it runs is not the request's.
TEST_F(AllocationTest, ASilentRestartTakesTheThreeBlocksOfItsWorker) {
  fake_worker_thread::Reset();
  fake_worker_thread::Refuse();
  EXPECT_EQ(AllocationsOf(Wire("2001") + kActionText + TextField("a text no small string holds")),
            3);
  fake_worker_thread::Reset();
}

TEST(AllocationTableTest, EveryOtherCommandIsCounted) {
  std::set<std::uint16_t> counted = {static_cast<std::uint16_t>(CommandCode::SilentRestart)};
  for (const auto& requests : {kPlainRequests, kBoardRequests, kActionRequests}) {
    for (const Bytes& request : requests) {
      if (request.size() < 2) continue;
      const auto code = static_cast<std::uint16_t>(request[0] | request[1] << 8);
      if (FindCommand(code) != nullptr) counted.insert(code);
    }
  }
  std::set<std::uint16_t> all;
  for (std::uint32_t code = 0; code <= 0xFFFF; ++code) {
    if (FindCommand(static_cast<std::uint16_t>(code)) != nullptr) {
      all.insert(static_cast<std::uint16_t>(code));
    }
  }
  EXPECT_EQ(counted, all);
}

}  // namespace
