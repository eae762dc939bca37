#ifndef REGISTRY_REGISTRYPOLICY_H_
#define REGISTRY_REGISTRYPOLICY_H_

/// What clients may change: the stack's own tree below HKEY_LOCAL_MACHINE, and nothing else.

/// Event-log source of every refusal.
inline constexpr char kRegistryEventSource[] = "MIREL RegistryOperation";

/// A path in the form that the platform's canonicaliser gives it, dot elements resolved.
struct CanonicalPath {
  static constexpr unsigned kCapacity = 260;
  char text[kCapacity] = {};
};

/// Decides whether a change below `path` (relative to HKEY_LOCAL_MACHINE) is allowed.
///
/// A refusal is reported to the event log, with the path in the caller's spelling.
///
/// \param path zero-terminated; a path above 260 bytes is refused
/// \param canonical receives the form that was approved. Whoever changes the registry uses this
///   form, so that nothing but what was approved can be reached.
bool IsPermittedRegKey(const char* path, CanonicalPath& canonical);

/// The same, for callers that only want to know.
bool IsPermittedRegKey(const char* path);

/// The same decision without a report, for who asks ahead of the change.
bool ApprovedForm(const char* path, CanonicalPath& canonical);

/// What follows the permitted prefix of a canonical path, null if it has none.
///
/// Kept: a pure prefix test without regard to case, with no look at what follows the prefix, so
/// NORVA2 and NORVAX are permitted like NORVA.
const char* BehindPermittedPrefix(const char* canonical);

#endif  // REGISTRY_REGISTRYPOLICY_H_
