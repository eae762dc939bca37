#ifndef CLIENT_REQUESTBUILDER_H_
#define CLIENT_REQUESTBUILDER_H_

#include <array>
#include <cstdint>
#include <string_view>

#include "client/Field.h"
#include "server/CommandCode.h"

namespace client {

/// Builds one request: the command code, then its fields in the order in which the command reads
/// them. A field that no longer fits the 8192 bytes that the server reads at once makes the request
/// incomplete for good; it is asked for once, at the end.
class RequestBuilder {
 public:
  explicit RequestBuilder(CommandCode command) noexcept;

  RequestBuilder& Byte(std::uint8_t value) noexcept;
  RequestBuilder& Short(std::uint16_t value) noexcept;
  RequestBuilder& Long(std::uint32_t value) noexcept;
  RequestBuilder& LongLong(std::uint64_t value) noexcept;

  /// A text, in the ANSI code page. The server sees it up to its first zero byte.
  RequestBuilder& Text(std::string_view text) noexcept;
  /// A text that is null is sent as absent.
  RequestBuilder& Text(const char* text) noexcept;
  /// No text at all, which is something else than an empty one.
  RequestBuilder& AbsentText() noexcept;

  RequestBuilder& Buffer(Bytes bytes) noexcept;
  RequestBuilder& AbsentBuffer() noexcept;

  /// Whether everything fitted.
  bool Complete() const noexcept { return complete_; }
  /// The request; it lives as long as the builder.
  Bytes Request() const noexcept { return {bytes_.data(), size_}; }

 private:
  template <typename T>
  RequestBuilder& Number(T value) noexcept;
  RequestBuilder& Counted(const void* data, std::size_t size) noexcept;

  std::array<std::uint8_t, kMessageLimit> bytes_;  // defined up to size_ only
  std::uint32_t size_ = 0;
  bool complete_ = true;
};

}  // namespace client

#endif  // CLIENT_REQUESTBUILDER_H_
