#include "registry/RegistryPolicy.h"

#include <cstdio>
#include <cstring>

#include "platform/AsciiCase.h"
#include "platform/EventLog.h"
#include "registry/RegistryOperation.h"

namespace {

constexpr const char* kPermittedRegRoot[] = {
    "SOFTWARE\\Vesmark\\NORVA",
    // The same tree as the 64-bit view of the registry shows it.
    "SOFTWARE\\Wow6432Node\\Vesmark\\NORVA",
};

constexpr std::size_t kLongestPath = 260;

void ReportRefusal(const char* path) {
  // Room for the longest text that a request can carry.
  static constexpr char kText[] = "Invalid Access to Reg-Key: ";
  char text[sizeof(kText) + 8192];
  (void)std::snprintf(text, sizeof(text), "%s%s", kText, path);
  ReportErrorEvent(kRegistryEventSource, text);
}

}  // namespace

// The prefixes are ASCII, and no byte outside ASCII folds to an ASCII letter that they contain, nor
// is a lead byte of a double-byte code page ASCII. So folding ASCII alone decides as the
// multi-byte compare of the platform does, on every code page.
const char* BehindPermittedPrefix(const char* canonical) {
  for (const char* const root : kPermittedRegRoot) {
    if (platform::StartsWithIgnoringCase(canonical, root)) return canonical + std::strlen(root);
  }
  return nullptr;
}

bool ApprovedForm(const char* path, CanonicalPath& canonical) {
  return std::strlen(path) <= kLongestPath && CanonicalisePath(path, canonical) &&
         BehindPermittedPrefix(canonical.text) != nullptr;
}

bool IsPermittedRegKey(const char* path, CanonicalPath& canonical) {
  if (ApprovedForm(path, canonical)) return true;
  ReportRefusal(path);
  return false;
}

bool IsPermittedRegKey(const char* path) {
  CanonicalPath canonical;
  return IsPermittedRegKey(path, canonical);
}
