#ifndef REGISTRY_STRICTREGISTRY_H_
#define REGISTRY_STRICTREGISTRY_H_

#include <optional>

#include "server/StrictProfile.h"

/// Which of the changes that clients ask for the strict profile is about: values that name the code
/// which the server runs, in whatever permitted key, and the configuration of its trace.

/// A change as a request asks for it. It is judged by the form that the policy approves, which is
/// what the registry gets, so the spelling makes no difference.
struct RegistryChange {
  enum Kind { CreateKey, DeleteKey, ChangeValue };
  Kind kind;
  const char* path;            ///< null when absent
  const char* name = nullptr;  ///< of ChangeValue; null when absent
};

/// \returns nothing for a change that the policy refuses, or that cannot happen because a text is
///   absent: these are answered as ever.
std::optional<strict_profile::Threat> ThreatOf(const RegistryChange& change);

/// Whether the profile refuses the change to this client. Asked in front of the primitive, outside
/// its guard.
inline bool StrictProfileRefuses(int conId, const RegistryChange& change) {
  if (!strict_profile::IsOn()) return false;
  const std::optional<strict_profile::Threat> threat = ThreatOf(change);
  return threat && strict_profile::Refuses(*threat, conId, change.path, change.name);
}

#endif  // REGISTRY_STRICTREGISTRY_H_
