// The native twin of PipeTransport.cpp: plays the script of the server whose name is opened.

#include <algorithm>
#include <cstring>
#include <map>
#include <utility>

#include "client/PipeTransport.h"
#include "client/testing/Script.h"
#include "client/testing/ScriptedServer.h"

namespace client {

struct ScriptedServer::State {
  std::string name;
  std::deque<ScriptStep> script;
  std::vector<std::string> requests;
  int connections = 0;
  std::uint32_t openResult = 0;
  PipePeer peer;
  bool breaksWithin = false;

  // Of the one connection that there is at a time.
  std::deque<std::vector<std::uint8_t>> underway;
  bool closed = false;
};

namespace {

constexpr std::size_t kServerReadsAtOnce = 8192;

std::map<std::string, ScriptedServer::State*>& Servers() {
  static std::map<std::string, ScriptedServer::State*> servers;
  return servers;
}

// What stands for the handles: the server, as long as it is there.
ScriptedServer::State* ServerOf(void* pipe) {
  for (const auto& [name, state] : Servers()) {
    if (state == pipe) return state;
  }
  return nullptr;
}

}  // namespace

ScriptedServer::ScriptedServer()
    : ScriptedServer([] {
        static int count = 0;
        return "\\\\.\\pipe\\Scripted" + std::to_string(++count);
      }()) {}

ScriptedServer::ScriptedServer(std::string pipeName) : state_(std::make_unique<State>()) {
  state_->name = std::move(pipeName);
  Servers()[state_->name] = state_.get();
}

ScriptedServer::~ScriptedServer() { Servers().erase(state_->name); }

void ScriptedServer::Answers(std::initializer_list<std::string> parts) {
  state_->script.push_back(MakeStep(parts, /*closes=*/false));
}

void ScriptedServer::AnswersAndCloses(std::initializer_list<std::string> parts) {
  state_->script.push_back(MakeStep(parts, /*closes=*/true));
}

void ScriptedServer::IsGone() { state_->openResult = kPipeNotFound; }
void ScriptedServer::IsBusy() { state_->openResult = kPipeBusy; }
void ScriptedServer::IsServedBy(const PipePeer& peer) { state_->peer = peer; }
void ScriptedServer::BreaksWithinTheNextRequest() { state_->breaksWithin = true; }
void ScriptedServer::Restarts() { state_->closed = true; }
const char* ScriptedServer::PipeName() const { return state_->name.c_str(); }
std::vector<std::string> ScriptedServer::Requests() const { return state_->requests; }
int ScriptedServer::Connections() const { return state_->connections; }

PipeTransport::PipeTransport() noexcept = default;
PipeTransport::~PipeTransport() { Close(); }

std::uint32_t PipeTransport::Open(const char* name, std::uint32_t /*timeoutMs*/) noexcept {
  Close();
  const auto found = Servers().find(name);
  if (found == Servers().end()) return kPipeNotFound;
  ScriptedServer::State& server = *found->second;
  if (server.openResult != 0) return server.openResult;
  ++server.connections;
  server.underway.clear();
  server.closed = false;
  pipe_ = &server;
  return 0;
}

std::uint32_t PipeTransport::Write(const void* data, std::uint32_t size,
                                   std::uint32_t /*timeoutMs*/) noexcept {
  ScriptedServer::State* const server = ServerOf(pipe_);
  nothingWasWritten_ = server == nullptr || server->closed;
  if (nothingWasWritten_) return kPipeNotConnected;
  if (std::exchange(server->breaksWithin, false)) return kPipeNotConnected;
  const auto* const bytes = static_cast<const std::uint8_t*>(data);
  for (std::size_t at = 0; at < size; at += kServerReadsAtOnce) {
    server->requests.push_back(
        ToHex(bytes + at, std::min<std::size_t>(size - at, kServerReadsAtOnce)));
    ScriptStep step{{}, /*closes=*/true};
    if (!server->script.empty()) {
      step = server->script.front();
      server->script.pop_front();
    }
    for (auto& part : step.parts) server->underway.push_back(part);
    server->closed = server->closed || step.closes;
  }
  return 0;
}

std::uint32_t PipeTransport::Read(void* data, std::uint32_t capacity, std::uint32_t /*timeoutMs*/,
                                  std::uint32_t& received) noexcept {
  received = 0;
  ScriptedServer::State* const server = ServerOf(pipe_);
  if (server == nullptr) return kPipeNotConnected;
  if (server->underway.empty() && Interrupted()) return kCancelled;
  if (server->underway.empty()) return server->closed ? 109 : kTimedOut;
  auto& part = server->underway.front();
  received = std::min(capacity, static_cast<std::uint32_t>(part.size()));
  std::memcpy(data, part.data(), received);
  part.erase(part.begin(), part.begin() + received);
  if (part.empty()) server->underway.pop_front();
  return 0;
}

PipePeer PipeTransport::Peer() const noexcept {
  const ScriptedServer::State* const server = ServerOf(pipe_);
  return server != nullptr ? server->peer : PipePeer();
}

void PipeTransport::Close() noexcept { pipe_ = nullptr; }
void PipeTransport::Interrupt() noexcept { interrupt_ = this; }
void PipeTransport::ClearInterrupt() noexcept { interrupt_ = nullptr; }
bool PipeTransport::Interrupted() const noexcept { return interrupt_ != nullptr; }

}  // namespace client
