#ifndef CLI_CTL_H_
#define CLI_CTL_H_

#include <span>
#include <string>

#include "cli/Subcommands.h"

namespace cli {

/// Runs one command line, in UTF-8 and without the program's own name. \returns the exit code.
int RunCtl(std::span<const std::string> words, Output& output);

}  // namespace cli

#endif  // CLI_CTL_H_
