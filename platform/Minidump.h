#ifndef PLATFORM_MINIDUMP_H_
#define PLATFORM_MINIDUMP_H_

#include <cstdint>

#include "platform/WinTypes.h"

namespace platform {

/// Writes a minidump of this process, as debuggers read it: the exception, its thread and up to 63
/// others with their registers, the upper part of their stacks and the instructions around the
/// next, the modules and the system.
///
/// For a process that has crashed. It takes nothing from the heap and no lock, loads nothing, and
/// stops one other thread at a time, for as long as it takes to write its stack. The calling
/// thread is not in the dump. Not for two threads at once.
///
/// \param file open for writing, and empty
/// \param exceptionPointers the system's EXCEPTION_POINTERS, whose thread waits meanwhile
/// \param thread the thread that raised it
/// \returns false when the file is not whole
bool WriteMinidump(HANDLE file, void* exceptionPointers, std::uint32_t thread);

}  // namespace platform

#endif  // PLATFORM_MINIDUMP_H_
