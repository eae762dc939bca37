#include "tests/e2e/ServerProcess.h"

#include <windows.h>

#include <psapi.h>
#include <tlhelp32.h>
#include <winternl.h>

#include <algorithm>
#include <cstring>

#include "tests/support/BrokenFunction.h"

#ifdef QORLIX_COVERAGE
#include "tests/coverage/FlushOnDemand.h"
#endif

namespace e2e {
namespace {

constexpr char kStartEvent[] = "_QorlixSRVStartSRVEvent";
constexpr DWORD kStartMs = 20000;
constexpr DWORD kSettleMs = 3000;
constexpr DWORD kSettlePollMs = 5;
constexpr DWORD kDebugPollMs = 20;
constexpr UINT kKilled = 9;

// What the list of all handles begins with, and one entry of it.
constexpr int kSystemExtendedHandleInformation = 64;
struct HandleList {
  ULONG_PTR count;
  ULONG_PTR reserved;
};
struct HandleEntry {
  void* object;
  ULONG_PTR process;
  ULONG_PTR handle;
  ULONG access;
  USHORT backTrace;
  USHORT type;
  ULONG attributes;
  ULONG reserved;
};

// Also for systems that answer the plain question for one process with nothing.
template <typename Wanted>
std::uint32_t CountInListOfAllHandles(Wanted wanted) {
  constexpr std::size_t kRoom = 4 << 20;
  using Query = NTSTATUS(NTAPI*)(int, void*, ULONG, ULONG*);
  const auto query = reinterpret_cast<Query>(
      GetProcAddress(GetModuleHandleA("ntdll.dll"), "NtQuerySystemInformation"));
  std::vector<unsigned char> list(kRoom);
  if (query == nullptr ||
      query(kSystemExtendedHandleInformation, list.data(), kRoom, nullptr) < 0) {
    return 0;
  }
  const auto* const head = reinterpret_cast<const HandleList*>(list.data());
  const auto* const entries =
      reinterpret_cast<const HandleEntry*>(list.data() + sizeof(HandleList));
  return static_cast<std::uint32_t>(std::count_if(entries, entries + head->count, wanted));
}

template <typename Count>
testing::AssertionResult ComesBackTo(std::uint32_t count, const char* what, Count counted) {
  const ULONGLONG end = GetTickCount64() + kSettleMs;
  std::uint32_t now = counted();
  while (now > count && GetTickCount64() < end) {
    Sleep(kSettlePollMs);
    now = counted();
  }
  if (now <= count) return testing::AssertionSuccess();
  return testing::AssertionFailure() << now << ' ' << what << ", more than " << count;
}

std::string DebugText(HANDLE process, const OUTPUT_DEBUG_STRING_INFO& report) {
  std::string text(report.nDebugStringLength, '\0');
  ReadProcessMemory(process, report.lpDebugStringData, text.data(), text.size(), nullptr);
  return text.c_str();
}

// A job that ends what is in it when its last handle goes, that is with the test program, however
// that ends. A server left behind would stand in the way of all later ones.
HANDLE OwnJob() {
  static const HANDLE job = [] {
    const HANDLE created = CreateJobObjectA(nullptr, nullptr);
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    SetInformationJobObject(created, JobObjectExtendedLimitInformation, &limits, sizeof(limits));
    return created;
  }();
  return job;
}

}  // namespace

ServerProcess::~ServerProcess() { Kill(); }

std::string ServerProcess::Path() {
  char path[MAX_PATH] = {};
  GetModuleFileNameA(nullptr, path, sizeof(path));
  const std::string own = path;
  return own.substr(0, own.rfind('\\') + 1) + "QorlixSRV.exe";
}

testing::AssertionResult ServerProcess::Launch(const char* arguments, std::uint32_t flags,
                                               void* token) {
  const std::string path = Path();
  std::string commandLine = "\"" + path + "\" " + arguments;
  STARTUPINFOA startup = {};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION started = {};
  const BOOL created =
      token == nullptr
          ? CreateProcessA(path.c_str(), commandLine.data(), nullptr, nullptr, FALSE, flags,
                           nullptr, nullptr, &startup, &started)
          : CreateProcessAsUserA(token, path.c_str(), commandLine.data(), nullptr, nullptr, FALSE,
                                 flags, nullptr, nullptr, &startup, &started);
  if (created == FALSE) {
    return testing::AssertionFailure() << path << " does not start: error " << GetLastError();
  }
  AssignProcessToJobObject(OwnJob(), started.hProcess);
  CloseHandle(started.hThread);
  process_ = started.hProcess;
  id_ = started.dwProcessId;
  return testing::AssertionSuccess();
}

testing::AssertionResult ServerProcess::Start(const char* arguments) {
  return StartUnder(/*token=*/nullptr, arguments);
}

testing::AssertionResult ServerProcess::StartUnder(void* token, const char* arguments) {
  const HANDLE event = CreateEventA(nullptr, TRUE, FALSE, kStartEvent);
  ResetEvent(event);
  auto result = Launch(arguments, /*flags=*/0, token);
  if (result) result = WaitUntilItServes(event);
  CloseHandle(event);
  return result;
}

testing::AssertionResult ServerProcess::WaitUntilItServes(void* event) {
  const HANDLE either[] = {event, process_};
  const DWORD wait = WaitForMultipleObjects(2, either, FALSE, kStartMs);
  if (wait == WAIT_OBJECT_0 + 1) {
    return testing::AssertionFailure() << "it exited with " << ExitCode(0).value_or(0);
  }
  if (wait != WAIT_OBJECT_0) return testing::AssertionFailure() << "the start event was not set";
  return testing::AssertionSuccess();
}

testing::AssertionResult ServerProcess::StartWith(const Failure& failure) {
  const HANDLE event = CreateEventA(nullptr, TRUE, FALSE, kStartEvent);
  ResetEvent(event);
  auto result = Launch("", DEBUG_ONLY_THIS_PROCESS);
  // Once its libraries are loaded, the process stops for its debugger.
  bool isLoaded = false;
  while (result && !isLoaded) {
    DEBUG_EVENT debug = {};
    if (WaitForDebugEvent(&debug, kStartMs) == FALSE) {
      result = testing::AssertionFailure() << "it does not stop for its debugger";
      break;
    }
    isLoaded = debug.dwDebugEventCode == EXCEPTION_DEBUG_EVENT;
    if (isLoaded) result = Break(failure);
    ContinueDebugEvent(debug.dwProcessId, debug.dwThreadId, DBG_CONTINUE);
  }
  DebugActiveProcessStop(id_);
  if (result) result = WaitUntilItServes(event);
  CloseHandle(event);
  return result;
}

// Writes over the beginning of the function, which lies where it lies in this process, or the test
// says so.
testing::AssertionResult ServerProcess::Break(const Failure& failure) {
  void* const at =
      reinterpret_cast<void*>(GetProcAddress(LoadLibraryA(failure.library), failure.function));
  const auto code = FailingCode(failure.result, failure.argumentBytes);
  std::uint8_t there[code.size()] = {};
  SIZE_T count = 0;
  DWORD protection = 0;
  if (at == nullptr || ReadProcessMemory(process_, at, there, sizeof(there), &count) == FALSE ||
      std::memcmp(there, at, sizeof(there)) != 0) {
    return testing::AssertionFailure() << failure.function << " lies elsewhere";
  }
  if (VirtualProtectEx(process_, at, code.size(), PAGE_EXECUTE_READWRITE, &protection) == FALSE ||
      WriteProcessMemory(process_, at, code.data(), code.size(), &count) == FALSE) {
    return testing::AssertionFailure() << failure.function << ": error " << GetLastError();
  }
  FlushInstructionCache(process_, at, code.size());
  return testing::AssertionSuccess();
}

testing::AssertionResult ServerProcess::StartWithoutEvent() { return Launch(""); }

std::vector<std::string> ServerProcess::DebuggerOutputOfAStart() {
  std::vector<std::string> texts;
  ServerProcess server;
  const HANDLE served = CreateEventA(nullptr, TRUE, FALSE, kStartEvent);
  ResetEvent(served);
  if (!server.Launch("", DEBUG_ONLY_THIS_PROCESS)) return texts;

  const ULONGLONG end = GetTickCount64() + kStartMs;
  for (bool exited = false; !exited;) {
    if (WaitForSingleObject(served, 0) == WAIT_OBJECT_0 || GetTickCount64() > end) {
      TerminateProcess(server.process_, kKilled);
    }
    DEBUG_EVENT event = {};
    if (WaitForDebugEvent(&event, kDebugPollMs) == FALSE) continue;
    DWORD answer = DBG_CONTINUE;
    if (event.dwDebugEventCode == OUTPUT_DEBUG_STRING_EVENT) {
      texts.push_back(DebugText(server.process_, event.u.DebugString));
    } else if (event.dwDebugEventCode == EXCEPTION_DEBUG_EVENT &&
               event.u.Exception.ExceptionRecord.ExceptionCode != EXCEPTION_BREAKPOINT) {
      answer = DBG_EXCEPTION_NOT_HANDLED;
    }
    exited = event.dwDebugEventCode == EXIT_PROCESS_DEBUG_EVENT;
    ContinueDebugEvent(event.dwProcessId, event.dwThreadId, answer);
  }
  CloseHandle(served);
  return texts;
}

bool ServerProcess::IsRunning() const {
  return process_ != nullptr && WaitForSingleObject(process_, 0) == WAIT_TIMEOUT;
}

std::optional<std::uint32_t> ServerProcess::ExitCode(std::uint32_t milliseconds) const {
  DWORD code = 0;
  if (process_ == nullptr || WaitForSingleObject(process_, milliseconds) != WAIT_OBJECT_0 ||
      GetExitCodeProcess(process_, &code) == FALSE) {
    return std::nullopt;
  }
  return code;
}

void ServerProcess::Kill() {
  if (process_ == nullptr) return;
  if (IsRunning()) {
#ifdef QORLIX_COVERAGE
    coverage::Flush(id_);
#endif
    TerminateProcess(process_, kKilled);
    WaitForSingleObject(process_, kStartMs);
  }
  CloseHandle(process_);
  process_ = nullptr;
}

std::uint32_t ServerProcess::HandleCount() const {
  DWORD count = 0;
  if (GetProcessHandleCount(process_, &count) != FALSE && count != 0) return count;
  return CountInListOfAllHandles([this](const HandleEntry& entry) { return entry.process == id_; });
}

std::uint32_t ServerProcess::HandlesOfAllProcesses() {
  return CountInListOfAllHandles([](const HandleEntry&) { return true; });
}

testing::AssertionResult ServerProcess::ComesBackToHandleCount(std::uint32_t count) const {
  return ComesBackTo(count, "handles", [this] { return HandleCount(); });
}

std::uint32_t ServerProcess::ThreadCount() const {
  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  THREADENTRY32 entry = {};
  entry.dwSize = sizeof(entry);
  std::uint32_t count = 0;
  for (BOOL more = Thread32First(snapshot, &entry); more != FALSE;
       more = Thread32Next(snapshot, &entry)) {
    if (entry.th32OwnerProcessID == id_) ++count;
  }
  CloseHandle(snapshot);
  EXPECT_GT(count, 0u);
  return count;
}

testing::AssertionResult ServerProcess::ComesBackToThreadCount(std::uint32_t count) const {
  return ComesBackTo(count, "threads", [this] { return ThreadCount(); });
}

bool ServerProcess::HasModule(const std::string& fileName) const {
  std::vector<HMODULE> modules(512);
  DWORD size = 0;
  EXPECT_NE(K32EnumProcessModules(process_, modules.data(),
                                  static_cast<DWORD>(modules.size() * sizeof(HMODULE)), &size),
            FALSE);
  modules.resize(std::min<std::size_t>(modules.size(), size / sizeof(HMODULE)));
  // Without itself the list is of another process, or of none.
  EXPECT_FALSE(modules.empty());
  return std::any_of(modules.begin(), modules.end(), [&](HMODULE module) {
    char name[MAX_PATH] = "";
    (void)K32GetModuleBaseNameA(process_, module, name, sizeof(name));
    return lstrcmpiA(name, fileName.c_str()) == 0;
  });
}

std::size_t ServerProcess::PrivateBytes() const {
  PROCESS_MEMORY_COUNTERS counters = {};
  counters.cb = sizeof(counters);
  return K32GetProcessMemoryInfo(process_, &counters, sizeof(counters)) != FALSE
             ? counters.PagefileUsage
             : 0;
}

std::size_t ServerProcess::MappedBytes() const {
  std::size_t bytes = 0;
  MEMORY_BASIC_INFORMATION part = {};
  for (std::uintptr_t at = 0;
       VirtualQueryEx(process_, reinterpret_cast<void*>(at), &part, sizeof(part)) != 0;
       at += part.RegionSize) {
    if (part.Type == MEM_MAPPED) bytes += part.RegionSize;
  }
  // The system itself maps some into every process.
  EXPECT_GT(bytes, 0u);
  return bytes;
}

}  // namespace e2e
