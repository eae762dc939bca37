#ifndef TESTS_FAKES_FAKESYSTEMPATH_H_
#define TESTS_FAKES_FAKESYSTEMPATH_H_

#include <string>

/// The folders of the system, behind platform/SystemPath.h.
namespace fake_system_path {

/// "C:\windows\system32" and no special folders.
void Reset();

/// A directory of 260 characters or more is reported by the size that it needs; an empty one is a
/// failure.
void SetSystemDirectory(const std::string& directory);
/// Of every special folder; an empty one is a failure.
void SetSpecialFolder(const std::string& folder);

}  // namespace fake_system_path

#endif  // TESTS_FAKES_FAKESYSTEMPATH_H_
