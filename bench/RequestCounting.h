#ifndef BENCH_REQUESTCOUNTING_H_
#define BENCH_REQUESTCOUNTING_H_

#include "bench/ServerProcess.h"

namespace bench {

/// Runs bounded bursts of `roundTrips` and of twice as many, and a time without any, against one
/// server, each between two marks in the debug log of Wine's server. What lies between the marks is
/// counted by count-requests.sh.
void CountRequests(const ServerProgram& program, unsigned roundTrips);

}  // namespace bench

#endif  // BENCH_REQUESTCOUNTING_H_
