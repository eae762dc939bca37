#ifndef PLATFORM_WINTYPES_H_
#define PLATFORM_WINTYPES_H_

/// The few Win32 types and codes that portable code needs to name.
///
/// On Windows they are the platform's own. Elsewhere they are twins of the same shape, so that
/// everything between request bytes and reply bytes builds and runs under the sanitizers.

#include <cstdint>

#ifdef _WIN32

#include <windows.h>

#else

using HANDLE = void*;
using HKEY = struct HKEY__*;

struct OVERLAPPED {
  std::uintptr_t Internal;
  std::uintptr_t InternalHigh;
  std::uint32_t Offset;
  std::uint32_t OffsetHigh;
  HANDLE hEvent;
};

struct SECURITY_ATTRIBUTES {
  std::uint32_t nLength;
  void* lpSecurityDescriptor;
  std::int32_t bInheritHandle;
};

inline constexpr std::uint32_t ERROR_SUCCESS = 0;
inline constexpr std::uint32_t ERROR_FILE_NOT_FOUND = 2;
inline constexpr std::uint32_t ERROR_ACCESS_DENIED = 5;
inline constexpr std::uint32_t ERROR_INVALID_HANDLE = 6;
inline constexpr std::uint32_t ERROR_NOT_ENOUGH_MEMORY = 8;
inline constexpr std::uint32_t ERROR_INVALID_PARAMETER = 87;
inline constexpr std::uint32_t ERROR_BROKEN_PIPE = 109;
inline constexpr std::uint32_t ERROR_NO_DATA = 232;
inline constexpr std::uint32_t ERROR_MORE_DATA = 234;
inline constexpr std::uint32_t ERROR_NO_MORE_ITEMS = 259;
inline constexpr std::uint32_t ERROR_PIPE_CONNECTED = 535;
inline constexpr std::uint32_t ERROR_IO_INCOMPLETE = 996;
inline constexpr std::uint32_t ERROR_IO_PENDING = 997;

inline constexpr std::uint32_t WAIT_OBJECT_0 = 0;
inline constexpr std::uint32_t WAIT_ABANDONED = 0x80;
inline constexpr std::uint32_t WAIT_TIMEOUT = 258;
inline constexpr std::uint32_t WAIT_FAILED = 0xFFFFFFFF;

#endif

/// A handle as trace lines print it.
inline std::uint32_t HandleNumber(HANDLE handle) {
  return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(handle));
}

#endif  // PLATFORM_WINTYPES_H_
