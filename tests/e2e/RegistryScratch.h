#ifndef TESTS_E2E_REGISTRYSCRATCH_H_
#define TESTS_E2E_REGISTRYSCRATCH_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tests/e2e/Wire.h"

namespace e2e {

/// A value as the registry holds it.
struct StoredValue {
  std::uint32_t type;
  Bytes data;
  bool operator==(const StoredValue&) const = default;
};

/// The keys that a test may make below HKEY_LOCAL_MACHINE, empty at its start and gone at its end.
///
/// Works on the registry itself, past the server, so that what the server wrote is seen as the
/// registry holds it and what it reads is known beforehand.
class RegistryScratch {
 public:
  RegistryScratch();
  ~RegistryScratch();
  RegistryScratch(const RegistryScratch&) = delete;
  RegistryScratch& operator=(const RegistryScratch&) = delete;

  void CreateKey(const std::string& path);
  void DeleteTree(const std::string& path);
  bool HasKey(const std::string& path) const;
  /// Names of all subkeys, in the registry's order.
  std::vector<std::string> Subkeys(const std::string& path) const;

  void SetValue(const std::string& path, const std::string& name, std::uint32_t type,
                const Bytes& data);
  /// Denies everybody, the server included, to write values of the key or allows it again.
  void DenyWriting(const std::string& path, bool denied);
  std::optional<StoredValue> Value(const std::string& path, const std::string& name) const;

 private:
  void Clear();
};

}  // namespace e2e

#endif  // TESTS_E2E_REGISTRYSCRATCH_H_
