// The real registry, arranged and looked at.

#include <windows.h>

#include "standins/boardsvc32/testing/LogDeviceSetup.h"

namespace {

constexpr char kArea[] = "Software\\Vesmark\\NORVA\\LogDevices";

std::string PathOf(const std::string& name) { return std::string(kArea) + '\\' + name; }

}  // namespace

namespace log_device_setup {

void Clear() { (void)RegDeleteTreeA(HKEY_LOCAL_MACHINE, kArea); }

void AddForeign(const std::string& name, const std::string& hardwareId) {
  SetText(name, "HardwareId", hardwareId);
}

bool Exists(const std::string& name) {
  HKEY key = nullptr;
  if (RegOpenKeyA(HKEY_LOCAL_MACHINE, PathOf(name).c_str(), &key) != ERROR_SUCCESS) return false;
  RegCloseKey(key);
  return true;
}

std::optional<std::string> Value(const std::string& name, const std::string& value) {
  char data[1024] = {};
  DWORD size = sizeof(data) - 1;
  DWORD type = 0;
  if (RegGetValueA(HKEY_LOCAL_MACHINE, PathOf(name).c_str(), value.c_str(), RRF_RT_ANY, &type, data,
                   &size) != ERROR_SUCCESS) {
    return std::nullopt;
  }
  if (type != REG_DWORD) return std::string(data);
  return std::to_string(*reinterpret_cast<const DWORD*>(data));
}

void SetText(const std::string& name, const std::string& value, const std::string& text) {
  (void)RegSetKeyValueA(HKEY_LOCAL_MACHINE, PathOf(name).c_str(), value.c_str(), REG_SZ,
                        text.c_str(), static_cast<DWORD>(text.size() + 1));
}

}  // namespace log_device_setup
