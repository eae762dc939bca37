#include <windows.h>

#include <shlobj.h>

#include <iterator>

#include "platform/GuardedCall.h"
#include "platform/SystemPath.h"
#include "trace/TraceOutputs.h"

namespace zqotrc {
namespace {

using OpenFunction = DWORD(WINAPI*)(const char* metaFile, const char* settingsFile,
                                    const char* folder, DWORD zero, const char* version,
                                    DWORD* handle);
using WriteFunction = DWORD(WINAPI*)(DWORD handle, DWORD first, DWORD second, DWORD third,
                                     const BYTE* record, DWORD length);
using CommandFunction = DWORD(WINAPI*)(DWORD command, const wchar_t* text);
using CloseFunction = DWORD(WINAPI*)(DWORD handle);

/// The looked-up exports, null where one is missing.
constinit FARPROC g_exports[std::size(kEngineExports)] = {};

template <typename Function>
Function Export(EngineExport which) {
  return reinterpret_cast<Function>(g_exports[static_cast<std::size_t>(which)]);
}

constexpr std::uint32_t kRaised = 0xFFFFFFFF;

}  // namespace

std::string_view CommonProgramFiles() {
  // Found once, for an engine that does not open asks for it at every line.
  static platform::PathBuffer found = "";
  if (found[0] == '\0') (void)platform::SpecialFolder(CSIDL_PROGRAM_FILES_COMMON, found);
  return found;
}

bool LoadEngine(const char* path) {
  // Kept: never unloaded, whatever becomes of it; the engine may have threads of its own.
  const HMODULE library = LoadLibraryA(path);
  if (library == nullptr) return false;
  for (const EngineExport which : kEngineExports) {
    g_exports[static_cast<std::size_t>(which)] = GetProcAddress(library, NameOfEngineExport(which));
  }
  return true;
}

bool HasEngineExport(EngineExport which) {
  return g_exports[static_cast<std::size_t>(which)] != nullptr;
}

std::uint32_t EngineOpen(const char* metaFile, const char* settingsFile, const char* folder,
                         const char* version, std::uint32_t& handle) {
  std::uint32_t result = kRaised;
  const auto open = Export<OpenFunction>(EngineExport::kOpen);
  DWORD opened = 0;
  (void)GuardedCall(
      result, [&] { return open(metaFile, settingsFile, folder, /*zero=*/0, version, &opened); });
  handle = opened;
  return result;
}

std::uint32_t EngineWrite(std::uint32_t handle, std::string_view record) {
  const auto write = Export<WriteFunction>(EngineExport::kWrite);
  std::uint32_t result = kRaised;
  (void)GuardedCall(result, [&] {
    return write(handle, /*first=*/0, /*second=*/0, /*third=*/1,
                 reinterpret_cast<const BYTE*>(record.data()), static_cast<DWORD>(record.size()));
  });
  return result;
}

std::uint32_t EngineCommand(std::uint32_t command, const wchar_t* text) {
  const auto tell = Export<CommandFunction>(EngineExport::kCommand);
  std::uint32_t result = kRaised;
  (void)GuardedCall(result, [&] { return tell(command, text); });
  return result;
}

std::uint32_t EngineClose(std::uint32_t handle) {
  const auto close = Export<CloseFunction>(EngineExport::kClose);
  std::uint32_t result = kRaised;
  (void)GuardedCall(result, [&] { return close(handle); });
  return result;
}

}  // namespace zqotrc
