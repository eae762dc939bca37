#ifndef STANDINS_BOARDSVC32_SECTIONREADER_H_
#define STANDINS_BOARDSVC32_SECTIONREADER_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "board/boardsvc32.h"
#include "standins/boardsvc32/InventoryText.h"

namespace boardsim {

/// Takes the keys of one section by name and type, and reports what does not fit.
class SectionReader {
 public:
  SectionReader(const InventorySection& section, std::vector<InventoryError>& errors);

  /// Each leaves its target as it is when the key is absent or reports why the value does not fit.
  SectionReader& Text(std::string_view key, std::string& value);
  SectionReader& Bytes(std::string_view key, std::string& value);
  SectionReader& Number(std::string_view key, std::uint32_t& value,
                        std::uint32_t most = UINT32_MAX);
  SectionReader& Number(std::string_view key, std::optional<std::uint32_t>& value);
  SectionReader& YesNo(std::string_view key, bool& value);
  SectionReader& Guid(std::string_view key, BRDX_GUID& value);

  /// Reports the key if the section lacks it.
  SectionReader& Required(std::string_view key);

  /// \returns the value as it stands, nothing if the section lacks the key.
  const std::string* Value(std::string_view key);

  /// Reports a problem at the key's line, or the section's if it lacks the key.
  void Complain(std::string_view key, const std::string& problem);

  /// Reports every key that nobody asked for.
  void End();

 private:
  const InventoryEntry* Find(std::string_view key);

  const InventorySection& section_;
  std::vector<InventoryError>& errors_;
  std::vector<bool> asked_;
};

}  // namespace boardsim

#endif  // STANDINS_BOARDSVC32_SECTIONREADER_H_
