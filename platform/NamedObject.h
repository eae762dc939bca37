#ifndef PLATFORM_NAMEDOBJECT_H_
#define PLATFORM_NAMEDOBJECT_H_

#include <cstdint>

#include "platform/WinTypes.h"

/// Named objects that the server shares with other processes, and the waits on them.
namespace platform {

/// Creates or opens a mutex that nobody owns yet. \returns 0 when that fails.
HANDLE CreateNamedMutex(const char* name);

/// \returns the platform's wait result: WAIT_OBJECT_0, WAIT_ABANDONED, WAIT_TIMEOUT, WAIT_FAILED.
std::uint32_t WaitForMutex(HANDLE mutex, std::uint32_t milliseconds);

/// Releases a mutex; one that the thread does not own stays as it is.
void ReleaseNamedMutex(HANDLE mutex);

/// Sets the event `name` if somebody created it. \returns whether it existed.
///
/// Kept: the handle is not closed, so the event lives as long as the process that set it.
bool SetEventIfItExists(const char* name);

/// Creates or opens a mutex that only marks something by being there: nobody owns it, and this
/// handle can do no more than wait for it.
/// \returns 0 with the platform's error code in `error` when that fails
HANDLE CreateMarkerMutex(SECURITY_ATTRIBUTES* security, const char* name, std::uint32_t& error);

void CloseNamedObject(HANDLE handle);

/// Sets an event that somebody else created. \returns 0, or the platform's error code.
std::uint32_t SignalEvent(const char* name);

}  // namespace platform

#endif  // PLATFORM_NAMEDOBJECT_H_
