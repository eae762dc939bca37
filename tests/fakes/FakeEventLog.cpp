#include "tests/fakes/FakeEventLog.h"

#include <utility>

#include "platform/EventLog.h"
#include "tests/fakes/FaultPlan.h"
#include "tests/fakes/NotOurs.h"

namespace {
std::vector<fake_event_log::Event> g_events;
}

std::vector<fake_event_log::Event> fake_event_log::Take() { return std::exchange(g_events, {}); }

void ReportErrorEvent(const char* source, const char* text) {
  const NotOurs notOurs;
  if (fault_plan::Fails("ReportErrorEvent")) return;
  g_events.push_back({source, text});
}
