// Writes one byte behind a block of the heap, for a test that looks whether anybody notices.

#include <cstdlib>

int main() {
  constexpr std::size_t kSize = 20;
  volatile char* const block = static_cast<volatile char*>(std::malloc(kSize));
  const volatile std::size_t behind = kSize;
  if (block != nullptr) block[behind] = 'x';
  std::free(const_cast<char*>(block));
  return 0;
}
