// Whatever the configuration holds, only a value that equals a row's incomplete identifier below a
// key of that row's name changes, and only to what that row says.

#include <fuzzer/FuzzedDataProvider.h>

#include <cctype>
#include <cstdlib>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "maintenance/HardwareIdRepair.h"
#include "tests/fakes/FakeEventLog.h"
#include "tests/fakes/FakeRegistry.h"

namespace {

struct Row {
  const char* deviceId;
  const char* model;
  const char* incomplete;
  const char* complete;
};
const Row kRows[] = {
    {"HWX7101", "NB410A", "PCI\\VEN_1F3C&DEV_5101", "PCI\\VEN_1F3C&DEV_5101&SUBSYS_51011F3C"},
    {"HWX7102", "NB420A", "PCI\\VEN_1F3C&DEV_5101", "PCI\\VEN_1F3C&DEV_5101&SUBSYS_D1011F3C"},
    {"HWX7104", "NB510", "PCI\\VEN_1F3C&DEV_5202", "PCI\\VEN_1F3C&DEV_5202&SUBSYS_52021F3C"},
    {"HWX7105", "NB520", "PCI\\VEN_1F3C&DEV_5202", "PCI\\VEN_1F3C&DEV_5202&SUBSYS_D2021F3C"},
    {"HWX7106", "NB410B", "PCI\\VEN_1F3C&DEV_5303", "PCI\\VEN_1F3C&DEV_5303&SUBSYS_53031F3C"},
    {"HWX7090", "NB300", "PCI\\VEN_1F3C&DEV_2404", "PCI\\VEN_1F3C&DEV_5404&SUBSYS_54041F3C"},
};

const std::string kAreas[] = {"Software\\Vesmark\\Norva\\DefDevices\\DeviceId",
                              "Software\\Vesmark\\Norva\\DefDevices\\DefaultLogDevices",
                              "Software\\Vesmark\\Norva\\Logdevices"};

// Longest path that the policy takes.
constexpr std::size_t kLongestPath = 259;
constexpr std::size_t kBufferSize = 256;
constexpr std::uint32_t kText = 1;

void Require(bool holds) {
  if (!holds) std::abort();
}

// A key name out of fragments that count and bytes that do not.
std::string TakeName(FuzzedDataProvider& input) {
  std::string name;
  while (input.remaining_bytes() > 0 && input.ConsumeBool()) {
    const Row& row = input.PickValueInArray(kRows);
    switch (input.ConsumeIntegralInRange(0, 4)) {
      case 0:
        name += row.deviceId;
        break;
      case 1:
        name += row.model;
        break;
      case 2:
        name += std::string(input.ConsumeIntegralInRange<std::size_t>(0, 260), 'n');
        break;
      default:
        name += input.ConsumeRandomLengthString(6);
        break;
    }
  }
  std::string kept;
  for (const char c : name) {
    if (c != '\0' && c != '\\') kept += c;
  }
  return kept.empty() || kept == "." || kept == ".." ? "x" : kept;
}

Bytes TakeData(FuzzedDataProvider& input) {
  const Row& row = input.PickValueInArray(kRows);
  std::string text = input.ConsumeBool() ? row.incomplete : row.complete;
  const auto changes = input.ConsumeIntegralInRange<std::size_t>(0, 3);
  for (std::size_t i = 0; i < changes && !text.empty(); ++i) {
    char& c = text[input.ConsumeIntegralInRange<std::size_t>(0, text.size() - 1)];
    c = input.ConsumeBool() ? static_cast<char>(c ^ 0x20) : input.ConsumeIntegral<char>();
  }
  if (input.ConsumeBool()) text += input.ConsumeRandomLengthString(4);
  if (input.ConsumeBool()) text.resize(input.ConsumeIntegralInRange<std::size_t>(0, 260), '\0');
  return TextBytes(text);
}

// What a reader of the value finds in a clear buffer; nothing when it does not fit.
std::string Found(const fake_registry::Value& value) {
  Bytes data = value.data;
  const bool isText = value.type == 1 || value.type == 2 || value.type == 7;
  if (isText && (data.empty() || data.back() != 0)) data.push_back(0);
  if (data.size() > kBufferSize) return "";
  const std::string text(data.begin(), data.end());
  return text.substr(0, text.find('\0'));
}

bool EqualIgnoringCase(const std::string& a, const std::string& b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (std::tolower(static_cast<unsigned char>(a[i])) !=
        std::tolower(static_cast<unsigned char>(b[i]))) {
      return false;
    }
  }
  return true;
}

// The value once an area's run is through with it.
fake_registry::Value Repaired(const std::string& area, const std::string& name,
                              fake_registry::Value value) {
  for (const Row& row : kRows) {
    const char* const part = &area == &kAreas[0] ? row.deviceId : row.model;
    const std::string found = Found(value);
    if (name.find(part) == std::string::npos || found.empty()) continue;
    if (!EqualIgnoringCase(found, row.incomplete)) continue;
    if (area.size() + 1 + name.size() > kLongestPath) continue;
    value = {"HardwareId", kText, TextBytes(row.complete) + Bytes{0}};
  }
  return value;
}

using Values = std::map<std::string, fake_registry::Value>;

bool Same(const Values& a, const Values& b) {
  if (a.size() != b.size()) return false;
  for (const auto& [name, value] : a) {
    const auto other = b.find(name);
    if (other == b.end() || other->second.type != value.type || other->second.data != value.data) {
      return false;
    }
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider input(bytes, size);
  fake_registry::OnCall({});
  fake_registry::Root() = {};
  const int raiseAt = input.ConsumeBool() ? input.ConsumeIntegralInRange(1, 30) : 0;
  while (input.remaining_bytes() > 0) {
    const std::string& area = kAreas[input.ConsumeIntegralInRange(0, 2)];
    fake_registry::Key& key = fake_registry::Create(area + "\\" + TakeName(input));
    const char* const name = input.ConsumeIntegralInRange(0, 9) == 0 ? "Other" : "HardwareId";
    const auto type = input.ConsumeIntegralInRange<std::uint32_t>(0, 8);
    key.values[fake_registry::Fold(name)] = {name, type, TakeData(input)};
  }
  const fake_registry::Key before = fake_registry::Root();

  int calls = 0;
  fake_registry::OnCall([&] {
    if (++calls == raiseAt) throw std::runtime_error("fault");
  });
  HwIdRepair().Run();
  fake_registry::OnCall({});
  (void)fake_event_log::Take();
  const bool raised = raiseAt != 0 && calls >= raiseAt;
  const fake_registry::Key after = fake_registry::Root();

  for (const std::string& area : kAreas) {
    fake_registry::Root() = before;
    const fake_registry::Key* const keys = fake_registry::Find(area);
    if (keys == nullptr) continue;
    const auto subkeys = keys->subkeys;
    fake_registry::Root() = after;
    bool isReached = true;
    for (const auto& [folded, key] : subkeys) {
      // A name that does not fit ends the walk through its area.
      if (key.name.size() >= kBufferSize) isReached = false;
      Values expected = key.values;
      const auto value = expected.find(fake_registry::Fold("HardwareId"));
      if (isReached && value != expected.end()) {
        value->second = Repaired(area, key.name, value->second);
      }
      const Values& found = fake_registry::Find(area)->subkeys.at(folded).values;
      // A run that raised may have stopped anywhere, and nowhere in the middle of a value.
      Require(Same(found, expected) || (raised && Same(found, key.values)));
    }
  }
  fake_registry::Root() = {};
  return 0;
}
