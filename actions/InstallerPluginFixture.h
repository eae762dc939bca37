#ifndef ACTIONS_INSTALLERPLUGINFIXTURE_H_
#define ACTIONS_INSTALLERPLUGINFIXTURE_H_

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "actions/ActionFixture.h"
#include "tests/support/RegistrySetup.h"

/// Devices and their plug-ins, for both commands that run one.
namespace installer_plugin {

inline const std::string kDevices = "SOFTWARE\\Vesmark\\NORVA\\DefDevices\\DeviceID";
inline const std::string kSystem = "C:\\windows\\system32\\";

struct Kind {
  const char* name;
  SrvResult (CQorlixSRVPipe::*handler)(int);
  const char* valueName;
  int trailingTexts;  ///< behind the device id
};

inline constexpr Kind kKinds[] = {{"Install", &CQorlixSRVPipe::Install, "Installer", 1},
                                  {"Deinstall", &CQorlixSRVPipe::Deinstall, "Deinstaller", 2}};

struct Ran {
  std::string hardwareId, deviceId, languageExt, board;
  std::uint32_t zero = 99;
  int zeroFilled = 0;                     ///< texts with nothing behind them in their 260 bytes
  std::vector<std::string> libraryCalls;  ///< before it ran
  std::size_t boardCalls = 0;
};
inline std::optional<Ran> g_ran;
inline std::uint32_t g_result = 0;
inline bool g_throws = false;

inline std::string OrNull(const char* text) { return text != nullptr ? text : "(null)"; }

inline bool IsZeroFilled(const char* text) {
  if (text == nullptr) return false;
  const std::size_t length = std::strlen(text);
  return std::all_of(text + length, text + 260, [](char c) { return c == '\0'; });
}

inline std::uint32_t Remember(const char* hardwareId, const char* deviceId, const char* languageExt,
                              std::uint32_t zero, const char* board) {
  if (g_throws) throw std::runtime_error("fault");
  g_ran = Ran{OrNull(hardwareId),
              OrNull(deviceId),
              OrNull(languageExt),
              OrNull(board),
              zero,
              IsZeroFilled(hardwareId) + IsZeroFilled(deviceId) + IsZeroFilled(languageExt),
              fake_dynamic_library::Calls(),
              fake_board_library::Calls().size()};
  return g_result;
}

inline std::uint32_t Installer(char* hardwareId, const char* deviceId, char* languageExt,
                               std::uint32_t zero) {
  return Remember(hardwareId, deviceId, languageExt, zero, "");
}

inline std::uint32_t Deinstaller(char* hardwareId, const char* deviceId, char* languageExt,
                                 std::uint32_t zero, char* board) {
  const std::uint32_t result = Remember(hardwareId, deviceId, languageExt, zero, board);
  if (g_ran) g_ran->zeroFilled += IsZeroFilled(board);
  return result;
}

class InstallerPluginFixture : public ActionFixture {
 protected:
  InstallerPluginFixture() {
    registry_setup::DeleteTree(kDevices);
    g_ran.reset();
    g_result = 0;
    g_throws = false;
  }
  ~InstallerPluginFixture() override { registry_setup::DeleteTree(kDevices); }

  static void SetValue(const std::string& device, const char* name, const Bytes& data,
                       std::uint32_t type = registry_setup::kSz) {
    registry_setup::SetValue(kDevices + "\\" + device, name, type, data);
  }
  static void SetText(const std::string& device, const char* name, const std::string& text) {
    SetValue(device, name, TextBytes(text) + Bytes{0});
  }
  /// Makes the plug-in library under its full path.
  static void AddPlugin(const Kind& kind, const std::string& path,
                        const std::string& function = "Run") {
    fake_dynamic_library::Add(
        path, {{function, kind.trailingTexts == 1 ? fake_dynamic_library::Export(Installer)
                                                  : fake_dynamic_library::Export(Deinstaller)}});
  }
};

class InstallerPluginTest : public InstallerPluginFixture,
                            public testing::WithParamInterface<Kind> {
 protected:
  static const Kind& TheKind() { return GetParam(); }

  static Bytes Request(const std::string& device) {
    Bytes fields = TextField(device) + TextField("007");
    if (TheKind().trailingTexts == 2) fields = fields + TextField("Board 1");
    return fields;
  }
  SrvResult Run(const std::string& device = "d") { return Do(TheKind().handler, Request(device)); }

  // A device whose plug-in is named so.
  static void SetDevice(const std::string& plugin, const std::string& device = "d") {
    SetText(device, "HardwareID", "HW");
    SetText(device, TheKind().valueName, plugin);
  }
};

}  // namespace installer_plugin

#endif  // ACTIONS_INSTALLERPLUGINFIXTURE_H_
