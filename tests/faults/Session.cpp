#include "tests/faults/Session.h"

#include <memory>
#include <optional>
#include <set>

#include "registry/ProductInformation.h"
#include "server/PipeIo.h"
#include "server/QorlixSRVPipe.h"
#include "tests/fakes/FakeDynamicLibrary.h"
#include "tests/fakes/FakeMessageBox.h"
#include "tests/fakes/FakeNamedObject.h"
#include "tests/fakes/FakePipeIo.h"
#include "tests/fakes/FakeWorkerThread.h"
#include "tests/fakes/trace/FakeTrace.h"
#include "tests/support/PoolReset.h"
#include "timer/ElapsedTimer.h"
#include "trace/Zqotrc.h"

namespace fault_session {
namespace {

using fake_pipe_io::Op;

// How often a step may be looked at, and a client come back, before it is given up.
constexpr int kPatience = 16;
constexpr int kLittlePatience = 4;  // where that has happened before
constexpr int kHopeless = 8;        // so many steps given up, and nobody waits any more
constexpr int kTries = 4;

int g_step = -1;

// The clients. They move whenever the server waits.
class Clients {
 public:
  explicit Clients(Result& result) : result_(result) {
    result_.outcomes.resize(Script().size());
    fake_pipe_io::OnWait([this] { Pump(); });
  }

  // The server's life is over: what is left belongs to the step that it ended in, and to the end.
  void LoopEnded() {
    result_.stopped = Now().how == How::Stop && PipeOf(Now().conId).hPipe == nullptr;
    if (result_.stopped) {
      Conclude();
    } else {
      Collect(result_.outcomes[at_]);
    }
    at_ = Script().size() - 1;
    g_step = static_cast<int>(at_);
  }
  void Ended(const std::string& remark) {
    result_.outcomes[at_].reply = TextBytes(remark);
    Conclude();
    g_step = -1;
  }

 private:
  static const Step& StepAt(std::size_t at) { return Script()[at]; }
  const Step& Now() const { return StepAt(at_); }

  void Pump() {
    if (Now().how == How::Start) Conclude();
    while (Now().how != How::End && !Move()) Conclude();
    if (Now().how != How::End) fake_pipe_io::OnWait([this] { Pump(); });
  }

  // \returns false when the step is done, true when the server has to do something first.
  bool Move() {
    const Step& step = Now();
    if (step.how == How::Aside) {
      step.action();
      return false;
    }
    Outcome& outcome = result_.outcomes[at_];
    if (!begun_) Begin();
    if (--patience_ < 0 || tries_ > kTries) {
      outcome.unserved = true;
      givenUp_.insert(step.conId);
      ++unserved_;
      return false;
    }
    if (fake_pipe_io::Disconnects(step.conId) != disconnects_) {
      // Whoever was dropped without having asked comes back. So does who wants to end the server.
      if (sent_ && step.how != How::Stop) {
        outcome.lost = true;
        return false;
      }
      disconnects_ = fake_pipe_io::Disconnects(step.conId);
      sent_ = false;
      ++tries_;
    }
    const std::optional<Op> operation = fake_pipe_io::Outstanding(step.conId);
    if (!operation) return true;
    if (*operation == Op::Connect) {
      fake_pipe_io::Complete(step.conId);
    } else if (*operation == Op::Write) {
      const bool reads = step.how != How::LeaveWithout;
      fake_pipe_io::Complete(step.conId, reads, reads ? fake_pipe_io::BytesInWrite(step.conId) : 0,
                             ERROR_BROKEN_PIPE);
    } else if (sent_) {
      return false;
    } else {
      Send();
    }
    return true;
  }

  void Begin() {
    begun_ = true;
    sent_ = false;
    patience_ = givenUp_.count(Now().conId) == 0 ? kPatience : kLittlePatience;
    if (unserved_ >= kHopeless) patience_ = 0;
    tries_ = 0;
    disconnects_ = fake_pipe_io::Disconnects(Now().conId);
    written_ = fake_pipe_io::Written(Now().conId).size();
  }

  void Send() {
    const Step& step = Now();
    sent_ = true;
    if (step.how == How::Leave) {
      fake_pipe_io::Complete(step.conId, /*success=*/false, 0, ERROR_BROKEN_PIPE);
      return;
    }
    if (step.how == How::AskSlowly || step.how == How::LeaveWithout) {
      fake_pipe_io::Script(Op::Write, step.conId, {false, ERROR_IO_PENDING, 0});
    }
    if (step.how == How::AskSlowly) {
      fake_pipe_io::Script(Op::Write, step.conId, {false, ERROR_IO_PENDING, 0});
    }
    fake_pipe_io::CompleteRead(step.conId, step.request);
  }

  // A worker has done its work before anything else happens.
  void Conclude() {
    fake_worker_thread::JoinAll();
    Outcome& outcome = result_.outcomes[at_];
    outcome.reached = true;
    if (Now().conId >= 0 && begun_) {
      const Bytes all = fake_pipe_io::Written(Now().conId);
      outcome.reply.assign(all.begin() + static_cast<std::ptrdiff_t>(written_), all.end());
    }
    Collect(outcome);
    begun_ = false;
    if (at_ + 1 < Script().size()) ++at_;
    g_step = static_cast<int>(at_);
  }

  static void Collect(Outcome& outcome) {
    outcome.events = fake_event_log::Take();
    for (const fake_message_box::Box& box : fake_message_box::Shown()) {
      outcome.boxes.push_back(box.caption + ": " + box.text);
    }
    fake_message_box::Shown().clear();
    outcome.hits = fault_plan::TakeHits();
  }

  Result& result_;
  std::size_t at_ = 0;
  bool begun_ = false;
  bool sent_ = false;
  int patience_ = 0;
  int tries_ = 0;
  std::set<int> givenUp_;
  int unserved_ = 0;
  int disconnects_ = 0;
  std::size_t written_ = 0;
};

// The board-control lock is taken and given back in turn; the server object gives it back once more
// at its end.
void CheckLock(std::vector<std::string>& problems) {
  bool held = false;
  int releases = 0;
  for (const std::string& call : fake_named_object::Calls()) {
    if (call == "wait 30000") {
      if (held) problems.emplace_back("the board-control lock was taken twice");
      held = true;
      releases = 0;
    } else if (call == "release") {
      if (!held && ++releases > 1) problems.emplace_back("the board-control lock was freed twice");
      held = false;
    }
  }
  if (held) problems.emplace_back("the board-control lock was kept");
}

void CheckPipes(std::vector<std::string>& problems) {
  std::map<std::string, int> open;
  for (const std::string& call : fake_pipe_io::Calls()) {
    const std::size_t blank = call.find(' ');
    const std::string verb = call.substr(0, blank);
    const std::string instance = call.substr(blank + 1, call.find(' ', blank + 1) - (blank + 1));
    if (verb == "create") ++open[instance];
    if (verb == "close") --open[instance];
  }
  for (const auto& [instance, count] : open) {
    if (count != 0) problems.push_back("pipe " + instance + ": " + std::to_string(count) + " open");
  }
}

void CheckTrace(std::vector<std::string>& problems) {
  const FakeTrace::Machine& machine = FakeTrace::TheMachine();
  const auto expectNone = [&](const char* what, int count) {
    if (count != 0) problems.push_back(std::string(what) + ": " + std::to_string(count));
  };
  expectNone("holds of the trace mutex", machine.mutexHolds);
  expectNone("open trace files", machine.openFiles);
  expectNone("views of the ring", machine.views);
  expectNone("sections of the ring", machine.openSections);
  expectNone("open trace driver", machine.driverOpen ? 1 : 0);
}

// What else of the process asks the platform, in one line.
std::string Remains() {
  CElapsedTimer timer(nullptr);
  const std::int32_t started = timer.start(/*limit=*/5);
  (void)timer.stop();
  static ProductInfoRecord record;
  record = {};
  (void)GatherProductInformation(record);
  return "timer " + std::to_string(started) + ", " + record.stack32;
}

}  // namespace

int CurrentStep() { return g_step; }

Result Run(const fault_plan::Plan& plan) {
  Result result;
  ArrangeWorld();
  ResetPool();
  g_step = 0;
  {
    Clients clients(result);
    fault_plan::Arm(plan);
    zqotrc::Initialise(/*security=*/nullptr, "zqserver_level");
    auto server = std::make_unique<CQorlixSRVPipe>(nullptr);
    (void)server->StartSRV();
    clients.LoopEnded();
    zqotrc::ShutDown();
    server->CloseSRV();
    server.reset();
    clients.Ended(Remains());
    fault_plan::Disarm();
  }
  result.counts = fault_plan::Counts();
  CheckLock(result.leftOver);
  CheckPipes(result.leftOver);
  CheckTrace(result.leftOver);
  if (fake_dynamic_library::StillLoaded() > 4) result.leftOver.emplace_back("libraries");
  // What a session has made is not that of the next.
  fake_pipe_io::Reset();
  return result;
}

}  // namespace fault_session
