#ifndef STANDINS_SCRIPT_LIBRARYHOST_H_
#define STANDINS_SCRIPT_LIBRARYHOST_H_

#include <cstdint>
#include <string>

#include "standins/script/Raised.h"

/// What every stand-in needs of the machine it runs on.
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

void Sleep(std::uint32_t milliseconds);

/// Raises a structured exception; natively, a C++ exception stands in for it.
[[noreturn]] void Raise(Raised raised);

}  // namespace standin::host

#endif  // STANDINS_SCRIPT_LIBRARYHOST_H_
