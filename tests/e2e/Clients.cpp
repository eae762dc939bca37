#include "tests/e2e/Clients.h"

namespace e2e {

testing::AssertionResult ConnectMore(std::vector<WireClient>& clients, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    WireClient client;
    auto connected = client.Connect();
    if (!connected) {
      return connected << ", with " << clients.size() << " clients connected";
    }
    clients.push_back(std::move(client));
  }
  return testing::AssertionSuccess();
}

testing::AssertionResult AreServedAtOnce(std::vector<WireClient>& clients) {
  for (WireClient& client : clients) {
    const auto sent = client.Send(Wire("1000"));
    if (!sent) return sent;
  }
  for (WireClient& client : clients) {
    const auto answered = client.YieldsNext(Wire("0400 00000000"));
    if (!answered) return answered;
  }
  return testing::AssertionSuccess();
}

testing::AssertionResult AllInstancesServe() {
  std::vector<WireClient> clients;
  const auto connected = ConnectMore(clients, kInstances);
  if (!connected) return connected;
  return AreServedAtOnce(clients);
}

}  // namespace e2e
