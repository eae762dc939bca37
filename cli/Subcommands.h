#ifndef CLI_SUBCOMMANDS_H_
#define CLI_SUBCOMMANDS_H_

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace cli {

/// What the process exits with.
enum ExitCode : int {
  kExitOk = 0,         ///< the server answered 0
  kExitServer = 1,     ///< the server answered another code, or its process ended
  kExitUsage = 2,      ///< the command line makes no request
  kExitTransport = 3,  ///< the server was not reached, or no whole reply came back
};

/// What a run writes, in UTF-8: at its end, or when it asks for it because it goes on for long.
struct Output {
  std::string out;
  std::string err;
  void (*write)(Output& output) = nullptr;  ///< writes both, and clears them
  bool terminal = false;                    ///< `out` goes to one that understands colours

  void Write() {
    if (write != nullptr) write(*this);
  }
};

struct Invocation;

/// One subcommand: what it takes, how it is explained, and what does it.
struct Subcommand {
  const char* name;       ///< one or two words
  const char* arguments;  ///< as the help shows them
  int fewest;             ///< arguments
  int most;               ///< arguments
  unsigned options;       ///< OptionBit values, beyond those that every subcommand has
  const char* summary;    ///< one line
  const char* details;    ///< the rest of its help
  int (*action)(const Invocation& invocation, Output& output);
};

enum OptionBit : unsigned {
  kTakesBase = 1,
  kTakesServer = 2,  ///< --server and --stay
  kTakesLines = 4,   ///< --level, --function, --text, --since and --ring
  kTakesColor = 8,
  kTakesFor = 16,
  kTakesReport = 32,  ///< -o, --title, --force and --ring
  kTakesLanguage = 64,
  kTakesBoard = 128,
  kTakesMode = 256,
  kTakesEvent = 512,    ///< --event, --wait and --fetch
  kTakesDecode = 4096,  ///< --command and --reply
};

/// The options of the trace commands, as they were typed; empty when they were not.
struct TraceOptions {
  std::string level;
  std::string function;
  std::string text;
  std::string since;
  std::string color;
  bool ring = false;
  std::uint32_t forMs = 0;  ///< of `trace follow`, 0: until it is interrupted; of `device changes`
};

/// The options of the commands that install and restart; empty or 0 when they were not given.
struct ActionOptions {
  std::string language;
  std::string board;
  std::string event;
  std::string fetch;
  std::uint32_t waitMs = 0;
  std::uint32_t mode = 0;
  bool hasMode = false;
};

/// The options of `decode`.
struct DecodeOptions {
  std::string command;  ///< a name or a code; empty when it was not given
  bool reply = false;
};

/// A command line, taken apart. Texts are UTF-8.
struct Invocation {
  const Subcommand* subcommand = nullptr;
  std::vector<std::string> arguments;
  bool json = false;
  bool help = false;
  std::string group;  ///< the first word, if it is that of a group of commands: reg, board
  bool version = false;
  std::uint32_t timeoutMs = 10000;
  std::string pipe;    ///< empty: the server's own
  std::string server;  ///< empty: the program beside this one
  bool stay = false;
  std::string output;  ///< the file to write
  std::string title;
  bool force = false;
  bool hasBase = false;
  std::uint32_t base = 0;
  TraceOptions trace;
  ActionOptions action;
  DecodeOptions decode;
};

std::span<const Subcommand> Subcommands();

/// Whether commands of two words begin with this one.
bool IsGroup(std::string_view word);

/// The subcommand that the words begin with, or null. `words` receives how many they were.
const Subcommand* FindSubcommand(std::span<const std::string> words, std::size_t& count);

}  // namespace cli

#endif  // CLI_SUBCOMMANDS_H_
