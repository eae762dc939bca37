#ifndef CLIENT_RESULTCODES_H_
#define CLIENT_RESULTCODES_H_

#include <cstdint>
#include <span>

namespace client {

/// One result code that has a name and a meaning of its own.
struct ResultCode {
  std::uint32_t code;
  const char* name;
  const char* text;  ///< one clause in lower case, without a full stop
};

/// All of them, in ascending order: the server's own and the platform's usual ones.
std::span<const ResultCode> KnownResultCodes() noexcept;

/// The name of a result code, or "" when it has none: results of the libraries that a command calls
/// reach the client unchanged, and so do rare codes of the platform.
const char* ResultName(std::uint32_t code) noexcept;

/// What a result code means. For a code without a name, a text that says so; never null.
const char* ResultText(std::uint32_t code) noexcept;

/// What the exit code of the server process means, or the text of the platform error that it is.
const char* ServerExitText(std::uint32_t exitCode) noexcept;

}  // namespace client

#endif  // CLIENT_RESULTCODES_H_
