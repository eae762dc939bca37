#ifndef TESTS_E2E_ACTIONSTEST_H_
#define TESTS_E2E_ACTIONSTEST_H_

#include <gtest/gtest.h>

#include "tests/e2e/ServerProcess.h"
#include "tests/e2e/SharedServerTest.h"
#include "tests/e2e/StandIns.h"
#include "tests/e2e/WireClient.h"

namespace e2e {

/// A client on a server that all tests of a suite share, with all stand-ins in their places. A test
/// begins without a script and without calls.
class ActionsTest : public SharedServerTest {
 protected:
  static void SetUpTestSuite();
  static void TearDownTestSuite();
  void SetUp() override;

  static StandIns& Libraries();
};

/// A server of the test's own, for what stays in a server or ends it. Nothing is in its place yet.
class OwnServerActionsTest : public testing::Test {
 protected:
  ~OwnServerActionsTest() override;

  /// Starts it and connects the client.
  void Start();

  StandIns libraries_;
  ServerProcess server_;
  WireClient client_;
};

}  // namespace e2e

#endif  // TESTS_E2E_ACTIONSTEST_H_
