// Linked into the server of a build that counts lines: tests end servers by force, and what such a
// server has counted would go with it. Before that they ask for it here.

#include "tests/coverage/FlushOnDemand.h"

#include <windows.h>

extern "C" void __gcov_dump(void);

namespace {

struct Flusher {
  Flusher() {
    ask_ = Event(coverage::kAskPrefix);
    done_ = Event(coverage::kDonePrefix);
    thread_ = CreateThread(nullptr, 0, &Run, this, 0, nullptr);
  }

  static HANDLE Event(const char* prefix) {
    char name[64];
    coverage::EventName(prefix, GetCurrentProcessId(), name);
    return CreateEventA(nullptr, /*bManualReset=*/TRUE, /*bInitialState=*/FALSE, name);
  }

  static DWORD WINAPI Run(void* self) {
    auto* const flusher = static_cast<Flusher*>(self);
    WaitForSingleObject(flusher->ask_, INFINITE);
    __gcov_dump();
    SetEvent(flusher->done_);
    return 0;
  }

  HANDLE ask_;
  HANDLE done_;
  HANDLE thread_;
};

const Flusher g_flusher;

}  // namespace
