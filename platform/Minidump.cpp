#include "platform/Minidump.h"

#include <windows.h>

#include <dbghelp.h>
#include <psapi.h>
#include <tlhelp32.h>

#include <cstddef>

// The system has a library that makes such files. It is not used: it suspends all other threads of
// the process at once, then needs the heap and the loader, and whoever of them held a lock leaves a
// process that neither serves nor ends. And it takes seconds at times, for which clients wait.

namespace platform {
namespace {

constexpr ULONG32 kSignature = 0x504D444D;  // "MDMP"
constexpr std::size_t kMaxThreads = 64;
constexpr std::size_t kMaxModules = 256;
constexpr DWORD kMaxStack = 256 * 1024;
constexpr DWORD kCodeAround = 256;  // bytes on either side of the instruction
constexpr DWORD kMaxDebugRecord = 1024;
constexpr DWORD kMaxDebugEntries = 16;

enum Streams { kSystem, kThreads, kModules, kMemory, kException, kMisc, kStreamCount };

// What the lists of the file are made of, gathered while it is written.
struct Lists {
  ULONG32 threadCount;
  MINIDUMP_THREAD threads[kMaxThreads];
  ULONG32 moduleCount;
  MINIDUMP_MODULE modules[kMaxModules];
  ULONG32 memoryCount;
  MINIDUMP_MEMORY_DESCRIPTOR memory[2 * kMaxThreads];  // stack and instructions of each
};
Lists g_lists;

bool ReadOwnMemory(std::uintptr_t from, void* to, SIZE_T size) {
  SIZE_T count = 0;
  return ReadProcessMemory(GetCurrentProcess(), reinterpret_cast<const void*>(from), to, size,
                           &count) != FALSE &&
         count == size;
}

// A file that only grows, and remembers whether all of it could be written.
class DumpFile {
 public:
  explicit DumpFile(HANDLE file) : file_(file) {}

  /// \returns where it stands; an empty place when it could not be written.
  MINIDUMP_LOCATION_DESCRIPTOR Add(const void* data, std::size_t size) {
    const auto bytes = static_cast<DWORD>(size);
    MINIDUMP_LOCATION_DESCRIPTOR place = {bytes, at_};
    DWORD written = 0;
    if (WriteFile(file_, data, bytes, &written, nullptr) == FALSE) written = 0;
    if (written != bytes) {
      whole_ = false;
      place.DataSize = 0;
    }
    at_ += written;
    return place;
  }

  /// A count and the records behind it.
  template <typename Record>
  MINIDUMP_LOCATION_DESCRIPTOR AddList(ULONG32 count, const Record* records) {
    MINIDUMP_LOCATION_DESCRIPTOR place = Add(&count, sizeof(count));
    place.DataSize += Add(records, count * sizeof(Record)).DataSize;
    return place;
  }

  /// Memory of this process as it is; one that cannot be read is left out.
  MINIDUMP_MEMORY_DESCRIPTOR AddMemory(std::uintptr_t from, DWORD size) {
    const bool before = whole_;
    const MINIDUMP_MEMORY_DESCRIPTOR memory = {from,
                                               Add(reinterpret_cast<const void*>(from), size)};
    whole_ = before;
    if (memory.Memory.DataSize != 0) g_lists.memory[g_lists.memoryCount++] = memory;
    return memory;
  }

  RVA AddText(const wchar_t* text, DWORD length) {
    const ULONG32 bytes = length * static_cast<DWORD>(sizeof(wchar_t));
    const RVA at = Add(&bytes, sizeof(bytes)).Rva;
    (void)Add(text, bytes);
    (void)Add(L"", sizeof(wchar_t));
    return at;
  }

  void Rewind() { (void)SetFilePointer(file_, 0, nullptr, FILE_BEGIN); }
  bool IsWhole() const { return whole_; }

 private:
  const HANDLE file_;
  RVA at_ = 0;
  bool whole_ = true;
};

// How much of the stack there is above the stack pointer.
DWORD StackSize(std::uintptr_t pointer) {
  MEMORY_BASIC_INFORMATION first = {};
  if (VirtualQuery(reinterpret_cast<void*>(pointer), &first, sizeof(first)) == 0) return 0;
  std::uintptr_t end = pointer;
  MEMORY_BASIC_INFORMATION part = first;
  while (part.State == MEM_COMMIT && part.AllocationBase == first.AllocationBase) {
    end = reinterpret_cast<std::uintptr_t>(part.BaseAddress) + part.RegionSize;
    if (end - pointer >= kMaxStack) return kMaxStack;
    if (VirtualQuery(reinterpret_cast<void*>(end), &part, sizeof(part)) == 0) break;
  }
  return static_cast<DWORD>(end - pointer);
}

// The instructions around this one, as far as the file does not have them: threads wait at the same
// ones, and there are readers that take no memory at all when some of it is there twice.
void AddInstructions(DumpFile& file, std::uintptr_t at) {
  std::uintptr_t from = at > kCodeAround ? at - kCodeAround : 0;
  std::uintptr_t end = at + kCodeAround;
  for (ULONG32 i = 0; i < g_lists.memoryCount; ++i) {
    const auto start = static_cast<std::uintptr_t>(g_lists.memory[i].StartOfMemoryRange);
    const std::uintptr_t behind = start + g_lists.memory[i].Memory.DataSize;
    if (start <= at && at < behind) return;
    if (start > at && start < end) end = start;
    if (behind <= at && behind > from) from = behind;
  }
  (void)file.AddMemory(from, static_cast<DWORD>(end - from));
}

MINIDUMP_LOCATION_DESCRIPTOR AddThread(DumpFile& file, DWORD id, const CONTEXT& context) {
  MINIDUMP_THREAD& thread = g_lists.threads[g_lists.threadCount++];
  thread = {};
  thread.ThreadId = id;
  thread.Stack = file.AddMemory(context.Esp, StackSize(context.Esp));
  AddInstructions(file, context.Eip);
  thread.ThreadContext = file.Add(&context, sizeof(context));
  return thread.ThreadContext;
}

// Nothing that takes a lock may happen while the thread is suspended: it may hold the lock.
void AddSuspended(DumpFile& file, DWORD id) {
  constexpr DWORD kAccess = THREAD_SUSPEND_RESUME | THREAD_GET_CONTEXT | THREAD_QUERY_INFORMATION;
  const HANDLE thread = OpenThread(kAccess, /*bInheritHandle=*/FALSE, id);
  if (thread == nullptr) return;
  if (SuspendThread(thread) != static_cast<DWORD>(-1)) {
    CONTEXT context = {};
    context.ContextFlags = CONTEXT_FULL | CONTEXT_FLOATING_POINT | CONTEXT_DEBUG_REGISTERS;
    if (GetThreadContext(thread, &context) != FALSE) (void)AddThread(file, id, context);
    (void)ResumeThread(thread);
  }
  (void)CloseHandle(thread);
}

void AddOtherThreads(DumpFile& file, DWORD crashed) {
  const HANDLE all = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  if (all == INVALID_HANDLE_VALUE) return;
  THREADENTRY32 entry = {};
  entry.dwSize = sizeof(entry);
  for (BOOL more = Thread32First(all, &entry); more != FALSE && g_lists.threadCount < kMaxThreads;
       more = Thread32Next(all, &entry)) {
    if (entry.th32OwnerProcessID != GetCurrentProcessId()) continue;
    if (entry.th32ThreadID == crashed || entry.th32ThreadID == GetCurrentThreadId()) continue;
    AddSuspended(file, entry.th32ThreadID);
  }
  (void)CloseHandle(all);
}

// The record by which a debugger finds a module's symbols.
MINIDUMP_LOCATION_DESCRIPTOR AddDebugRecord(DumpFile& file, std::uintptr_t base,
                                            const IMAGE_NT_HEADERS& headers) {
  const IMAGE_DATA_DIRECTORY& directory =
      headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_DEBUG];
  const DWORD size = headers.OptionalHeader.SizeOfImage;
  static BYTE record[kMaxDebugRecord];
  if (directory.VirtualAddress == 0) return {};
  // A damaged header may tell of entries for as long as there is memory.
  const DWORD told = directory.Size / static_cast<DWORD>(sizeof(IMAGE_DEBUG_DIRECTORY));
  const DWORD count = told < kMaxDebugEntries ? told : kMaxDebugEntries;
  for (DWORD i = 0; i < count; ++i) {
    IMAGE_DEBUG_DIRECTORY entry = {};
    if (!ReadOwnMemory(base + directory.VirtualAddress + i * sizeof(entry), &entry,
                       sizeof(entry))) {
      break;
    }
    if (entry.Type != IMAGE_DEBUG_TYPE_CODEVIEW || entry.AddressOfRawData >= size ||
        entry.SizeOfData > sizeof(record) ||
        !ReadOwnMemory(base + entry.AddressOfRawData, record, entry.SizeOfData)) {
      continue;
    }
    return file.Add(record, entry.SizeOfData);
  }
  return {};
}

void AddModule(DumpFile& file, std::uintptr_t base) {
  IMAGE_DOS_HEADER dos = {};
  IMAGE_NT_HEADERS headers = {};
  if (!ReadOwnMemory(base, &dos, sizeof(dos)) || dos.e_magic != IMAGE_DOS_SIGNATURE ||
      !ReadOwnMemory(base + static_cast<DWORD>(dos.e_lfanew), &headers, sizeof(headers)) ||
      headers.Signature != IMAGE_NT_SIGNATURE ||
      headers.OptionalHeader.Magic != IMAGE_NT_OPTIONAL_HDR_MAGIC) {
    return;
  }
  // The loader would know a shorter name, and its lock may never be free again.
  static wchar_t name[MAX_PATH];
  DWORD length =
      K32GetMappedFileNameW(GetCurrentProcess(), reinterpret_cast<void*>(base), name, MAX_PATH);
  if (length > MAX_PATH) length = 0;
  MINIDUMP_MODULE& module = g_lists.modules[g_lists.moduleCount++];
  module = {};
  module.BaseOfImage = base;
  module.SizeOfImage = headers.OptionalHeader.SizeOfImage;
  module.CheckSum = headers.OptionalHeader.CheckSum;
  module.TimeDateStamp = headers.FileHeader.TimeDateStamp;
  module.ModuleNameRva = file.AddText(name, length);
  module.CvRecord = AddDebugRecord(file, base, headers);
}

// Every image that is mapped, found by its memory.
void AddModules(DumpFile& file) {
  SYSTEM_INFO system;
  GetSystemInfo(&system);
  const auto end = reinterpret_cast<std::uintptr_t>(system.lpMaximumApplicationAddress);
  MEMORY_BASIC_INFORMATION part = {};
  for (auto at = reinterpret_cast<std::uintptr_t>(system.lpMinimumApplicationAddress);
       at < end && g_lists.moduleCount < kMaxModules;) {
    if (VirtualQuery(reinterpret_cast<void*>(at), &part, sizeof(part)) == 0) break;
    if (part.Type == MEM_IMAGE && part.AllocationBase == part.BaseAddress) AddModule(file, at);
    at = reinterpret_cast<std::uintptr_t>(part.BaseAddress) + part.RegionSize;
  }
}

MINIDUMP_LOCATION_DESCRIPTOR AddSystem(DumpFile& file) {
  SYSTEM_INFO system;
  GetSystemInfo(&system);
  OSVERSIONINFOA version = {};
  version.dwOSVersionInfoSize = sizeof(version);
  (void)GetVersionExA(&version);
  MINIDUMP_SYSTEM_INFO info = {};
  info.ProcessorArchitecture = PROCESSOR_ARCHITECTURE_INTEL;
  info.ProcessorLevel = system.wProcessorLevel;
  info.ProcessorRevision = system.wProcessorRevision;
  info.NumberOfProcessors = static_cast<UCHAR>(system.dwNumberOfProcessors);
  info.ProductType = VER_NT_WORKSTATION;
  info.MajorVersion = version.dwMajorVersion;
  info.MinorVersion = version.dwMinorVersion;
  info.BuildNumber = version.dwBuildNumber;
  info.PlatformId = version.dwPlatformId;
  info.CSDVersionRva = file.AddText(L"", 0);
  return file.Add(&info, sizeof(info));
}

MINIDUMP_LOCATION_DESCRIPTOR AddException(DumpFile& file, const EXCEPTION_RECORD& record,
                                          DWORD thread,
                                          const MINIDUMP_LOCATION_DESCRIPTOR& context) {
  MINIDUMP_EXCEPTION_STREAM stream = {};
  stream.ThreadId = thread;
  stream.ThreadContext = context;
  stream.ExceptionRecord.ExceptionCode = record.ExceptionCode;
  stream.ExceptionRecord.ExceptionFlags = record.ExceptionFlags;
  stream.ExceptionRecord.ExceptionRecord = reinterpret_cast<std::uintptr_t>(record.ExceptionRecord);
  stream.ExceptionRecord.ExceptionAddress =
      reinterpret_cast<std::uintptr_t>(record.ExceptionAddress);
  for (DWORD i = 0; i < record.NumberParameters && i < EXCEPTION_MAXIMUM_PARAMETERS; ++i) {
    stream.ExceptionRecord.ExceptionInformation[i] = record.ExceptionInformation[i];
    stream.ExceptionRecord.NumberParameters = i + 1;
  }
  return file.Add(&stream, sizeof(stream));
}

MINIDUMP_LOCATION_DESCRIPTOR AddMisc(DumpFile& file) {
  MINIDUMP_MISC_INFO info = {};
  info.SizeOfInfo = sizeof(info);
  info.Flags1 = MINIDUMP_MISC1_PROCESS_ID;
  info.ProcessId = GetCurrentProcessId();
  return file.Add(&info, sizeof(info));
}

// What the file begins with. Written first to keep the place, and again when all places are known.
struct Head {
  MINIDUMP_HEADER header;
  MINIDUMP_DIRECTORY streams[kStreamCount];
};

std::uint32_t SecondsSince1970() {
  constexpr std::uint64_t kTicksPerSecond = 10000000;
  constexpr std::uint64_t kFrom1601 = 11644473600;
  FILETIME now;
  GetSystemTimeAsFileTime(&now);
  const std::uint64_t ticks =
      static_cast<std::uint64_t>(now.dwHighDateTime) << 32 | now.dwLowDateTime;
  return static_cast<std::uint32_t>(ticks / kTicksPerSecond - kFrom1601);
}

}  // namespace

bool WriteMinidump(HANDLE handle, void* exceptionPointers, std::uint32_t thread) {
  const auto& pointers = *static_cast<const EXCEPTION_POINTERS*>(exceptionPointers);
  const CONTEXT& context = *pointers.ContextRecord;
  g_lists.threadCount = g_lists.moduleCount = g_lists.memoryCount = 0;

  Head head = {};
  DumpFile file(handle);
  (void)file.Add(&head, sizeof(head));
  head.header.Signature = kSignature;
  head.header.Version = MINIDUMP_VERSION;
  head.header.NumberOfStreams = kStreamCount;
  head.header.StreamDirectoryRva = offsetof(Head, streams);
  head.header.TimeDateStamp = SecondsSince1970();
  head.header.Flags = MiniDumpNormal;

  const MINIDUMP_LOCATION_DESCRIPTOR registers = AddThread(file, thread, context);
  AddOtherThreads(file, thread);
  AddModules(file);
  head.streams[kSystem] = {SystemInfoStream, AddSystem(file)};
  head.streams[kThreads] = {ThreadListStream, file.AddList(g_lists.threadCount, g_lists.threads)};
  head.streams[kModules] = {ModuleListStream, file.AddList(g_lists.moduleCount, g_lists.modules)};
  head.streams[kMemory] = {MemoryListStream, file.AddList(g_lists.memoryCount, g_lists.memory)};
  head.streams[kException] = {ExceptionStream,
                              AddException(file, *pointers.ExceptionRecord, thread, registers)};
  head.streams[kMisc] = {MiscInfoStream, AddMisc(file)};
  file.Rewind();
  (void)file.Add(&head, sizeof(head));
  return file.IsWhole();
}

}  // namespace platform
