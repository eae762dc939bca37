#ifndef TRACEVIEW_TRACEACCESS_H_
#define TRACEVIEW_TRACEACCESS_H_

/// What the trace facility of all processes shares, as seen from outside.

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace traceview {

/// The ring "Global\ZqSDD_Trace", mapped for reading only. While it is attached the ring outlives
/// its writers.
class SharedRing {
 public:
  SharedRing() = default;
  ~SharedRing();
  SharedRing(const SharedRing&) = delete;
  SharedRing& operator=(const SharedRing&) = delete;

  /// \returns 0, or the platform's error code: 2 when there is no ring.
  std::uint32_t Attach();

  /// All bytes that are mapped; empty when not attached. They change under the reader.
  std::span<const std::uint8_t> mapped() const { return mapped_; }

 private:
  void* section_ = nullptr;
  std::span<const std::uint8_t> mapped_;
};

/// Counts up the configuration generation "Global\ZqTRACE_SECTION", so that every process that
/// traces reads its configuration at its next line.
///
/// \returns 0, or the platform's error code: 2 when no process has it.
std::uint32_t RefreshAllTracers(std::uint32_t& generation);

/// The names of all values of the key that holds the configuration; none when there is no such key.
std::vector<std::string> TraceValueNames();

/// Microseconds since midnight, of the local clock that trace lines are written by.
std::int64_t LocalTimeOfDay();

}  // namespace traceview

#endif  // TRACEVIEW_TRACEACCESS_H_
