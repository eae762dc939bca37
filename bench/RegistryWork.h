#ifndef BENCH_REGISTRYWORK_H_
#define BENCH_REGISTRYWORK_H_

#include <cstdint>

#include "bench/BenchRegistry.h"
#include "server/CommandCode.h"

namespace bench {

/// What registry calls brought: up to two texts, each with the length that the registry told.
struct RegistryAnswer {
  unsigned count = 0;
  char text[2][kAnswerRoom + 1];
  std::uint32_t length[2];
};

/// Makes the registry calls that the product makes for a command, and no other, on the piece of
/// registry of BenchRegistry.h. Ends the program when one of them fails.
using RegistryWork = void (*)(RegistryAnswer& answer);

/// \returns nullptr for a code that is none of the registry commands that are measured.
RegistryWork FindRegistryWork(CommandCode code);

}  // namespace bench

#endif  // BENCH_REGISTRYWORK_H_
