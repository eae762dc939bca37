// A client as somebody builds it who has nothing but the package: asks the server whether it is
// there. Exit code 0 if it is.

#include "client/ActionCalls.h"
#include "client/BoardCalls.h"
#include "client/QorlixClient.h"

int main() {
  client::QorlixClient server;
  return server.NoOperation().ok() ? 0 : 1;
}
