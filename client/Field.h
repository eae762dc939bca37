#ifndef CLIENT_FIELD_H_
#define CLIENT_FIELD_H_

#include <cstdint>
#include <span>
#include <string_view>

namespace client {

using Bytes = std::span<const std::uint8_t>;

/// Bytes of a request that the server reads at once, and of one reply, at most.
inline constexpr std::uint32_t kMessageLimit = 8192;

/// How a field lies on the wire. Text and Buffer are a 32-bit length and that many bytes; Guid is
/// its 16 bytes.
enum class FieldKind : std::uint8_t { Byte, Short, Long, Guid, Text, Buffer };

struct Field {
  FieldKind kind = FieldKind::Byte;
  std::string_view name;
};

/// The fields of a message, one after another, off a description such as "text key; long index".
///
/// Kinds are written byte, short, long, guid, text and buffer. The description must outlive the
/// list and the names taken off it.
class FieldList {
 public:
  constexpr explicit FieldList(std::string_view description) : rest_(description) {}

  /// \returns false at the end, and where the description is wrong: see IsFieldList.
  constexpr bool Next(Field& field) {
    const std::size_t end = rest_.find("; ");
    const std::string_view item = rest_.substr(0, end);
    const std::size_t blank = item.find(' ');
    if (blank == std::string_view::npos || !KindOf(item.substr(0, blank), field.kind)) return false;
    field.name = item.substr(blank + 1);
    rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 2);
    return true;
  }
  constexpr bool AtEnd() const { return rest_.empty(); }

 private:
  static constexpr bool KindOf(std::string_view word, FieldKind& kind) {
    constexpr struct {
      std::string_view word;
      FieldKind kind;
    } kKinds[] = {{"byte", FieldKind::Byte}, {"short", FieldKind::Short},
                  {"long", FieldKind::Long}, {"guid", FieldKind::Guid},
                  {"text", FieldKind::Text}, {"buffer", FieldKind::Buffer}};
    for (const auto& known : kKinds) {
      if (known.word == word) {
        kind = known.kind;
        return true;
      }
    }
    return false;
  }

  std::string_view rest_;
};

/// Whether a description can be read to its end; for compile-time checks of the tables.
constexpr bool IsFieldList(std::string_view description) {
  FieldList fields(description);
  Field field;
  while (fields.Next(field)) {
    if (field.name.empty() || field.name.find(' ') != std::string_view::npos) return false;
  }
  return fields.AtEnd() && !description.ends_with(' ');
}

/// One field's value off a message. `bytes` points into the message.
struct FieldValue {
  std::uint32_t number = 0;  ///< of byte, short and long
  Bytes bytes;               ///< of guid, text and buffer
  bool absent = false;       ///< a text or buffer whose length says that there is none
};

enum class FieldStatus : std::uint8_t {
  Taken,
  CutShort,  ///< the message ends within the field; the cursor has not moved
  TooLong,   ///< the length cannot be within the limit; the cursor stands behind the length
};

/// Takes one field off a message.
///
/// \param limit how long the message may be once it is whole; at least its present size
/// \param mayBeAbsent whether the length 65535 means that there is no value, as it does in requests
FieldStatus TakeField(FieldKind kind, Bytes message, std::uint32_t limit, bool mayBeAbsent,
                      std::uint32_t& cursor, FieldValue& value) noexcept;

}  // namespace client

#endif  // CLIENT_FIELD_H_
