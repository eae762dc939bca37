#ifndef TESTS_E2E_RESTARTTEST_H_
#define TESTS_E2E_RESTARTTEST_H_

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "tests/e2e/Wire.h"
#include "tests/e2e/WireClient.h"

/// What tests of silent restarts share: the two requests, their replies, and a client's event.
namespace e2e::restart {

inline Bytes Begin(const std::string& device, const std::string& event) {
  return Wire("2001") + Text(device) + Text(event);
}
inline Bytes Ask(const std::string& event) { return Wire("2101") + Text(event); }

inline Bytes Result(std::uint32_t result) { return Wire("0400") + Long(result); }
inline const Bytes kAccepted = Result(0);
inline const Bytes kNothing = Result(259);

/// An event as a client makes it: it is there as long as this, and stays set until it is reset.
class NamedEvent {
 public:
  explicit NamedEvent(const std::string& name);
  ~NamedEvent();
  NamedEvent(const NamedEvent&) = delete;
  NamedEvent& operator=(const NamedEvent&) = delete;

  testing::AssertionResult IsSet(std::uint32_t milliseconds = kPatienceMs) const;
  void Reset() const;

 private:
  void* event_;
};

}  // namespace e2e::restart

#endif  // TESTS_E2E_RESTARTTEST_H_
