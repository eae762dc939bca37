#include "doctor/Findings.h"
#include "doctor/PluginValue.h"
#include "platform/AsciiCase.h"

namespace doctor {
namespace {

constexpr char kTree[] = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Vesmark\\NORVA";
constexpr std::size_t kGateRoom = 8160;   // bytes that the server reads of the gate
constexpr std::size_t kDeviceRoom = 260;  // bytes that it reads of a device's value
constexpr std::size_t kPathRoom = 260;    // of the path it makes, the terminator included

std::string TextOf(const ValueFacts& value) {
  return value.bytes.substr(0, value.bytes.find('\0'));
}

Finding Gate(const ValueFacts& setUp) {
  static constexpr char kName[] = "SetupSucceeded";
  const std::string text = TextOf(setUp);
  if (!setUp.isThere || setUp.bytes.size() > kGateRoom) {
    return {Severity::Warning, "set-up",
            std::string(kName) + (setUp.isThere ? " is too long to be read" : " is missing") +
                ": hardware identifiers are not repaired and nothing is checked when the server "
                "starts",
            "let the stack's set-up finish; it writes the value, clients cannot"};
  }
  if (text.empty() || text == "0") {
    return {Severity::Warning, "set-up",
            std::string(kName) + (text.empty() ? " is empty or 0" : " is \"0\"") +
                ": a set-up is going on, or failed; nothing is repaired or checked when the "
                "server starts",
            "let the stack's set-up finish, then start the server anew"};
  }
  return {Severity::Ok, "set-up",
          std::string(kName) + " is set: the server repairs and checks when it starts", ""};
}

// What a server makes of the setting that starts now.
Finding Profile(const ValueFacts& setting) {
  constexpr std::uint32_t kText = 1;        // REG_SZ
  constexpr std::uint32_t kExpandable = 2;  // REG_EXPAND_SZ, which is expanded when it is read
  const bool isText = setting.type == kText || setting.type == kExpandable;
  const std::string text = isText ? TextOf(setting) : "";
  if (!setting.isThere) return {Severity::Ok, "profile", "the strict profile is off", ""};
  if (platform::EqualsIgnoringCase(text, "enforce")) {
    return {Severity::Ok, "profile", "the strict profile is enforced", ""};
  }
  if (platform::EqualsIgnoringCase(text, "report")) {
    return {Severity::Note, "profile",
            "the strict profile reports to the event log what it would refuse, and refuses nothing",
            "look for events that begin with 'Strict profile would refuse'; without any, set "
            "StrictProfile to 'enforce'"};
  }
  return {Severity::Warning, "profile",
          "StrictProfile is none of the texts 'report' and 'enforce', so the strict profile is off",
          "set it to one of them, or delete it"};
}

/// One of a device's two plug-ins.
struct Plugin {
  const DeviceFacts& device;
  const char* valueName;
  const char* command;
  const ValueFacts& value;
  ImageKind kind;
};

std::string Of(const Plugin& plugin) { return plugin.device.name + ", " + plugin.valueName; }

bool IsPlain(const std::string& name) {
  return name.find_first_not_of(
             "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"
             "_-.") == std::string::npos;
}

// A command is there to be copied into an elevated prompt. Every local user can name a device, so
// one whose name could mean something to a prompt gets none.
std::string Remedy(const Plugin& plugin) {
  if (!IsPlain(plugin.device.name)) {
    return std::string("set the value ") + plugin.valueName + " to LIBRARY,FUNCTION";
  }
  return "'qorlixctl reg set SOFTWARE\\Vesmark\\NORVA\\DefDevices\\DeviceID\\" +
         plugin.device.name + ' ' + plugin.valueName + " LIBRARY,FUNCTION'";
}

// What the value itself says, whatever lies on the disk. \returns whether it is sound.
bool ExamineText(const Plugin& plugin, const PluginValue& value, Findings& findings) {
  const std::string quoted = '"' + TextOf(plugin.value) + '"';
  const std::size_t before = findings.size();
  if (!value.hasComma || value.function.empty()) {
    findings.push_back({Severity::Error, "device",
                        Of(plugin) + ": " + quoted +
                            (value.hasComma ? " names no function behind its comma"
                                            : " has no comma, so it names no function"),
                        Remedy(plugin)});
  }
  if (value.library.find("..") != std::string::npos) {
    findings.push_back({Severity::Error, "device",
                        Of(plugin) + ": " + quoted +
                            " leads out of the system directory, and is loaded all the same",
                        "put the library into the system directory, and name it without a path"});
  } else if (value.library.find_first_of("\\/:") != std::string::npos) {
    findings.push_back({Severity::Warning, "device",
                        Of(plugin) + ": " + quoted +
                            " has a path; it is appended to the system directory as it is",
                        "put the library into the system directory, and name it without a path"});
  }
  if (value.library.find(' ') != std::string::npos ||
      value.function.find(' ') != std::string::npos) {
    findings.push_back(
        {Severity::Warning, "device",
         Of(plugin) + ": " + quoted + " has a blank, which counts as part of the name",
         Remedy(plugin)});
  }
  return findings.size() == before;
}

// What keeps the server from coming as far as the library. \returns whether there is any of it.
bool ExamineLengths(const Plugin& plugin, const PluginValue& value, const std::string& systemFolder,
                    Findings& findings) {
  if (plugin.value.bytes.size() > kDeviceRoom) {
    findings.push_back({Severity::Error, "device",
                        Of(plugin) + ": longer than the 260 bytes that are read: '" +
                            plugin.command + "' answers 234",
                        Remedy(plugin)});
    return true;
  }
  const std::size_t path = systemFolder.size() + 1 + value.library.size();
  if (path < kPathRoom) return false;
  findings.push_back({Severity::Error, "device",
                      Of(plugin) + ": the path of its library has " + std::to_string(path) +
                          " bytes, 259 are the most: '" + plugin.command + "' answers 34",
                      Remedy(plugin)});
  return true;
}

void ExaminePlugin(const Plugin& plugin, const std::string& systemFolder, Findings& findings) {
  if (!plugin.value.isThere) {
    findings.push_back({Severity::Note, "device",
                        Of(plugin) + ": not there, so '" + plugin.command + "' answers 2",
                        Remedy(plugin)});
    return;
  }
  const PluginValue value = ParsePluginValue(plugin.value.bytes);
  if (ExamineLengths(plugin, value, systemFolder, findings)) return;
  const bool isSound = ExamineText(plugin, value, findings);
  const std::string library = Of(plugin) + ": " + value.library;
  switch (plugin.kind) {
    case ImageKind::Missing:
      findings.push_back(
          {Severity::Error, "device",
           library + " is not in the system directory: '" + plugin.command + "' answers 126",
           "put it there, or install the device's software anew"});
      return;
    case ImageKind::NoImage:
    case ImageKind::Other:
      findings.push_back({Severity::Error, "device",
                          library + " is no 32-bit library: '" + plugin.command + "' answers 193",
                          "put the 32-bit one there"});
      return;
    case ImageKind::Unreadable:
      findings.push_back({Severity::Warning, "device", library + " cannot be read",
                          "see who may read it: 'icacls' with its path"});
      return;
    case ImageKind::Fitting:
      if (isSound) findings.push_back({Severity::Ok, "device", library + " is there", ""});
      return;
  }
}

void ExamineHardwareId(const DeviceFacts& device, Findings& findings) {
  static constexpr char kRemedy[] = "install the device's software anew";
  if (!device.hardwareId.isThere) {
    findings.push_back({Severity::Error, "device",
                        device.name + " has no HardwareID: 'install' and 'deinstall' answer 2",
                        kRemedy});
  } else if (device.hardwareId.bytes.size() > kDeviceRoom) {
    findings.push_back({Severity::Error, "device",
                        device.name +
                            ", HardwareID: longer than the 260 bytes that are read: 'install' and "
                            "'deinstall' answer 234",
                        kRemedy});
  }
}

}  // namespace

void ExamineRegistry(const Facts& facts, Findings& findings) {
  if (facts.hasTree) {
    findings.push_back({Severity::Ok, "registry", std::string(kTree) + " is there", ""});
  } else {
    findings.push_back({Severity::Warning, "registry",
                        std::string(kTree) + " is missing or cannot be read: the stack is not set "
                                             "up",
                        "run the stack's set-up"});
  }
  findings.push_back(Gate(facts.setUp));
  findings.push_back(Profile(facts.strictProfile));
}

void ExamineDevices(const Facts& facts, Findings& findings) {
  if (facts.devices.empty()) {
    findings.push_back({Severity::Note, "device",
                        "no device is registered below DefDevices\\DeviceID: 'install' and "
                        "'deinstall' answer 2",
                        ""});
  }
  const std::string& systemFolder = facts.systemFolder.path;
  for (const DeviceFacts& device : facts.devices) {
    ExamineHardwareId(device, findings);
    ExaminePlugin({device, "Installer", "install", device.installer, device.installerKind},
                  systemFolder, findings);
    ExaminePlugin({device, "Deinstaller", "deinstall", device.deinstaller, device.deinstallerKind},
                  systemFolder, findings);
  }
}

}  // namespace doctor
