#ifndef TESTS_E2E_REGISTRYLINK_H_
#define TESTS_E2E_REGISTRYLINK_H_

#include <string>

namespace e2e {

/// A key that leads to another one, as an administrator can place it, both below
/// HKEY_LOCAL_MACHINE. Gone at the end of the object, and with the machine at the latest.
class RegistryLink {
 public:
  /// Both parent and target exist, the link does not.
  RegistryLink(const std::string& path, const std::string& target);
  ~RegistryLink();
  RegistryLink(const RegistryLink&) = delete;
  RegistryLink& operator=(const RegistryLink&) = delete;

 private:
  void* link_ = nullptr;
};

}  // namespace e2e

#endif  // TESTS_E2E_REGISTRYLINK_H_
