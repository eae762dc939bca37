#include <windows.h>

#include <iterator>

#include "doctor/Gather.h"
#include "doctor/PluginValue.h"
#include "platform/MachineSetting.h"
#include "platform/WinHandles.h"

namespace doctor {
namespace {

UniqueRegKey Open(HKEY above, const char* path) {
  HKEY key = nullptr;
  if (RegOpenKeyExA(above, path, /*ulOptions=*/0, KEY_READ, &key) != ERROR_SUCCESS) key = nullptr;
  return UniqueRegKey(key);
}

// A value that grows between the two calls counts as missing; it is being written just now.
ValueFacts Value(const UniqueRegKey& key, const char* name) {
  ValueFacts value;
  DWORD type = 0;
  DWORD size = 0;
  if (!key || RegQueryValueExA(key.get(), name, /*lpReserved=*/nullptr, &type, /*lpData=*/nullptr,
                               &size) != ERROR_SUCCESS) {
    return value;
  }
  value.bytes.resize(size);
  value.isThere =
      RegQueryValueExA(key.get(), name, /*lpReserved=*/nullptr, &type,
                       reinterpret_cast<BYTE*>(value.bytes.data()), &size) == ERROR_SUCCESS;
  value.bytes.resize(value.isThere ? size : 0);
  value.type = type;
  return value;
}

ImageKind KindOfPlugin(const std::string& systemFolder, const ValueFacts& value) {
  const std::string library = ParsePluginValue(value.bytes).library;
  if (library.empty()) return ImageKind::Missing;
  return KindOfFile(systemFolder + '\\' + library);
}

DeviceFacts Device(const UniqueRegKey& above, const char* name, const std::string& systemFolder) {
  const UniqueRegKey key = Open(above.get(), name);
  DeviceFacts device;
  device.name = name;
  device.hardwareId = Value(key, "HardwareID");
  device.installer = Value(key, "Installer");
  device.deinstaller = Value(key, "Deinstaller");
  device.installerKind = KindOfPlugin(systemFolder, device.installer);
  device.deinstallerKind = KindOfPlugin(systemFolder, device.deinstaller);
  return device;
}

bool Exists(const std::string& path) {
  return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// A 32-bit process does not see the system directory of 64-bit ones by its name, but by this one.
std::string AsSeenFrom32Bits(std::string path) {
  char windows[MAX_PATH] = "";
  const UINT length = GetWindowsDirectoryA(windows, std::size(windows));
  const std::string folder = std::string(windows, length) + "\\System32\\";
  if (length < std::size(windows) && path.size() > folder.size() &&
      CompareStringA(LOCALE_INVARIANT, NORM_IGNORECASE, path.c_str(),
                     static_cast<int>(folder.size()), folder.c_str(),
                     static_cast<int>(folder.size())) == CSTR_EQUAL) {
    path.replace(0, folder.size(), std::string(windows, length) + "\\Sysnative\\");
  }
  return path;
}

EventSourceFacts Source(const char* name) {
  EventSourceFacts source;
  source.name = name;
  const std::string path =
      std::string("SYSTEM\\CurrentControlSet\\Services\\EventLog\\Application\\") + name;
  const UniqueRegKey key = Open(HKEY_LOCAL_MACHINE, path.c_str());
  source.isRegistered = static_cast<bool>(key);
  const ValueFacts value = Value(key, "EventMessageFile");
  // Several files may be named; the first one is as good as all.
  const std::string text = value.bytes.substr(0, value.bytes.find_first_of(std::string(";\0", 2)));
  if (text.empty()) return source;
  char expanded[MAX_PATH] = "";
  const DWORD size = ExpandEnvironmentStringsA(text.c_str(), expanded, std::size(expanded));
  source.messageFile = size != 0 && size <= std::size(expanded) ? expanded : text;
  source.hasMessageFile =
      Exists(source.messageFile) || Exists(AsSeenFrom32Bits(source.messageFile));
  return source;
}

}  // namespace

void GatherRegistry(const std::string& systemFolder, Facts& facts) {
  const UniqueRegKey tree = Open(HKEY_LOCAL_MACHINE, "SOFTWARE\\Vesmark\\NORVA");
  facts.hasTree = static_cast<bool>(tree);
  const UniqueRegKey settings = Open(HKEY_LOCAL_MACHINE, platform::kMachineSettingKey);
  facts.setUp = Value(settings, "SetupSucceeded");
  facts.strictProfile = Value(settings, "StrictProfile");
  const UniqueRegKey devices =
      Open(HKEY_LOCAL_MACHINE, "SOFTWARE\\Vesmark\\NORVA\\DefDevices\\DeviceID");
  if (!devices) return;
  for (DWORD i = 0;; ++i) {
    char name[256] = "";  // no key's name is longer
    DWORD size = std::size(name);
    if (RegEnumKeyExA(devices.get(), i, name, &size, /*lpReserved=*/nullptr, /*lpClass=*/nullptr,
                      /*lpcchClass=*/nullptr, /*lpftLastWriteTime=*/nullptr) != ERROR_SUCCESS) {
      return;
    }
    facts.devices.push_back(Device(devices, name, systemFolder));
  }
}

std::vector<EventSourceFacts> GatherSources() {
  return {Source("MIREL RegistryOperation"), Source("Zqotrc")};
}

}  // namespace doctor
