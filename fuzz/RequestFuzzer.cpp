// The whole road from request bytes to reply bytes, with every command and whatever the machine
// around the server answers: each request is answered in a shape that the client's description of
// its command has, or the client is disconnected; the instance is then as good as new.
//
// An input is the machine's script and up to some requests, with a mark in between.

#include <sanitizer/asan_interface.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "client/CommandInfo.h"
#include "client/ReplyDecoder.h"
#include "fuzz/FuzzedMachine.h"
#include "fuzz/RequestMutator.h"
#include "fuzz/Sections.h"
#include "server/PipeInstance.h"
#include "server/QorlixSRVPipe.h"
#include "tests/fakes/FakePipeIo.h"
#include "tests/support/PoolReset.h"

namespace {

constexpr int kConId = 5;
constexpr std::size_t kMostRequests = 6;
constexpr pipe_io::Outcome kPending = {false, ERROR_IO_PENDING, 0};

void Require(bool holds) {
  if (!holds) std::abort();
}

// What was done to the instance since the request was sent.
struct Done {
  std::vector<Bytes> writes;
  bool isDisconnected = false;
  bool isWriteOutstanding = false;  // as the last thing that happened
};

Done DoneSince(std::size_t first) {
  Done done;
  const std::vector<std::string>& calls = fake_pipe_io::Calls();
  const std::string write = "write " + std::to_string(kConId) + " ";
  for (std::size_t i = first; i < calls.size(); ++i) {
    if (calls[i] == "give way") continue;
    done.isWriteOutstanding = calls[i].starts_with(write);
    if (done.isWriteOutstanding) done.writes.push_back(Wire(calls[i].substr(write.size())));
    if (calls[i] == "disconnect " + std::to_string(kConId)) done.isDisconnected = true;
  }
  return done;
}

bool MayBeAnsweredTwice(const Bytes& request) {
  static constexpr int kTwice[] = {12, 15, 17, 253};
  if (request.size() < 2) return true;
  const int code = request[0] | request[1] << 8;
  return std::find(std::begin(kTwice), std::end(kTwice), code) != std::end(kTwice);
}

void CheckReply(const Bytes& request, const Done& done) {
  Require(done.writes.empty() == done.isDisconnected);
  if (done.isDisconnected) return;
  Require(done.writes.size() == 1 || (done.writes.size() == 2 && MayBeAnsweredTwice(request)));
  Bytes all;
  for (const Bytes& write : done.writes) {
    Require(write.size() >= 6 && write.size() <= 8192);
    Require(write[0] == 4 && write[1] == 0);
    all = all + write;
  }
  if (fuzzed_machine::UsedAResultOfTheServer()) return;
  const client::ReplyLayout layout = client::ExamineReply(request, all);
  Require(layout.state == client::ReplyState::Complete ||
          layout.state == client::ReplyState::MayGrow);
  Require(layout.size == all.size());
  Require((layout.parts == 3) == (done.writes.size() == 2));
}

// One request after another, each followed by the command that does nothing.
class Client {
 public:
  explicit Client(std::vector<Bytes> requests, bool writesPend)
      : requests_(std::move(requests)), writesPend_(writesPend) {}

  void Connect() {
    Expose(kPipeBufferSize);
    fake_pipe_io::OnWait([this] { Step(); });
    fake_pipe_io::Complete(kConId);
  }

  bool IsDone() const { return next_ == requests_.size() && !isProbing_ && !isWaiting_; }
  bool HasStopped() const { return hasStopped_; }
  void CheckLast() {
    if (isWaiting_) CheckRequest();
  }

 private:
  // One wait of the loop: what came of the last request, then the next.
  void Step() {
    if (isWaiting_) {
      const Done done = DoneSince(firstCall_);
      if (done.isWriteOutstanding) {
        fake_pipe_io::OnWait([this] { Step(); });
        fake_pipe_io::Complete(kConId, /*success=*/true,
                               static_cast<std::uint32_t>(done.writes.back().size()));
        return;
      }
      CheckSane(done);
      if (isProbing_) {
        Require(done.writes.size() == 1 && done.writes[0] == Wire("0400 00000000"));
      } else {
        CheckReply(request_, done);
      }
      CheckRequest();
      isWaiting_ = false;
      isProbing_ = !isProbing_;
      if (done.isDisconnected) {
        Connect();
        return;
      }
    }
    if (IsDone()) return;
    request_ = isProbing_ ? Wire("1000") : requests_[next_++];
    fake_pipe_io::OnWait([this] { Step(); });
    Send();
  }

  void Send() {
    Expose(kPipeBufferSize);
    PipeInstance& pipe = PipeOf(kConId);
    std::memset(pipe.RequestBuffer, 0xEE, sizeof(pipe.RequestBuffer));
    for (int i = 0; writesPend_ && i < 2; ++i) {
      fake_pipe_io::Script(fake_pipe_io::Op::Write, kConId, kPending);
    }
    isWaiting_ = true;
    hasStopped_ = request_.size() >= 6 &&
                  Bytes(request_.begin(), request_.begin() + 6) == Wire("FD00 FD000000");
    firstCall_ = fake_pipe_io::Calls().size();
    fuzzed_machine::Serving(
        static_cast<std::uint16_t>(request_.size() < 2 ? 0 : request_[0] | request_[1] << 8));
    fake_pipe_io::CompleteRead(kConId, request_);
    Expose(request_.size());
  }

  // Lets nobody look behind what was received.
  static void Expose(std::size_t size) {
    std::uint8_t* const buffer = PipeOf(kConId).RequestBuffer;
    ASAN_UNPOISON_MEMORY_REGION(buffer, kPipeBufferSize);
    ASAN_POISON_MEMORY_REGION(buffer + size, kPipeBufferSize - size);
  }

  static void CheckSane(const Done& done) {
    const PipeInstance& pipe = PipeOf(kConId);
    Require(pipe.cbToWrite == 0 && pipe.CurrentPointer == 0 && pipe.ReceivePointer == 0);
    Require(pipe.cbWriteNext == 0 && pipe.fPendingIO == 1 && pipe.fConnectFailed == 0);
    Require(pipe.dwState == (done.isDisconnected ? CONNECTING_STATE : READING_STATE));
  }

  // Whoever writes beyond the reply buffer comes to the request.
  void CheckRequest() const {
    Expose(kPipeBufferSize);
    const std::uint8_t* const buffer = PipeOf(kConId).RequestBuffer;
    Require(std::equal(request_.begin(), request_.end(), buffer));
    Require(std::all_of(buffer + request_.size(), buffer + kPipeBufferSize,
                        [](std::uint8_t byte) { return byte == 0xEE; }));
  }

  const std::vector<Bytes> requests_;
  const bool writesPend_;
  std::size_t next_ = 0;
  Bytes request_;
  std::size_t firstCall_ = 0;
  bool isWaiting_ = false;
  bool isProbing_ = false;
  bool hasStopped_ = false;
};

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t maxSize, unsigned seed) {
  return MutateRequests(data, size, maxSize, seed);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto parts = sections::Split({data, size});
  const std::span<const std::uint8_t> script = parts.front();
  std::vector<Bytes> requests;
  for (std::size_t i = 1; i < parts.size() && i <= kMostRequests; ++i) {
    const auto part = parts[i].first(std::min<std::size_t>(parts[i].size(), kPipeBufferSize));
    if (!part.empty()) requests.emplace_back(part.begin(), part.end());
  }

  fake_pipe_io::Reset();
  ResetPool();
  const bool writesPend = !script.empty() && script.back() % 2 != 0;
  fuzzed_machine::Arrange(script);
  {
    Client client(std::move(requests), writesPend);
    CQorlixSRVPipe srv(nullptr);
    fake_pipe_io::OnWait([&] { client.Connect(); });
    Require(srv.StartSRV() == 0);
    client.CheckLast();
    Require(client.IsDone() || client.HasStopped());
    for (const PipeInstance& pipe : Pipe) Require(!client.HasStopped() || pipe.hPipe == nullptr);
  }

  // Nothing is kept, or the fuzzer looks for leaks behind every input.
  fuzzed_machine::Clear();
  fake_pipe_io::Reset();
  return 0;
}
