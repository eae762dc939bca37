#ifndef PLATFORM_ADMINFOLDER_H_
#define PLATFORM_ADMINFOLDER_H_

#include "platform/WinTypes.h"

namespace platform {

/// What makes a folder or file readable and writable for administrators and the system alone,
/// whatever the folder around it says; its owner are the administrators. Static, made at the first
/// call, which is not to come from two threads at once. \returns null when that fails.
SECURITY_ATTRIBUTES* AdministratorsOnly();

/// Whether nobody but administrators, the system, its installer and the user of this process may
/// change what this self-relative descriptor is on: none of them else owns it or is granted any
/// kind of writing, now or for what is made below. What cannot be understood does not count as
/// safe.
bool OnlyAdministratorsMayWrite(const void* descriptor);

/// Makes a folder that only administrators can write, or looks whether the one that is there is
/// one: a real folder, no link to elsewhere.
///
/// Takes nothing from the heap by itself. \returns null when it can be used, else why not.
const char* PrepareAdminFolder(const char* path);

}  // namespace platform

#endif  // PLATFORM_ADMINFOLDER_H_
