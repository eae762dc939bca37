#ifndef TESTS_FAKES_FAKEREGISTRY_H_
#define TESTS_FAKES_FAKEREGISTRY_H_

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include "tests/support/WireHex.h"

/// HKEY_LOCAL_MACHINE in memory, behind registry/RegistryOperation.h. Names are compared without
/// regard to case and enumerated in that order, as the real registry does it.
namespace fake_registry {

struct Value {
  std::string name;
  std::uint32_t type;
  Bytes data;
};

struct Key {
  std::string name;
  std::map<std::string, Key> subkeys;   // by folded name
  std::map<std::string, Value> values;  // by folded name
};

Key& Root();
Key* Find(const std::string& path);
Key& Create(const std::string& path);
void DeleteTree(const std::string& path);
std::string Fold(const std::string& name);

/// Called at the start of every primitive; a test makes it throw.
void OnCall(std::function<void()> hook);

/// Called with the key in front of every change of it, as it reaches the registry.
void OnChange(std::function<void(const std::string& key)> hook);

/// Called at the end of every primitive that reads, once for each length that it reports; a test
/// makes it answer something else.
void OnRead(std::function<void(std::uint32_t& result, std::uint32_t& length)> hook);

}  // namespace fake_registry

#endif  // TESTS_FAKES_FAKEREGISTRY_H_
