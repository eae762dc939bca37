#include "tests/fakes/FakeWorkerThread.h"

#include <thread>
#include <utility>
#include <vector>

#include "platform/WorkerThread.h"
#include "tests/fakes/FaultPlan.h"
#include "tests/fakes/NotOurs.h"

namespace {

// Touched by the one thread that starts workers, and at the end of the program.
struct Workers {
  ~Workers() { Join(); }
  void Start(std::unique_ptr<platform::Work> work) {
    threads.emplace_back([owned = std::move(work)]() mutable {
      owned->Run();
      owned.reset();
    });
  }
  void Join() {
    for (std::unique_ptr<platform::Work>& work : held) Start(std::move(work));
    held.clear();
    for (std::thread& thread : threads) thread.join();
    threads.clear();
  }
  std::vector<std::thread> threads;
  std::vector<std::unique_ptr<platform::Work>> held;
  int started = 0;
  bool refuse = false;
  bool hold = false;
  bool atOnce = false;
} g_workers;

}  // namespace

void fake_worker_thread::Reset() {
  g_workers.Join();
  g_workers.started = 0;
  g_workers.refuse = false;
  g_workers.hold = false;
  g_workers.atOnce = false;
}

void fake_worker_thread::JoinAll() { g_workers.Join(); }
void fake_worker_thread::Refuse() { g_workers.refuse = true; }
void fake_worker_thread::Hold() { g_workers.hold = true; }
void fake_worker_thread::RunAtOnce() { g_workers.atOnce = true; }
int fake_worker_thread::Started() { return g_workers.started; }

bool platform::StartWorker(std::unique_ptr<Work> work) {
  const NotOurs notOurs;
  if (g_workers.refuse || fault_plan::Fails("platform::StartWorker")) return false;
  ++g_workers.started;
  if (g_workers.atOnce) {
    work->Run();
  } else if (g_workers.hold) {
    g_workers.held.push_back(std::move(work));
  } else {
    g_workers.Start(std::move(work));
  }
  return true;
}
