#ifndef TESTS_E2E_PLUGINTEST_H_
#define TESTS_E2E_PLUGINTEST_H_

#include <ostream>
#include <string>

#include "tests/e2e/ActionsTest.h"
#include "tests/e2e/RegistryScratch.h"

namespace e2e {

inline constexpr char kNorva[] = "SOFTWARE\\Vesmark\\NORVA\\";
inline constexpr char kDeviceKeys[] = "SOFTWARE\\Vesmark\\NORVA\\DefDevices\\DeviceID\\";
inline constexpr std::uint32_t kText = 1;  ///< REG_SZ

/// One of the two commands that call a device's plug-in.
struct PluginCommand {
  const char* name;
  const char* code;
  const char* valueName;
  /// What is sent behind the language extension.
  const char* more;
  /// How that arrives at the plug-in.
  const char* moreInLog;

  Bytes Request(const std::string& deviceId, const std::string& languageExt = "de") const {
    return Wire(code) + Text(deviceId) + Text(languageExt) + Wire(more);
  }
};

inline constexpr PluginCommand kInstall = {"Install", "0500", "Installer", "", ""};
inline constexpr PluginCommand kDeinstall = {"Deinstall", "0600", "Deinstaller", "05000000 'BOARD'",
                                             " board=\"BOARD\""};

inline std::ostream& operator<<(std::ostream& out, const PluginCommand& command) {
  return out << command.name;
}

/// Devices in the registry, for as long as a test lives.
class Devices {
 public:
  ~Devices() {
    for (const char* const tree : {"DefDevices", "LogNames", "LogDevices"}) {
      registry_.DeleteTree(std::string(kNorva) + tree);
    }
  }

  /// A device of which both values name the same plug-in.
  void Add(const std::string& id, const std::string& plugin,
           const std::string& hardwareId = "HW1") {
    AddBare(id);
    Set(id, "HardwareID", hardwareId);
    Set(id, "Installer", plugin);
    Set(id, "Deinstaller", plugin);
  }
  void AddBare(const std::string& id) { registry_.CreateKey(kDeviceKeys + id); }
  void Set(const std::string& id, const std::string& name, const std::string& text) {
    registry_.SetValue(kDeviceKeys + id, name, kText, text + '\0');
  }
  void SetRaw(const std::string& id, const std::string& name, std::uint32_t type,
              const Bytes& data) {
    registry_.SetValue(kDeviceKeys + id, name, type, data);
  }

  /// A logical name whose logical device does not exist: the plausibility check unassigns it.
  void AddDanglingName() {
    registry_.CreateKey(kDangling);
    registry_.SetValue(kDangling, "LogDevice", kText, Wire("'gone' 00"));
  }
  bool DanglingNameIsUnassigned() const {
    return registry_.Value(kDangling, "LogDevice") == StoredValue{kText, Wire("00")};
  }

  RegistryScratch& Registry() { return registry_; }

 private:
  static constexpr char kDangling[] = "SOFTWARE\\Vesmark\\NORVA\\LogNames\\Dangling";
  RegistryScratch registry_;
};

/// A reply of one long.
inline Bytes Answer(std::uint32_t result) { return Wire("0400") + Long(result); }

}  // namespace e2e

#endif  // TESTS_E2E_PLUGINTEST_H_
