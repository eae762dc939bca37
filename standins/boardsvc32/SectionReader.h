#ifndef STANDINS_BOARDSVC32_SECTIONREADER_H_
#define STANDINS_BOARDSVC32_SECTIONREADER_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "board/boardsvc32.h"
#include "standins/boardsvc32/InventoryText.h"
#include "standins/script/SectionReader.h"

namespace boardsim {

/// Takes the keys of one section by name and by the types that an inventory has.
class SectionReader : public standin::SectionReader {
 public:
  using standin::SectionReader::SectionReader;

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
};

}  // namespace boardsim

#endif  // STANDINS_BOARDSVC32_SECTIONREADER_H_
