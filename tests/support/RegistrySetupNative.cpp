#include "tests/fakes/FakeRegistry.h"
#include "tests/support/RegistrySetup.h"

namespace registry_setup {

void CreateKey(const std::string& path) { fake_registry::Create(path); }

void SetValue(const std::string& path, const std::string& name, std::uint32_t type,
              const Bytes& data) {
  fake_registry::Create(path).values[fake_registry::Fold(name)] = {name, type, data};
}

bool KeyExists(const std::string& path) { return fake_registry::Find(path) != nullptr; }

std::optional<Bytes> Value(const std::string& path, const std::string& name) {
  const fake_registry::Key* const key = fake_registry::Find(path);
  if (key == nullptr) return std::nullopt;
  const auto found = key->values.find(fake_registry::Fold(name));
  if (found == key->values.end()) return std::nullopt;
  return Bytes{static_cast<std::uint8_t>(found->second.type)} + found->second.data;
}

void DeleteTree(const std::string& path) { fake_registry::DeleteTree(path); }

}  // namespace registry_setup
