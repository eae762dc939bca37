#include "tests/support/PoolFixture.h"

#include <algorithm>
#include <cstring>

PoolFixture::PoolFixture() {
  PipeInstance& pipe = PipeOf(kConId);
  // What a request or a reply does not fill is neither zero nor text.
  std::memset(pipe.RequestBuffer, 0xEE, sizeof(pipe.RequestBuffer));
  std::memset(pipe.ReplyBuffer, 0xEE, sizeof(pipe.ReplyBuffer));
  pipe.dwState = WRITING_STATE;
  pipe.fPendingIO = 0;
  pipe.ReceivePointer = 0;
  pipe.clientProcess = kClient;
}

void PoolFixture::Receive(const Bytes& request) {
  ASSERT_LE(request.size(), sizeof(PipeInstance::RequestBuffer));
  PipeInstance& pipe = PipeOf(kConId);
  std::copy(request.begin(), request.end(), pipe.RequestBuffer);
  pipe.ReceivePointer = static_cast<std::uint32_t>(request.size());
  pipe.CurrentPointer = 0;
  pipe.cbToWrite = 0;
}

void PoolFixture::ReceiveCommand(const Bytes& request) {
  Receive(request);
  PipeOf(kConId).CurrentPointer = 2;
}

Bytes PoolFixture::Reply() const {
  const PipeInstance& pipe = PipeOf(kConId);
  return Bytes(pipe.ReplyBuffer, pipe.ReplyBuffer + pipe.cbToWrite);
}
