#ifndef TESTS_FAKES_FAKETRACEACCESS_H_
#define TESTS_FAKES_FAKETRACEACCESS_H_

#include <cstdint>
#include <string>
#include <vector>

/// What the native twin of traceview/TraceAccess.cpp shows.
struct FakeTraceAccess {
  std::vector<std::uint32_t> ring;  ///< the mapped memory; empty: there is no ring
  bool hasGeneration = false;
  std::uint32_t generation = 0;
  std::int64_t now = 0;
  std::vector<std::string> valueNames;  ///< of the key that holds the configuration
};
FakeTraceAccess& TheTraceAccess();

#endif  // TESTS_FAKES_FAKETRACEACCESS_H_
