#ifndef CLI_TESTING_CTLFIXTURE_H_
#define CLI_TESTING_CTLFIXTURE_H_

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cli/Ctl.h"
#include "cli/testing/JsonCheck.h"
#include "client/testing/ScriptedServer.h"

namespace cli {

using Words = std::vector<std::string>;

/// Runs whole command lines against the scripted server, natively and on Windows.
class CtlFixture : public testing::Test {
 protected:
  // Runs a command line that talks to the scripted server.
  int Run(Words words) {
    words.insert(words.begin(), {"--pipe", server_.PipeName(), "--timeout", "5"});
    return RunAlone(words);
  }

  int RunAlone(const Words& words) {
    output_ = {};
    return RunCtl(words, output_);
  }

  std::string LastRequest() const {
    const Words requests = server_.Requests();
    return requests.empty() ? "" : requests.back();
  }

  bool Says(const std::string& text) const { return output_.out.find(text) != std::string::npos; }
  bool Complains(const std::string& text) const {
    return output_.err.find(text) != std::string::npos;
  }

  void ExpectJson() const {
    ASSERT_FALSE(output_.out.empty());
    EXPECT_EQ(output_.out.back(), '\n');
    EXPECT_TRUE(JsonCheck::IsValid(output_.out.substr(0, output_.out.size() - 1))) << output_.out;
    EXPECT_EQ(output_.err, "");
  }

  client::ScriptedServer server_;
  Output output_;
};

}  // namespace cli

#endif  // CLI_TESTING_CTLFIXTURE_H_
