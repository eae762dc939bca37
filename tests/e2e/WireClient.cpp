#include "tests/e2e/WireClient.h"

#include <windows.h>

#include <algorithm>
#include <utility>

namespace e2e {
namespace {

constexpr DWORD kPollMs = 2;

class Deadline {
 public:
  explicit Deadline(DWORD milliseconds) : end_(GetTickCount64() + milliseconds) {}
  DWORD Left() const {
    const ULONGLONG now = GetTickCount64();
    return now < end_ ? static_cast<DWORD>(end_ - now) : 0;
  }
  bool Passed() const { return Left() == 0; }

 private:
  ULONGLONG end_;
};

// One operation at a time on a handle that was opened for overlapped I/O.
class Operation {
 public:
  Operation() { block_.hEvent = CreateEventA(nullptr, TRUE, FALSE, nullptr); }
  ~Operation() { CloseHandle(block_.hEvent); }
  Operation(const Operation&) = delete;
  Operation& operator=(const Operation&) = delete;

  OVERLAPPED* Block() { return &block_; }

  void Started(BOOL returned) {
    error_ = returned != FALSE ? ERROR_SUCCESS : GetLastError();
    pending_ = returned != FALSE || error_ == ERROR_IO_PENDING;
  }

  bool Pending() const { return pending_; }

  bool IsDone(DWORD milliseconds) {
    return !pending_ || WaitForSingleObject(block_.hEvent, milliseconds) == WAIT_OBJECT_0;
  }

  // Takes the outcome; gives the operation up if it is still running.
  DWORD Finish(HANDLE pipe) {
    if (!pending_) return 0;
    if (WaitForSingleObject(block_.hEvent, 0) != WAIT_OBJECT_0) CancelIoEx(pipe, &block_);
    DWORD count = 0;
    error_ =
        GetOverlappedResult(pipe, &block_, &count, TRUE) != FALSE ? ERROR_SUCCESS : GetLastError();
    pending_ = false;
    return count;
  }

  DWORD Error() const { return error_; }

 private:
  OVERLAPPED block_ = {};
  bool pending_ = false;
  DWORD error_ = ERROR_SUCCESS;
};

bool IsEndOfConnection(DWORD error) {
  return error == ERROR_BROKEN_PIPE || error == ERROR_PIPE_NOT_CONNECTED;
}

}  // namespace

struct WireClient::State {
  HANDLE pipe = INVALID_HANDLE_VALUE;
  Operation write;
  Operation read;
  Bytes written;  // stays until the write has ended
};

WireClient::WireClient() : state_(std::make_unique<State>()) {}

WireClient::~WireClient() { Close(); }

// What was moved from can be used as a new client.
WireClient::WireClient(WireClient&& other) : WireClient() { std::swap(state_, other.state_); }

WireClient& WireClient::operator=(WireClient&& other) noexcept {
  std::swap(state_, other.state_);
  return *this;
}

void* WireClient::Handle() const { return state_->pipe; }

std::uint32_t WireClient::TryConnect() {
  Close();
  state_->pipe =
      CreateFileA(kPipeName, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                  FILE_FLAG_OVERLAPPED | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION, nullptr);
  return state_->pipe == INVALID_HANDLE_VALUE ? GetLastError() : ERROR_SUCCESS;
}

testing::AssertionResult WireClient::Connect(std::uint32_t milliseconds) {
  const Deadline deadline(milliseconds);
  for (;;) {
    const DWORD error = TryConnect();
    if (error == ERROR_SUCCESS) return testing::AssertionSuccess();
    if (error != ERROR_PIPE_BUSY || deadline.Passed()) {
      return testing::AssertionFailure() << "the pipe cannot be opened: error " << error;
    }
    WaitNamedPipeA(kPipeName, std::max<DWORD>(deadline.Left(), 1));
  }
}

void WireClient::Close() {
  if (state_->pipe == INVALID_HANDLE_VALUE) return;
  state_->write.Finish(state_->pipe);
  CloseHandle(state_->pipe);
  state_->pipe = INVALID_HANDLE_VALUE;
}

testing::AssertionResult WireClient::StartSend(const Bytes& bytes) {
  state_->written = bytes;
  state_->write.Started(WriteFile(state_->pipe, state_->written.data(),
                                  static_cast<DWORD>(state_->written.size()), nullptr,
                                  state_->write.Block()));
  if (state_->write.Pending()) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "the write failed: error " << state_->write.Error();
}

bool WireClient::SendIsDone(std::uint32_t milliseconds) {
  if (!state_->write.IsDone(milliseconds)) return false;
  const bool outstanding = state_->write.Pending();
  const DWORD count = state_->write.Finish(state_->pipe);
  return !outstanding || count == state_->written.size();
}

testing::AssertionResult WireClient::Send(const Bytes& bytes, std::uint32_t milliseconds) {
  const auto started = StartSend(bytes);
  if (!started) return started;
  if (SendIsDone(milliseconds)) return testing::AssertionSuccess();
  const DWORD count = state_->write.Finish(state_->pipe);
  return testing::AssertionFailure() << "of " << bytes.size() << " bytes " << count
                                     << " were taken: error " << state_->write.Error();
}

Bytes WireClient::Receive(std::size_t size, std::uint32_t milliseconds) {
  const Deadline deadline(milliseconds);
  Bytes bytes(size, '\0');
  std::size_t received = 0;
  do {
    state_->read.Started(ReadFile(state_->pipe, bytes.data() + received,
                                  static_cast<DWORD>(size - received), nullptr,
                                  state_->read.Block()));
    if (!state_->read.Pending()) break;
    state_->read.IsDone(deadline.Left());
    received += state_->read.Finish(state_->pipe);
  } while (received < size && state_->read.Error() == ERROR_SUCCESS);
  bytes.resize(received);
  return bytes;
}

std::size_t WireClient::Waiting() const {
  DWORD available = 0;
  return PeekNamedPipe(state_->pipe, nullptr, 0, nullptr, &available, nullptr) != FALSE ? available
                                                                                        : 0;
}

testing::AssertionResult WireClient::HasWaiting(std::size_t size, std::uint32_t milliseconds) {
  const Deadline deadline(milliseconds);
  while (Waiting() < size) {
    if (deadline.Passed()) {
      return testing::AssertionFailure() << Waiting() << " bytes wait instead of " << size;
    }
    Sleep(kPollMs);
  }
  return testing::AssertionSuccess();
}

testing::AssertionResult WireClient::YieldsNext(const Bytes& reply, std::uint32_t milliseconds) {
  const Bytes received = Receive(reply.size(), milliseconds);
  if (received == reply) return testing::AssertionSuccess();
  return testing::AssertionFailure()
         << DescribeDifference(reply, received) << "\n  last error " << state_->read.Error();
}

testing::AssertionResult WireClient::Yields(const Bytes& reply) {
  const auto next = YieldsNext(reply);
  if (!next) return next;
  const auto served = IsServed();
  if (served) return served;
  return testing::AssertionFailure() << "behind the reply: " << served.message();
}

testing::AssertionResult WireClient::Answers(const Bytes& request, const Bytes& reply) {
  auto result = Send(request);
  if (result) result = Yields(reply);
  if (result) return result;
  return testing::AssertionFailure()
         << "request of " << Describe(request) << "\n  " << result.message();
}

testing::AssertionResult WireClient::IsServed(std::uint32_t milliseconds) {
  const auto sent = Send(Wire("1000"), milliseconds);
  if (!sent) return sent;
  return YieldsNext(Wire("0400 00000000"), milliseconds);
}

testing::AssertionResult WireClient::IsBroken(std::uint32_t milliseconds) {
  const Bytes received = Receive(1, milliseconds);
  if (!received.empty()) return testing::AssertionFailure() << "received " << Describe(received);
  if (IsEndOfConnection(state_->read.Error())) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "the connection stands: error " << state_->read.Error();
}

testing::AssertionResult WireClient::IsQuiet(std::uint32_t milliseconds) {
  const Bytes received = Receive(1, milliseconds);
  if (!received.empty()) return testing::AssertionFailure() << "received " << Describe(received);
  if (state_->read.Error() == ERROR_OPERATION_ABORTED) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "the connection ended: error " << state_->read.Error();
}

}  // namespace e2e
