#include "registry/ProductInformation.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <string>

#include "registry/OsName.h"
#include "tests/support/RegistrySetup.h"

namespace {

using registry_setup::kDword;
using registry_setup::kSz;

// Everything lies in one tree, so that a test leaves nothing behind.
const std::string kTree = "SOFTWARE\\Vesmark";
const std::string kStack64 = kTree + "\\Shared Tools\\MIREL64";
const std::string kStack32 = kTree + "\\Shared Tools\\MIREL";
const std::string kStack32View = "SOFTWARE\\Wow6432Node\\Vesmark\\Shared Tools\\MIREL";
const std::string kStationMark = kTree + "\\KOMPW\\StationMark";
const std::string kCloudBridge = kTree + "\\KOMPW\\LinkBr64";

class ProductInformationTest : public testing::Test {
 protected:
  ProductInformationTest() { Clear(); }
  ~ProductInformationTest() override { Clear(); }

  static void Clear() {
    for (const std::string& key : {kStack64, kStack32, kStack32View, kStationMark, kCloudBridge}) {
      registry_setup::DeleteTree(key);
    }
  }

  static void Set(const std::string& key, const std::string& name, const std::string& text) {
    registry_setup::CreateKey(key);
    registry_setup::SetValue(key, name, kSz, TextBytes(text) + Bytes{0});
  }

  // A slot up to the zeros that the caller filled it with.
  template <std::size_t Size>
  static std::string Slot(const char (&slot)[Size]) {
    return {slot, strnlen(slot, Size)};
  }
};

TEST_F(ProductInformationTest, AnInstalledStackIsNameTabRelease) {
  Set(kStack64, "DisplayName", "Stack");
  Set(kStack64, "Release", "V9.1");
  EXPECT_STREQ(LookUpStack64().text, "Stack\tV9.1");
}

TEST_F(ProductInformationTest, AMissingValueLeavesItsPartEmpty) {
  Set(kStack32, "DisplayName", "Stack");
  EXPECT_STREQ(LookUpStack32().text, "Stack\t");
  registry_setup::CreateKey(kStack64);
  EXPECT_STREQ(LookUpStack64().text, "\t");
}

TEST_F(ProductInformationTest, TheSiblingsBringTheirLabels) {
  Set(kStationMark, "PackVersion", "4.2");
  registry_setup::CreateKey(kCloudBridge);
  EXPECT_STREQ(LookUpStationMark().text, "Fennix StationMark\t4.2");
  EXPECT_STREQ(LookUpCloudBridge().text, "Fennix Cloud Bridge\t");
  Set(kCloudBridge, "Release", "1.0");
  EXPECT_STREQ(LookUpCloudBridge().text, "Fennix Cloud Bridge\t1.0");
}

TEST_F(ProductInformationTest, TheViewOf32BitProgramsHasAKeyOfItsOwn) {
  Set(kStack32View, "DisplayName", "Stack");
  Set(kStack32View, "Release", "V9");
  EXPECT_STREQ(LookUpStack32Through32BitView().text, "Stack\tV9");
  EXPECT_STREQ(LookUpStack32().text, "");
}

TEST_F(ProductInformationTest, AKeyThatIsMissingYieldsNoText) {
  EXPECT_STREQ(LookUpStack64().text, "");
  EXPECT_STREQ(LookUpCloudBridge().text, "");
}

TEST_F(ProductInformationTest, AValueOfMoreThan128BytesIsLeftOut) {
  Set(kStack64, "DisplayName", std::string(128, 'd'));
  Set(kStack64, "Release", std::string(127, 'r'));
  EXPECT_EQ(LookUpStack64().text, "\t" + std::string(127, 'r'));
}

TEST_F(ProductInformationTest, TheRecordHasFiveSlotsInOrder) {
  Set(kStack64, "DisplayName", "A");
  Set(kStack32, "DisplayName", "B");
  Set(kStationMark, "PackVersion", "C");
  Set(kCloudBridge, "Release", "D");
  ProductInfoRecord record = {};
  EXPECT_EQ(GatherProductInformation(record), 0u);
  EXPECT_EQ(Slot(record.stack64), "A\t");
  EXPECT_EQ(Slot(record.stack32), "B\t");
  EXPECT_EQ(Slot(record.stationMark), "Fennix StationMark\tC");
  EXPECT_EQ(Slot(record.cloudBridge), "Fennix Cloud Bridge\tD");
  char osName[kOsTextSize];
  GetOsName(osName);
  EXPECT_EQ(Slot(record.osName), osName);
  EXPECT_NE(Slot(record.osName), "");
}

TEST_F(ProductInformationTest, ASlotWithoutATextIsLeftUntouchedAndATextBringsNoTerminator) {
  Set(kStationMark, "PackVersion", "C");
  ProductInfoRecord record;
  std::memset(&record, '#', sizeof(record));
  EXPECT_EQ(GatherProductInformation(record), 0u);
  const std::string untouched(ProductInfoRecord::kSlotSize, '#');
  EXPECT_EQ(std::string(record.stack64, sizeof(record.stack64)), untouched);
  EXPECT_EQ(std::string(record.stack32, sizeof(record.stack32)), untouched);
  EXPECT_EQ(std::string(record.cloudBridge, sizeof(record.cloudBridge)), untouched);
  const auto filled = [&untouched](const std::string& text) {
    return text + untouched.substr(text.size());
  };
  EXPECT_EQ(std::string(record.stationMark, sizeof(record.stationMark)),
            filled("Fennix StationMark\tC"));
  char osName[kOsTextSize];
  GetOsName(osName);
  EXPECT_EQ(std::string(record.osName, sizeof(record.osName)), filled(osName));
}

TEST(ProductInfoRecordTest, ItsSlotsLieOneBehindTheOther) {
  EXPECT_EQ(offsetof(ProductInfoRecord, stack64), 0u);
  EXPECT_EQ(offsetof(ProductInfoRecord, stack32), 260u);
  EXPECT_EQ(offsetof(ProductInfoRecord, stationMark), 520u);
  EXPECT_EQ(offsetof(ProductInfoRecord, cloudBridge), 780u);
  EXPECT_EQ(offsetof(ProductInfoRecord, osName), 1040u);
  EXPECT_EQ(sizeof(ProductInfoRecord), 1300u);
}

}  // namespace
