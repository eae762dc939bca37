// The logical devices in memory, and what tests arrange there.

#include <algorithm>
#include <cctype>
#include <map>

#include "standins/boardsvc32/LogDeviceStore.h"
#include "standins/boardsvc32/testing/LogDeviceSetup.h"

namespace {

struct IgnoreCase {
  bool operator()(const std::string& left, const std::string& right) const {
    return std::lexicographical_compare(
        left.begin(), left.end(), right.begin(), right.end(),
        [](char a, char b) { return std::tolower(a) < std::tolower(b); });
  }
};

using Values = std::map<std::string, std::string>;
std::map<std::string, Values, IgnoreCase> g_keys;

constexpr std::uint32_t kNoSuchKey = 2;

}  // namespace

namespace boardsim::log_device_store {

std::vector<Entry> List() {
  std::vector<Entry> entries;
  for (const auto& [name, values] : g_keys) entries.push_back({name, values.contains("Simulated")});
  return entries;
}

std::uint32_t Write(const Board& board) {
  Values& values = g_keys[board.logicalDevice];
  values["Simulated"] = "1";
  values["Present"] = "1";
  values["Board"] = board.name;
  values["DeviceId"] = board.deviceId;
  values["NetType"] = board.netType;
  values["BoardMap"] = board.map;
  values["Adapter"] = board.adapter;
  values["HardwareId"] = board.hardwareId;
  values["HardwareInstanceId"] = board.hardwareInstanceId;
  return 0;
}

std::uint32_t MarkPresent(const std::string& name, bool present) {
  const auto key = g_keys.find(name);
  if (key == g_keys.end()) return kNoSuchKey;
  key->second["Present"] = present ? "1" : "0";
  return 0;
}

std::uint32_t Remove(const std::string& name) { return g_keys.erase(name) != 0 ? 0 : kNoSuchKey; }

}  // namespace boardsim::log_device_store

namespace log_device_setup {

void Clear() { g_keys.clear(); }

void AddForeign(const std::string& name, const std::string& hardwareId) {
  g_keys[name] = {{"HardwareId", hardwareId}};
}

bool Exists(const std::string& name) { return g_keys.contains(name); }

std::optional<std::string> Value(const std::string& name, const std::string& value) {
  const auto key = g_keys.find(name);
  if (key == g_keys.end() || !key->second.contains(value)) return std::nullopt;
  return key->second[value];
}

void SetText(const std::string& name, const std::string& value, const std::string& text) {
  g_keys[name][value] = text;
}

}  // namespace log_device_setup
