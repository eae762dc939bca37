#ifndef TESTS_SUPPORT_REGISTRYSETUP_H_
#define TESTS_SUPPORT_REGISTRYSETUP_H_

#include <cstdint>
#include <optional>
#include <string>

#include "tests/support/WireHex.h"

/// The registry as a test arranges it and looks at it, past the primitives that it tests: the real
/// one below HKEY_LOCAL_MACHINE on Windows, the fake one elsewhere.
namespace registry_setup {

inline constexpr std::uint32_t kSz = 1;
inline constexpr std::uint32_t kBinary = 3;
inline constexpr std::uint32_t kDword = 4;

void CreateKey(const std::string& path);
void SetValue(const std::string& path, const std::string& name, std::uint32_t type,
              const Bytes& data);
bool KeyExists(const std::string& path);
/// Type byte in front of the data; nothing when there is no such value.
std::optional<Bytes> Value(const std::string& path, const std::string& name);
void DeleteTree(const std::string& path);

}  // namespace registry_setup

#endif  // TESTS_SUPPORT_REGISTRYSETUP_H_
