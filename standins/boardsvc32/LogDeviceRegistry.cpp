#include <windows.h>

#include <utility>

#include "standins/boardsvc32/LogDeviceStore.h"

namespace boardsim::log_device_store {

namespace {

constexpr char kArea[] = "Software\\Vesmark\\NORVA\\LogDevices";
constexpr char kSimulated[] = "Simulated";
constexpr char kPresent[] = "Present";
constexpr DWORD kNameRoom = 256;  // the registry's longest key name and its terminator

class Key {
 public:
  explicit Key(LSTATUS (*open)(const std::string&, HKEY*), const std::string& path)
      : status_(open(path, &key_)) {}
  ~Key() {
    if (status_ == ERROR_SUCCESS) RegCloseKey(key_);
  }
  Key(const Key&) = delete;
  Key& operator=(const Key&) = delete;

  HKEY get() const { return key_; }
  LSTATUS status() const { return status_; }

 private:
  HKEY key_ = nullptr;
  LSTATUS status_;
};

LSTATUS Open(const std::string& path, HKEY* key) {
  return RegOpenKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ | KEY_WRITE, key);
}

LSTATUS Create(const std::string& path, HKEY* key) {
  return RegCreateKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, nullptr, 0, KEY_READ | KEY_WRITE,
                         nullptr, key, nullptr);
}

std::string PathOf(const std::string& name) { return std::string(kArea) + '\\' + name; }

LSTATUS SetText(HKEY key, const char* name, const std::string& text) {
  return RegSetValueExA(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                        static_cast<DWORD>(text.size() + 1));
}

LSTATUS SetNumber(HKEY key, const char* name, DWORD number) {
  return RegSetValueExA(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number),
                        sizeof(number));
}

bool IsOurs(const std::string& name) {
  const Key key(Open, PathOf(name));
  return key.status() == ERROR_SUCCESS && RegQueryValueExA(key.get(), kSimulated, nullptr, nullptr,
                                                           nullptr, nullptr) == ERROR_SUCCESS;
}

}  // namespace

std::vector<Entry> List() {
  std::vector<Entry> entries;
  const Key area(Open, kArea);
  if (area.status() != ERROR_SUCCESS) return entries;
  for (DWORD index = 0;; ++index) {
    char name[kNameRoom];
    DWORD length = kNameRoom;
    if (RegEnumKeyExA(area.get(), index, name, &length, nullptr, nullptr, nullptr, nullptr) !=
        ERROR_SUCCESS) {
      return entries;
    }
    entries.push_back({name, IsOurs(name)});
  }
}

std::uint32_t Write(const Board& board) {
  const Key key(Create, PathOf(board.logicalDevice));
  LSTATUS status = key.status();
  // The mark comes first, so that what fails half-way is still known as ours.
  if (status == ERROR_SUCCESS) status = SetNumber(key.get(), kSimulated, 1);
  if (status == ERROR_SUCCESS) status = SetNumber(key.get(), kPresent, 1);
  const std::pair<const char*, const std::string*> texts[] = {
      {"Board", &board.name},
      {"DeviceId", &board.deviceId},
      {"NetType", &board.netType},
      {"BoardMap", &board.map},
      {"Adapter", &board.adapter},
      {"HardwareId", &board.hardwareId},
      {"HardwareInstanceId", &board.hardwareInstanceId},
  };
  for (const auto& [name, text] : texts) {
    if (status == ERROR_SUCCESS) status = SetText(key.get(), name, *text);
  }
  return static_cast<std::uint32_t>(status);
}

std::uint32_t MarkPresent(const std::string& name, bool present) {
  const Key key(Open, PathOf(name));
  if (key.status() != ERROR_SUCCESS) return static_cast<std::uint32_t>(key.status());
  return static_cast<std::uint32_t>(SetNumber(key.get(), kPresent, present ? 1 : 0));
}

std::uint32_t Remove(const std::string& name) {
  const Key area(Open, kArea);
  if (area.status() != ERROR_SUCCESS) return static_cast<std::uint32_t>(area.status());
  return static_cast<std::uint32_t>(RegDeleteTreeA(area.get(), name.c_str()));
}

}  // namespace boardsim::log_device_store
