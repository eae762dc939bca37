#ifndef CODEC_WIRE_H_
#define CODEC_WIRE_H_

/// Bounded cursors over wire bytes. All integers on the wire are unsigned, little-endian and
/// without padding or alignment between them.
///
/// A cursor counts the bytes that lie behind it and never passes the bound that it is checked
/// against. An operation that fails moves nothing and copies nothing. Every check compares with
/// what is left, never with a sum, because a sum of two 32-bit lengths can wrap.

#include <bit>
#include <concepts>
#include <cstdint>
#include <cstring>

namespace wire {

// Values are copied as they lie in memory, which is the wire's order on every target we build for.
static_assert(std::endian::native == std::endian::little);

/// The fixed-size values of the wire.
template <typename T>
concept Value = std::same_as<T, std::uint8_t> || std::same_as<T, std::uint16_t> ||
    std::same_as<T, std::uint32_t> || std::same_as<T, std::uint64_t>;

/// The value at `from`, which needs no alignment and holds at least sizeof(T) bytes.
template <Value T>
T Load(const std::uint8_t* from) {
  T value;
  std::memcpy(&value, from, sizeof(T));
  return value;
}

/// Writes `value` to `to`, which needs no alignment and has room for sizeof(T) bytes.
template <Value T>
void Store(std::uint8_t* to, T value) {
  std::memcpy(to, &value, sizeof(T));
}

/// Bytes between the cursor and the bound; 0 also for a cursor that already lies behind it.
inline std::uint32_t Left(std::uint32_t bound, std::uint32_t cursor) {
  return cursor < bound ? bound - cursor : 0;
}

/// Takes one value off `size` bytes of data. \returns false, with nothing changed, when fewer bytes
/// are left than the value has.
template <Value T>
[[nodiscard]] bool Take(const std::uint8_t* data, std::uint32_t size, std::uint32_t& cursor,
                        T& value) {
  if (Left(size, cursor) < sizeof(T)) return false;
  value = Load<T>(data + cursor);
  cursor += static_cast<std::uint32_t>(sizeof(T));
  return true;
}

/// Appends one value to a buffer of `capacity` bytes. \returns false, with nothing changed, when it
/// does not fit.
template <Value T>
[[nodiscard]] bool Put(std::uint8_t* data, std::uint32_t capacity, std::uint32_t& cursor, T value) {
  if (Left(capacity, cursor) < sizeof(T)) return false;
  Store(data + cursor, value);
  cursor += static_cast<std::uint32_t>(sizeof(T));
  return true;
}

/// Copies bytes that do not overlap. Texts of requests are mostly names of a few bytes, which the
/// platform's copy, made for long runs, takes longer for than two copies of a fixed size.
inline void CopyBytes(void* to, const void* from, std::uint32_t length) {
  constexpr std::uint32_t kBlock = 16;
  if (length < kBlock || length > 2 * kBlock) {
    std::memcpy(to, from, length);
    return;
  }
  // The first and the last block, which overlap unless they are all there is.
  std::uint8_t first[kBlock];
  std::uint8_t last[kBlock];
  auto* const out = static_cast<std::uint8_t*>(to);
  const auto* const in = static_cast<const std::uint8_t*>(from);
  std::memcpy(first, in, kBlock);
  std::memcpy(last, in + length - kBlock, kBlock);
  std::memcpy(out, first, kBlock);
  std::memcpy(out + length - kBlock, last, kBlock);
}

/// Takes `length` raw bytes off `size` bytes of data. \returns false, with nothing changed, when
/// fewer are left. `to` may be null when `length` is 0.
[[nodiscard]] inline bool TakeBytes(const std::uint8_t* data, std::uint32_t size,
                                    std::uint32_t& cursor, void* to, std::uint32_t length) {
  if (length > Left(size, cursor)) return false;
  if (length != 0) CopyBytes(to, data + cursor, length);
  cursor += length;
  return true;
}

/// Appends `length` raw bytes to a buffer of `capacity` bytes. \returns false, with nothing
/// changed, when they do not fit. `from` may be null when `length` is 0.
[[nodiscard]] inline bool PutBytes(std::uint8_t* data, std::uint32_t capacity,
                                   std::uint32_t& cursor, const void* from, std::uint32_t length) {
  if (length > Left(capacity, cursor)) return false;
  if (length != 0) CopyBytes(data + cursor, from, length);
  cursor += length;
  return true;
}

}  // namespace wire

#endif  // CODEC_WIRE_H_
