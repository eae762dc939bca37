#include "platform/CrashEvidence.h"

#include <windows.h>

#include <process.h>
#include <psapi.h>

#include <cstdlib>
#include <cstring>
#include <exception>

#include "platform/AdminFolder.h"
#include "platform/EvidenceSlot.h"
#include "platform/GuardedCall.h"
#include "platform/Minidump.h"

// The thread that crashed may have no stack left, and the heap may be damaged or locked by it. So
// it does no more than to wake a thread that has waited for this since the start, and to wait for
// it, but not for ever.

namespace platform {
namespace {

// A dump takes some milliseconds. Where the writer cannot go on, because the system's own calls
// wait for a heap that the crashed thread has locked, the process ends after this all the same.
constexpr DWORD kWriteMs = 20000;

constexpr unsigned kWriterStack = 256 * 1024;

// As the compiler's runtime library numbers its exceptions.
constexpr DWORD kCppException = 0x20474343;

struct Evidence {
  PathBuffer folder;
  char name[32];
  DescribeCrash describe;
  DWORD preparingThread;
  DWORD writerThread;
  HANDLE writer;
  HANDLE wanted;
  HANDLE done;
  LPTOP_LEVEL_EXCEPTION_FILTER previous;
  std::terminate_handler previousTerminate;

  // Filled in by the first thread that crashes.
  volatile LONG isTaken;
  EXCEPTION_POINTERS* pointers;
  DWORD thread;

  Crash crash;
  char text[kCrashTextSize];
  char path[kMaxPath + 64];
};
constinit Evidence g_evidence = {};

void Complain(const char* what, const char* about) {
  static char line[kMaxPath + 192];
  (void)wsprintfA(line, "QorlixSRV: no crash evidence: %s: %s\n", about, what);
  OutputDebugStringA(line);
}

const char* PathOf(std::size_t slot, const char* extension) {
  Evidence& e = g_evidence;
  (void)wsprintfA(e.path, "%s\\%s-%u.%s", e.folder, e.name, static_cast<unsigned>(slot + 1),
                  extension);
  return e.path;
}

std::uint64_t WrittenAt(const char* path) {
  WIN32_FILE_ATTRIBUTE_DATA about = {};
  if (GetFileAttributesExA(path, GetFileExInfoStandard, &about) == FALSE) return 0;
  const ULARGE_INTEGER time = {
      {about.ftLastWriteTime.dwLowDateTime, about.ftLastWriteTime.dwHighDateTime}};
  return time.QuadPart != 0 ? time.QuadPart : 1;
}

std::size_t NextSlot() {
  std::uint64_t written[kEvidenceSlots] = {};
  for (std::size_t i = 0; i < kEvidenceSlots; ++i) {
    const std::uint64_t text = WrittenAt(PathOf(i, "txt"));
    const std::uint64_t dump = WrittenAt(PathOf(i, "dmp"));
    written[i] = text > dump ? text : dump;
  }
  return ChooseEvidenceSlot(written);
}

// Makes a file that was not there; what has the name is removed first, not written through.
HANDLE MakeFile(const char* path) {
  (void)DeleteFileA(path);
  const HANDLE file =
      CreateFileA(path, GENERIC_READ | GENERIC_WRITE, /*dwShareMode=*/0, AdministratorsOnly(),
                  CREATE_NEW, FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
  if (file == INVALID_HANDLE_VALUE) Complain("it cannot be made", path);
  return file;
}

void Gather(Crash& crash) {
  const Evidence& e = g_evidence;
  const EXCEPTION_RECORD& record = *e.pointers->ExceptionRecord;
  crash.code = record.ExceptionCode;
  crash.flags = record.ExceptionFlags;
  crash.address = reinterpret_cast<std::uintptr_t>(record.ExceptionAddress);
  crash.parameterCount = record.NumberParameters < 2 ? record.NumberParameters : 2;
  for (std::uint32_t i = 0; i < crash.parameterCount; ++i) {
    crash.parameters[i] = record.ExceptionInformation[i];
  }
  crash.process = GetCurrentProcessId();
  crash.thread = e.thread;
  crash.isPreparingThread = e.thread == e.preparingThread;

  SYSTEMTIME now;
  GetSystemTime(&now);
  crash.year = now.wYear;
  crash.month = now.wMonth;
  crash.day = now.wDay;
  crash.hour = now.wHour;
  crash.minute = now.wMinute;
  crash.second = now.wSecond;
  crash.millisecond = now.wMilliseconds;

  MEMORY_BASIC_INFORMATION memory = {};
  if (VirtualQuery(record.ExceptionAddress, &memory, sizeof(memory)) == 0 ||
      memory.Type != MEM_IMAGE) {
    return;
  }
  crash.offset = crash.address - reinterpret_cast<std::uintptr_t>(memory.AllocationBase);
  // The loader would know a better name, and its lock may never be free again.
  const DWORD length = K32GetMappedFileNameA(GetCurrentProcess(), memory.AllocationBase,
                                             crash.module, sizeof(crash.module));
  if (length == 0 || length >= sizeof(crash.module)) crash.module[0] = '\0';
}

bool WriteText(std::size_t slot) {
  Evidence& e = g_evidence;
  Gather(e.crash);
  const std::size_t size = e.describe(e.crash, e.text, sizeof(e.text));
  const HANDLE file = MakeFile(PathOf(slot, "txt"));
  if (file == INVALID_HANDLE_VALUE) return false;
  DWORD written = 0;
  (void)WriteFile(file, e.text, static_cast<DWORD>(size), &written, nullptr);
  (void)CloseHandle(file);
  return true;
}

bool WriteDump(std::size_t slot) {
  const Evidence& e = g_evidence;
  const HANDLE file = MakeFile(PathOf(slot, "dmp"));
  if (file == INVALID_HANDLE_VALUE) return false;
  const bool isWritten = WriteMinidump(file, e.pointers, e.thread);
  (void)CloseHandle(file);
  if (!isWritten) Complain("it cannot be written", e.path);
  return isWritten;
}

std::uint32_t WriteEvidence() {
  const Evidence& e = g_evidence;
  const char* const why = PrepareAdminFolder(e.folder);
  if (why != nullptr) {
    Complain(why, e.folder);
    return 0;
  }
  const std::size_t slot = NextSlot();
  std::uint32_t result = 0;
  // Each for itself: what one of them stumbles over need not be in the other's way.
  (void)GuardedCall(result, [slot] { return WriteText(slot) ? 1u : 0u; });
  (void)GuardedCall(result, [slot] { return WriteDump(slot) ? 1u : 0u; });
  return result;
}

unsigned __stdcall Writer(void*) {
  ReserveStackForGuards();
  (void)WaitForSingleObject(g_evidence.wanted, INFINITE);
  std::uint32_t result = 0;
  (void)GuardedCall(result, [] { return WriteEvidence(); });
  (void)SetEvent(g_evidence.done);
  // The end of a thread needs the loader, which may not be had any more.
  Sleep(INFINITE);
  return 0;
}

// Has the evidence written, of the first crash only; later ones wait as well, because the end of
// their thread would be that of the writer. Nobody waits for a writer that is gone: while a process
// ends, libraries may still crash.
void LeaveEvidence(EXCEPTION_POINTERS* pointers, DWORD thread) {
  Evidence& e = g_evidence;
  if (InterlockedExchange(&e.isTaken, 1) == 0) {
    e.pointers = pointers;
    e.thread = thread;
    (void)SetEvent(e.wanted);
  }
  const HANDLE ends[] = {e.done, e.writer};
  (void)WaitForMultipleObjects(2, ends, /*bWaitAll=*/FALSE, kWriteMs);
}

LONG WINAPI OnUnhandledException(EXCEPTION_POINTERS* pointers) {
  const Evidence& e = g_evidence;
  // Whoever was asked before this answers as before; if he wants to go on, there is no crash.
  const LONG answer = e.previous != nullptr ? e.previous(pointers) : EXCEPTION_CONTINUE_SEARCH;
  const DWORD thread = GetCurrentThreadId();
  if (answer != EXCEPTION_CONTINUE_EXECUTION && thread != e.writerThread) {
    LeaveEvidence(pointers, thread);
  }
  return answer;
}

// A C++ exception of our own that nobody catches never comes to the system: the runtime library
// ends the process instead. The registers are those of whoever has called this.
[[noreturn]] void OnTerminate() {
  auto* const frame = static_cast<DWORD*>(__builtin_frame_address(0));
  CONTEXT context = {};
  context.ContextFlags = CONTEXT_CONTROL;
  context.Ebp = frame[0];
  context.Eip = frame[1];
  context.Esp = reinterpret_cast<std::uintptr_t>(frame + 2);
  EXCEPTION_RECORD record = {};
  record.ExceptionCode = kCppException;
  record.ExceptionFlags = EXCEPTION_NONCONTINUABLE;
  record.ExceptionAddress = reinterpret_cast<void*>(context.Eip);
  EXCEPTION_POINTERS pointers = {&record, &context};
  const Evidence& e = g_evidence;
  if (GetCurrentThreadId() != e.writerThread) LeaveEvidence(&pointers, GetCurrentThreadId());
  if (e.previousTerminate != nullptr) e.previousTerminate();
  std::abort();
}

HANDLE MakeEvent() {
  return CreateEventA(/*lpEventAttributes=*/nullptr, /*bManualReset=*/TRUE,
                      /*bInitialState=*/FALSE, /*lpName=*/nullptr);
}

}  // namespace

bool PrepareCrashEvidence(const char* folder, const char* name, DescribeCrash describe) {
  Evidence& e = g_evidence;
  if (std::strlen(name) >= sizeof(e.name)) return false;
  std::memcpy(e.name, name, std::strlen(name) + 1);
  e.folder[0] = '\0';
  if (AppendToPath(e.folder, folder) != 0) return false;
  e.describe = describe;
  e.preparingThread = GetCurrentThreadId();
  e.wanted = MakeEvent();
  e.done = MakeEvent();
  if (e.wanted == nullptr || e.done == nullptr) return false;

  unsigned id = 0;
  e.writer = reinterpret_cast<HANDLE>(_beginthreadex(/*security=*/nullptr, kWriterStack, Writer,
                                                     /*arglist=*/nullptr,
                                                     STACK_SIZE_PARAM_IS_A_RESERVATION, &id));
  if (e.writer == nullptr) return false;
  e.writerThread = id;
  e.previous = SetUnhandledExceptionFilter(OnUnhandledException);
  e.previousTerminate = std::set_terminate(OnTerminate);
  return true;
}

}  // namespace platform
