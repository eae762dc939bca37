#include "platform/GuardedCall.h"

#include "tests/fakes/FaultPlan.h"

// Where there are no structured exceptions, the guard still catches C++ ones.
bool platform::InvokeGuarded(void (*call)(void* context), void* context) {
  try {
    const fault_plan::Guarded guarded;
    call(context);
    return true;
  } catch (...) {
    return false;
  }
}
