#ifndef FUZZ_POLICYMODEL_H_
#define FUZZ_POLICYMODEL_H_

#include <optional>
#include <string>

/// What clients may change in the registry, worked out name by name and without anything of the
/// server.
namespace policy_model {

/// Where a path of a client ends: walked from one key to the next, up at "..", nowhere at ".".
/// Nothing for a path that is not taken: above 259 bytes, or one that is walked above its first key
/// and further.
std::optional<std::string> Walk(const std::string& path);

/// Whether a key that is named without detours lies in the permitted tree.
bool IsInside(const std::string& key);

}  // namespace policy_model

#endif  // FUZZ_POLICYMODEL_H_
