#ifndef CLI_ANSIARGUMENTS_H_
#define CLI_ANSIARGUMENTS_H_

#include <string>
#include <vector>

#include "cli/Subcommands.h"

namespace cli {

/// The arguments as the server takes them, in the ANSI code page: as many as the subcommand takes
/// at most, those that were left out as empty texts.
///
/// \returns an empty list, and a usage error, when one of them has a character that the code page
///   lacks.
std::vector<std::string> AnsiArguments(const Invocation& invocation, Output& output);

/// One text, such as an option's, in the ANSI code page. \returns false, with a usage error, when
/// it has a character that the code page lacks.
bool AnsiText(const Invocation& invocation, Output& output, const std::string& utf8,
              std::string& ansi);

}  // namespace cli

#endif  // CLI_ANSIARGUMENTS_H_
