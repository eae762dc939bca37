// A list is taken apart as it is when split at every comma, and the text is left as its first name
// behind the commas that led it.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "board/LogDeviceList.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(data, data + strnlen(reinterpret_cast<const char*>(data), size));

  std::vector<std::string> expected(1);
  for (const char c : text) {
    if (c == ',') {
      expected.emplace_back();
    } else {
      expected.back() += c;
    }
  }
  std::erase(expected, "");

  // On the heap and of its exact size, so that a step beyond it is seen.
  std::vector<char> buffer(text.begin(), text.end());
  buffer.push_back('\0');
  LogDeviceList list(buffer.data());
  std::vector<std::string> names;
  while (const char* const name = list.Next()) names.emplace_back(name);
  if (names != expected) std::abort();
  if (list.Next() != nullptr) std::abort();

  const std::size_t leading = std::min(text.find_first_not_of(','), text.size());
  const std::string left = expected.empty() ? text : text.substr(0, leading) + expected.front();
  if (left != buffer.data()) std::abort();

  bool isProgrammer = false;
  for (std::size_t i = 0; i + 6 <= text.size(); ++i) {
    isProgrammer = isProgrammer || std::memcmp(text.data() + i, "KWTUSB", 6) == 0;
  }
  if (isProgrammer != IsUsbProgrammer(text)) std::abort();
  return 0;
}
