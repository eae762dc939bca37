#ifndef TRACE_TRACESHARED_H_
#define TRACE_TRACESHARED_H_

/// What the facility shares: a lock between this process's threads, and with other processes a
/// mutex, the configuration generation and the ring's memory.
///
/// None of it is locked by itself; apart from the process lock, callers hold the process lock.

#include <atomic>
#include <cstdint>

#include "platform/WinTypes.h"

namespace zqotrc {

/// Keeps this process's threads apart even while the shared mutex is missing or held hostage. The
/// owner may enter again: a call that was abandoned inside must not stop its thread for ever.
void EnterProcessLock();
void LeaveProcessLock();

/// "Global\ZqTRACE_MUTEX". \returns 0, or the platform's error code.
std::uint32_t CreateTraceMutex(SECURITY_ATTRIBUTES* security);
bool HasTraceMutex();
/// \returns the platform's wait result.
std::uint32_t WaitForTraceMutex(std::uint32_t milliseconds);
void ReleaseTraceMutex();
void CloseTraceMutex();

/// Opens or creates "Global\ZqTRACE_SECTION", which everybody who is logged on may map for writing.
/// \returns the counter in it, or null with the platform's error code in `error`.
std::atomic<std::uint32_t>* OpenGeneration(std::uint32_t& error);

/// Gives the name up. The counter stays readable for ever: another thread may be at a call site,
/// between fetching its address and looking at it.
void CloseGeneration();

/// A section of shared memory, not yet mapped. 0 is none.
using Section = void*;

struct OpenedSection {
  Section section;  ///< 0 when that failed
  bool existed;     ///< somebody else created it, in whatever size
};

/// Creates or opens a section of zero-filled, shared memory.
OpenedSection OpenSection(const char* name, SECURITY_ATTRIBUTES* security, std::uint32_t bytes);
void CloseSection(Section section);

/// Maps the first `bytes` of a section.
/// \returns null unless every one of these bytes can be read and written.
void* MapSection(Section section, std::uint32_t bytes);
void UnmapSection(void* view);

}  // namespace zqotrc

#endif  // TRACE_TRACESHARED_H_
