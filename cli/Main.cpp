#include <windows.h>

#include <fcntl.h>
#include <io.h>

#include <algorithm>
#include <cstdio>
#include <new>
#include <string>
#include <vector>

#include "cli/Ctl.h"

// The arguments of `reg set` are texts, and * is one: the start-up code must not replace it with
// the names of files.
extern "C" {
int _dowildcard = 0;  // NOLINT: the name is the start-up code's
}

namespace {

std::string Utf8(const wchar_t* wide) {
  // A text that is no valid UTF-16 comes out with replacement characters.
  const int needed = WideCharToMultiByte(CP_UTF8, /*dwFlags=*/0, wide, /*cchWideChar=*/-1, nullptr,
                                         0, nullptr, nullptr);
  if (needed <= 1) return {};
  std::string text(static_cast<std::size_t>(needed), '\0');
  WideCharToMultiByte(CP_UTF8, /*dwFlags=*/0, wide, /*cchWideChar=*/-1, text.data(), needed,
                      nullptr, nullptr);
  text.pop_back();
  return text;
}

// A console takes UTF-16, whatever its code page; it is given in pieces, because it has a limit.
bool WriteToConsole(HANDLE console, const std::string& text) {
  constexpr DWORD kPiece = 8000;
  std::wstring wide(text.size(), L'\0');
  const int size =
      MultiByteToWideChar(CP_UTF8, /*dwFlags=*/0, text.data(), static_cast<int>(text.size()),
                          wide.data(), static_cast<int>(wide.size()));
  for (DWORD at = 0; at < static_cast<DWORD>(size);) {
    DWORD written = 0;
    const DWORD piece = std::min(kPiece, static_cast<DWORD>(size) - at);
    if (WriteConsoleW(console, wide.data() + at, piece, &written, nullptr) == FALSE) return false;
    if (written == 0) return false;
    at += written;
  }
  return true;
}

bool Write(DWORD which, std::FILE* stream, const std::string& text) {
  if (text.empty()) return true;
  const HANDLE handle = GetStdHandle(which);
  DWORD mode = 0;
  if (GetConsoleMode(handle, &mode) != FALSE) return WriteToConsole(handle, text);
  // Files and pipes get UTF-8, with line ends as written.
  (void)_setmode(_fileno(stream), _O_BINARY);
  return std::fwrite(text.data(), 1, text.size(), stream) == text.size() &&
         std::fflush(stream) == 0;
}

// Older consoles, and those that output goes past, would show the codes instead.
bool ShowsColors() {
  constexpr DWORD kVirtualTerminal = 0x0004;
  const HANDLE handle = GetStdHandle(STD_OUTPUT_HANDLE);
  DWORD mode = 0;
  if (GetConsoleMode(handle, &mode) == FALSE) return false;
  return SetConsoleMode(handle, mode | kVirtualTerminal) != FALSE;
}

bool writable = true;

void WriteBoth(cli::Output& output) {
  (void)Write(STD_ERROR_HANDLE, stderr, output.err);
  writable = Write(STD_OUTPUT_HANDLE, stdout, output.out) && writable;
  output.out.clear();
  output.err.clear();
}

int Run(int count, wchar_t** words) {
  std::vector<std::string> utf8;
  for (int i = 1; i < count; ++i) utf8.push_back(Utf8(words[i]));
  cli::Output output;
  output.write = WriteBoth;
  output.terminal = ShowsColors();
  const int exitCode = cli::RunCtl(utf8, output);
  output.Write();
  if (writable) return exitCode;
  (void)std::fputs("qorlixctl: the output cannot be written\n", stderr);
  return exitCode == cli::kExitOk ? cli::kExitTransport : exitCode;
}

}  // namespace

extern "C" int wmain(int count, wchar_t** words) {
  try {
    return Run(count, words);
  } catch (const std::bad_alloc&) {
    (void)std::fputs("qorlixctl: there is not enough memory\n", stderr);
    return cli::kExitTransport;
  }
}
