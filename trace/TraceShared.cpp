#include "trace/TraceShared.h"

#include <windows.h>

#include <aclapi.h>
#include <psapi.h>

#include <atomic>

#include "platform/UniqueHandle.h"

namespace zqotrc {
namespace {

constexpr char kMutexName[] = "Global\\ZqTRACE_MUTEX";
constexpr char kGenerationName[] = "Global\\ZqTRACE_SECTION";

SRWLOCK g_processLock = SRWLOCK_INIT;
constinit std::atomic<DWORD> g_lockOwner = 0;
constinit std::uint32_t g_lockDepth = 0;

HANDLE g_mutex = nullptr;
HANDLE g_generation = nullptr;

struct LocalMemoryTraits {
  using Type = ACL*;
  static Type None() { return nullptr; }
  static void Close(Type memory) { (void)LocalFree(memory); }
};
using UniqueAcl = UniqueHandle<LocalMemoryTraits>;

/// Creates the section that everybody who is logged on may map for writing, and nothing else.
HANDLE CreateGeneration() {
  BYTE sid[SECURITY_MAX_SID_SIZE];
  DWORD sidSize = sizeof(sid);
  if (CreateWellKnownSid(WinAuthenticatedUserSid, /*DomainSid=*/nullptr, sid, &sidSize) == FALSE) {
    return nullptr;
  }

  EXPLICIT_ACCESSA entry = {};
  entry.grfAccessPermissions = FILE_MAP_WRITE;
  entry.grfAccessMode = SET_ACCESS;
  entry.grfInheritance = NO_INHERITANCE;
  entry.Trustee.TrusteeForm = TRUSTEE_IS_SID;
  entry.Trustee.TrusteeType = TRUSTEE_IS_WELL_KNOWN_GROUP;
  entry.Trustee.ptstrName = reinterpret_cast<char*>(sid);
  UniqueAcl acl;
  const DWORD status =
      SetEntriesInAclA(/*cCountOfExplicitEntries=*/1, &entry, /*OldAcl=*/nullptr, acl.put());
  if (status != ERROR_SUCCESS) {
    SetLastError(status);
    return nullptr;
  }

  SECURITY_DESCRIPTOR descriptor;
  if (InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION) == FALSE ||
      SetSecurityDescriptorDacl(&descriptor, /*bDaclPresent=*/TRUE, acl.get(),
                                /*bDaclDefaulted=*/FALSE) == FALSE) {
    return nullptr;
  }
  SECURITY_ATTRIBUTES attributes = {sizeof(attributes), &descriptor, /*bInheritHandle=*/FALSE};
  return CreateFileMappingA(INVALID_HANDLE_VALUE, &attributes, PAGE_READWRITE,
                            /*dwMaximumSizeHigh=*/0, sizeof(std::uint32_t), kGenerationName);
}

/// Whoever created the section may have reserved its memory only, or put a file behind it that one
/// day cannot be read. Such memory would raise at the first touch, or at a later one.
bool IsSafeMemory(void* view, std::uint32_t bytes) {
  MEMORY_BASIC_INFORMATION memory;
  if (VirtualQuery(view, &memory, sizeof(memory)) != sizeof(memory)) return false;
  if (memory.State != MEM_COMMIT || memory.Protect != PAGE_READWRITE) return false;
  if (memory.RegionSize < bytes) return false;
  char file[MAX_PATH];
  return GetMappedFileNameA(GetCurrentProcess(), view, file, sizeof(file)) == 0 &&
         GetLastError() != ERROR_INSUFFICIENT_BUFFER;
}

}  // namespace

void EnterProcessLock() {
  const DWORD self = GetCurrentThreadId();
  if (g_lockOwner.load(std::memory_order_relaxed) != self) {
    AcquireSRWLockExclusive(&g_processLock);
    g_lockOwner.store(self, std::memory_order_relaxed);
  }
  ++g_lockDepth;
}

void LeaveProcessLock() {
  if (--g_lockDepth != 0) return;
  g_lockOwner.store(0, std::memory_order_relaxed);
  ReleaseSRWLockExclusive(&g_processLock);
}

std::uint32_t CreateTraceMutex(SECURITY_ATTRIBUTES* security) {
  g_mutex = CreateMutexExA(security, kMutexName, /*dwFlags=*/0, SYNCHRONIZE);
  return g_mutex != nullptr ? ERROR_SUCCESS : GetLastError();
}

bool HasTraceMutex() { return g_mutex != nullptr; }

std::uint32_t WaitForTraceMutex(std::uint32_t milliseconds) {
  return WaitForSingleObject(g_mutex, milliseconds);
}

void ReleaseTraceMutex() { (void)ReleaseMutex(g_mutex); }

void CloseTraceMutex() {
  if (g_mutex != nullptr) (void)CloseHandle(g_mutex);
  g_mutex = nullptr;
}

std::atomic<std::uint32_t>* OpenGeneration(std::uint32_t& error) {
  using Counter = std::atomic<std::uint32_t>;
  static_assert(Counter::is_always_lock_free && sizeof(Counter) == sizeof(std::uint32_t),
                "it is a plain word to the other processes");

  g_generation = OpenFileMappingA(FILE_MAP_WRITE, /*bInheritHandle=*/FALSE, kGenerationName);
  if (g_generation == nullptr) g_generation = CreateGeneration();
  void* const counter =
      g_generation != nullptr ? MapSection(g_generation, sizeof(Counter)) : nullptr;
  if (counter == nullptr) {
    error = GetLastError();
    CloseGeneration();
  }
  return static_cast<Counter*>(counter);
}

void CloseGeneration() {
  if (g_generation != nullptr) (void)CloseHandle(g_generation);
  g_generation = nullptr;
}

OpenedSection OpenSection(const char* name, SECURITY_ATTRIBUTES* security, std::uint32_t bytes) {
  const HANDLE section = CreateFileMappingA(INVALID_HANDLE_VALUE, security, PAGE_READWRITE,
                                            /*dwMaximumSizeHigh=*/0, bytes, name);
  return {section, section != nullptr && GetLastError() == ERROR_ALREADY_EXISTS};
}

void CloseSection(Section section) { (void)CloseHandle(section); }

void* MapSection(Section section, std::uint32_t bytes) {
  void* const view =
      MapViewOfFile(section, FILE_MAP_WRITE, /*dwFileOffsetHigh=*/0, /*dwFileOffsetLow=*/0, bytes);
  if (view == nullptr || IsSafeMemory(view, bytes)) return view;
  (void)UnmapViewOfFile(view);
  SetLastError(ERROR_INVALID_ADDRESS);
  return nullptr;
}

void UnmapSection(void* view) { (void)UnmapViewOfFile(view); }

}  // namespace zqotrc
