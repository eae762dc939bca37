#ifndef TESTS_SUPPORT_REGISTRYKEYSCRATCH_H_
#define TESTS_SUPPORT_REGISTRYKEYSCRATCH_H_

#include <string>

/// Where the trace facility has its configuration, below HKEY_LOCAL_MACHINE.
inline constexpr char kTraceKey[] = "Software\\VESMARK\\NORVA\\TrcParams";

/// A key below HKEY_LOCAL_MACHINE that is the machine's and not ours: missing at the start of the
/// object, and at its end what it was before.
///
/// What was there is put aside in the registry. A program that is ended by force leaves it there,
/// and the next object for the same key brings it back; what was written to the key in between
/// cannot be told from the ended program's own, and goes.
class RegistryKeyScratch {
 public:
  explicit RegistryKeyScratch(const std::string& path);
  ~RegistryKeyScratch();
  RegistryKeyScratch(const RegistryKeyScratch&) = delete;
  RegistryKeyScratch& operator=(const RegistryKeyScratch&) = delete;

  void Remove() const;
  void SetText(const std::string& name, const std::string& text) const;
  void SetRaw(const std::string& name, unsigned type, const std::string& data) const;

 private:
  std::string path_;
  std::string aside_;  ///< holds the original as a subkey, or nothing when there was none
};

#endif  // TESTS_SUPPORT_REGISTRYKEYSCRATCH_H_
