#include "cli/Arguments.h"

#include <algorithm>
#include <iterator>
#include <vector>

#include "platform/AsciiCase.h"

namespace cli {
namespace {

constexpr std::uint32_t kMillisecondsPerDay = 24 * 60 * 60 * 1000;

bool ParseHexNumber(std::string_view digits, std::uint32_t& number) {
  constexpr std::size_t kDigits = 8;
  if (digits.empty() || digits.size() > kDigits) return false;
  number = 0;
  for (const char c : digits) {
    const char upper = platform::UpperCase(c);
    if (c >= '0' && c <= '9') {
      number = number * 16 + static_cast<std::uint32_t>(c - '0');
    } else if (upper >= 'A' && upper <= 'F') {
      number = number * 16 + static_cast<std::uint32_t>(upper - 'A' + 10);
    } else {
      return false;
    }
  }
  return true;
}

// Walks over the words and sorts them into options and the rest.
class Parser {
 public:
  Parser(std::span<const std::string> words, Invocation& invocation)
      : words_(words), invocation_(invocation) {}

  std::string Run() {
    std::string firstError;
    while (at_ < words_.size()) {
      const std::string error = TakeWord(words_[at_++]);
      if (firstError.empty()) firstError = error;
    }
    if (!firstError.empty()) {
      // Which command was meant, so that its help can be named.
      std::size_t words = 0;
      invocation_.subcommand = FindSubcommand(rest_, words);
      return firstError;
    }
    return invocation_.version ? std::string() : TakeSubcommand();
  }

 private:
  std::string TakeWord(const std::string& word) {
    if (!onlyArguments_ && word == "-o" && MakesAReport()) {
      return TakeText(word, invocation_.output);
    }
    if (!onlyArguments_ && word.starts_with("--") && word != "--") return TakeOption(word);
    if (!onlyArguments_ && word == "--") {
      onlyArguments_ = true;
    } else {
      rest_.push_back(word);
    }
    return {};
  }

  // The one command whose arguments cannot be texts of the user's, so that -o is never one.
  bool MakesAReport() {
    hasValue_ = false;
    std::size_t words = 0;
    const Subcommand* const subcommand = FindSubcommand(rest_, words);
    return subcommand != nullptr && (subcommand->options & kTakesReport) != 0;
  }

  std::string TakeOption(const std::string& word) {
    const std::size_t equals = word.find('=');
    const std::string name = word.substr(0, equals);
    hasValue_ = equals != std::string::npos;
    value_ = hasValue_ ? word.substr(equals + 1) : std::string();

    if (name == "--timeout") return TakeSeconds(name, invocation_.timeoutMs);
    if (name == "--pipe") return TakeText(name, invocation_.pipe);
    if (name == "--any-owner") return TakeFlag(name, invocation_.anyOwner);
    if (name == "--server") return TakeText(name, invocation_.server);
    if (name == "--base") return TakeBase();
    if (name == "--output") return TakeText(name, invocation_.output);
    if (name == "--title") return TakeText(name, invocation_.title);
    if (name == "--force") return TakeFlag(name, invocation_.force);
    if (name == "--stay") return TakeFlag(name, invocation_.stay);
    if (name == "--level") return TakeText(name, invocation_.trace.level);
    if (name == "--function") return TakeText(name, invocation_.trace.function);
    if (name == "--text") return TakeText(name, invocation_.trace.text);
    if (name == "--since") return TakeText(name, invocation_.trace.since);
    if (name == "--ring") return TakeFlag(name, invocation_.trace.ring);
    if (name == "--color") return TakeColor();
    if (name == "--for") return TakeSeconds(name, invocation_.trace.forMs);
    if (name == "--language") return TakeText(name, invocation_.action.language);
    if (name == "--board") return TakeText(name, invocation_.action.board);
    if (name == "--mode") return TakeMode();
    if (name == "--event") return TakeText(name, invocation_.action.event);
    if (name == "--fetch") return TakeText(name, invocation_.action.fetch);
    if (name == "--wait") return TakeSeconds(name, invocation_.action.waitMs);
    if (name == "--command") return TakeText(name, invocation_.decode.command);
    if (name == "--reply") return TakeFlag(name, invocation_.decode.reply);
    if (name == "--json") return TakeFlag(name, invocation_.json);
    if (name == "--help") return TakeFlag(name, invocation_.help);
    if (name == "--version") return TakeFlag(name, invocation_.version);
    return "there is no option " + name + " (a text that begins with -- goes behind a lone --)";
  }

  std::string TakeFlag(const std::string& name, bool& flag) const {
    if (hasValue_) return name + " takes no value";
    flag = true;
    return {};
  }

  std::string TakeText(const std::string& name, std::string& text) {
    if (!hasValue_ && at_ < words_.size()) value_ = words_[at_++];
    if (value_.empty()) return name + " needs a value";
    text = value_;
    return {};
  }

  std::string TakeSeconds(const std::string& name, std::uint32_t& milliseconds) {
    std::string seconds;
    std::string error = TakeText(name, seconds);
    if (!error.empty()) return error;
    if (ParseSeconds(seconds, milliseconds)) return {};
    return name + " takes seconds from 0.001 to 86400, not '" + seconds + "'";
  }

  std::string TakeColor() {
    std::string& color = invocation_.trace.color;
    std::string error = TakeText("--color", color);
    if (!error.empty()) return error;
    if (color == "auto" || color == "always" || color == "never") return {};
    return "--color takes auto, always or never, not '" + color + "'";
  }

  std::string TakeMode() {
    std::string number;
    std::string error = TakeText("--mode", number);
    if (!error.empty()) return error;
    invocation_.action.hasMode = true;
    if (ParseNumber(number, invocation_.action.mode)) return {};
    return NumberError("--mode", number);
  }

  // The value may be left out, so the next word is taken only if it is one. A word that was meant
  // to be one must not become data.
  std::string TakeBase() {
    constexpr std::uint32_t kLocalMachine = 0x80000002;
    invocation_.hasBase = true;
    invocation_.base = kLocalMachine;
    if (hasValue_) {
      return ParseRootKey(value_, invocation_.base) ? std::string() : NotARoot(value_);
    }
    if (at_ == words_.size()) return {};
    const std::string& word = words_[at_];
    if (ParseRootKey(word, invocation_.base)) {
      ++at_;
    } else if (LooksLikeARoot(word)) {
      return NotARoot(word);
    }
    return {};
  }

  static bool LooksLikeARoot(std::string_view word) {
    return platform::StartsWithIgnoringCase(word, "hk") ||
           platform::StartsWithIgnoringCase(word, "0x");
  }

  static std::string NotARoot(const std::string& word) {
    return "--base takes HKLM, HKCU, HKCR, HKU, HKCC or 0x and up to eight hex digits, not '" +
           word + "'";
  }

  // What people type who do not know yet how to ask: alone, or right behind the command. Anywhere
  // else it may be a text that is meant.
  bool AsksForHelp() const {
    if (rest_.empty() || onlyArguments_) return false;
    const std::string& last = rest_.back();
    if (last != "-h" && last != "-?" && last != "/?") return false;
    std::size_t words = 0;
    if (FindSubcommand(rest_, words) == nullptr) words = IsGroup(rest_[0]) ? 1 : 0;
    return rest_.size() == words + 1;
  }

  std::string TakeSubcommand() {
    if (AsksForHelp()) {
      invocation_.help = true;
      rest_.pop_back();
    }
    if (!rest_.empty() && IsGroup(rest_[0])) invocation_.group = rest_[0];
    if (rest_.empty()) {
      return invocation_.help ? std::string() : "no command given";
    }
    std::size_t words = 0;
    invocation_.subcommand = FindSubcommand(rest_, words);
    if (invocation_.subcommand == nullptr) {
      const bool inGroup = !invocation_.group.empty();
      if (inGroup && rest_.size() == 1 && invocation_.help) return {};
      if (inGroup && rest_.size() == 1) return rest_[0] + " needs one of " + NamesIn(rest_[0]);
      return "there is no command '" + rest_[0] + (inGroup ? " " + rest_[1] : "") + "'";
    }
    invocation_.arguments.assign(rest_.begin() + static_cast<std::ptrdiff_t>(words), rest_.end());
    return invocation_.help ? std::string() : Check(*invocation_.subcommand);
  }

  static std::string NamesIn(const std::string& group) {
    std::string names;
    for (const Subcommand& subcommand : Subcommands()) {
      const std::string_view name = subcommand.name;
      if (!name.starts_with(group + ' ')) continue;
      if (!names.empty()) names += ", ";
      names += name.substr(group.size() + 1);
    }
    return names;
  }

  // An option that the subcommand would pass over is a slip.
  std::string CheckOtherOptions(const Subcommand& subcommand) const {
    const TraceOptions& given = invocation_.trace;
    const ActionOptions& action = invocation_.action;
    const struct {
      bool given;
      unsigned bit;
      const char* name;
    } kOptions[] = {
        {!given.level.empty(), kTakesLines, "--level"},
        {!given.function.empty(), kTakesLines, "--function"},
        {!given.text.empty(), kTakesLines, "--text"},
        {!given.since.empty(), kTakesLines, "--since"},
        {given.ring, kTakesLines | kTakesReport, "--ring"},
        {!given.color.empty(), kTakesColor, "--color"},
        {given.forMs != 0, kTakesFor, "--for"},
        {!action.language.empty(), kTakesLanguage, "--language"},
        {!action.board.empty(), kTakesBoard, "--board"},
        {action.hasMode, kTakesMode, "--mode"},
        {!action.event.empty(), kTakesEvent, "--event"},
        {!action.fetch.empty(), kTakesEvent, "--fetch"},
        {action.waitMs != 0, kTakesEvent, "--wait"},
        {!invocation_.decode.command.empty(), kTakesDecode, "--command"},
        {invocation_.decode.reply, kTakesDecode, "--reply"},
    };
    for (const auto& option : kOptions) {
      if (!option.given || (subcommand.options & option.bit) != 0) continue;
      return std::string(subcommand.name) + " does not take " + option.name;
    }
    return {};
  }

  std::string Check(const Subcommand& subcommand) const {
    const std::string name = subcommand.name;
    if (invocation_.hasBase && (subcommand.options & kTakesBase) == 0) {
      return "--base is for reg set, reg create and reg delete; " + name +
             " always works below HKEY_LOCAL_MACHINE";
    }
    if ((subcommand.options & kTakesServer) == 0) {
      if (!invocation_.server.empty()) return "--server is for start only";
      if (invocation_.stay) return "--stay is for start only";
    }
    if ((subcommand.options & kTakesReport) == 0) {
      if (!invocation_.output.empty()) return "--output is for trace report only";
      if (!invocation_.title.empty()) return "--title is for trace report only";
      if (invocation_.force) return "--force is for trace report only";
    }
    std::string error = CheckOtherOptions(subcommand);
    if (!error.empty()) return error;
    const auto count = static_cast<int>(invocation_.arguments.size());
    if (count < subcommand.fewest) {
      return name + " needs " + subcommand.arguments;
    }
    if (count > subcommand.most) {
      return name + " has one argument too many: '" +
             invocation_.arguments[static_cast<std::size_t>(subcommand.most)] +
             "' (a text with blanks needs quotation marks)";
    }
    return {};
  }

  std::span<const std::string> words_;
  Invocation& invocation_;
  std::size_t at_ = 0;
  bool onlyArguments_ = false;
  bool hasValue_ = false;
  std::string value_;
  std::vector<std::string> rest_;
};

}  // namespace

std::string ParseArguments(std::span<const std::string> words, Invocation& invocation) {
  return Parser(words, invocation).Run();
}

bool ParseRootKey(std::string_view word, std::uint32_t& root) {
  static constexpr struct {
    std::string_view shortName;
    std::string_view longName;
    std::uint32_t value;
  } kRoots[] = {
      {"HKCR", "HKEY_CLASSES_ROOT", 0x80000000},   {"HKCU", "HKEY_CURRENT_USER", 0x80000001},
      {"HKLM", "HKEY_LOCAL_MACHINE", 0x80000002},  {"HKU", "HKEY_USERS", 0x80000003},
      {"HKCC", "HKEY_CURRENT_CONFIG", 0x80000005},
  };
  for (const auto& known : kRoots) {
    if (platform::EqualsIgnoringCase(word, known.shortName) ||
        platform::EqualsIgnoringCase(word, known.longName)) {
      root = known.value;
      return true;
    }
  }
  if (!word.starts_with("0x") && !word.starts_with("0X")) return false;
  std::uint32_t number = 0;
  if (!ParseHexNumber(word.substr(2), number)) return false;
  root = number;
  return true;
}

bool ParseNumber(std::string_view word, std::uint32_t& number) {
  if (word.starts_with("0x") || word.starts_with("0X")) {
    return ParseHexNumber(word.substr(2), number);
  }
  constexpr std::size_t kDigits = 10;
  if (word.empty() || word.size() > kDigits) return false;
  std::uint64_t total = 0;
  for (const char c : word) {
    if (c < '0' || c > '9') return false;
    total = total * 10 + static_cast<std::uint64_t>(c - '0');
  }
  if (total > 0xFFFFFFFF) return false;
  number = static_cast<std::uint32_t>(total);
  return true;
}

std::string NumberError(const std::string& what, const std::string& word) {
  const bool isHex = word.starts_with("0x") || word.starts_with("0X");
  const std::string digits = isHex ? word.substr(2) : word;
  const char* const allowed = isHex ? "0123456789abcdefABCDEF" : "0123456789";
  if (!digits.empty() && digits.find_first_not_of(allowed) == std::string::npos) {
    return what + " is too large: '" + word + "'; the largest is 4294967295 (0xffffffff)";
  }
  return what + " is a number, decimal or 0x and up to eight hex digits, not '" + word + "'";
}

bool ParseSeconds(std::string_view word, std::uint32_t& milliseconds) {
  constexpr int kDecimals = 3;
  std::uint64_t total = 0;
  int decimals = -1;  // none, until there is a point
  int digits = 0;
  for (const char c : word) {
    if (c == '.' && decimals < 0) {
      decimals = 0;
      continue;
    }
    if (c < '0' || c > '9' || decimals == kDecimals) return false;
    if (decimals >= 0) ++decimals;
    ++digits;
    total = total * 10 + static_cast<std::uint64_t>(c - '0');
    if (total > kMillisecondsPerDay) return false;
  }
  for (int i = std::max(decimals, 0); i < kDecimals; ++i) total *= 10;
  if (digits == 0 || total == 0 || total > kMillisecondsPerDay) return false;
  milliseconds = static_cast<std::uint32_t>(total);
  return true;
}

}  // namespace cli
