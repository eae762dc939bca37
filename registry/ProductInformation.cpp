#include "registry/ProductInformation.h"

#include <cstdio>
#include <cstring>

#include "registry/OsName.h"

namespace {

// The stack tells its own name, a tab and its release.
ProductText LookUpStack(const char* key) {
  static constexpr const char* kNames[] = {"DisplayName", "Release"};
  ProductValue values[2];
  ProductText text;
  if (ReadProductValues(key, kNames, values, /*count=*/2)) {
    (void)std::snprintf(text.text, sizeof(text.text), "%s\t%s", values[0].text, values[1].text);
  }
  return text;
}

// Siblings are told by a name of ours, a tab and a value of theirs.
ProductText LookUpSibling(const char* key, const char* label, const char* valueName) {
  ProductValue value;
  ProductText text;
  if (ReadProductValues(key, &valueName, &value, /*count=*/1)) {
    (void)std::snprintf(text.text, sizeof(text.text), "%s\t%s", label, value.text);
  }
  return text;
}

void Fill(char (&slot)[ProductInfoRecord::kSlotSize], const char* text) {
  std::memcpy(slot, text, strnlen(text, sizeof(slot)));
}

}  // namespace

ProductText LookUpStack64() { return LookUpStack("SOFTWARE\\Vesmark\\Shared Tools\\MIREL64"); }
ProductText LookUpStack32() { return LookUpStack("SOFTWARE\\Vesmark\\Shared Tools\\MIREL"); }
ProductText LookUpStack32Through32BitView() {
  return LookUpStack("SOFTWARE\\Wow6432Node\\Vesmark\\Shared Tools\\MIREL");
}
ProductText LookUpStationMark() {
  return LookUpSibling("SOFTWARE\\Vesmark\\KOMPW\\StationMark", "Fennix StationMark",
                       "PackVersion");
}
ProductText LookUpCloudBridge() {
  return LookUpSibling("SOFTWARE\\Vesmark\\KOMPW\\LinkBr64", "Fennix Cloud Bridge", "Release");
}

std::uint32_t GatherProductInformation(ProductInfoRecord& record) {
  Fill(record.stack64, LookUpStack64().text);
  Fill(record.stack32, LookUpStack32().text);
  Fill(record.stationMark, LookUpStationMark().text);
  Fill(record.cloudBridge, LookUpCloudBridge().text);
  char osName[kOsTextSize];
  GetOsName(osName);
  Fill(record.osName, osName);
  return 0;
}
