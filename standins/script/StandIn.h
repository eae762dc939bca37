#ifndef STANDINS_SCRIPT_STANDIN_H_
#define STANDINS_SCRIPT_STANDIN_H_

#include <cstdint>
#include <type_traits>

#include "standins/script/Arguments.h"
#include "standins/script/Export.h"
#include "standins/script/StandInHost.h"

namespace standin {

/// What the stand-ins answer of their own; the values are the platform's.
inline constexpr std::uint32_t kDone = 0;
inline constexpr std::uint32_t kBadScript = 13;         // ERROR_INVALID_DATA
inline constexpr std::uint32_t kOutOfMemory = 14;       // ERROR_OUTOFMEMORY
inline constexpr std::uint32_t kInvalidParameter = 87;  // ERROR_INVALID_PARAMETER
inline constexpr std::uint32_t kInternalError = 1359;   // ERROR_INTERNAL_ERROR

/// Room that the library keeps for its own in the memory that outlives it.
inline constexpr std::size_t kOwnMemory = 8192;

/// The library's own zero-filled memory of the process, kOwnMemory bytes; null when there is none.
void* OwnMemory();

/// How a call ends: with a result, or with an exception.
struct Outcome {
  std::uint32_t result = 0;
  std::uint32_t lastError = 0;
  Raised raised = Raised::kNothing;
};

/// Every library says its name, without extension: that of its script.
extern const char kLibraryName[];

/// Reads the script, then counts, delays, answers and logs the call.
///
/// Calls may come from several threads at once. Never throws: 13 stands for a script with errors,
/// 14 for memory that ran out, 1359 for anything else. The thread's last error is that from before
/// the call, unless the script names one.
Outcome Perform(Export which, const Arguments& arguments, std::uint32_t (*work)(void* context),
                void* context) noexcept;

/// One export: `work()` does what the library is there for. It owns nothing, because whoever raises
/// here never comes back.
template <typename Work>
std::uint32_t Serve(Export which, const Arguments& arguments, Work work) {
  static_assert(std::is_trivially_destructible_v<Work>);
  const Outcome outcome = Perform(
      which, arguments, [](void* context) { return (*static_cast<Work*>(context))(); }, &work);
  if (outcome.raised != Raised::kNothing) host::Raise(outcome.raised);
  host::SetLastError(outcome.lastError);
  return outcome.result;
}

}  // namespace standin

#endif  // STANDINS_SCRIPT_STANDIN_H_
