#include "cli/TextEncoding.h"

#include <windows.h>

namespace cli {
namespace {

std::wstring ToWide(UINT codePage, DWORD flags, std::string_view text) {
  const auto size = static_cast<int>(text.size());
  const int needed = MultiByteToWideChar(codePage, flags, text.data(), size, nullptr, 0);
  if (needed <= 0) return {};
  std::wstring wide(static_cast<std::size_t>(needed), L'\0');
  MultiByteToWideChar(codePage, flags, text.data(), size, wide.data(), needed);
  return wide;
}

std::string FromWide(UINT codePage, const std::wstring& wide) {
  const auto size = static_cast<int>(wide.size());
  const int needed =
      WideCharToMultiByte(codePage, /*dwFlags=*/0, wide.data(), size, nullptr, 0, nullptr, nullptr);
  if (needed <= 0) return {};
  std::string text(static_cast<std::size_t>(needed), '\0');
  WideCharToMultiByte(codePage, /*dwFlags=*/0, wide.data(), size, text.data(), needed, nullptr,
                      nullptr);
  return text;
}

}  // namespace

std::string Utf8FromAnsi(std::string_view bytes) {
  return FromWide(CP_UTF8, ToWide(CP_ACP, /*flags=*/0, bytes));
}

bool AnsiFromUtf8(std::string_view text, std::string& bytes) {
  bytes.clear();
  if (text.empty()) return true;
  const std::wstring wide = ToWide(CP_UTF8, MB_ERR_INVALID_CHARS, text);
  if (wide.empty()) return false;
  bytes = FromWide(CP_ACP, wide);
  // What came out of the code page as something else was not in it. This holds for every code page,
  // where the flags that forbid replacements do not.
  return ToWide(CP_ACP, /*flags=*/0, bytes) == wide;
}

}  // namespace cli
