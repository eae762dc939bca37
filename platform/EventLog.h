#ifndef PLATFORM_EVENTLOG_H_
#define PLATFORM_EVENTLOG_H_

#include <cstdint>

/// Reports one error event (type 1, category 0, id 0, one insertion string, no user, no data) to
/// the event log of this computer under `source`.
///
/// Nothing is reported, and nobody is told, when the source cannot be registered.
void ReportErrorEvent(const char* source, const char* text);

#endif  // PLATFORM_EVENTLOG_H_
