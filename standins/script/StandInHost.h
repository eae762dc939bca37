#ifndef STANDINS_SCRIPT_STANDINHOST_H_
#define STANDINS_SCRIPT_STANDINHOST_H_

#include <cstddef>
#include <cstdint>
#include <string>

#include "standins/script/Export.h"

/// What a stand-in needs of the machine it runs on.
namespace standin::host {

/// \returns the environment variable, empty without it.
std::string Environment(const char* name);

/// \returns the folder of the library, without a separator at its end.
std::string LibraryFolder();

bool FileExists(const std::string& path);

/// \returns whether the path says itself where it begins, rather than at the current folder.
bool IsAbsolute(const std::string& path);

/// One line for whoever debugs the process.
void Debug(const std::string& line);

std::uint32_t ThreadId();

std::uint32_t LastError();
void SetLastError(std::uint32_t error);

void Sleep(std::uint32_t milliseconds);

/// Memory that belongs to the process and outlives the library, which a server may load and free
/// for every call. Zero-filled when a process asks for the name first; at most one name per
/// library.
///
/// \returns null when the system has none to give.
void* ProcessMemory(const std::string& name, std::size_t bytes);

/// Raises a structured exception; natively, a C++ exception stands in for it.
[[noreturn]] void Raise(Raised raised);

}  // namespace standin::host

#endif  // STANDINS_SCRIPT_STANDINHOST_H_
