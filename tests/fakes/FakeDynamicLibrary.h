#ifndef TESTS_FAKES_FAKEDYNAMICLIBRARY_H_
#define TESTS_FAKES_FAKEDYNAMICLIBRARY_H_

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "platform/DynamicLibrary.h"

/// Libraries that a test makes up, behind platform/DynamicLibrary.h. One that nobody made cannot be
/// loaded (126), an export that it lacks is not found (127). Unloading one changes the last error.
namespace fake_dynamic_library {

using Exports = std::map<std::string, platform::EntryPoint>;

void Reset();

/// Makes a library that can be loaded under exactly this name.
void Add(const std::string& name, Exports exports);

template <typename Function>
platform::EntryPoint Export(Function* function) {
  return reinterpret_cast<platform::EntryPoint>(function);
}

/// Loading under this name fails with this error.
void RefuseLoad(const std::string& name, std::uint32_t error);

/// Called at the start of every load, with the name; a test makes it throw.
void OnLoad(std::function<void(const std::string& name)> hook);

/// What happened since Reset: "load NAME", "find EXPORT", "free NAME".
std::vector<std::string> Calls();

/// How many loads have not been freed.
int StillLoaded();

/// What Find leaves as the last error when it succeeds; by default nothing is changed.
void LastErrorAfterFind(std::uint32_t error);

}  // namespace fake_dynamic_library

#endif  // TESTS_FAKES_FAKEDYNAMICLIBRARY_H_
