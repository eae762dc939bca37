#ifndef CLIENT_TESTING_FUNCTIONSFIXTURE_H_
#define CLIENT_TESTING_FUNCTIONSFIXTURE_H_

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "client/capi/qorlixclient.h"
#include "client/testing/ScriptedServer.h"

namespace client {

/// A handle of the plain C interface on a scripted server.
class FunctionsFixture : public testing::Test {
 protected:
  FunctionsFixture() : client_(qorlix_open(server_.PipeName())) {
    EXPECT_NE(client_, nullptr);
    EXPECT_EQ(qorlix_set_timeouts(client_, 5000, 5000), QORLIX_OK);
  }
  ~FunctionsFixture() override { qorlix_close(client_); }
  FunctionsFixture(const FunctionsFixture&) = delete;
  FunctionsFixture& operator=(const FunctionsFixture&) = delete;

  std::string LastRequest() const {
    const std::vector<std::string> requests = server_.Requests();
    return requests.empty() ? "" : requests.back();
  }

  ScriptedServer server_;
  qorlix_client* client_;
};

}  // namespace client

#endif  // CLIENT_TESTING_FUNCTIONSFIXTURE_H_
