#ifndef REGISTRY_PRODUCTINFORMATION_H_
#define REGISTRY_PRODUCTINFORMATION_H_

#include <cstddef>
#include <cstdint>

/// What is installed on this machine: five texts, each without a terminator in a slot that the
/// caller has filled with zeros. A slot without a text is left as it was.
struct ProductInfoRecord {
  static constexpr std::size_t kSlotSize = 260;
  char stack64[kSlotSize];      ///< 64-bit registration of the stack
  char stack32[kSlotSize];      ///< 32-bit registration of the stack
  char stationMark[kSlotSize];  ///< Fennix StationMark
  char cloudBridge[kSlotSize];  ///< Fennix Cloud Bridge
  char osName[kSlotSize];       ///< the operating system
};

/// Fills in what is known. \returns 0.
std::uint32_t GatherProductInformation(ProductInfoRecord& record);

/// A text of one look-up, terminated; empty when its key cannot be opened.
struct ProductText {
  char text[ProductInfoRecord::kSlotSize + 1] = {};
};

ProductText LookUpStack64();
ProductText LookUpStack32();
/// The 32-bit registration as a 64-bit program sees it.
ProductText LookUpStack32Through32BitView();
ProductText LookUpStationMark();
ProductText LookUpCloudBridge();

/// What was read of one value: empty when it is missing or longer than this.
struct ProductValue {
  char text[128 + 1] = {};
};

/// Reads one value of a key below HKEY_LOCAL_MACHINE, opened for reading, of at most 128 bytes.
/// \returns false when the key cannot be opened.
bool ReadProductValues(const char* key, const char* const* names, ProductValue* values,
                       std::size_t count);

#endif  // REGISTRY_PRODUCTINFORMATION_H_
