#include "tests/e2e/ActionsTest.h"

#include <memory>

namespace e2e {
namespace {

std::unique_ptr<StandIns> g_libraries;

}  // namespace

void ActionsTest::SetUpTestSuite() {
  g_libraries = std::make_unique<StandIns>();
  g_libraries->PlaceAll();
  SharedServerTest::SetUpTestSuite();
}

void ActionsTest::TearDownTestSuite() {
  SharedServerTest::TearDownTestSuite();
  g_libraries.reset();
}

// A call that is answered says that the detection at the server's start is over.
void ActionsTest::SetUp() {
  SharedServerTest::SetUp();
  ASSERT_TRUE(client_.IsServed());
  g_libraries->Script("");
  g_libraries->ForgetCalls();
}

StandIns& ActionsTest::Libraries() { return *g_libraries; }

OwnServerActionsTest::~OwnServerActionsTest() {
  client_.Close();
  server_.Kill();
}

void OwnServerActionsTest::Start() {
  ASSERT_TRUE(server_.Start());
  ASSERT_TRUE(client_.Connect());
  ASSERT_TRUE(client_.IsServed());
  libraries_.ForgetCalls();
}

}  // namespace e2e
