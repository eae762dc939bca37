#ifndef PLATFORM_CRASHEVIDENCE_H_
#define PLATFORM_CRASHEVIDENCE_H_

#include <cstddef>
#include <cstdint>

#include "platform/SystemPath.h"

namespace platform {

/// What is known of an unhandled exception.
struct Crash {
  std::uint32_t code;
  std::uint32_t flags;
  std::uintptr_t address;
  std::uint32_t parameterCount;  ///< of `parameters`; at most 2 are kept
  std::uintptr_t parameters[2];  ///< of an access violation: 0 read, 1 write, 8 execute; address
  std::uint32_t process;
  std::uint32_t thread;
  bool isPreparingThread;  ///< the thread that called PrepareCrashEvidence
  PathBuffer module;       ///< the program or library that the address lies in; empty if in none
  std::uintptr_t offset;   ///< of the address in it
  /// The time of day (UTC).
  std::uint16_t year, month, day, hour, minute, second, millisecond;
};

/// Describes a crash in words. Runs in a process that has crashed, on a thread of its own: it takes
/// nothing from the heap and no lock. \returns the length of the text, at most `capacity`.
using DescribeCrash = std::size_t (*)(const Crash& crash, char* text, std::size_t capacity);

/// The text is no longer than this.
inline constexpr std::size_t kCrashTextSize = 32768;

/// From now on an unhandled exception, or a C++ one that ends in std::terminate, leaves
/// `<name>-<n>.txt`, with what `describe` says, and a minidump `<name>-<n>.dmp` in a folder, n from
/// 1 to 8; the oldest ones are replaced. The folder is made when it is needed, and used only if
/// nobody but administrators can write to it; otherwise the debugger output says so, and nothing is
/// written.
///
/// What became of the exception without this becomes of it still, up to 20 s later. Once for a
/// process; there is no way back.
///
/// \param folder full path; is copied
/// \param name what the files' names begin with; is copied
/// \returns false when it cannot be prepared
bool PrepareCrashEvidence(const char* folder, const char* name, DescribeCrash describe);

}  // namespace platform

#endif  // PLATFORM_CRASHEVIDENCE_H_
