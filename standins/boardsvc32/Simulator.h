#ifndef STANDINS_BOARDSVC32_SIMULATOR_H_
#define STANDINS_BOARDSVC32_SIMULATOR_H_

#include <type_traits>

#include "standins/boardsvc32/Arguments.h"
#include "standins/boardsvc32/BoardModel.h"
#include "standins/boardsvc32/Operation.h"

namespace boardsim {

/// How a call ends: with a result, or with an exception.
struct Outcome {
  std::uint32_t result = 0;
  Raised raised = Raised::kNothing;
};

/// Loads the inventory at the first call, then counts, delays, answers and logs the call.
///
/// Calls may come from several threads; they take turns, but for their delays. Never throws: 14
/// stands for memory that ran out, 1359 for anything else.
Outcome Perform(Operation operation, const Arguments& arguments,
                Answer (*ask)(void* context, BoardModel& model), void* context) noexcept;

/// Forgets everything; the next call loads the inventory anew. For programs that link the
/// simulator instead of loading it.
void Reset();

[[noreturn]] void RaiseFault(Raised raised);

/// One export: `ask(model)` answers. It owns nothing, because whoever raises here never comes back.
template <typename Ask>
std::uint32_t Serve(Operation operation, const Arguments& arguments, Ask ask) {
  static_assert(std::is_trivially_destructible_v<Ask>);
  const Outcome outcome = Perform(
      operation, arguments,
      [](void* context, BoardModel& model) { return (*static_cast<Ask*>(context))(model); }, &ask);
  if (outcome.raised != Raised::kNothing) RaiseFault(outcome.raised);
  return outcome.result;
}

}  // namespace boardsim

#endif  // STANDINS_BOARDSVC32_SIMULATOR_H_
