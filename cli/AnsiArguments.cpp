#include "cli/AnsiArguments.h"

#include "cli/Report.h"
#include "cli/TextEncoding.h"

namespace cli {

bool AnsiText(const Invocation& invocation, Output& output, const std::string& utf8,
              std::string& ansi) {
  if (AnsiFromUtf8(utf8, ansi)) return true;
  UsageError(output, invocation,
             "'" + utf8 +
                 "' has a character that the system's ANSI code page lacks; the "
                 "server knows no other texts");
  return false;
}

std::vector<std::string> AnsiArguments(const Invocation& invocation, Output& output) {
  std::vector<std::string> ansi;
  for (const std::string& argument : invocation.arguments) {
    std::string bytes;
    if (!AnsiText(invocation, output, argument, bytes)) return {};
    ansi.push_back(bytes);
  }
  ansi.resize(static_cast<std::size_t>(invocation.subcommand->most));
  return ansi;
}

}  // namespace cli
