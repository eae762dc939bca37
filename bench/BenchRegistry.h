#ifndef BENCH_BENCHREGISTRY_H_
#define BENCH_BENCHREGISTRY_H_

#include <cstdint>

/// The piece of registry that the registry workloads touch; the load generator makes it below
/// HKEY_LOCAL_MACHINE and removes it again.
namespace bench {

inline constexpr char kKeyPath[] = "SOFTWARE\\Vesmark\\NORVA\\Benchmark";
inline constexpr char kValueName[] = "BoardName";  ///< made first, so its index is 0
inline constexpr char kWrittenName[] = "Written";  ///< comes and goes with the commands that write
inline constexpr char kValueText[] = "Ring adapter 1";
inline constexpr char kSubkeyName[] = "Adapter0001";  ///< made first, so its index is 0
/// What the command that deletes the tree below the key deletes: the key's path twice.
inline constexpr char kNestedKeyPath[] =
    "SOFTWARE\\Vesmark\\NORVA\\Benchmark\\SOFTWARE\\Vesmark\\NORVA\\Benchmark";

/// Room that the product offers the registry for an answer; the yardstick offers the same.
inline constexpr std::uint32_t kAnswerRoom = 8160;

}  // namespace bench

#endif  // BENCH_BENCHREGISTRY_H_
