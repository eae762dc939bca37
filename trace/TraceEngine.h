#ifndef TRACE_TRACEENGINE_H_
#define TRACE_TRACEENGINE_H_

#include <cstdint>
#include <string_view>

#include "trace/TraceRecord.h"

namespace zqotrc {

/// The road of a line into the maker's trace engine, a library that is loaded at run time. There is
/// one in a process.
class EngineRoute {
 public:
  /// Loads the library, unless it is usable already. What is missing goes to the event log and
  /// closes this road until the next reading of the configuration.
  void Prepare();

  /// Sends a line; opens the engine first if it is not open. The first failure of the process goes
  /// to the event log, all others are silent.
  void Deliver(std::string_view line);

  /// Tells the engine that its settings may have changed.
  void Refresh() const;

  /// Closes the engine's handle; the next line opens it again.
  void Close();

 private:
  static constexpr std::size_t kRecordHeadSize = 4;

  void Open(std::string_view line);
  std::string_view BuildRecord(std::string_view line);
  void ReportFailure(const char* exportName, std::string_view line);

  bool usable_ = false;
  bool failureReported_ = false;
  std::uint32_t handle_ = 0;
  char record_[kRecordHeadSize + kLineBufferSize] = {};
};

}  // namespace zqotrc

#endif  // TRACE_TRACEENGINE_H_
