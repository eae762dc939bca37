#include <windows.h>

#include "standins/script/Raised.h"

namespace standin {

namespace {

constexpr DWORD kForeignCxxException = 0xE06D7363;

// Runs until the stack's guard page is hit; whoever catches that has to set it up again. In small
// steps, so that most of that page is left when it happens: Wine needs it to raise the exception at
// all, and ends the process otherwise.
__attribute__((noinline)) int UseUpStack(int depth) {
  volatile char block[32];
  block[depth % sizeof(block)] = 1;
  return depth == 0 ? 0 : UseUpStack(depth + 1) + block[depth % sizeof(block)];
}

}  // namespace

void RaiseNow(Raised raised) {
  // Volatile, both of them: a compiler that knows one of them finds a way without dividing.
  volatile int one = 1;
  volatile int zero = 0;
  switch (raised) {
    case Raised::kAccessViolation:
      *reinterpret_cast<volatile int*>(zero) = 1;
      break;
    case Raised::kDivideByZero:
      zero = one / zero;
      break;
    case Raised::kIntOverflow:
      RaiseException(EXCEPTION_INT_OVERFLOW, EXCEPTION_NONCONTINUABLE, 0, nullptr);
      break;
    case Raised::kStackOverflow:
      zero = UseUpStack(one);
      break;
    default:
      RaiseException(kForeignCxxException, EXCEPTION_NONCONTINUABLE, 0, nullptr);
  }
  TerminateProcess(GetCurrentProcess(), EXCEPTION_NONCONTINUABLE_EXCEPTION);
  for (;;) {
  }
}

}  // namespace standin
