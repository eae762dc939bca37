#ifndef CLI_MESSAGEREPORT_H_
#define CLI_MESSAGEREPORT_H_

#include <cstddef>
#include <cstdint>

#include "cli/Report.h"
#include "client/CommandInfo.h"
#include "client/QorlixClient.h"

/// Requests and replies taken apart, for the commands that show bytes.
namespace cli {

/// The bytes as lines of hex. \param first the offset of the first byte
void ShowDump(Report& report, client::Bytes bytes, std::size_t first);

/// Shows the fields of a message from `cursor` on, as far as they are there, as the member
/// "fields". \returns the cursor behind the last field that is there.
std::uint32_t ShowFields(Report& report, const char* description, client::Bytes message,
                         std::uint32_t cursor, bool isRequest);

/// Shows a request as the member "request". \param first the offset of its first byte
/// \returns the bytes up to the end of its last field; of an unknown command, all of them.
std::uint32_t ShowRequest(Report& report, client::Bytes request, std::size_t first);

/// Shows one part of a reply as an element of an open list.
void ShowPart(Report& report, const client::Reply& reply, std::uint32_t index);

/// Shows what the names of the fields do not tell. \param command may be null
void ShowNote(Report& report, const client::CommandInfo* command);

}  // namespace cli

#endif  // CLI_MESSAGEREPORT_H_
