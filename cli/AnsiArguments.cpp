#include "cli/AnsiArguments.h"

#include "cli/Report.h"
#include "cli/TextEncoding.h"

namespace cli {

std::vector<std::string> AnsiArguments(const Invocation& invocation, Output& output) {
  std::vector<std::string> ansi;
  for (const std::string& argument : invocation.arguments) {
    std::string bytes;
    if (!AnsiFromUtf8(argument, bytes)) {
      UsageError(output, invocation,
                 "'" + argument +
                     "' has a character that the system's ANSI code page lacks; the "
                     "server knows no other texts");
      return {};
    }
    ansi.push_back(bytes);
  }
  ansi.resize(static_cast<std::size_t>(invocation.subcommand->most));
  return ansi;
}

}  // namespace cli
