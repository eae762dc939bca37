#include "platform/FencedBuffer.h"

#include <windows.h>

namespace {

constexpr SIZE_T kSize = 65536;
constexpr SIZE_T kFence = 1 << 20;

char* Allocate() {
  // What is reserved and not committed cannot be touched.
  void* const region = VirtualAlloc(nullptr, kFence + kSize + kFence, MEM_RESERVE, PAGE_NOACCESS);
  if (region == nullptr) return nullptr;
  void* const middle = static_cast<char*>(region) + kFence;
  return static_cast<char*>(VirtualAlloc(middle, kSize, MEM_COMMIT, PAGE_READWRITE));
}

}  // namespace

char* platform::FencedBuffer() {
  static char* buffer = nullptr;
  if (buffer == nullptr) buffer = Allocate();
  return buffer;
}
