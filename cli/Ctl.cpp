#include "cli/Ctl.h"

#include "cli/Arguments.h"
#include "cli/Help.h"
#include "cli/Report.h"

namespace cli {

int RunCtl(std::span<const std::string> words, Output& output) {
  Invocation invocation;
  const std::string error = ParseArguments(words, invocation);
  if (!error.empty()) return UsageError(output, invocation, error);
  if (invocation.version) {
    output.out += VersionLine();
    return kExitOk;
  }
  if (invocation.help) {
    if (invocation.subcommand != nullptr) {
      output.out += SubcommandHelp(*invocation.subcommand);
    } else {
      output.out += invocation.group.empty() ? OverallHelp() : GroupHelp(invocation.group);
    }
    return kExitOk;
  }
  return invocation.subcommand->action(invocation, output);
}

}  // namespace cli
