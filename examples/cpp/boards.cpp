// Lists the installed boards, by the C++ client.

#include <cstdio>
#include <memory>
#include <string>

#include "client/BoardCalls.h"
#include "client/QorlixClient.h"

namespace {

constexpr std::uint32_t kNoMoreItems = 259;

void Warn(const client::ServerIdentity& server) {
  if (server.trust == client::ServerTrust::Unknown) {
    std::fprintf(stderr, "mind: %s\n", server.text());
  }
}

std::string Text(const client::BoardText& text) { return std::string(text.text); }

}  // namespace

int main() {
  // It is large, so it lives on the heap.
  const auto connection = std::make_unique<client::QorlixClient>();
  connection->SetTimeouts(/*connectMs=*/2000, /*exchangeMs=*/60000);
  const client::Result connected = connection->Connect();
  if (!connected.ok()) {
    std::printf("no connection: %s\n", connected.text());
    return 1;
  }
  Warn(connection->Server());

  client::BoardCalls calls(*connection);
  for (std::uint32_t index = 0;; ++index) {
    client::InstBoardEntry entry;
    const client::Result result = calls.BC_EnumInstBoard(index, entry);
    if (result.is(kNoMoreItems)) {
      std::printf("%u boards\n", index);
      return 0;
    }
    if (!result.fromServer()) {
      std::printf("no answer: %s\n", result.text());
      return 1;
    }
    // An entry that does not fit a reply has no texts; the next one may.
    std::printf("%s  %s  %s\n", Text(entry.board).c_str(), Text(entry.boardMap).c_str(),
                result.ok() ? Text(entry.deviceId).c_str() : result.text());
    if (!result.ok() && !result.is(BUFFER_OVERFLOW)) return 1;
  }
}
