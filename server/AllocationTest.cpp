#include <sanitizer/allocator_interface.h>

#include <string>

#include "tests/fakes/FakeDynamicLibrary.h"
#include "tests/fakes/FakeMessageBox.h"
#include "tests/fakes/FakeSystemPath.h"
#include "tests/fakes/NotOurs.h"
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

const Bytes kPath = TextField(kTree);
const Bytes kRoot = Wire("02000080");
const Bytes kIndex = Wire("00000000");

INSTANTIATE_TEST_SUITE_P(
    Commands, CommandAllocationTest,
    testing::Values(Wire("1000"), Wire("FFFF"), Wire("10"), Wire("FD00 00000000"),
                    Wire("0100") + kPath, Wire("0200") + kPath,
                    Wire("0300") + kPath + TextField("n") + TextField("t"),
                    Wire("1200") + kPath + TextField("v"), Wire("1500") + kPath + kIndex,
                    Wire("1600") + kPath + TextField("v"), Wire("1700") + kPath + kIndex,
                    Wire("1C00") + kRoot + kPath + TextField("n") + TextField("t"),
                    Wire("1D00") + kRoot + kPath, Wire("1E00") + kRoot + kPath,
                    // refusals and bad fields as well
                    Wire("0200") + TextField("SOFTWARE\\Elsewhere"), Wire("1D00") + kIndex + kPath,
                    Wire("0200 FFFFFFFF")));

// A silent restart is left out: what its worker owns outlives the request, so it is on the heap.

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

INSTANTIATE_TEST_SUITE_P(
    Actions, ActionAllocationTest,
    testing::Values(Wire("0500") + TextField("AllocationTest") + kActionText,
                    Wire("0600") + TextField("AllocationTest") + kActionText + kActionText,
                    Wire("0F00") + kActionText + kActionText + kActionText + kIndex, Wire("1100"),
                    Wire("0C00 01000000 02000000 03000000"), Wire("0D00 01000000"),
                    Wire("F000") + TextField("a text that no small string holds"),
                    Wire("2101") + TextField("an event that nobody has filed")));

}  // namespace
