// Makes the plain C interface a library that a script can load: its server's pipe is served by a
// script of answers, and what was asked is written to a file.

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include "client/QorlixClient.h"
#include "client/testing/ScriptedServer.h"

namespace {

std::string Variable(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr ? value : "";
}

/// There from the loading of the library to the end of the process.
class Server {
 public:
  Server() {
    std::istringstream answers(Variable("QORLIX_SCRIPTED_ANSWERS"));
    for (std::string answer; std::getline(answers, answer);) server_.Answers({answer});
  }
  ~Server() {
    std::ofstream requests(Variable("QORLIX_SCRIPTED_REQUESTS"));
    for (const std::string& request : server_.Requests()) requests << request << '\n';
  }
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

 private:
  client::ScriptedServer server_{client::kServerPipeName};
};

const Server theServer;

}  // namespace
