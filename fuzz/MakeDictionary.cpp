// Writes fuzz/protocol.dict to the standard output.

#include <cstdio>

#include "fuzz/ProtocolDictionary.h"

int main() {
  const std::string text = ProtocolDictionary();
  return std::fwrite(text.data(), 1, text.size(), stdout) == text.size() ? 0 : 1;
}
