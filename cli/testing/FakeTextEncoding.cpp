// The native twin of TextEncoding.cpp: its code page is Latin-1.

#include "cli/Json.h"
#include "cli/TextEncoding.h"

namespace cli {

std::string Utf8FromAnsi(std::string_view bytes) {
  std::string text;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80) {
      text += c;
    } else {
      text += static_cast<char>(0xC0 | (byte >> 6));
      text += static_cast<char>(0x80 | (byte & 0x3F));
    }
  }
  return text;
}

bool AnsiFromUtf8(std::string_view text, std::string& bytes) {
  bytes.clear();
  for (std::size_t at = 0; at < text.size();) {
    const char32_t c = NextCharacter(text, at);
    if (c > 0xFF) return false;
    bytes += static_cast<char>(c);
  }
  return true;
}

}  // namespace cli
