#ifndef PLATFORM_GUARDEDCALL_H_
#define PLATFORM_GUARDEDCALL_H_

#include <cstdint>
#include <type_traits>

namespace platform {

/// Runs `call(context)` and says whether it came back by itself. Do not call this directly.
bool InvokeGuarded(void (*call)(void* context), void* context);

/// Sets stack of the calling thread aside for the catching of a call that has used the stack up.
///
/// Without it there is what happens to be left of the last page: whether that is enough depends on
/// where the last frame lies in it, and where it is not, the process ends. To be called once by
/// every thread that makes guarded calls, before the first.
void ReserveStackForGuards();

}  // namespace platform

/// Runs one foreign call; `result` receives what it returned.
///
/// \returns false, with `result` as it was, when the call raised: a structured exception (an access
///   violation, a foreign compiler's C++ exception, any other) or a C++ exception of our own.
///
/// After a structured exception the frames inside the call are abandoned, not unwound. So the
/// lambda holds the one call and nothing of ours that owns anything; locks, buffers and libraries
/// belong outside, where they are released on both roads. What the call itself owns is lost: a
/// registry primitive that faults leaves its key open, which is accepted.
template <typename Call>
bool GuardedCall(std::uint32_t& result, Call&& call) {
  struct Context {
    std::remove_reference_t<Call>* call;
    std::uint32_t value;
  } context{&call, 0};

  const bool returned = platform::InvokeGuarded(
      [](void* raw) {
        auto* const inner = static_cast<Context*>(raw);
        inner->value = static_cast<std::uint32_t>((*inner->call)());
      },
      &context);
  if (returned) result = context.value;
  return returned;
}

#endif  // PLATFORM_GUARDEDCALL_H_
