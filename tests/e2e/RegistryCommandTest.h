#ifndef TESTS_E2E_REGISTRYCOMMANDTEST_H_
#define TESTS_E2E_REGISTRYCOMMANDTEST_H_

#include <gmock/gmock.h>

#include "tests/e2e/EventLogTail.h"
#include "tests/e2e/RegistryScratch.h"
#include "tests/e2e/SharedServerTest.h"

namespace e2e {

/// The key that registry commands are tried on. Its length on the wire is 1A000000.
inline constexpr char kKey[] = "SOFTWARE\\Vesmark\\NORVA\\E2E";

/// One client on the shared server, with an empty key to work on and an eye on the event log.
class RegistryCommandTest : public SharedServerTest {
 protected:
  void SetUp() override {
    SharedServerTest::SetUp();
    scratch_.CreateKey(kKey);
  }

  void SetValue(const std::string& name, std::uint32_t type, const Bytes& data) {
    scratch_.SetValue(kKey, name, type, data);
  }

  RegistryScratch scratch_;
  EventLogTail log_;
};

}  // namespace e2e

#endif  // TESTS_E2E_REGISTRYCOMMANDTEST_H_
