#ifndef STANDINS_BOARDSVC32_TESTING_FAKEHOST_H_
#define STANDINS_BOARDSVC32_TESTING_FAKEHOST_H_

#include <string>
#include <vector>

#include "standins/boardsvc32/SimulatorHost.h"

/// A machine for the simulator, behind SimulatorHost.h.
namespace fake_host {

/// What host::Raise throws.
struct RaisedException {
  boardsim::Raised raised;
};

/// No variables, a library folder without inventory, no lock.
void Reset();

void SetEnvironment(const std::string& name, const std::string& value);
void SetLibraryFolder(const std::string& folder);
void SetLock(boardsim::LockState lock);

/// What the simulator told the debugger, and how long it slept, since the reset.
std::vector<std::string> DebugLines();
std::uint32_t SleptMilliseconds();

}  // namespace fake_host

#endif  // STANDINS_BOARDSVC32_TESTING_FAKEHOST_H_
