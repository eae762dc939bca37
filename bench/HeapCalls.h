#ifndef BENCH_HEAPCALLS_H_
#define BENCH_HEAPCALLS_H_

#include <functional>

namespace bench {

/// Runs `work` and counts what it takes from the heaps of this process, by whatever road: new,
/// malloc, and the system's own libraries on behalf of a call. The system's one function for that
/// is watched by a breakpoint, which is slow; do not time it. One thread only.
unsigned HeapCallsOf(const std::function<void()>& work);

}  // namespace bench

#endif  // BENCH_HEAPCALLS_H_
