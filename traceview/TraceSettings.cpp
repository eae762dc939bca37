#include "traceview/TraceSettings.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <iterator>

#include "platform/AsciiCase.h"
#include "trace/TraceHost.h"
#include "traceview/TraceQuery.h"

namespace traceview {
namespace {

using zqotrc::TraceOutput;

constexpr char kTraceId[] = "QORLIXSRV64";
constexpr char kComponent[] = "SRV";

constexpr Setting kSettings[] = {
    {"Level", "not 0: tracing is on; see zqserver_level for which lines", "0, tracing is off"},
    {kServerMask, "which lines of the server: 8 entry, 16 error, 64 progress, 128 result",
     "0 at its start, later as it was"},
    {"Consult", "seconds after which a process reads all this again", "0, never by itself"},
    {"Format", "layout of a line: SHORT, LONG, TIME or TEXT", "LONG"},
    {"Output", "where lines go: FILE, SM (the ring), DBG, ZqTRACEENGINE, VXD", "FILE"},
    {"Path", "folder of the two files", "C:\\Tmp\\, with a FileName"},
    {"FileName", "what the names of the two files begin with", "ZqFile, with a Path"},
    {"Byte/File", "bytes after which the other file is taken", "2097152"},
    {"sm_size", "bytes of the ring", "2000000"},
    {"FctName", "functions that pass, as patterns with blanks between them", "all"},
    {"Module", "components that pass, as patterns; the server's are SRV and PST", "all"},
    {"String", "beginnings of texts that pass, as patterns", "all"},
    {"TraceId", "programs that pass, as patterns; the server's is QORLIXSRV64", "all"},
};

constexpr std::string_view kOutputs[] = {"VXD",  "COM1", "COM2", "PIPE",
                                         "FILE", "SM",   "DBG",  "ZqTRACEENGINE"};

bool IsMask(std::string_view name) { return name == "Level" || name == kServerMask; }
bool IsSize(std::string_view name) { return name == "Byte/File" || name == "sm_size"; }
bool IsPattern(std::string_view name) {
  return name == "FctName" || name == "Module" || name == "String" || name == "TraceId";
}

std::string Hex(std::uint32_t number) {
  char text[16];
  (void)std::snprintf(text, sizeof(text), "0x%08X", number);
  return text;
}

/// The configuration takes any text for a number; what is not one, as a whole, is a slip.
bool IsMaskText(std::string_view text) {
  int base = 10;
  if (text.starts_with("0x") || text.starts_with("0X")) {
    text.remove_prefix(2);
    base = 16;
  } else if (text.starts_with('0')) {
    base = 8;
  }
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
  return error == std::errc() && end == text.data() + text.size();
}

/// Names are names: "089" is no number in octal, and none in decimal either.
bool BeginsWithDigit(std::string_view text) {
  return !text.empty() && text[0] >= '0' && text[0] <= '9';
}

bool IsWholeNumber(std::string_view text, std::int32_t least) {
  std::int32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() && number >= least;
}

void CheckMask(const Setting& setting, std::string_view text, CheckedValue& checked) {
  std::uint32_t bits = 0;
  if (IsMaskText(text)) {
    bits = zqotrc::ParseMask(checked.text.c_str());
  } else if (!BeginsWithDigit(text) && ParseLevels(text, bits)) {
    checked.text = Hex(bits);
  } else {
    checked.error =
        std::string(setting.name) +
        " takes a number from 0 to 0xFFFFFFFF (64, 0x40, or 0100 in octal) or names: entry, error, "
        "progress, result, all";
    return;
  }
  if (bits == 0 && setting.name == "Level") checked.warnings.emplace_back("0 switches tracing off");
}

std::string_view OneOf(std::span<const std::string_view> words, std::string_view text) {
  const auto found = std::find_if(words.begin(), words.end(), [=](std::string_view word) {
    return platform::EqualsIgnoringCase(word, text);
  });
  return found != words.end() ? *found : std::string_view();
}

void CheckOutput(std::string_view text, CheckedValue& checked) {
  const std::string_view word = OneOf(kOutputs, text);
  if (word.empty()) {
    checked.error =
        "Output takes FILE, SM, DBG, ZqTRACEENGINE, VXD, COM1, COM2 or PIPE; "
        "any other word would be FILE";
  } else if (word == "COM1" || word == "COM2" || word == "PIPE") {
    checked.warnings.push_back("Output " + std::string(word) + " is accepted and writes nothing");
  }
}

/// Most names end in a blank, which no entry of the list can hold.
std::string FunctionPitfall(const zqotrc::PatternList& patterns) {
  for (std::size_t i = 0; i < patterns.size(); ++i) {
    const std::string_view pattern = patterns[i];
    if (pattern.back() == '*' || pattern.back() == '?') continue;
    return "FctName " + std::string(pattern) +
           " has to match a whole name, and those of the server end in a colon, most of them in a "
           "blank behind it: write " +
           std::string(pattern.substr(0, pattern.find(':'))) + "*";
  }
  return {};
}

void CheckPatterns(const Setting& setting, std::string_view text, CheckedValue& checked) {
  zqotrc::PatternList patterns;
  patterns.Assign(text);
  if (text.size() >= zqotrc::PatternList::kBufferSize) {
    checked.error = std::string(setting.name) + " holds at most 255 characters";
  } else if (patterns.size() == zqotrc::PatternList::kMaxPatterns) {
    checked.warnings.push_back(std::string(setting.name) + " holds at most 100 patterns");
  }
  const std::string pitfall = setting.name == "FctName" ? FunctionPitfall(patterns) : std::string();
  if (!pitfall.empty()) checked.warnings.push_back(pitfall);
  if (setting.name == "Module" && !patterns.Passes(kComponent, zqotrc::MatchMode::kWhole)) {
    checked.warnings.emplace_back("none of these is SRV, the server's component");
  }
  if (setting.name == "TraceId" && !patterns.Passes(kTraceId, zqotrc::MatchMode::kWhole)) {
    checked.warnings.emplace_back("none of these is QORLIXSRV64, the server's trace id");
  }
}

std::string PathPitfall(std::string_view path) {
  if (!path.ends_with('\\')) return {};
  return "Path ends in a backslash and gets another one; Windows accepts the doubled one";
}

std::string NamePitfall(std::string_view name) {
  const std::size_t dot = name.find('.');
  if (dot == std::string_view::npos) return {};
  return "FileName is cut at its first dot: the files are " + std::string(name.substr(0, dot)) +
         "1.TRC and " + std::string(name.substr(0, dot)) + "2.TRC";
}

void CheckFileText(const Setting& setting, std::string_view text, CheckedValue& checked) {
  const std::string pitfall = setting.name == "Path" ? PathPitfall(text) : NamePitfall(text);
  if (!pitfall.empty()) checked.warnings.push_back(pitfall);
}

StoredSetting ReadStored(const zqotrc::ParameterKey& key, std::string_view name) {
  StoredSetting stored;
  zqotrc::RawParameter value;
  const bool isRead = key.Read(std::string(name).c_str(), value);
  stored.isTooLong = !isRead && value.bytes != 0;
  stored.isThere = isRead || stored.isTooLong;
  stored.type = value.type;
  stored.counts = isRead && value.type == zqotrc::kParameterTypeText && value.bytes != 0;
  if (stored.counts) stored.text = value.data;
  return stored;
}

std::string Joined(const zqotrc::PatternList& patterns) {
  std::string text;
  for (std::size_t i = 0; i < patterns.size(); ++i) {
    if (i != 0) text += ' ';
    text += patterns[i];
  }
  return text.empty() ? "all" : text;
}

const StoredSetting& Stored(const Configuration& configuration, std::string_view name) {
  const auto index = static_cast<std::size_t>(FindSetting(name) - kSettings);
  return configuration.stored[index];
}

std::string WhyIgnored(const StoredSetting& stored) {
  if (stored.isTooLong) return "longer than the 260 bytes that are read";
  return std::string(stored.type == 4 ? "a REG_DWORD" : "not a text, or empty") +
         ", and only texts (REG_SZ) count";
}

void AddFilePitfalls(const Configuration& configuration, std::vector<std::string>& pitfalls) {
  const std::string path = PathPitfall(Stored(configuration, "Path").text);
  const std::string name = NamePitfall(Stored(configuration, "FileName").text);
  if (!path.empty()) pitfalls.push_back(path);
  if (!name.empty()) pitfalls.push_back(name);
}

/// The facility takes as much of a text as is a number, and 0 where nothing is.
std::string NumberPitfall(const Setting& setting, const std::string& text) {
  const std::string what = std::string(setting.name) + " \"" + text + "\" is no number and is ";
  if (IsMask(setting.name)) {
    if (IsMaskText(text)) return {};
    return what + "read as " + Hex(zqotrc::ParseMask(text.c_str())) +
           "; names such as all are for 'trace set', which writes the number";
  }
  if (setting.name == "Consult") {
    if (IsWholeNumber(text, 0)) return {};
    return what + "read as " + std::to_string(zqotrc::ParseNumber(text.c_str())) + " seconds";
  }
  if (!IsSize(setting.name) || IsWholeNumber(text, 1)) return {};
  const std::int32_t number = zqotrc::ParseNumber(text.c_str());
  if (number > 0) return what + "read as " + std::to_string(number);
  return std::string(setting.name) + " \"" + text + "\" is not above 0 and is ignored";
}

void AddNumberPitfalls(const Configuration& configuration, std::vector<std::string>& pitfalls) {
  for (std::size_t i = 0; i < configuration.stored.size(); ++i) {
    const StoredSetting& stored = configuration.stored[i];
    if (!stored.counts) continue;
    const std::string pitfall = NumberPitfall(kSettings[i], stored.text);
    if (!pitfall.empty()) pitfalls.push_back(pitfall);
  }
}

void AddWordPitfalls(const Configuration& configuration, std::vector<std::string>& pitfalls) {
  static constexpr std::string_view kFormats[] = {"SHORT", "LONG", "TIME", "TEXT"};
  const StoredSetting& output = Stored(configuration, "Output");
  if (output.counts && OneOf(kOutputs, output.text).empty()) {
    pitfalls.push_back("Output \"" + output.text + "\" is no output that is known, so it is FILE");
  }
  const StoredSetting& format = Stored(configuration, "Format");
  if (format.counts && OneOf(kFormats, format.text).empty()) {
    pitfalls.push_back("Format \"" + format.text + "\" is none that is known, so it is LONG");
  }
}

}  // namespace

std::span<const Setting> Settings() { return kSettings; }

const Setting* FindSetting(std::string_view name) {
  const auto* const found = std::find_if(
      std::begin(kSettings), std::end(kSettings),
      [=](const Setting& setting) { return platform::EqualsIgnoringCase(setting.name, name); });
  return found != std::end(kSettings) ? found : nullptr;
}

CheckedValue CheckValue(const Setting& setting, std::string_view text) {
  static constexpr std::string_view kFormats[] = {"SHORT", "LONG", "TIME", "TEXT"};
  CheckedValue checked;
  checked.text = text;
  if (IsMask(setting.name)) {
    CheckMask(setting, text, checked);
  } else if (setting.name == "Consult" && !IsWholeNumber(text, 0)) {
    checked.error = "Consult takes seconds, from 0, which is never, to 2147483647";
  } else if (IsSize(setting.name) && !IsWholeNumber(text, 1)) {
    checked.error = std::string(setting.name) + " takes a number of bytes, from 1 to 2147483647";
  } else if (setting.name == "Format" && OneOf(kFormats, text).empty()) {
    checked.error = "Format takes SHORT, LONG, TIME or TEXT; any other word would be LONG";
  } else if (setting.name == "Output") {
    CheckOutput(text, checked);
  } else if (IsPattern(setting.name)) {
    CheckPatterns(setting, text, checked);
  } else if (setting.name == "Path" || setting.name == "FileName") {
    CheckFileText(setting, text, checked);
  }
  if (checked.error.empty() && checked.text.size() >= zqotrc::kParameterCapacity) {
    checked.error = "a value of 260 bytes or more would be ignored";
  }
  return checked;
}

Configuration ReadConfiguration() {
  Configuration configuration;
  const zqotrc::ParameterKey key;
  configuration.hasKey = key.IsOpen();
  for (const Setting& setting : kSettings) {
    configuration.stored.push_back(key.IsOpen() ? ReadStored(key, setting.name) : StoredSetting());
  }
  zqotrc::ReadTraceConfig(configuration.config, kServerMask);
  return configuration;
}

std::string_view OutputName(TraceOutput output) {
  return kOutputs[static_cast<std::size_t>(output)];
}

std::string_view FormatName(zqotrc::TraceFormat format) {
  static constexpr std::string_view kNames[] = {"SHORT", "LONG", "TIME", "TEXT"};
  return kNames[static_cast<std::size_t>(format) - 1];
}

std::string ValueInForce(const zqotrc::TraceConfig& config, const Setting& setting) {
  const std::string_view name = setting.name;
  if (name == "Level") return Hex(config.level);
  if (name == kServerMask) return Hex(config.programMask);
  if (name == "Consult") return std::to_string(config.consult);
  if (name == "Format") return std::string(FormatName(config.format));
  if (name == "Output") return std::string(OutputName(config.output));
  if (name == "Byte/File") return std::to_string(config.fileLimit);
  if (name == "sm_size") return std::to_string(config.ringSize);
  if (name == "Path" || name == "FileName") {
    const std::string prefix = config.filePrefix;
    const std::size_t end = prefix.find_last_of("\\/") + 1;
    return name == "Path" ? prefix.substr(0, end) : prefix.substr(end);
  }
  if (name == "FctName") return Joined(config.function);
  if (name == "Module") return Joined(config.module);
  if (name == "String") return Joined(config.text);
  if (name == "TraceId") return Joined(config.traceId);
  return {};
}

bool IsRead(const zqotrc::TraceConfig& config, const Setting& setting) {
  const std::string_view name = setting.name;
  if (name == "sm_size") return config.output == TraceOutput::kRing;
  if (name == kServerMask) return config.level != 0;
  const bool ofFiles = name == "Path" || name == "FileName" || name == "Byte/File";
  return !ofFiles || config.output == TraceOutput::kFile;
}

Passing LinesAt(const zqotrc::TraceConfig& config, std::uint32_t bit) {
  const std::string mask = std::string(kServerMask) + " " + Hex(config.programMask);
  if (config.level == 0) return {false, "Level is 0"};
  if ((config.programMask & bit) == 0) return {false, mask + " lacks the bit"};
  if (!config.module.Passes(kComponent, zqotrc::MatchMode::kWhole)) {
    return {false, "Module does not let SRV pass"};
  }
  if (!config.traceId.Passes(kTraceId, zqotrc::MatchMode::kWhole)) {
    return {false, "TraceId does not let QORLIXSRV64 pass"};
  }
  const bool some = config.function.size() != 0 || config.text.size() != 0;
  return {true, mask + " has the bit" + (some ? "; FctName or String let only some pass" : "")};
}

std::string WhereLinesGo(const zqotrc::TraceConfig& config) {
  switch (config.output) {
    case TraceOutput::kFile:
      return "to two files in turn, each up to " + std::to_string(config.fileLimit) + " bytes";
    case TraceOutput::kRing:
      return "to the ring in shared memory; 'qorlixctl trace dump' reads it";
    case TraceOutput::kDebugger:
      return "to the debugger, or whoever shows debug output on this machine";
    case TraceOutput::kEngine:
      return "to the library ZqTraceEngineX.dll, which writes them as it is set up to";
    case TraceOutput::kDriver:
      return "to the kernel driver \\\\.\\ZQONLINX.VXD, if there is one";
    case TraceOutput::kCom1:
    case TraceOutput::kCom2:
    case TraceOutput::kPipe:
      break;
  }
  return "nowhere: Output " + std::string(OutputName(config.output)) +
         " is accepted and writes nothing";
}

std::vector<std::string> Pitfalls(const Configuration& configuration) {
  std::vector<std::string> pitfalls;
  const zqotrc::TraceConfig& config = configuration.config;
  for (std::size_t i = 0; i < configuration.stored.size(); ++i) {
    const StoredSetting& stored = configuration.stored[i];
    if (!stored.isThere || stored.counts) continue;
    pitfalls.push_back(std::string(kSettings[i].name) + " is ignored: it is " + WhyIgnored(stored));
  }
  if (config.level != 0 && config.programMask == 0) {
    pitfalls.emplace_back(
        "Level alone writes nothing: zqserver_level has to name the server's lines");
  }
  if (!Stored(configuration, "Level").counts && Stored(configuration, kServerMask).counts) {
    pitfalls.emplace_back("zqserver_level counts only beside a Level");
  }
  if (config.consult > 0 && (config.level == 0 || config.programMask == 0)) {
    pitfalls.emplace_back("Consult is looked at by lines only: while none is wanted it never ends");
  }
  AddNumberPitfalls(configuration, pitfalls);
  AddWordPitfalls(configuration, pitfalls);
  if (config.output == TraceOutput::kFile) AddFilePitfalls(configuration, pitfalls);
  const std::string function = FunctionPitfall(config.function);
  if (!function.empty()) pitfalls.push_back(function);
  return pitfalls;
}

}  // namespace traceview
