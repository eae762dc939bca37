#include "tests/e2e/BoardSetup.h"

#include <windows.h>

#include <cstdio>
#include <fstream>

namespace e2e {
namespace {

constexpr char kInventoryVariable[] = "QORLIX_BOARD_INVENTORY";
constexpr char kLogVariable[] = "QORLIX_BOARD_LOG";
constexpr char kLock[] = "QorlixSrv_BC_Lock_Mutex";

std::string TemporaryFile(const char* end) {
  char folder[MAX_PATH] = "";
  (void)GetTempPathA(sizeof(folder), folder);
  return std::string(folder) + "qorlix_e2e_board_" + std::to_string(GetCurrentProcessId()) + end;
}

}  // namespace

BoardFiles::BoardFiles() : inventory_(TemporaryFile(".ini")), log_(TemporaryFile(".log")) {
  SetEnvironmentVariableA(kInventoryVariable, inventory_.c_str());
  SetEnvironmentVariableA(kLogVariable, log_.c_str());
}

BoardFiles::~BoardFiles() {
  SetEnvironmentVariableA(kInventoryVariable, nullptr);
  SetEnvironmentVariableA(kLogVariable, nullptr);
  (void)std::remove(inventory_.c_str());
  (void)std::remove(log_.c_str());
}

void BoardFiles::KeepNoLog() { SetEnvironmentVariableA(kLogVariable, nullptr); }

void BoardFiles::Write(const std::string& inventory) {
  std::ofstream(inventory_, std::ios::binary) << inventory;
  (void)std::remove(log_.c_str());
  seen_ = 0;
}

std::vector<std::string> BoardFiles::NewCalls() {
  std::vector<std::string> calls;
  std::ifstream file(log_, std::ios::binary);
  file.seekg(static_cast<std::streamoff>(seen_));
  for (std::string line; std::getline(file, line);) {
    seen_ += line.size() + 1;
    EXPECT_FALSE(line.starts_with("error")) << line;
    const std::size_t begin = line.find(' ') + 1;
    calls.push_back(line.substr(begin, line.rfind(" thread=") - begin));
  }
  return calls;
}

ForeignBoardLock::ForeignBoardLock() : mutex_(OpenMutexA(MUTEX_ALL_ACCESS, FALSE, kLock)) {
  EXPECT_NE(mutex_, nullptr) << "no server has made the lock";
}

ForeignBoardLock::~ForeignBoardLock() { (void)CloseHandle(mutex_); }

bool ForeignBoardLock::Take(std::uint32_t milliseconds) {
  return WaitForSingleObject(mutex_, milliseconds) == WAIT_OBJECT_0;
}

void ForeignBoardLock::Release() { EXPECT_NE(ReleaseMutex(mutex_), FALSE); }

bool ForeignBoardLock::IsFree() {
  if (!Take(0)) return false;
  Release();
  return true;
}

DevNode::DevNode(std::uint32_t instance) : result(0), status(0), problem(0) {
  using Query = DWORD(WINAPI*)(std::uint32_t*, std::uint32_t*, DWORD, DWORD);
  const HMODULE library = LoadLibraryA("cfgmgr32.dll");
  const auto query = reinterpret_cast<Query>(
      reinterpret_cast<void*>(GetProcAddress(library, "CM_Get_DevNode_Status")));
  EXPECT_NE(query, nullptr);
  if (query != nullptr) result = query(&status, &problem, instance, 0);
  (void)FreeLibrary(library);
}

BoardTest::~BoardTest() { server_.Kill(); }

void BoardTest::StartWith(const std::string& inventory) {
  client_.Close();
  server_.Kill();
  files_.Write(inventory);
  ASSERT_TRUE(server_.Start());
  ASSERT_TRUE(client_.Connect());
  ASSERT_TRUE(client_.IsServed());
  const std::vector<std::string> calls = files_.NewCalls();
  ASSERT_FALSE(calls.empty()) << "the library beside the server is not the simulated one";
}

}  // namespace e2e
