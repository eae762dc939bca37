// The run-time library initialises itself once per load, and its own way of doing that opens two
// handles which it does not close when the library is freed. A server that loads and frees a
// stand-in for every request would seem to leak; so the linker takes this one
// (--wrap=pthread_once).

#include <windows.h>

#include <pthread.h>

extern "C" int __wrap_pthread_once(pthread_once_t* once, void (*initialise)());

int __wrap_pthread_once(pthread_once_t* once, void (*initialise)()) {
  constexpr LONG kNew = 0, kDone = 1, kBusy = 2;
  static_assert(sizeof(*once) == sizeof(LONG) && PTHREAD_ONCE_INIT == kNew);
  auto* const state = reinterpret_cast<volatile LONG*>(once);
  for (;;) {
    const LONG found = InterlockedCompareExchange(state, kBusy, kNew);
    if (found == kDone) return 0;
    if (found == kNew) break;
    Sleep(0);
  }
  initialise();
  (void)InterlockedExchange(state, kDone);
  return 0;
}
