#include "standins/boardsvc32/SectionReader.h"

#include <charconv>

namespace boardsim {

namespace {

// "01 02 FF" and "0102FF" are the same; a byte is not torn apart.
bool ReadBytes(std::string_view text, std::string& bytes) {
  for (text = TrimBlanks(text); !text.empty(); text = TrimBlanks(text)) {
    if (text.size() < 2) return false;
    unsigned byte = 0;
    const char* const end = text.data() + 2;
    const auto [stop, error] = std::from_chars(text.data(), end, byte, 16);
    if (error != std::errc() || stop != end) return false;
    bytes += static_cast<char>(byte);
    text.remove_prefix(2);
  }
  return true;
}

template <typename Number>
bool ReadHexGroup(std::string_view digits, Number& number) {
  std::uint32_t value = 0;
  const char* const end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, value, 16);
  if (error != std::errc() || stop != end) return false;
  number = static_cast<Number>(value);
  return true;
}

// {01234567-89ab-cdef-0123-456789abcdef}
bool ReadGuid(std::string_view text, BRDX_GUID& guid) {
  if (text.size() != 38 || text[0] != '{' || text[37] != '}') return false;
  for (const std::size_t hyphen : {9u, 14u, 19u, 24u}) {
    if (text[hyphen] != '-') return false;
  }
  bool good = ReadHexGroup(text.substr(1, 8), guid.Data1) &&
              ReadHexGroup(text.substr(10, 4), guid.Data2) &&
              ReadHexGroup(text.substr(15, 4), guid.Data3);
  for (std::size_t at = 0; at < 8; ++at) {
    good = good && ReadHexGroup(text.substr(at < 2 ? 20 + 2 * at : 21 + 2 * at, 2), guid.Data4[at]);
  }
  return good;
}

}  // namespace

SectionReader& SectionReader::Text(std::string_view key, std::string& value) {
  const std::string* const found = Value(key);
  if (found != nullptr) value = *found;
  return *this;
}

SectionReader& SectionReader::Bytes(std::string_view key, std::string& value) {
  const std::string* const found = Value(key);
  std::string bytes;
  if (found != nullptr && !ReadBytes(*found, bytes)) {
    Complain(key, "bytes are pairs of hexadecimal digits");
  } else if (found != nullptr) {
    value = bytes;
  }
  return *this;
}

SectionReader& SectionReader::Number(std::string_view key, std::uint32_t& value,
                                     std::uint32_t most) {
  std::optional<std::uint32_t> number;
  (void)standin::SectionReader::Number(key, number, most);
  value = number.value_or(value);
  return *this;
}

SectionReader& SectionReader::Number(std::string_view key, std::optional<std::uint32_t>& value) {
  (void)standin::SectionReader::Number(key, value);
  return *this;
}

SectionReader& SectionReader::YesNo(std::string_view key, bool& value) {
  const std::string* const found = Value(key);
  if (found == nullptr) return *this;
  if (*found != "yes" && *found != "no") {
    Complain(key, "yes or no is wanted");
  } else {
    value = *found == "yes";
  }
  return *this;
}

SectionReader& SectionReader::Guid(std::string_view key, BRDX_GUID& value) {
  const std::string* const found = Value(key);
  if (found != nullptr && !ReadGuid(*found, value)) {
    Complain(key, "a GUID is {01234567-89ab-cdef-0123-456789abcdef}");
  }
  return *this;
}

SectionReader& SectionReader::Required(std::string_view key) {
  (void)standin::SectionReader::Required(key);
  return *this;
}

}  // namespace boardsim
