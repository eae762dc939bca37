#ifndef TESTS_E2E_REGISTRYTREE_H_
#define TESTS_E2E_REGISTRYTREE_H_

#include <cstdint>
#include <map>
#include <ostream>
#include <string>

#include "tests/e2e/RegistryScratch.h"

namespace e2e {

/// All that lies below a key of HKEY_LOCAL_MACHINE at one moment, to be compared with another.
struct RegistryTree {
  /// An empty tree if there is no such key.
  explicit RegistryTree(const std::string& path);

  /// Data by "key|value", the key relative to the path; a key stands for itself, without data.
  std::map<std::string, StoredValue> values;

  bool operator==(const RegistryTree&) const = default;

  // What a test arranges. Parents are made as needed; texts get their terminator.
  static void CreateKey(const std::string& path);
  static void Set(const std::string& path, const std::string& name, std::uint32_t type,
                  const Bytes& data);
  static void SetText(const std::string& path, const std::string& name, const std::string& text);
  static bool HasKey(const std::string& path);

 private:
  void Add(const std::string& path, const std::string& relative);
};

/// For failure messages.
std::ostream& operator<<(std::ostream& out, const RegistryTree& tree);

}  // namespace e2e

#endif  // TESTS_E2E_REGISTRYTREE_H_
