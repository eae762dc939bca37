#ifndef BENCH_FOOTPRINTS_H_
#define BENCH_FOOTPRINTS_H_

#include "bench/ServerProcess.h"

namespace bench {

/// Memory and handles of a fresh server at three points of its life.
struct LifeOfAServer {
  double secondsToFirstAnswer;
  Footprint started;    ///< behind the first answer
  Footprint warm;       ///< 64 clients have been served with requests of every kind
  Footprint afterMany;  ///< and then kManyRequests more
};

inline constexpr unsigned kManyRequests = 10000;

LifeOfAServer WatchALife(const ServerProgram& program);

}  // namespace bench

#endif  // BENCH_FOOTPRINTS_H_
