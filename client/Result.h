#ifndef CLIENT_RESULT_H_
#define CLIENT_RESULT_H_

#include <cstdint>

#include "server/SrvResult.h"

namespace client {

/// Where a result comes from, and so how its code is to be read.
enum class Origin : std::uint8_t {
  Server,   ///< the server answered; the code is the one in its reply
  Request,  ///< nothing was sent: the request cannot be built, and the code is BUFFER_OVERFLOW; or
            ///< kCallUnderway, kNoCallUnderway or, of the plain C functions, kBadArgument
  Connect,  ///< no connection; the code is the platform's
  Verify,   ///< somebody else serves the pipe, and nothing was sent; the code is kForeignServer
  Send,     ///< the request did not get through; the code is the platform's
  Receive,  ///< no whole reply came back; the code is the platform's
};

/// ERROR_INVALID_OWNER, ERROR_BUSY, ERROR_NOT_FOUND and ERROR_INVALID_PARAMETER.
inline constexpr std::uint32_t kForeignServer = 1307;
inline constexpr std::uint32_t kCallUnderway = 170;
inline constexpr std::uint32_t kNoCallUnderway = 1168;
inline constexpr std::uint32_t kBadArgument = 87;
/// ERROR_IO_INCOMPLETE: with Origin::Receive, a call whose reply has not come yet.
inline constexpr std::uint32_t kStillUnderway = 996;

/// The outcome of one call to the server. It is never thrown, and small enough to be copied.
class [[nodiscard]] Result {
 public:
  /// The server's reply, 0 unless a code is given.
  constexpr Result() = default;
  static constexpr Result FromServer(SrvResult code) noexcept { return {Origin::Server, code}; }
  constexpr Result(Origin origin, std::uint32_t code) noexcept : origin_(origin), code_(code) {}

  /// Whether the server did what was asked, that is, answered 0.
  constexpr bool ok() const noexcept { return fromServer() && code_ == SRV_OK; }
  constexpr bool fromServer() const noexcept { return origin_ == Origin::Server; }
  /// Whether the server answered with exactly this code.
  constexpr bool is(SrvResult code) const noexcept { return fromServer() && code_ == code; }

  constexpr Origin origin() const noexcept { return origin_; }
  constexpr std::uint32_t code() const noexcept { return code_; }
  /// The name of the code, or "" when it has none.
  const char* name() const noexcept;
  /// What happened, in one clause: the same code means something else when it comes from the server
  /// than when it comes from the attempt to reach it.
  const char* text() const noexcept;

 private:
  Origin origin_ = Origin::Server;
  std::uint32_t code_ = SRV_OK;
};

}  // namespace client

#endif  // CLIENT_RESULT_H_
