#include "bench/ServerProcess.h"

#include <windows.h>

#include <psapi.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

#include "bench/PipeClients.h"
#include "bench/Support.h"
#include "bench/Workload.h"

namespace bench {
namespace {

constexpr double kStartLimitSeconds = 30;
constexpr DWORD kStopLimitMs = 5000;
constexpr DWORD kPollMs = 1;

// Counted region by region: the counter of private bytes is not kept for other processes on every
// system that this runs on, and reads 0 there.
std::size_t CommittedBytes(HANDLE process) {
  std::size_t total = 0;
  const std::uint8_t* address = nullptr;
  MEMORY_BASIC_INFORMATION region = {};
  while (VirtualQueryEx(process, address, &region, sizeof(region)) == sizeof(region)) {
    constexpr DWORD kWritable =
        PAGE_READWRITE | PAGE_WRITECOPY | PAGE_EXECUTE_READWRITE | PAGE_EXECUTE_WRITECOPY;
    const bool own = region.Type == MEM_PRIVATE || (region.Protect & kWritable) != 0;
    if (region.State == MEM_COMMIT && own) total += region.RegionSize;
    address = static_cast<const std::uint8_t*>(region.BaseAddress) + region.RegionSize;
  }
  if (total == 0) DieOfLastError("VirtualQueryEx");
  return total;
}

// The system's table of all handles, with its class number; GetProcessHandleCount has the same gap.
constexpr int kSystemExtendedHandleInformation = 64;
constexpr LONG kLengthMismatch = static_cast<LONG>(0xC0000004);

struct HandleEntry {
  void* object;
  ULONG_PTR processId;
  ULONG_PTR handle;
  ULONG access;
  USHORT traceIndex;
  USHORT objectType;
  ULONG attributes;
  ULONG reserved;
};

unsigned HandleCount(DWORD processId) {
  using QueryFunction = LONG(WINAPI*)(int, void*, ULONG, ULONG*);
  const auto query = reinterpret_cast<QueryFunction>(
      GetProcAddress(GetModuleHandleA("ntdll.dll"), "NtQuerySystemInformation"));
  if (query == nullptr) DieOfLastError("looking up NtQuerySystemInformation");

  std::vector<std::uint8_t> table(1 << 16);
  LONG status = 0;
  while ((status = query(kSystemExtendedHandleInformation, table.data(),
                         static_cast<ULONG>(table.size()), /*length=*/nullptr)) ==
         kLengthMismatch) {
    table.resize(table.size() * 2);
  }
  if (status < 0) Die("the system's handles cannot be listed: 0x%lx", status);

  ULONG_PTR total = 0;
  std::memcpy(&total, table.data(), sizeof(total));
  unsigned count = 0;
  for (ULONG_PTR i = 0; i < total; ++i) {
    HandleEntry entry = {};
    std::memcpy(&entry, table.data() + 2 * sizeof(total) + i * sizeof(entry), sizeof(entry));
    if (entry.processId == processId) ++count;
  }
  if (count == 0) Die("the server is said to have no handles");
  return count;
}

}  // namespace

ServerProcess::ServerProcess(const ServerProgram& program) : program_(program) {
  const Workload first = NoOperation();
  std::vector<char> commandLine(program.commandLine.begin(), program.commandLine.end());
  commandLine.push_back('\0');
  STARTUPINFOA startup = {};
  startup.cb = sizeof(startup);

  const double begin = Now();
  if (CreateProcessA(/*lpApplicationName=*/nullptr, commandLine.data(),
                     /*lpProcessAttributes=*/nullptr, /*lpThreadAttributes=*/nullptr,
                     /*bInheritHandles=*/FALSE, /*dwCreationFlags=*/0, /*lpEnvironment=*/nullptr,
                     /*lpCurrentDirectory=*/nullptr, &startup, &process_) == FALSE) {
    Die("%s cannot be started: error %lu", program.commandLine.c_str(), GetLastError());
  }
  while (!TryOneShot(program.pipeName, first)) {
    if (WaitForSingleObject(process_.hProcess, kPollMs) != WAIT_TIMEOUT) {
      DWORD code = 0;
      (void)GetExitCodeProcess(process_.hProcess, &code);
      Die("%s ended with %lu instead of answering", program.commandLine.c_str(), code);
    }
    if (Now() - begin > kStartLimitSeconds) Die("%s does not answer", program.commandLine.c_str());
  }
  secondsToFirstAnswer_ = Now() - begin;
}

ServerProcess::~ServerProcess() {
  AskToStop(program_.pipeName, StopRequest());
  if (WaitForSingleObject(process_.hProcess, kStopLimitMs) != WAIT_OBJECT_0) {
    std::fprintf(stderr, "pipeload: %s did not stop when told to\n", program_.label);
    (void)TerminateProcess(process_.hProcess, 2);
    (void)WaitForSingleObject(process_.hProcess, INFINITE);
  }
  (void)CloseHandle(process_.hThread);
  (void)CloseHandle(process_.hProcess);
}

Footprint ServerProcess::Measure() const {
  PROCESS_MEMORY_COUNTERS memory = {};
  memory.cb = sizeof(memory);
  if (GetProcessMemoryInfo(process_.hProcess, &memory, sizeof(memory)) == FALSE) {
    DieOfLastError("GetProcessMemoryInfo");
  }
  return {memory.PeakWorkingSetSize, memory.WorkingSetSize, CommittedBytes(process_.hProcess),
          HandleCount(process_.dwProcessId)};
}

}  // namespace bench
