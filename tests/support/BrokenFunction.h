#ifndef TESTS_SUPPORT_BROKENFUNCTION_H_
#define TESTS_SUPPORT_BROKENFUNCTION_H_

#include <windows.h>

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>

/// A function of a library that fails before it does anything, for tests of what no machine in
/// order shows.

/// `mov eax, result` and `ret argumentBytes`, which is what such a function begins with.
/// \param argumentBytes that the function takes off the stack: 0 where its caller does
inline std::array<std::uint8_t, 8> FailingCode(std::uint32_t result, std::uint8_t argumentBytes) {
  std::array<std::uint8_t, 8> code = {0xB8, 0, 0, 0, 0, 0xC2, argumentBytes, 0};
  std::memcpy(code.data() + 1, &result, sizeof(result));
  return code;
}

/// Such a function in this process, for all its threads, as long as the object lives.
class BrokenFunction {
 public:
  BrokenFunction(const char* library, const char* function, std::uint32_t result,
                 std::uint8_t argumentBytes)
      : at_(reinterpret_cast<void*>(GetProcAddress(LoadLibraryA(library), function))) {
    if (at_ == nullptr) {
      ADD_FAILURE() << "no " << function << " in " << library;
      return;
    }
    std::memcpy(there_.data(), at_, there_.size());
    Write(FailingCode(result, argumentBytes));
  }
  ~BrokenFunction() {
    if (at_ != nullptr) Write(there_);
  }
  BrokenFunction(const BrokenFunction&) = delete;
  BrokenFunction& operator=(const BrokenFunction&) = delete;

 private:
  void Write(const std::array<std::uint8_t, 8>& code) {
    DWORD protection = 0;
    (void)VirtualProtect(at_, code.size(), PAGE_EXECUTE_READWRITE, &protection);
    std::memcpy(at_, code.data(), code.size());
    (void)VirtualProtect(at_, code.size(), protection, &protection);
    (void)FlushInstructionCache(GetCurrentProcess(), at_, code.size());
  }

  void* const at_;
  std::array<std::uint8_t, 8> there_ = {};
};

#endif  // TESTS_SUPPORT_BROKENFUNCTION_H_
