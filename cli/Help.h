#ifndef CLI_HELP_H_
#define CLI_HELP_H_

#include <string>
#include <string_view>

#include "cli/Subcommands.h"

namespace cli {

/// The program's help: what it is for, its commands, options and exit codes.
std::string OverallHelp();

/// The subcommands that begin with this word, and what they have in common.
std::string GroupHelp(std::string_view group);

/// The help of one subcommand.
std::string SubcommandHelp(const Subcommand& subcommand);

/// The program's name and version.
std::string VersionLine();

}  // namespace cli

#endif  // CLI_HELP_H_
