#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "tests/e2e/RegistryScratch.h"
#include "tests/support/RegistryKeyScratch.h"

// A program that installs devices finds none, and brings the machine's own back when it ends.

namespace {

class KeepDeviceKeys : public testing::Environment {
 public:
  void SetUp() override {
    for (const char* const name : {"DefDevices", "LogDevices", "LogNames"}) {
      keys_.push_back(
          std::make_unique<RegistryKeyScratch>(std::string("SOFTWARE\\Vesmark\\NORVA\\") + name));
    }
  }
  void TearDown() override {
    keys_.clear();
    const e2e::RegistryScratch removesEmptyParents;
  }

 private:
  std::vector<std::unique_ptr<RegistryKeyScratch>> keys_;
};

[[maybe_unused]] const testing::Environment* const g_environment =
    testing::AddGlobalTestEnvironment(new KeepDeviceKeys);

}  // namespace
