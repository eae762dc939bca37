#ifndef STANDINS_SCRIPT_TESTING_FAKEHOST_H_
#define STANDINS_SCRIPT_TESTING_FAKEHOST_H_

#include <cstdint>
#include <string>
#include <vector>

#include "standins/script/Export.h"

/// The machine of a stand-in that is linked into a native test. Reset makes it new, as a new
/// process is: memory and counts start again.
namespace fake_host {

struct RaisedException {
  standin::Raised raised;
};

void Reset();
void SetEnvironment(const std::string& name, const std::string& value);
void SetLibraryFolder(const std::string& folder);
void SetProcessMemory(bool available);
std::vector<std::string> DebugLines();
std::uint32_t SleptMilliseconds();

}  // namespace fake_host

#endif  // STANDINS_SCRIPT_TESTING_FAKEHOST_H_
