#ifndef TRACEVIEW_TRACESETTINGS_H_
#define TRACEVIEW_TRACESETTINGS_H_

/// The values of the trace configuration: what they are called, take and mean.

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "trace/TraceConfig.h"

namespace traceview {

/// The key below HKEY_LOCAL_MACHINE, as the server's registry commands take it.
inline constexpr char kTraceKey[] = "SOFTWARE\\Vesmark\\NORVA\\TrcParams";
/// The value that holds the server's own mask.
inline constexpr char kServerMask[] = "zqserver_level";

struct Setting {
  std::string_view name;
  std::string_view meaning;    ///< one clause
  std::string_view whenUnset;  ///< what holds without the value
};
std::span<const Setting> Settings();

/// The setting by its name in any case, or null.
const Setting* FindSetting(std::string_view name);

/// A value as it would be written.
struct CheckedValue {
  std::string error;  ///< why it cannot be meant; else empty
  std::string text;
  std::vector<std::string> warnings;
};
CheckedValue CheckValue(const Setting& setting, std::string_view text);

/// One value as it stands in the registry.
struct StoredSetting {
  bool isThere = false;
  bool counts = false;  ///< is a text, and so is taken
  std::string text;     ///< if it counts
  std::uint32_t type = 0;
  bool isTooLong = false;  ///< more bytes than are read, so that it does not count
};

/// The configuration that a process reads now.
struct Configuration {
  bool hasKey = false;
  zqotrc::TraceConfig config;
  std::vector<StoredSetting> stored;  ///< in the order of Settings()
};
Configuration ReadConfiguration();

/// The name of an output, as the value "Output" has it.
std::string_view OutputName(zqotrc::TraceOutput output);
std::string_view FormatName(zqotrc::TraceFormat format);

/// What holds for a setting now, as a person reads it.
std::string ValueInForce(const zqotrc::TraceConfig& config, const Setting& setting);

/// Whether a setting is looked at with the output that is in force.
bool IsRead(const zqotrc::TraceConfig& config, const Setting& setting);

/// Whether the server's lines at a bit pass, and why or why not.
struct Passing {
  bool passes;
  std::string why;
};
Passing LinesAt(const zqotrc::TraceConfig& config, std::uint32_t bit);

/// Where lines go, in one sentence.
std::string WhereLinesGo(const zqotrc::TraceConfig& config);

/// What is likely to be otherwise than whoever configured it expects.
std::vector<std::string> Pitfalls(const Configuration& configuration);

}  // namespace traceview

#endif  // TRACEVIEW_TRACESETTINGS_H_
