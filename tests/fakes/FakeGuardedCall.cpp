#include "platform/GuardedCall.h"

// Where there are no structured exceptions, the guard still catches C++ ones.
bool platform::InvokeGuarded(void (*call)(void* context), void* context) {
  try {
    call(context);
    return true;
  } catch (...) {
    return false;
  }
}
