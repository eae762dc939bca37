#ifndef TESTS_E2E_SHAREDSERVERTEST_H_
#define TESTS_E2E_SHAREDSERVERTEST_H_

#include <gtest/gtest.h>

#include "tests/e2e/ServerProcess.h"
#include "tests/e2e/WireClient.h"

namespace e2e {

/// A client on a server that all tests of a suite share, one after another.
///
/// Every test ends with the question whether the server still serves someone new, so that the test
/// that hurt it is the one that fails.
class SharedServerTest : public testing::Test {
 protected:
  static void SetUpTestSuite();
  static void TearDownTestSuite();

  void SetUp() override;
  void TearDown() override;

  static ServerProcess& Server();

  WireClient client_;
};

}  // namespace e2e

#endif  // TESTS_E2E_SHAREDSERVERTEST_H_
