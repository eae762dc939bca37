#include "tests/e2e/SharedServerTest.h"

#include <memory>

namespace e2e {
namespace {

std::unique_ptr<ServerProcess> g_server;

}  // namespace

void SharedServerTest::SetUpTestSuite() {
  g_server = std::make_unique<ServerProcess>();
  ASSERT_TRUE(g_server->Start());
}

void SharedServerTest::TearDownTestSuite() {
  EXPECT_TRUE(g_server->IsRunning());
  g_server.reset();
}

ServerProcess& SharedServerTest::Server() { return *g_server; }

void SharedServerTest::SetUp() { ASSERT_TRUE(client_.Connect()); }

void SharedServerTest::TearDown() {
  client_.Close();
  WireClient someoneNew;
  ASSERT_TRUE(someoneNew.Connect());
  EXPECT_TRUE(someoneNew.IsServed());
}

}  // namespace e2e
