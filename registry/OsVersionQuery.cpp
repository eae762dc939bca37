#include <windows.h>

#include <cstring>

#include "registry/OsName.h"

OsVersion QueryOsVersion() {
  OSVERSIONINFOEXA info = {};
  info.dwOSVersionInfoSize = sizeof(info);
  SYSTEM_INFO system = {};
  GetNativeSystemInfo(&system);
  OsVersion version = {};
  if (GetVersionExA(reinterpret_cast<OSVERSIONINFOA*>(&info)) == FALSE) return version;

  version.platformId = info.dwPlatformId;
  version.major = info.dwMajorVersion;
  version.minor = info.dwMinorVersion;
  version.suiteMask = info.wSuiteMask;
  version.productType = info.wProductType;
  version.architecture = system.wProcessorArchitecture;
  version.serverR2 = GetSystemMetrics(SM_SERVERR2) != 0;
  static_assert(sizeof(version.servicePack) == sizeof(info.szCSDVersion));
  std::memcpy(version.servicePack, info.szCSDVersion, sizeof(version.servicePack) - 1);
  return version;
}
