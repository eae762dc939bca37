#include "server/RequestWatch.h"

#include <windows.h>

#include <process.h>

#include <memory>
#include <new>

#include "platform/WinHandles.h"
#include "server/HangDetector.h"

namespace {

// A stop is not to take noticeably longer because of the watch.
constexpr DWORD kJoinMs = 1000;

// It formats one line and calls the trace.
constexpr unsigned kStackSize = 256 * 1024;

}  // namespace

struct RequestWatch::Work {
  explicit Work(std::uint32_t limit) : limitMs(limit), detector(limit) {}
  const std::uint32_t limitMs;
  HangDetector detector;
  UniqueKernelHandle stop;
};

RequestWatch::RequestWatch(std::uint32_t limitMs) {
  if (limitMs == 0) return;
  std::unique_ptr<Work> work(new (std::nothrow) Work(limitMs));
  if (work == nullptr) return;
  *work->stop.put() = CreateEventA(/*lpEventAttributes=*/nullptr, /*bManualReset=*/TRUE,
                                   /*bInitialState=*/FALSE, /*lpName=*/nullptr);
  if (!work->stop) return;
  thread_ = reinterpret_cast<HANDLE>(_beginthreadex(/*security=*/nullptr, kStackSize, Run,
                                                    work.get(), STACK_SIZE_PARAM_IS_A_RESERVATION,
                                                    /*thrdaddr=*/nullptr));
  if (thread_ != nullptr) work_ = work.release();  // Stop takes it back
}

RequestWatch::~RequestWatch() { (void)Stop(); }

bool RequestWatch::Stop() {
  if (thread_ == nullptr) return true;
  (void)SetEvent(work_->stop.get());
  const bool ended = WaitForSingleObject(thread_, kJoinMs) == WAIT_OBJECT_0;
  (void)CloseHandle(thread_);
  thread_ = nullptr;
  // What a thread still works with is left to it; the process is about to end.
  if (ended) delete work_;
  work_ = nullptr;
  return ended;
}

unsigned __stdcall RequestWatch::Run(void* raw) {
  Work& work = *static_cast<Work*>(raw);
  while (WaitForSingleObject(work.stop.get(), work.detector.PeriodMs()) == WAIT_TIMEOUT) {
    request_log::Record record;
    const bool serving = request_log::BeingServed(record);
    if (work.detector.Look(serving ? &record : nullptr, GetTickCount64())) {
      ReportHang(record, work.limitMs);
    }
  }
  return 0;
}
