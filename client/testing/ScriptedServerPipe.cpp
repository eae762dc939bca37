// The scripted server on Windows: one instance of a real pipe, served by a thread.

#include <windows.h>

#include <atomic>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "client/testing/Script.h"
#include "client/testing/ScriptedServer.h"

namespace client {
namespace {

constexpr DWORD kBufferSize = 8192;
constexpr DWORD kBetweenPartsMs = 15;  // so that the client reads them one by one

HANDLE NewEvent() {
  return CreateEventA(/*lpEventAttributes=*/nullptr, /*bManualReset=*/TRUE,
                      /*bInitialState=*/FALSE, /*lpName=*/nullptr);
}

HANDLE NewPipe(const std::string& name) {
  const HANDLE pipe = CreateNamedPipeA(
      name.c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED, PIPE_TYPE_BYTE | PIPE_READMODE_BYTE,
      /*nMaxInstances=*/1, kBufferSize, kBufferSize, /*nDefaultTimeOut=*/5000,
      /*lpSecurityAttributes=*/nullptr);
  if (pipe == INVALID_HANDLE_VALUE) throw std::runtime_error("no pipe " + name);
  return pipe;
}

}  // namespace

struct ScriptedServer::State {
  std::string name;
  HANDLE pipe = nullptr;
  HANDLE done = NewEvent();  // an operation of the thread has ended
  HANDLE stop = NewEvent();
  HANDLE occupant = INVALID_HANDLE_VALUE;
  std::thread thread;

  std::mutex mutex;
  std::deque<ScriptStep> script;
  std::vector<std::string> requests;
  std::atomic<int> connections = 0;

  void Start() {
    pipe = NewPipe(name);
    ResetEvent(stop);
    thread = std::thread([this] { Serve(); });
  }

  void Stop() {
    SetEvent(stop);
    if (thread.joinable()) thread.join();
    if (pipe != nullptr) CloseHandle(pipe);
    pipe = nullptr;
  }

  // Waits for an operation that was started. \returns false when it failed or the test is over.
  bool Ended(BOOL started, OVERLAPPED& overlapped, DWORD& moved) {
    if (started == FALSE && GetLastError() != ERROR_IO_PENDING) return false;
    const HANDLE either[] = {stop, done};
    if (WaitForMultipleObjects(2, either, /*bWaitAll=*/FALSE, INFINITE) == WAIT_OBJECT_0) {
      CancelIoEx(pipe, &overlapped);
      GetOverlappedResult(pipe, &overlapped, &moved, /*bWait=*/TRUE);
      return false;
    }
    return GetOverlappedResult(pipe, &overlapped, &moved, /*bWait=*/TRUE) != FALSE;
  }

  bool Connect() {
    OVERLAPPED overlapped = {};
    overlapped.hEvent = done;
    ResetEvent(done);
    DWORD none = 0;
    const BOOL started = ConnectNamedPipe(pipe, &overlapped);
    if (started == FALSE && GetLastError() == ERROR_PIPE_CONNECTED) return true;
    return Ended(started, overlapped, none);
  }

  bool Read(std::vector<std::uint8_t>& request) {
    OVERLAPPED overlapped = {};
    overlapped.hEvent = done;
    request.resize(kBufferSize);
    DWORD size = 0;
    const BOOL started = ReadFile(pipe, request.data(), kBufferSize, &size, &overlapped);
    if (!Ended(started, overlapped, size) || size == 0) return false;
    request.resize(size);
    return true;
  }

  bool Write(const std::vector<std::uint8_t>& part) {
    OVERLAPPED overlapped = {};
    overlapped.hEvent = done;
    DWORD written = 0;
    const BOOL started =
        WriteFile(pipe, part.data(), static_cast<DWORD>(part.size()), &written, &overlapped);
    return Ended(started, overlapped, written);
  }

  ScriptStep NextStep(const std::vector<std::uint8_t>& request) {
    const std::lock_guard<std::mutex> lock(mutex);
    requests.push_back(ToHex(request.data(), request.size()));
    if (script.empty()) return {{}, /*closes=*/true};
    ScriptStep step = script.front();
    script.pop_front();
    return step;
  }

  void ServeClient() {
    std::vector<std::uint8_t> request;
    while (Read(request)) {
      const ScriptStep step = NextStep(request);
      for (const auto& part : step.parts) {
        if (!Write(part)) return;
        Sleep(kBetweenPartsMs);
      }
      if (step.closes) {
        FlushFileBuffers(pipe);
        return;
      }
    }
  }

  void Serve() {
    while (WaitForSingleObject(stop, 0) == WAIT_TIMEOUT) {
      if (Connect()) {
        ++connections;
        ServeClient();
      }
      DisconnectNamedPipe(pipe);
    }
  }
};

ScriptedServer::ScriptedServer() : state_(std::make_unique<State>()) {
  static int count = 0;
  state_->name = "\\\\.\\pipe\\Scripted" + std::to_string(GetCurrentProcessId()) + "_" +
                 std::to_string(++count);
  state_->Start();
}

ScriptedServer::~ScriptedServer() {
  state_->Stop();
  if (state_->occupant != INVALID_HANDLE_VALUE) CloseHandle(state_->occupant);
  CloseHandle(state_->done);
  CloseHandle(state_->stop);
}

void ScriptedServer::Answers(std::initializer_list<std::string> parts) {
  const std::lock_guard<std::mutex> lock(state_->mutex);
  state_->script.push_back(MakeStep(parts, /*closes=*/false));
}

void ScriptedServer::AnswersAndCloses(std::initializer_list<std::string> parts) {
  const std::lock_guard<std::mutex> lock(state_->mutex);
  state_->script.push_back(MakeStep(parts, /*closes=*/true));
}

void ScriptedServer::IsGone() { state_->Stop(); }

void ScriptedServer::Restarts() {
  state_->Stop();
  state_->Start();
}

void ScriptedServer::IsBusy() {
  state_->occupant = CreateFileA(state_->name.c_str(), GENERIC_READ, /*dwShareMode=*/0,
                                 /*lpSecurityAttributes=*/nullptr, OPEN_EXISTING,
                                 /*dwFlagsAndAttributes=*/0, /*hTemplateFile=*/nullptr);
  if (state_->occupant == INVALID_HANDLE_VALUE) throw std::runtime_error("cannot occupy the pipe");
}

const char* ScriptedServer::PipeName() const { return state_->name.c_str(); }

std::vector<std::string> ScriptedServer::Requests() const {
  const std::lock_guard<std::mutex> lock(state_->mutex);
  return state_->requests;
}

int ScriptedServer::Connections() const { return state_->connections; }

}  // namespace client
