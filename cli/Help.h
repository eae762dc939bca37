#ifndef CLI_HELP_H_
#define CLI_HELP_H_

#include <string>

#include "cli/Subcommands.h"

namespace cli {

/// The program's help: what it is for, its commands, options and exit codes.
std::string OverallHelp();

/// What the commands of a group, such as reg, have in common.
std::string GroupHelp(const std::string& group);

/// The help of one subcommand.
std::string SubcommandHelp(const Subcommand& subcommand);

/// The program's name and version.
std::string VersionLine();

}  // namespace cli

#endif  // CLI_HELP_H_
