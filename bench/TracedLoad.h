#ifndef BENCH_TRACEDLOAD_H_
#define BENCH_TRACEDLOAD_H_

#include "bench/ServerProcess.h"

namespace bench {

/// Compares the product with itself: with tracing off, with a level but no bit of its own wanted,
/// and with every line going to the ring. One server is told to read its configuration anew between
/// the bursts, so that nothing else differs. Prints a table.
void CompareTracing(const ServerProgram& product, unsigned rounds, double burstSeconds);

}  // namespace bench

#endif  // BENCH_TRACEDLOAD_H_
