#include "registry/StrictRegistry.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <string_view>

#include "platform/AsciiCase.h"
#include "platform/GuardedCall.h"
#include "registry/RegistryOperation.h"
#include "registry/RegistryPolicy.h"

namespace {

using strict_profile::Threat;

// Whether a path lies at or below the key that these elements lead to. The registry takes several
// backslashes for one, and does not care about one at the end. A byte of a double-byte character
// that looks like a backslash comes behind one that fits no element, so it misleads nobody.
bool LiesIn(const char* path, std::initializer_list<std::string_view> key) {
  for (const std::string_view element : key) {
    if (*path != '\\') return false;
    while (*path == '\\') ++path;
    const std::string_view here(path, std::strcspn(path, "\\"));
    if (!platform::EqualsIgnoringCase(here, element)) return false;
    path += here.size();
  }
  return true;
}

bool IsPluginValue(const char* name) {
  return platform::EqualsIgnoringCase(name, "Installer") ||
         platform::EqualsIgnoringCase(name, "Deinstaller");
}

// Whether a deletion of the path has a tree to delete: path\path, as the primitive has it. A
// call that raises counts as a tree.
bool HasTreeToDelete(const char* path) {
  char tree[2 * CanonicalPath::kCapacity];
  (void)std::snprintf(tree, sizeof(tree), "%s\\%s", path, path);
  std::uint32_t exists = 0;
  return !GuardedCall(exists, [&] { return RegKeyExists(tree) ? 1u : 0u; }) || exists != 0;
}

}  // namespace

std::optional<Threat> ThreatOf(const RegistryChange& change) {
  if (change.path == nullptr) return std::nullopt;
  const bool isValue = change.kind == RegistryChange::ChangeValue;
  if (isValue && change.name == nullptr) return std::nullopt;

  CanonicalPath canonical;
  std::uint32_t approved = 0;
  // If this raises, the primitive does so as well.
  if (!GuardedCall(approved, [&] { return ApprovedForm(change.path, canonical) ? 1u : 0u; }) ||
      approved == 0) {
    return std::nullopt;
  }
  const char* const rest = BehindPermittedPrefix(canonical.text);
  if (LiesIn(rest, {"TrcParams"})) return Threat::TraceKey;
  if (isValue && IsPluginValue(change.name)) return Threat::PluginValue;
  // Plug-ins are looked up below this key alone. Without a nested tree nothing would be deleted.
  if (change.kind == RegistryChange::DeleteKey && LiesIn(rest, {"DefDevices", "DeviceID"}) &&
      HasTreeToDelete(canonical.text)) {
    return Threat::DeviceTree;
  }
  return std::nullopt;
}
