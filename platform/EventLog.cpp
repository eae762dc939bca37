#include "platform/EventLog.h"

#include <windows.h>

void ReportErrorEvent(const char* source, const char* text) {
  const HANDLE log = RegisterEventSourceA(/*lpUNCServerName=*/nullptr, source);
  if (log == nullptr) return;

  const char* strings[] = {text};
  (void)ReportEventA(log, EVENTLOG_ERROR_TYPE, /*wCategory=*/0, /*dwEventID=*/0,
                     /*lpUserSid=*/nullptr, /*wNumStrings=*/1, /*dwDataSize=*/0, strings,
                     /*lpRawData=*/nullptr);
  (void)DeregisterEventSource(log);
}
