#ifndef REGISTRY_OSNAME_H_
#define REGISTRY_OSNAME_H_

#include <cstdint>

/// What the platform says of itself.
struct OsVersion {
  std::uint32_t platformId;  ///< 2 for the Windows NT line
  std::uint32_t major;
  std::uint32_t minor;
  std::uint16_t suiteMask;
  std::uint8_t productType;    ///< 1 for a workstation
  std::uint16_t architecture;  ///< 9 for x64, 0 for x86
  bool serverR2;               ///< the metric of a second release
  char servicePack[128];       ///< terminated; empty without one
};

/// Room for the longest text, terminator included.
inline constexpr std::uint32_t kOsTextSize = 260;

/// Asks the platform. A program without a manifest for newer systems gets what they pretend.
OsVersion QueryOsVersion();

/// "name, tab, major.minor, blank, service pack", as "Microsoft Windows 7 (x64)\t6.1 Service Pack
/// 1"; empty for a system that is not of the Windows NT line or older than 5.0. A version that has
/// no name here is "Microsoft " alone.
void FormatOsText(const OsVersion& version, char (&text)[kOsTextSize]);

/// The text of this system.
void GetOsName(char (&text)[kOsTextSize]);

#endif  // REGISTRY_OSNAME_H_
