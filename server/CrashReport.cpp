#include "server/CrashReport.h"

#include <cstdarg>

#include "server/RequestLog.h"
#include "trace/TraceText.h"

// Set by the build.
#ifndef QORLIX_VERSION
#define QORLIX_VERSION "?"
#endif

namespace {

using platform::Crash;

constexpr std::uint32_t kAccessViolation = 0xC0000005;

// Lines one below the other, as far as there is room.
class Page {
 public:
  Page(char* text, std::size_t capacity) : text_(text), capacity_(capacity) { text_[0] = '\0'; }

  [[gnu::format(printf, 2, 3)]] void Add(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    size_ += zqotrc::FormatListCut(text_ + size_, capacity_ - size_, format, arguments);
    va_end(arguments);
  }
  std::size_t Size() const { return size_; }

 private:
  char* const text_;
  const std::size_t capacity_;
  std::size_t size_ = 0;
};

const char* KindOfAccess(std::uintptr_t kind) {
  switch (kind) {
    case 0:
      return "reading";
    case 1:
      return "writing";
    case 8:
      return "executing";
    default:
      return "accessing";
  }
}

unsigned Number(std::uintptr_t value) { return static_cast<unsigned>(value); }

void AddCrash(Page& page, const Crash& crash) {
  page.Add("QorlixSRV %s ended by an unhandled exception\r\n\r\n", QORLIX_VERSION);
  page.Add("Time:      %04u-%02u-%02u %02u:%02u:%02u.%03u UTC\r\n", crash.year, crash.month,
           crash.day, crash.hour, crash.minute, crash.second, crash.millisecond);
  page.Add("Process:   %u\r\n", Number(crash.process));
  page.Add("Thread:    %u, %s\r\n", Number(crash.thread),
           crash.isPreparingThread ? "which serves the requests" : "which serves no requests");
  page.Add("Exception: 0x%08x", Number(crash.code));
  if (crash.code == kAccessViolation && crash.parameterCount == 2) {
    page.Add(", %s 0x%08x", KindOfAccess(crash.parameters[0]), Number(crash.parameters[1]));
  }
  page.Add("\r\nAddress:   0x%08x", Number(crash.address));
  if (crash.module[0] != '\0') {
    page.Add(", %.259s+0x%x", crash.module, Number(crash.offset));
  } else {
    page.Add(", in no module");
  }
  page.Add("\r\n\r\n");
}

void AddRequests(Page& page) {
  static request_log::Record records[request_log::kRecords];  // no more stack than is needed
  const std::uint32_t count = request_log::Latest(records);
  page.Add("The last %u requests, oldest first; > is the one that was being served\r\n\r\n",
           Number(count));
  page.Add("      Number  Command  Connection      Client      Result\r\n");
  for (std::uint32_t i = 0; i < count; ++i) {
    const request_log::Record& r = records[i];
    page.Add("%c %10u   0x%04x          %2u  %10u  ", r.beingServed ? '>' : ' ', Number(r.number),
             static_cast<unsigned>(r.command), static_cast<unsigned>(r.connection),
             Number(r.client));
    if (r.beingServed) {
      page.Add("         -\r\n");
    } else {
      page.Add("0x%08x\r\n", Number(r.result));
    }
  }
}

}  // namespace

std::size_t ReportCrash(const Crash& crash, char* text, std::size_t capacity) {
  Page page(text, capacity);
  AddCrash(page, crash);
  AddRequests(page);
  return page.Size();
}
