#ifndef CLIENT_DEADLINE_H_
#define CLIENT_DEADLINE_H_

#include <chrono>
#include <cstdint>

namespace client {

/// A point in time that several waits share.
class Deadline {
 public:
  explicit Deadline(std::uint32_t milliseconds) noexcept
      : end_(std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds)) {}

  /// What is left, rounded up, so that 0 means that the time has run out.
  std::uint32_t LeftMs() const noexcept {
    const auto left = end_ - std::chrono::steady_clock::now();
    const auto whole = std::chrono::ceil<std::chrono::milliseconds>(left).count();
    return whole > 0 ? static_cast<std::uint32_t>(whole) : 0;
  }

 private:
  std::chrono::steady_clock::time_point end_;
};

}  // namespace client

#endif  // CLIENT_DEADLINE_H_
