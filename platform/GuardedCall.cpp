#include "platform/GuardedCall.h"

#include <windows.h>

#include <malloc.h>

#ifndef __i386__
#error "The guard is a frame on the exception chain of 32-bit x86; other targets need their own."
#endif

namespace platform {
namespace {

/// One link of the thread's exception chain, with the place to go back to.
struct GuardFrame {
  EXCEPTION_REGISTRATION_RECORD registration;  // first: the dispatcher hands us its address
  void* landing[5];
  DWORD code;
};

/// Room for two dispatches, one inside the other, and for the handlers of a library on the way.
constexpr ULONG kStackForGuards = 64 * 1024;

constexpr DWORD kUnwinding = 0x2;
constexpr DWORD kExitUnwind = 0x4;

EXCEPTION_REGISTRATION_RECORD* HeadOfChain() {
  EXCEPTION_REGISTRATION_RECORD* head;
  asm volatile("movl %%fs:0, %0" : "=r"(head));
  return head;
}

void SetHeadOfChain(EXCEPTION_REGISTRATION_RECORD* head) {
  asm volatile("movl %0, %%fs:0" : : "r"(head) : "memory");
}

EXCEPTION_DISPOSITION __cdecl LandInGuard(EXCEPTION_RECORD* record, void* establisher, CONTEXT*,
                                          void*) {
  if ((record->ExceptionFlags & (kUnwinding | kExitUnwind)) != 0) return ExceptionContinueSearch;

  auto* volatile frame = static_cast<GuardFrame*>(establisher);
  frame->code = record->ExceptionCode;
  RtlUnwind(establisher, /*TargetIp=*/nullptr, record, /*ReturnValue=*/nullptr);
  // The unwinder need not give these registers back; `frame` lives on the stack for that reason.
  asm volatile("" : : : "ebx", "esi", "edi", "memory");
  GuardFrame* const target = frame;
  __builtin_longjmp(target->landing, 1);
}

bool CallCatching(void (*call)(void*), void* context) {
  try {
    call(context);
    return true;
  } catch (...) {
    return false;
  }
}

}  // namespace

// Not inlined: the landing place must not become part of a caller's frame.
__attribute__((noinline)) bool InvokeGuarded(void (*call)(void* context), void* context) {
  GuardFrame frame = {};
  frame.registration.Next = HeadOfChain();
  frame.registration.Handler = reinterpret_cast<PEXCEPTION_ROUTINE>(&LandInGuard);

  if (__builtin_setjmp(frame.landing) == 0) {
    SetHeadOfChain(&frame.registration);
    const bool returned = CallCatching(call, context);
    SetHeadOfChain(frame.registration.Next);
    return returned;
  }

  // Landed here from the handler. The call may have left the direction flag and the x87 stack in
  // any state, and a stack overflow has used up the guard page.
  asm volatile("cld; fninit" : : : "memory");
  SetHeadOfChain(frame.registration.Next);
  if (frame.code == EXCEPTION_STACK_OVERFLOW) (void)_resetstkoflw();
  return false;
}

void ReserveStackForGuards() {
  ULONG bytes = kStackForGuards;
  (void)SetThreadStackGuarantee(&bytes);

  // Where a stack is committed as a whole, its guard page may still lie at the very end, whatever
  // has been asked for. Then one of our own goes to where the system would put it.
  MEMORY_BASIC_INFORMATION stack = {};
  if (VirtualQuery(&stack, &stack, sizeof(stack)) == 0) return;
  void* const place = static_cast<char*>(stack.AllocationBase) + kStackForGuards;
  MEMORY_BASIC_INFORMATION page = {};
  if (VirtualQuery(place, &page, sizeof(page)) == 0) return;
  const bool isPlain = page.State == MEM_COMMIT && page.Protect == PAGE_READWRITE &&
                       page.AllocationBase == stack.AllocationBase && place < &stack;
  DWORD before = 0;
  if (isPlain) (void)VirtualProtect(place, 1, PAGE_READWRITE | PAGE_GUARD, &before);
}

}  // namespace platform
