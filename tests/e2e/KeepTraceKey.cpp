#include <gtest/gtest.h>

#include <optional>

#include "tests/support/RegistryKeyScratch.h"

// A program that configures tracing brings the machine's own configuration back when it ends.

namespace {

class KeepTraceKey : public testing::Environment {
 public:
  void SetUp() override { key_.emplace(kTraceKey); }
  void TearDown() override { key_.reset(); }

 private:
  std::optional<RegistryKeyScratch> key_;
};

[[maybe_unused]] const testing::Environment* const g_environment =
    testing::AddGlobalTestEnvironment(new KeepTraceKey);

}  // namespace
