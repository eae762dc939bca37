#ifndef TRACE_TRACEHOST_H_
#define TRACE_TRACEHOST_H_

/// What the facility asks of the machine and of its own process: registry values, clocks, numbers.

#include <cstddef>
#include <cstdint>

#include "trace/TraceRecord.h"

namespace zqotrc {

/// How many bytes of a registry value are read.
inline constexpr std::size_t kParameterCapacity = 260;

/// The registry type of a text (REG_SZ).
inline constexpr std::uint32_t kParameterTypeText = 1;

/// A registry value as it stands there. `data` is terminated whatever was read.
struct RawParameter {
  std::uint32_t type;
  std::uint32_t bytes;
  char data[kParameterCapacity + 1];
};

/// The registry key that holds the configuration, open for reading.
class ParameterKey {
 public:
  ParameterKey();
  ~ParameterKey();
  ParameterKey(const ParameterKey&) = delete;
  ParameterKey& operator=(const ParameterKey&) = delete;

  bool IsOpen() const { return key_ != nullptr; }

  /// \returns false when there is no such value, which leaves 0 in `bytes`, or it has more than
  ///   kParameterCapacity bytes, which says how many.
  bool Read(const char* name, RawParameter& value) const;

 private:
  void* key_ = nullptr;
};

/// Time of day, performance counter (not its frequency) and the numbers of process and thread.
void TakeMoment(TraceMoment& moment);

/// Ticks of the performance counter in a second; 0 when there is no such counter.
std::int64_t CounterFrequency();

/// Whole seconds since some moment in the past.
std::int64_t SecondsNow();

/// The thread's last error, which the facility leaves as it found it.
std::uint32_t LastErrorCode();
void SetLastErrorCode(std::uint32_t code);

}  // namespace zqotrc

#endif  // TRACE_TRACEHOST_H_
