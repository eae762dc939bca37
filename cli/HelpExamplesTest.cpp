#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "cli/Arguments.h"

// The command lines that the program's own help shows, taken apart as qorlixctl does. Those of the
// documents are run by tests/documents.

namespace cli {
namespace {

// Words as a prompt makes them: blanks part them, quotation marks of either kind keep them
// together.
std::vector<std::string> Words(const std::string& line) {
  std::vector<std::string> words;
  bool within = false;
  char quote = '\0';
  for (const char c : line) {
    if (quote == '\0' && (c == '"' || c == '\'')) {
      quote = c;
      if (!within) words.emplace_back();
      within = true;
    } else if (c == quote) {
      quote = '\0';
    } else if (quote == '\0' && c == ' ') {
      within = false;
    } else {
      if (!within) words.emplace_back();
      within = true;
      words.back() += c;
    }
  }
  return words;
}

// What stands behind the program's name on a line of a help text, where calls are indented, and
// prose is not; empty where it is not called.
std::string CallInHelp(const std::string& line) {
  const std::string start = "  qorlixctl ";
  return line.starts_with(start) ? line.substr(start.size()) : std::string();
}

TEST(HelpExamplesTest, EveryExampleOfTheHelpIsOneThatTheProgramTakes) {
  int calls = 0;
  for (const Subcommand& subcommand : Subcommands()) {
    std::istringstream stream(subcommand.details);
    for (std::string line; std::getline(stream, line);) {
      const std::string call = CallInHelp(line);
      if (call.empty()) continue;
      Invocation invocation;
      EXPECT_EQ(ParseArguments(Words(call), invocation), "") << subcommand.name << ": " << call;
      ++calls;
    }
  }
  EXPECT_GT(calls, 40);
}

}  // namespace
}  // namespace cli
