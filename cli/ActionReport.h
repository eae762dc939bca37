#ifndef CLI_ACTIONREPORT_H_
#define CLI_ACTIONREPORT_H_

#include <string>
#include <string_view>

#include "cli/Report.h"
#include "client/ActionCalls.h"

namespace cli {

/// Whether a text, in the ANSI code page, is one that the server takes; otherwise a usage error.
bool IsShortEnough(const Invocation& invocation, Output& output, const char* what,
                   std::string_view ansi);

/// Why no reply may have come in time; empty where that did not happen.
/// \param blockedBy what the server may be waiting for
std::string NoReplyHint(const client::Result& result, const std::string& blockedBy);

/// Tells what the server's second write said: nothing for people unless it contradicts the first.
/// \returns whether it contradicts.
bool ShowSecondSend(Report& report, const client::Result& result, const client::SecondSend& second);

}  // namespace cli

#endif  // CLI_ACTIONREPORT_H_
