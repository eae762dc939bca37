// However a path is spelled: a change reaches the registry only if a walk from name to name ends in
// the permitted tree, and only where that walk ends; every refusal is reported, in the caller's
// spelling.

#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <string>

#include "fuzz/PolicyModel.h"
#include "platform/WinTypes.h"
#include "registry/RegistryOperation.h"
#include "registry/RegistryPolicy.h"
#include "tests/fakes/FakeEventLog.h"
#include "tests/fakes/FakeRegistry.h"

namespace {

void Require(bool holds) {
  if (!holds) std::abort();
}

std::string g_changed;
int g_changes = 0;

std::uint32_t Change(int primitive, const char* path) {
  switch (primitive) {
    case 0:
      return RegCreateKeyBL(path);
    case 1:
      return RegDelKeyBL(path);
    case 2:
      return RegSetValueBL(path, "name", "text");
    default:
      return RegDelValueBL(path, "name");
  }
}

void CheckReport(const std::string& path, bool isRefused) {
  const auto events = fake_event_log::Take();
  Require(events.size() == (isRefused ? 1u : 0u));
  if (!isRefused) return;
  Require(events[0].source == "MIREL RegistryOperation");
  Require(events[0].text ==
          ("Invalid Access to Reg-Key: " + path).substr(0, events[0].text.size()));
  Require(events[0].text.size() >= 27 + std::min<std::size_t>(path.size(), 8159));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // On the heap and of its exact size, so that a step beyond it is seen.
  const std::string text(data, data + strnlen(reinterpret_cast<const char*>(data), size));
  const std::unique_ptr<char[]> path(new char[text.size() + 1]);
  std::memcpy(path.get(), text.c_str(), text.size() + 1);

  const std::optional<std::string> walked = policy_model::Walk(text);
  const bool isInside = walked && policy_model::IsInside(*walked);

  CanonicalPath canonical;
  Require(IsPermittedRegKey(path.get(), canonical) == isInside);
  if (isInside) Require(canonical.text == *walked);
  CheckReport(text, !isInside);

  fake_registry::OnChange([](const std::string& key) {
    g_changed = key;
    ++g_changes;
  });
  for (int primitive = 0; primitive < 4; ++primitive) {
    g_changes = 0;
    const std::uint32_t result = Change(primitive, path.get());
    Require(isInside == (g_changes == 1) && isInside == (result != ERROR_ACCESS_DENIED));
    if (isInside) Require(g_changed == *walked && policy_model::IsInside(g_changed));
    CheckReport(text, !isInside);
  }
  fake_registry::OnChange({});
  fake_registry::Root() = {};
  g_changed.clear();
  g_changed.shrink_to_fit();
  return 0;
}
