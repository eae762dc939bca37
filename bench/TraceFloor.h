#ifndef BENCH_TRACEFLOOR_H_
#define BENCH_TRACEFLOOR_H_

#include <windows.h>

#include <cstdarg>
#include <cstddef>
#include <cstdint>

/// The floors below a trace line: the least that must be done for a line in the long layout, in
/// plain code. One layout, one output each, no filters, no limits, no configuration, no other
/// process to get along with. Nothing here is the product's.
namespace bench {

/// A mutex with a name, and the text of a line built while it is held.
class FloorLine {
 public:
  explicit FloorLine(const char* mutexName);
  ~FloorLine();
  FloorLine(const FloorLine&) = delete;
  FloorLine& operator=(const FloorLine&) = delete;

 protected:
  void Lock() const { (void)WaitForSingleObject(mutex_, kWaitMs); }
  void Unlock() const { (void)ReleaseMutex(mutex_); }

  /// Builds the line with its line end in `line_`. \returns its length.
  std::size_t Build(const char* function, const char* file, unsigned line, const char* format,
                    std::va_list arguments);

  static constexpr std::size_t kLineRoom = 1024;
  char line_[kLineRoom];

 private:
  static constexpr DWORD kWaitMs = 10000;
  static constexpr std::size_t kTextRoom = 1024;

  HANDLE mutex_;
  char text_[kTextRoom];
};

/// Lock, build, open for appending, write, size, close, unlock.
class FileFloor : private FloorLine {
 public:
  /// \param name must stay valid
  explicit FileFloor(const char* name) : FloorLine("Global\\QorlixBenchFile"), name_(name) {}

  [[gnu::noinline, gnu::format(printf, 5, 6)]] void Line(const char* function, const char* file,
                                                         unsigned line, const char* format, ...);

 private:
  const char* name_;
};

/// Lock, build, copy into shared memory, unlock.
class RingFloor : private FloorLine {
 public:
  explicit RingFloor(std::uint32_t size);
  ~RingFloor();

  [[gnu::noinline, gnu::format(printf, 5, 6)]] void Line(const char* function, const char* file,
                                                         unsigned line, const char* format, ...);

  /// All bytes that were ever stored.
  std::uint64_t Total() const { return std::uint64_t{wraps_} * size_ + offset_; }
  const char* data() const { return data_; }
  std::uint32_t offset() const { return offset_; }

 private:
  HANDLE section_;
  char* data_;
  std::uint32_t size_;
  std::uint32_t offset_ = 0;
  std::uint32_t wraps_ = 0;
};

/// The words that the least of all gates looks at.
struct FloorGate {
  volatile std::uint32_t wanted;
  volatile std::uint32_t stale;
};
extern FloorGate g_floorGate;

inline bool FloorWants(std::uint32_t bit) {
  return (g_floorGate.wanted & bit) != 0 || g_floorGate.stale != 0;
}

/// Behind the gate; its arguments are not evaluated unless a line is wanted.
[[gnu::cold, gnu::format(printf, 2, 3)]] void FloorNeverLine(const char* function,
                                                             const char* format, ...);

}  // namespace bench

#endif  // BENCH_TRACEFLOOR_H_
