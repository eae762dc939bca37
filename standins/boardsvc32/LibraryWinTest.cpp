// The library as the server gets it: loaded, with its real names, over the real machine.

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "board/boardsvc32.h"
#include "platform/GuardedCall.h"
#include "standins/boardsvc32/testing/LogDeviceSetup.h"
#include "standins/boardsvc32/testing/SamplePath.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;

constexpr char kLibrary[] = "boardsvc32.dll";
constexpr char kBoardLock[] = "QorlixSrv_BC_Lock_Mutex";

class LibraryWinTest : public testing::Test {
 protected:
  void SetUp() override {
    log_device_setup::Clear();
    (void)std::remove(log_.c_str());
    SetEnvironmentVariableA("QORLIX_BOARD_LOG", log_.c_str());
  }

  void TearDown() override {
    if (library_ != nullptr) FreeLibrary(library_);
    SetEnvironmentVariableA("QORLIX_BOARD_INVENTORY", nullptr);
    SetEnvironmentVariableA("QORLIX_BOARD_LOG", nullptr);
    (void)std::remove(inventory_.c_str());
    (void)std::remove(log_.c_str());
    log_device_setup::Clear();
  }

  void Load(const std::string& inventory) {
    std::ofstream(inventory_, std::ios::binary) << inventory;
    LoadFile(inventory_);
  }

  void LoadFile(const std::string& path) {
    SetEnvironmentVariableA("QORLIX_BOARD_INVENTORY", path.c_str());
    LoadPlain();
  }

  void LoadPlain() {
    library_ = LoadLibraryA(kLibrary);
    ASSERT_NE(library_, nullptr) << GetLastError();
  }

  template <typename Function>
  Function* Export(const char* name) const {
    return reinterpret_cast<Function*>(GetProcAddress(library_, name));
  }

  std::uint32_t Call(const char* name) const {
    auto* const function = Export<std::uint32_t()>(name);
    return function != nullptr ? function() : 0xFFFFFFFF;
  }

  std::vector<std::string> Log() const {
    std::ifstream file(log_, std::ios::binary);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    return lines;
  }

  const std::string inventory_ = testing::TempDir() + "library_win_test.ini";
  const std::string log_ = testing::TempDir() + "library_win_test.log";
  HMODULE library_ = nullptr;
};

TEST_F(LibraryWinTest, WithoutInventoryThereAreNoBoards) {
  LoadPlain();
  EXPECT_EQ(Call("BRDX_ScanBL"), 0u);
  auto* const adapters = Export<decltype(BRDX_EnumAdaptersBL)>("BRDX_EnumAdaptersBL");
  ASSERT_NE(adapters, nullptr);
  std::uint32_t length = 7;
  EXPECT_EQ(adapters(0, nullptr, &length, nullptr, &length, nullptr), 259u);
  EXPECT_EQ(length, 0u);
}

TEST_F(LibraryWinTest, TheOverloadedPairHasItsDecoratedNames) {
  Load("[instance]\nhardware-id=H\ninstance=1\n[instance]\nhardware-id=H\noption=3\ninstance=2\n");
  auto* const plain =
      Export<decltype(BRDX_GetDeviceInstance)>("?BRDX_GetDeviceInstanceBL@@YAKPADPAK@Z");
  auto* const option =
      Export<decltype(BRDX_GetDeviceInstanceOpt)>("?BRDX_GetDeviceInstanceBL@@YAKPADKPAK@Z");
  ASSERT_NE(plain, nullptr);
  ASSERT_NE(option, nullptr);
  char id[] = "H";
  std::uint32_t instance = 0;
  EXPECT_EQ(plain(id, &instance), 0u);
  EXPECT_EQ(instance, 1u);
  EXPECT_EQ(option(id, 3, &instance), 0u);
  EXPECT_EQ(instance, 2u);
}

TEST_F(LibraryWinTest, ASampleIsServedIntoTheRegistry) {
  LoadFile(SamplePath("two-boards.ini"));
  log_device_setup::AddForeign("Users own", "mine");
  EXPECT_EQ(Call("BRDX_ScanBL"), 0u);
  EXPECT_EQ(Call("BRDX_RemoveAbandonLogDevices"), 0u);
  EXPECT_EQ(Call("BRDX_CreateAllLogdevicesBL"), 0u);
  EXPECT_TRUE(log_device_setup::Exists("NB410A.1"));
  EXPECT_TRUE(log_device_setup::Exists("NB510.2"));
  EXPECT_TRUE(log_device_setup::Exists("Users own"));
}

// Takes or looks at the lock from a thread that is not the one of the call.
TEST_F(LibraryWinTest, TheLogTellsWhetherTheBoardLockIsHeld) {
  LoadPlain();
  (void)Call("BRDX_UpdateRoute");
  const HANDLE lock = CreateMutexA(nullptr, FALSE, kBoardLock);
  ASSERT_NE(lock, nullptr);
  (void)Call("BRDX_UpdateRoute");
  ASSERT_EQ(WaitForSingleObject(lock, 0), static_cast<DWORD>(WAIT_OBJECT_0));
  (void)Call("BRDX_UpdateRoute");
  ReleaseMutex(lock);
  (void)Call("BRDX_UpdateRoute");
  CloseHandle(lock);
  EXPECT_THAT(Log(), ElementsAre(HasSubstr("lock=none"), HasSubstr("lock=free"),
                                 HasSubstr("lock=held"), HasSubstr("lock=free")));
}

TEST_F(LibraryWinTest, ADelayIsWaitedFor) {
  Load("[fault BRDX_ScanBL]\ncall=2\ndelay=200\n");
  (void)Call("BRDX_ScanBL");
  const ULONGLONG begin = GetTickCount64();
  (void)Call("BRDX_ScanBL");
  EXPECT_GE(GetTickCount64() - begin, 180u);
}

TEST_F(LibraryWinTest, AnErrorInTheInventoryIsAnsweredAndLogged) {
  Load("[machine]\nuninitialized=1\n");
  EXPECT_EQ(Call("BRDX_ScanBL"), 13u);
  const auto log = Log();
  ASSERT_THAT(log, SizeIs(2));
  EXPECT_THAT(log[0], HasSubstr("library_win_test.ini:2: [machine] has no key uninitialized"));
}

// The code of the last exception that anything in this process raised.
DWORD g_code = 0;

LONG CALLBACK NoteException(EXCEPTION_POINTERS* pointers) {
  g_code = pointers->ExceptionRecord->ExceptionCode;
  return EXCEPTION_CONTINUE_SEARCH;
}

TEST_F(LibraryWinTest, FaultsRaiseWhatTheServersGuardCatches) {
  Load(
      "[fault BRDX_ScanBL]\ncall=1\nraise=access-violation\n"
      "[fault BRDX_ScanBL]\ncall=2\nraise=cxx\n"
      "[fault BRDX_ScanBL]\ncall=3\nraise=divide-by-zero\n"
      "[fault BRDX_ScanBL]\ncall=4-5\nraise=stack-overflow\n");
  void* const handler = AddVectoredExceptionHandler(/*first=*/1, NoteException);
  for (const DWORD code : {0xC0000005ul, 0xE06D7363ul, 0xC0000094ul, 0xC00000FDul, 0xC00000FDul}) {
    g_code = 0;
    std::uint32_t result = 77;
    EXPECT_FALSE(GuardedCall(result, [&] { return Call("BRDX_ScanBL"); }));
    EXPECT_EQ(g_code, code);
    EXPECT_EQ(result, 77u);
  }
  RemoveVectoredExceptionHandler(handler);
  EXPECT_EQ(Call("BRDX_ScanBL"), 0u);
  EXPECT_THAT(Log(), SizeIs(6));
}

}  // namespace
