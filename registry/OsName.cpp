#include "registry/OsName.h"

#include <cstdio>

namespace {

constexpr std::uint32_t kWindowsNt = 2;
constexpr std::uint8_t kWorkstation = 1;
constexpr std::uint16_t kX64 = 9;
constexpr std::uint16_t kX86 = 0;
constexpr std::uint16_t kStorageServer = 0x2000;

// Versions from 6.0 on, whose names tell workstation and server apart and carry the architecture.
struct Release {
  std::uint32_t major;
  std::uint32_t minor;
  const char* workstation;
  const char* server;
};

constexpr Release kReleases[] = {
    {6, 0, "Windows Vista", "Windows Server 2008"}, {6, 1, "Windows 7", "Windows Server 2008 R2"},
    {6, 2, "Windows 8", "Windows Server 2012"},     {6, 3, "Windows 8.1", "Windows Server 2012 R2"},
    {10, 0, "Windows 10", "Windows Server 2016"},
};

const char* NameOfServer2003(const OsVersion& version) {
  if (version.serverR2) return "Windows Server 2003 R2";
  // Kept: the whole mask is compared, so a storage server with a further suite is none.
  if (version.suiteMask == kStorageServer) return "Windows Storage Server 2003";
  if (version.productType == kWorkstation && version.architecture == kX64) {
    return "Windows XP Professional x64 Edition";
  }
  return "Windows Server 2003";
}

const char* ArchitectureSuffix(std::uint16_t architecture) {
  if (architecture == kX64) return " (x64)";
  return architecture == kX86 ? " (x32)" : "";
}

struct Name {
  const char* name = "";
  const char* suffix = "";
};

Name NameOf(const OsVersion& version) {
  if (version.major == 5 && version.minor == 1) return {"Windows XP"};
  if (version.major == 5 && version.minor == 2) return {NameOfServer2003(version)};
  for (const Release& release : kReleases) {
    if (release.major != version.major || release.minor != version.minor) continue;
    return {version.productType == kWorkstation ? release.workstation : release.server,
            ArchitectureSuffix(version.architecture)};
  }
  return {};
}

}  // namespace

void FormatOsText(const OsVersion& version, char (&text)[kOsTextSize]) {
  text[0] = '\0';
  if (version.platformId != kWindowsNt || version.major < 5) return;
  const Name name = NameOf(version);
  (void)std::snprintf(text, sizeof(text), "Microsoft %s%s\t%u.%u %.127s", name.name, name.suffix,
                      version.major, version.minor, version.servicePack);
}

void GetOsName(char (&text)[kOsTextSize]) { FormatOsText(QueryOsVersion(), text); }
