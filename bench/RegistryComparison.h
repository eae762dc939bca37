#ifndef BENCH_REGISTRYCOMPARISON_H_
#define BENCH_REGISTRYCOMPARISON_H_

#include "bench/ServerProcess.h"

namespace bench {

/// Compares the registry commands, for one client, with the same registry calls made by this
/// program itself, and with these beside a round trip to the bare yardstick; prints a table.
///
/// \param burstSeconds how long a batch of one side lasts at least
void CompareRegistryWork(const ServerProgram& product, const ServerProgram (&bare)[2],
                         unsigned rounds, double burstSeconds);

}  // namespace bench

#endif  // BENCH_REGISTRYCOMPARISON_H_
