#include "client/RequestBuilder.h"

#include "codec/Wire.h"

namespace client {

// The bytes behind size_ are never looked at, so they are not cleared.
// NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init)
RequestBuilder::RequestBuilder(CommandCode command) noexcept {
  Short(static_cast<std::uint16_t>(command));
}

template <typename T>
RequestBuilder& RequestBuilder::Number(T value) noexcept {
  complete_ = complete_ && wire::Put(bytes_.data(), kMessageLimit, size_, value);
  return *this;
}

RequestBuilder& RequestBuilder::Byte(std::uint8_t value) noexcept { return Number(value); }
RequestBuilder& RequestBuilder::Short(std::uint16_t value) noexcept { return Number(value); }
RequestBuilder& RequestBuilder::Long(std::uint32_t value) noexcept { return Number(value); }
RequestBuilder& RequestBuilder::LongLong(std::uint64_t value) noexcept { return Number(value); }

RequestBuilder& RequestBuilder::Counted(const void* data, std::size_t size) noexcept {
  // Checked before the length is narrowed; a request never comes near the length that says absent.
  if (size > kMessageLimit) {
    complete_ = false;
    return *this;
  }
  const auto length = static_cast<std::uint32_t>(size);
  Number(length);
  complete_ = complete_ && wire::PutBytes(bytes_.data(), kMessageLimit, size_, data, length);
  return *this;
}

RequestBuilder& RequestBuilder::Text(std::string_view text) noexcept {
  return Counted(text.data(), text.size());
}

RequestBuilder& RequestBuilder::Text(const char* text) noexcept {
  return text != nullptr ? Text(std::string_view(text)) : AbsentText();
}

RequestBuilder& RequestBuilder::AbsentText() noexcept { return Number(kAbsentLength); }

RequestBuilder& RequestBuilder::Buffer(Bytes bytes) noexcept {
  return Counted(bytes.data(), bytes.size());
}

RequestBuilder& RequestBuilder::AbsentBuffer() noexcept { return Number(kAbsentLength); }

}  // namespace client
