#include "standins/plugins/SampleDevice.h"

#include <windows.h>

#include <array>
#include <cstring>
#include <string>

namespace sample_device {

namespace {

constexpr char kLogDevices[] = "SOFTWARE\\Vesmark\\NORVA\\LogDevices\\";
constexpr char kLogNames[] = "SOFTWARE\\Vesmark\\NORVA\\LogNames\\";
constexpr char kMark[] = "InstalledBy";
constexpr char kOurs[] = "sampledev";
constexpr std::size_t kLongestKeyName = 255;

class Key {
 public:
  Key() = default;
  ~Key() {
    if (key_ != nullptr) RegCloseKey(key_);
  }
  Key(const Key&) = delete;
  Key& operator=(const Key&) = delete;

  HKEY get() const { return key_; }
  HKEY* put() { return &key_; }

 private:
  HKEY key_ = nullptr;
};

std::uint32_t Code(LSTATUS status) { return static_cast<std::uint32_t>(status); }

// The text comes from a client of the server, and this code runs with the server's rights: a
// backslash would lead to other keys.
bool IsDeviceId(const char* deviceId) {
  if (deviceId == nullptr) return false;
  const std::size_t length = strnlen(deviceId, kLongestKeyName + 1);
  return length != 0 && length <= kLongestKeyName && std::strchr(deviceId, '\\') == nullptr;
}

bool IsOurs(HKEY key) {
  std::array<char, sizeof(kOurs)> text{};
  DWORD length = text.size();
  DWORD type = 0;
  return RegQueryValueExA(key, kMark, nullptr, &type, reinterpret_cast<BYTE*>(text.data()),
                          &length) == ERROR_SUCCESS &&
         type == REG_SZ && std::memcmp(text.data(), kOurs, sizeof(kOurs)) == 0;
}

std::uint32_t SetText(HKEY key, const char* name, const char* text) {
  if (text == nullptr) text = "";
  return Code(RegSetValueExA(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text),
                             static_cast<DWORD>(std::strlen(text) + 1)));
}

// Creates a key with our mark, or opens the one that has it.
std::uint32_t Create(const std::string& path, Key& key, bool& created) {
  DWORD disposition = 0;
  const LSTATUS status =
      RegCreateKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                      KEY_READ | KEY_WRITE, nullptr, key.put(), &disposition);
  if (status != ERROR_SUCCESS) return Code(status);
  created = disposition == REG_CREATED_NEW_KEY;
  if (!created) return IsOurs(key.get()) ? ERROR_SUCCESS : ERROR_ALREADY_EXISTS;
  return SetText(key.get(), kMark, kOurs);
}

// Deletes a key that is ours. `removed` says whether there was one.
std::uint32_t Remove(const std::string& path, bool& removed) {
  {
    Key key;
    const LSTATUS status = RegOpenKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, key.put());
    if (status == ERROR_FILE_NOT_FOUND) return ERROR_SUCCESS;
    if (status != ERROR_SUCCESS) return Code(status);
    if (!IsOurs(key.get())) return ERROR_SUCCESS;
  }
  const LSTATUS status = RegDeleteKeyA(HKEY_LOCAL_MACHINE, path.c_str());
  removed = removed || status == ERROR_SUCCESS;
  return Code(status);
}

std::uint32_t Fill(HKEY logDevice, HKEY logName, const char* deviceId, const char* hardwareId,
                   const char* language) {
  std::uint32_t result = SetText(logDevice, "HardwareId", hardwareId);
  if (result == ERROR_SUCCESS) result = SetText(logDevice, "Language", language);
  if (result == ERROR_SUCCESS) result = SetText(logName, "LogDevice", deviceId);
  return result;
}

}  // namespace

std::uint32_t Install(const char* deviceId, const char* hardwareId, const char* language) {
  if (!IsDeviceId(deviceId)) return ERROR_INVALID_PARAMETER;
  const std::string devicePath = std::string(kLogDevices) + deviceId;
  const std::string namePath = std::string(kLogNames) + deviceId;
  bool deviceIsNew = false;
  bool nameIsNew = false;
  Key logDevice;
  Key logName;

  std::uint32_t result = Create(devicePath, logDevice, deviceIsNew);
  if (result == ERROR_SUCCESS) result = Create(namePath, logName, nameIsNew);
  if (result == ERROR_SUCCESS) {
    result = Fill(logDevice.get(), logName.get(), deviceId, hardwareId, language);
  }
  if (result != ERROR_SUCCESS) {
    if (nameIsNew) (void)RegDeleteKeyA(HKEY_LOCAL_MACHINE, namePath.c_str());
    if (deviceIsNew) (void)RegDeleteKeyA(HKEY_LOCAL_MACHINE, devicePath.c_str());
  }
  return result;
}

std::uint32_t Deinstall(const char* deviceId) {
  if (!IsDeviceId(deviceId)) return ERROR_INVALID_PARAMETER;
  bool removed = false;
  std::uint32_t result = Remove(std::string(kLogNames) + deviceId, removed);
  if (result == ERROR_SUCCESS) result = Remove(std::string(kLogDevices) + deviceId, removed);
  if (result != ERROR_SUCCESS) return result;
  return removed ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
}

}  // namespace sample_device
