#ifndef TESTS_FAKES_FAKEEVENTLOG_H_
#define TESTS_FAKES_FAKEEVENTLOG_H_

#include <string>
#include <vector>

/// The event log in memory, behind platform/EventLog.h.
namespace fake_event_log {

struct Event {
  std::string source;
  std::string text;
  bool operator==(const Event&) const = default;
};

/// All events since the last call.
std::vector<Event> Take();

}  // namespace fake_event_log

#endif  // TESTS_FAKES_FAKEEVENTLOG_H_
