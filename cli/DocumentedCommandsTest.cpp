#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "cli/Arguments.h"

// The command lines that the pages and the program's own help show, taken apart as qorlixctl does.

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

// What stands behind the program's name on a line of a page; empty where it is not called.
std::string CallOnPage(const std::string& line) {
  for (const std::string start : {"> qorlixctl ", "qorlixctl "}) {
    if (line.starts_with(start)) return line.substr(start.size());
  }
  const std::string ctl = "tools/ctl ";
  const std::size_t at = line.find(ctl);
  const bool isCalled = at == 0 || (at != std::string::npos && line[at - 1] == ' ');
  return isCalled ? line.substr(at + ctl.size()) : std::string();
}

// The same in a help text, where calls are indented, and prose is not.
std::string CallInHelp(const std::string& line) {
  const std::string start = "  qorlixctl ";
  return line.starts_with(start) ? line.substr(start.size()) : std::string();
}

void ExpectTaken(const std::string& call, const std::string& where) {
  Invocation invocation;
  EXPECT_EQ(ParseArguments(Words(call), invocation), "") << where << ": " << call;
}

// \returns how many calls the blocks of a page have.
int CheckPage(const std::string& page) {
  std::ifstream stream(QORLIX_SOURCE_DIR "/" + page, std::ios::binary);
  EXPECT_TRUE(stream.is_open()) << page;
  bool inBlock = false;
  int calls = 0;
  for (std::string line; std::getline(stream, line);) {
    if (line.starts_with("```")) inBlock = !inBlock;
    const std::string call = inBlock ? CallOnPage(line) : std::string();
    if (call.empty()) continue;
    ExpectTaken(call, page);
    ++calls;
  }
  return calls;
}

TEST(DocumentedCommandsTest, EveryCallOnAPageIsOneThatTheProgramTakes) {
  int calls = 0;
  for (const char* const page :
       {"README.md", "docs/client.md", "docs/operations.md", "docs/trace.md", "docs/protocol.md",
        "docs/testing.md", "standins/README.md", "standins/boardsvc32/README.md"}) {
    calls += CheckPage(page);
  }
  EXPECT_GT(calls, 50);
}

TEST(DocumentedCommandsTest, EveryExampleOfTheHelpIsOneThatTheProgramTakes) {
  int calls = 0;
  for (const Subcommand& subcommand : Subcommands()) {
    std::istringstream stream(subcommand.details);
    for (std::string line; std::getline(stream, line);) {
      const std::string call = CallInHelp(line);
      if (call.empty()) continue;
      ExpectTaken(call, subcommand.name);
      ++calls;
    }
  }
  EXPECT_GT(calls, 40);
}

}  // namespace
}  // namespace cli
