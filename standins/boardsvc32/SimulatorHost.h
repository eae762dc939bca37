#ifndef STANDINS_BOARDSVC32_SIMULATORHOST_H_
#define STANDINS_BOARDSVC32_SIMULATORHOST_H_

#include <cstdint>
#include <string>

#include "standins/boardsvc32/CallLog.h"

/// What the simulator needs of the machine it runs on.
namespace boardsim::host {

/// \returns the environment variable, empty without it.
std::string Environment(const char* name);

/// \returns the folder of the library, without a separator at its end.
std::string LibraryFolder();

bool FileExists(const std::string& path);

/// \returns whether the path says itself where it begins, rather than at the current folder.
bool IsAbsolute(const std::string& path);

/// One line for whoever debugs the process.
void Debug(const std::string& line);

/// Asks from a thread of its own, because the calling one may take a lock that it holds already.
LockState ProbeBoardLock();

std::uint32_t ThreadId();

void Sleep(std::uint32_t milliseconds);

/// Raises a structured exception; natively, a C++ exception stands in for it.
[[noreturn]] void Raise(Raised raised);

}  // namespace boardsim::host

#endif  // STANDINS_BOARDSVC32_SIMULATORHOST_H_
