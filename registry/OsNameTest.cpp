#include "registry/OsName.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

constexpr std::uint8_t kWorkstation = 1;
constexpr std::uint8_t kServer = 3;
constexpr std::uint16_t kX86 = 0;
constexpr std::uint16_t kIa64 = 6;
constexpr std::uint16_t kX64 = 9;

OsVersion Version(std::uint32_t major, std::uint32_t minor, std::uint8_t productType,
                  std::uint16_t architecture) {
  OsVersion version = {};
  version.platformId = 2;
  version.major = major;
  version.minor = minor;
  version.productType = productType;
  version.architecture = architecture;
  return version;
}

std::string TextOf(const OsVersion& version) {
  char text[kOsTextSize] = "left over";
  FormatOsText(version, text);
  return text;
}

struct Row {
  OsVersion version;
  const char* text;
};

class OsNameRowTest : public testing::TestWithParam<Row> {};

TEST_P(OsNameRowTest, HasItsName) { EXPECT_EQ(TextOf(GetParam().version), GetParam().text); }

OsVersion With(OsVersion version, std::uint16_t suiteMask, bool serverR2 = false) {
  version.suiteMask = suiteMask;
  version.serverR2 = serverR2;
  return version;
}

INSTANTIATE_TEST_SUITE_P(
    Versions, OsNameRowTest,
    testing::Values(
        Row{Version(5, 1, kWorkstation, kX86), "Microsoft Windows XP\t5.1 "},
        Row{Version(5, 1, kWorkstation, kX64), "Microsoft Windows XP\t5.1 "},
        Row{With(Version(5, 2, kServer, kX86), 0, true), "Microsoft Windows Server 2003 R2\t5.2 "},
        Row{With(Version(5, 2, kServer, kX86), 0x2000, true),
            "Microsoft Windows Server 2003 R2\t5.2 "},
        Row{With(Version(5, 2, kServer, kX86), 0x2000),
            "Microsoft Windows Storage Server 2003\t5.2 "},
        Row{With(Version(5, 2, kServer, kX86), 0x2010), "Microsoft Windows Server 2003\t5.2 "},
        Row{With(Version(5, 2, kWorkstation, kX64), 0x2010),
            "Microsoft Windows XP Professional x64 Edition\t5.2 "},
        // The rows in the order in which they are asked: each wins over those behind it.
        Row{With(Version(5, 2, kWorkstation, kX64), 0x2000, true),
            "Microsoft Windows Server 2003 R2\t5.2 "},
        Row{With(Version(5, 2, kWorkstation, kX64), 0x2000),
            "Microsoft Windows Storage Server 2003\t5.2 "},
        Row{Version(5, 2, kWorkstation, kX86), "Microsoft Windows Server 2003\t5.2 "},
        Row{Version(5, 2, kWorkstation, kIa64), "Microsoft Windows Server 2003\t5.2 "},
        Row{Version(5, 2, kServer, kX64), "Microsoft Windows Server 2003\t5.2 "},
        Row{Version(6, 0, kWorkstation, kX86), "Microsoft Windows Vista (x32)\t6.0 "},
        Row{Version(6, 0, kServer, kX64), "Microsoft Windows Server 2008 (x64)\t6.0 "},
        Row{Version(6, 1, kWorkstation, kX64), "Microsoft Windows 7 (x64)\t6.1 "},
        Row{Version(6, 1, kServer, kX86), "Microsoft Windows Server 2008 R2 (x32)\t6.1 "},
        Row{Version(6, 2, kWorkstation, kX86), "Microsoft Windows 8 (x32)\t6.2 "},
        Row{Version(6, 2, kServer, kX64), "Microsoft Windows Server 2012 (x64)\t6.2 "},
        Row{Version(6, 3, kWorkstation, kX64), "Microsoft Windows 8.1 (x64)\t6.3 "},
        Row{Version(6, 3, 2, kX64), "Microsoft Windows Server 2012 R2 (x64)\t6.3 "},
        Row{Version(10, 0, kWorkstation, kIa64), "Microsoft Windows 10\t10.0 "},
        Row{Version(10, 0, kServer, kX64), "Microsoft Windows Server 2016 (x64)\t10.0 "},
        // Neither suites nor the second release's metric count from here on.
        Row{With(Version(6, 1, kServer, kX64), 0x2000, true),
            "Microsoft Windows Server 2008 R2 (x64)\t6.1 "},
        Row{With(Version(5, 1, kServer, kX64), 0x2000, true), "Microsoft Windows XP\t5.1 "},
        Row{Version(5, 3, kWorkstation, kX64), "Microsoft \t5.3 "},
        Row{Version(11, 0, kWorkstation, kX64), "Microsoft \t11.0 "},
        Row{Version(6, 4, kWorkstation, kX64), "Microsoft \t6.4 "},
        Row{Version(10, 1, kWorkstation, kX64), "Microsoft \t10.1 "},
        Row{Version(5, 0, kWorkstation, kX86), "Microsoft \t5.0 "},
        Row{Version(4, 0, kWorkstation, kX86), ""}));

TEST(OsNameTest, EveryReleaseFrom60OnHasBothNamesWithEverySuffix) {
  constexpr struct {
    std::uint32_t major, minor;
    const char* workstation;
    const char* other;
  } kNames[] = {{6, 0, "Vista", "Server 2008"},
                {6, 1, "7", "Server 2008 R2"},
                {6, 2, "8", "Server 2012"},
                {6, 3, "8.1", "Server 2012 R2"},
                {10, 0, "10", "Server 2016"}};
  constexpr struct {
    std::uint16_t architecture;
    const char* suffix;
  } kSuffixes[] = {{kX64, " (x64)"}, {kX86, " (x32)"}, {kIa64, ""}, {12, ""}};
  for (const auto& name : kNames) {
    const std::string number =
        '\t' + std::to_string(name.major) + '.' + std::to_string(name.minor) + ' ';
    for (const auto& [architecture, suffix] : kSuffixes) {
      for (const std::uint8_t type : {std::uint8_t{1}, std::uint8_t{2}, std::uint8_t{3}}) {
        EXPECT_EQ(TextOf(Version(name.major, name.minor, type, architecture)),
                  std::string("Microsoft Windows ") + (type == 1 ? name.workstation : name.other) +
                      suffix + number);
      }
    }
  }
}

TEST(OsNameTest, AnotherPlatformHasNoText) {
  OsVersion version = Version(6, 1, kWorkstation, kX64);
  version.platformId = 1;
  EXPECT_EQ(TextOf(version), "");
}

TEST(OsNameTest, TheServicePackStandsBehindTheVersion) {
  OsVersion version = Version(6, 1, kWorkstation, kX64);
  std::strcpy(version.servicePack, "Service Pack 1");
  EXPECT_EQ(TextOf(version), "Microsoft Windows 7 (x64)\t6.1 Service Pack 1");
}

TEST(OsNameTest, TheLongestServicePackStaysWithinTheText) {
  OsVersion version = Version(4294967295, 4294967295, kWorkstation, kX64);
  std::memset(version.servicePack, 'p', sizeof(version.servicePack));
  EXPECT_EQ(TextOf(version), "Microsoft \t4294967295.4294967295 " +
                                 std::string(sizeof(version.servicePack) - 1, 'p'));
}

}  // namespace
