#ifndef STANDINS_SCRIPT_STANDINHOST_H_
#define STANDINS_SCRIPT_STANDINHOST_H_

#include <cstddef>
#include <cstdint>
#include <string>

#include "standins/script/LibraryHost.h"

/// What a scripted stand-in needs besides.
namespace standin::host {

std::uint32_t LastError();
void SetLastError(std::uint32_t error);

/// Memory that belongs to the process and outlives the library, which a server may load and free
/// for every call. Zero-filled when a process asks for the name first; at most one name per
/// library.
///
/// \returns null when the system has none to give.
void* ProcessMemory(const std::string& name, std::size_t bytes);

}  // namespace standin::host

#endif  // STANDINS_SCRIPT_STANDINHOST_H_
