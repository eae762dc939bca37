#include <cstring>

#include "registry/OsName.h"
#include "registry/ProductInformation.h"
#include "tests/fakes/FakeRegistry.h"
#include "tests/fakes/FaultPlan.h"

// The keys of products, in the registry that native tests have.
bool ReadProductValues(const char* key, const char* const* names, ProductValue* values,
                       std::size_t count) {
  if (fault_plan::Fails("ReadProductValues")) return false;
  const fake_registry::Key* const found = fake_registry::Find(key);
  if (found == nullptr) return false;
  for (std::size_t i = 0; i < count; ++i) {
    values[i] = {};
    const auto value = found->values.find(fake_registry::Fold(names[i]));
    if (value == found->values.end()) continue;
    const Bytes& data = value->second.data;
    if (!data.empty() && data.size() < sizeof(values[i].text)) {
      std::memcpy(values[i].text, data.data(), data.size());
    }
  }
  return true;
}

OsVersion QueryOsVersion() {
  OsVersion version = {};
  version.platformId = 2;
  version.major = 6;
  version.minor = 1;
  version.productType = 1;
  version.architecture = 9;
  return version;
}
