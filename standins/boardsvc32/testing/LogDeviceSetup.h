#ifndef STANDINS_BOARDSVC32_TESTING_LOGDEVICESETUP_H_
#define STANDINS_BOARDSVC32_TESTING_LOGDEVICESETUP_H_

#include <cstdint>
#include <optional>
#include <string>

/// Arranges and looks at the logical devices, in memory natively and in the registry on Windows.
namespace log_device_setup {

/// Forgets all logical devices.
void Clear();

/// A logical device that somebody else made, with the text "HardwareId".
void AddForeign(const std::string& name, const std::string& hardwareId);

bool Exists(const std::string& name);

/// \returns the text of a value, or its number in decimal; nothing if there is none.
std::optional<std::string> Value(const std::string& name, const std::string& value);

/// Writes a text behind the simulator's back.
void SetText(const std::string& name, const std::string& value, const std::string& text);

}  // namespace log_device_setup

#endif  // STANDINS_BOARDSVC32_TESTING_LOGDEVICESETUP_H_
