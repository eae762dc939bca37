#ifndef CLI_HELP_H_
#define CLI_HELP_H_

#include <string>

#include "cli/Subcommands.h"

namespace cli {

/// The program's help: what it is for, its commands, options and exit codes.
std::string OverallHelp();

/// What the reg commands have in common.
std::string RegistryHelp();

/// The help of one subcommand.
std::string SubcommandHelp(const Subcommand& subcommand);

/// The program's name and version.
std::string VersionLine();

}  // namespace cli

#endif  // CLI_HELP_H_
