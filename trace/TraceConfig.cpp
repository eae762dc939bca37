#include "trace/TraceConfig.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <limits>

#include "platform/AsciiCase.h"
#include "trace/TraceText.h"

namespace zqotrc {
namespace {

constexpr std::uint32_t kAllBits = 0xFFFFFFFF;

/// A number behind blanks and a sign, in 64 bits: `long` has another width in each build.
struct SignedMagnitude {
  bool negative;
  std::uint64_t magnitude;
};

SignedMagnitude ParseMagnitude(const char* text, int base) {
  while (std::isspace(static_cast<unsigned char>(*text)) != 0) ++text;
  const bool negative = *text == '-';
  if (*text == '-' || *text == '+') ++text;
  // A second sign would be taken by the function below, which allows one of its own.
  if (std::isdigit(static_cast<unsigned char>(*text)) == 0) return {negative, 0};
  return {negative, std::strtoull(text, /*endptr=*/nullptr, base)};
}

/// \returns whether the parameter is there and a text; any other type and an empty value are not.
bool ReadText(const ParameterKey& key, const char* name, RawParameter& value) {
  return key.Read(name, value) && value.type == kParameterTypeText && value.bytes != 0;
}

void ReadPatterns(const ParameterKey& key, const char* name, PatternList& patterns) {
  RawParameter value;
  if (ReadText(key, name, value)) patterns.Assign(value.data);
}

/// A size counts only when it is above 0; otherwise the earlier one stays.
void ReadSize(const ParameterKey& key, const char* name, std::uint32_t& size) {
  RawParameter value;
  if (!ReadText(key, name, value)) return;
  const std::int32_t number = ParseNumber(value.data);
  if (number > 0) size = static_cast<std::uint32_t>(number);
}

void ReadFileParameters(const ParameterKey& key, TraceConfig& config) {
  ReadSize(key, "Byte/File", config.fileLimit);
  RawParameter path;
  RawParameter fileName;
  if (!ReadText(key, "Path", path)) path.data[0] = '\0';
  if (!ReadText(key, "FileName", fileName)) fileName.data[0] = '\0';
  if (path.data[0] == '\0' && fileName.data[0] == '\0') return;
  BuildFilePrefix(config.filePrefix, path.data, fileName.data);
}

void ResetForReading(TraceConfig& config) {
  config.level = 0;
  config.consult = 0;
  config.format = TraceFormat::kLong;
  config.output = TraceOutput::kFile;
  config.function.Clear();
  config.module.Clear();
  config.text.Clear();
  config.traceId.Clear();
}

}  // namespace

std::uint32_t ParseMask(const char* text) {
  const auto [negative, magnitude] = ParseMagnitude(text, /*base=*/0);
  if (magnitude > kAllBits) return kAllBits;
  const auto mask = static_cast<std::uint32_t>(magnitude);
  return negative ? 0u - mask : mask;
}

std::int32_t ParseNumber(const char* text) {
  constexpr std::int64_t kLargest = std::numeric_limits<std::int32_t>::max();
  const auto [negative, magnitude] = ParseMagnitude(text, /*base=*/10);
  const auto bounded = static_cast<std::int64_t>(std::min<std::uint64_t>(magnitude, kLargest + 1));
  return static_cast<std::int32_t>(negative ? -bounded : std::min(bounded, kLargest));
}

TraceFormat ParseFormat(std::string_view text) {
  if (platform::EqualsIgnoringCase(text, "SHORT")) return TraceFormat::kShort;
  if (platform::EqualsIgnoringCase(text, "TIME")) return TraceFormat::kTime;
  if (platform::EqualsIgnoringCase(text, "TEXT")) return TraceFormat::kText;
  return TraceFormat::kLong;
}

TraceOutput ParseOutput(std::string_view text) {
  struct OutputName {
    std::string_view name;
    TraceOutput output;
  };
  static constexpr OutputName kOutputs[] = {
      {"VXD", TraceOutput::kDriver},   {"COM1", TraceOutput::kCom1},
      {"COM2", TraceOutput::kCom2},    {"PIPE", TraceOutput::kPipe},
      {"FILE", TraceOutput::kFile},    {"SM", TraceOutput::kRing},
      {"DBG", TraceOutput::kDebugger}, {"ZqTRACEENGINE", TraceOutput::kEngine},
  };
  for (const OutputName& known : kOutputs) {
    if (platform::EqualsIgnoringCase(text, known.name)) return known.output;
  }
  return TraceOutput::kFile;
}

void BuildFilePrefix(char (&prefix)[kPrefixSize], std::string_view path,
                     std::string_view fileName) {
  CutText out(prefix);
  // Kept: a path gets a backslash even when it ends in one; Windows accepts the doubled one.
  if (path.empty()) {
    out.Add("C:\\Tmp\\");
  } else {
    out.Add(path).Add('\\');
  }
  // Kept: the name ends at its first dot, wherever that is.
  out.Add(fileName.empty() ? "ZqFile" : fileName.substr(0, fileName.find('.')));
}

void ReadTraceConfig(TraceConfig& config, const char* programMaskName) {
  ResetForReading(config);
  const ParameterKey key;
  if (!key.IsOpen()) return;

  RawParameter value;
  if (ReadText(key, "Consult", value)) config.consult = ParseNumber(value.data);
  ReadPatterns(key, "FctName", config.function);
  if (ReadText(key, "Format", value)) config.format = ParseFormat(value.data);
  if (ReadText(key, "Level", value)) {
    config.level = ParseMask(value.data);
    if (programMaskName != nullptr && ReadText(key, programMaskName, value)) {
      config.programMask = ParseMask(value.data);
    }
  }
  ReadPatterns(key, "Module", config.module);
  ReadPatterns(key, "String", config.text);
  ReadPatterns(key, "TraceId", config.traceId);
  if (ReadText(key, "Output", value)) config.output = ParseOutput(value.data);

  if (config.output == TraceOutput::kRing) ReadSize(key, "sm_size", config.ringSize);
  if (config.output == TraceOutput::kFile) ReadFileParameters(key, config);
}

std::uint32_t ReadMaskParameter(const char* name) {
  const ParameterKey key;
  RawParameter value;
  return key.IsOpen() && ReadText(key, name, value) ? ParseMask(value.data) : 0;
}

}  // namespace zqotrc
