#include "tests/e2e/RestartTest.h"

#include <windows.h>

namespace e2e::restart {

NamedEvent::NamedEvent(const std::string& name)
    : event_(CreateEventA(nullptr, /*bManualReset=*/TRUE, FALSE, name.c_str())) {
  EXPECT_NE(event_, nullptr) << name << ": error " << GetLastError();
  // The server may still hold, for a moment, the event that an earlier test had under this name.
  (void)ResetEvent(event_);
}

NamedEvent::~NamedEvent() { CloseHandle(event_); }

testing::AssertionResult NamedEvent::IsSet(std::uint32_t milliseconds) const {
  if (WaitForSingleObject(event_, milliseconds) == WAIT_OBJECT_0) {
    return testing::AssertionSuccess();
  }
  return testing::AssertionFailure() << "the event was not set within " << milliseconds << " ms";
}

void NamedEvent::Reset() const { ResetEvent(event_); }

}  // namespace e2e::restart
