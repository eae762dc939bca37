#ifndef CLI_GUID_H_
#define CLI_GUID_H_

#include <string>
#include <string_view>

#include "client/BoardCalls.h"

namespace cli {

/// Reads {8-4-4-4-12} hex digits, with the braces or without them. \returns false for anything
/// else.
bool ParseGuid(std::string_view text, client::Guid& guid);

/// The same text off the 16 bytes that a guid has on the wire.
std::string GuidText(client::Bytes bytes);

}  // namespace cli

#endif  // CLI_GUID_H_
