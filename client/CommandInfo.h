#ifndef CLIENT_COMMANDINFO_H_
#define CLIENT_COMMANDINFO_H_

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "client/Field.h"
#include "server/CommandCode.h"
#include "server/SrvResult.h"

namespace client {

/// When a command's reply is followed by itself once more and a further, short reply.
enum class Doubling : std::uint8_t {
  Never,
  OnFailure,               ///< with every result but 0
  OnUnreadable,            ///< when a request field cannot be read
  OnceItsLibraryIsLoaded,  ///< a result of 0 may mean either
};

/// What a client has to know of one command. The descriptions are those of FieldList; a reply's
/// begin behind mark and result.
///
/// The members stand in the order of the table's columns.
struct CommandInfo {  // NOLINT(clang-analyzer-optin.performance.Padding)
  CommandCode code;
  const char* name;
  const char* request;  ///< the fields behind the command code
  const char* success;  ///< the reply's fields with the result 0
  const char* tooLong;  ///< with 8602, when all request fields could be read
  const char* failure;  ///< with any other result, 8604 and 8620 excepted: these stand alone
  std::uint32_t textRoom = kMessageLimit;  ///< bytes of a text field, its terminator included
  Doubling doubling = Doubling::Never;
  SrvResult done = SRV_OK;  ///< the result with which `success` comes
  bool fixedShape = false;  ///< every reply but 8620 has the fields of `success`
  const char* note = "";    ///< what the names of the fields do not tell, in one clause
};

/// All commands, in ascending order of their codes.
std::span<const CommandInfo> Commands() noexcept;

/// The command with this code, or null.
const CommandInfo* FindCommand(std::uint32_t code) noexcept;

/// The command with this name, in any case of letters, or null.
const CommandInfo* FindCommandByName(std::string_view name) noexcept;

/// The command of a request, or null when it has no code or an unknown one.
const CommandInfo* CommandOf(Bytes request) noexcept;

/// Whether the server can read every field of the command in this request.
bool IsReadable(const CommandInfo& command, Bytes request) noexcept;

/// The shortest request of the command that can be read: every number is 0, every text and buffer
/// empty.
std::vector<std::uint8_t> SmallestRequest(const CommandInfo& command);

}  // namespace client

#endif  // CLIENT_COMMANDINFO_H_
