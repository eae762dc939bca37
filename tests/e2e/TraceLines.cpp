#include "tests/e2e/TraceLines.h"

#include <charconv>
#include <cstdint>
#include <map>

namespace e2e {
namespace {

using Numbers = std::map<std::string, std::uint64_t, std::less<>>;

// Matches one line from its start and learns what the names stand for.
bool Matches(std::string_view expected, std::string_view line, Numbers& numbers) {
  while (!expected.empty()) {
    if (expected.front() != '{') {
      if (line.empty() || line.front() != expected.front()) return false;
      expected.remove_prefix(1);
      line.remove_prefix(1);
      continue;
    }
    const std::size_t close = expected.find('}');
    std::string_view name = expected.substr(1, close - 1);
    expected.remove_prefix(close + 1);
    const bool hexadecimal = name.ends_with(":x");
    if (hexadecimal) name.remove_suffix(2);

    std::uint64_t number = 0;
    const auto parsed =
        std::from_chars(line.data(), line.data() + line.size(), number, hexadecimal ? 16 : 10);
    if (parsed.ec != std::errc()) return false;
    line.remove_prefix(static_cast<std::size_t>(parsed.ptr - line.data()));
    if (name.empty()) continue;
    const auto [known, isNew] = numbers.try_emplace(std::string(name), number);
    if (!isNew && known->second != number) return false;
  }
  return line.empty();
}

std::string Listing(const Lines& lines, std::size_t marked) {
  std::string text;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    text += (i == marked ? "\n  > " : "\n    ") + lines[i];
  }
  return text;
}

}  // namespace

Lines operator+(Lines first, const Lines& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

Lines SplitLines(const Bytes& content) {
  Lines lines;
  std::size_t begin = 0;
  for (std::size_t end = content.find("\r\n"); end != Bytes::npos;
       end = content.find("\r\n", begin)) {
    lines.push_back(content.substr(begin, end - begin));
    begin = end + 2;
  }
  return lines;
}

Lines TextLines(const Bytes& content) {
  Lines lines = SplitLines(content);
  for (std::string& line : lines) {
    if (line.ends_with(' ')) {
      line.pop_back();
    } else {
      line += "<no blank at its end>";
    }
  }
  return lines;
}

testing::AssertionResult LinesAre(const Lines& lines, const Lines& expected) {
  Numbers numbers;
  for (std::size_t i = 0; i < std::max(lines.size(), expected.size()); ++i) {
    if (i < lines.size() && i < expected.size() && Matches(expected[i], lines[i], numbers)) {
      continue;
    }
    return testing::AssertionFailure()
           << "from line " << i + 1 << " on (" << lines.size() << " instead of " << expected.size()
           << " lines)\n  traced:" << Listing(lines, i) << "\n  expected:" << Listing(expected, i);
  }
  return testing::AssertionSuccess();
}

namespace lines {

Lines RequestComes(std::string_view code) {
  return {"RunSrvLoop:  WaitForMultipleObjects received Element on dwWait=0x{con:x}",
          "RunSrvLoop:  Pending: READING_STATE",
          "RunSrvLoop:  WRITING_STATE -> GetCommand for Pipe({con})",
          "RunSrvLoop:  opCode " + std::string(code)};
}

Lines NextRead() {
  return {"RunSrvLoop:  while - WaitForMultipleObjects",
          "RunSrvLoop:  WaitForMultipleObjects received Element on dwWait=0x{con:x}",
          "RunSrvLoop:  No Pending Operation -> check Pipe-State",
          "RunSrvLoop:  READING_STATE -> ReadFile: Pipe({con})=0x{pipe:x}",
          "RunSrvLoop:  ReadFile: ReceivePointer=0 Byte",
          "RunSrvLoop:  while - WaitForMultipleObjects"};
}

Lines SendLong(std::string_view result, int length) {
  return {"Send:  >> Begin CQorlixSRVPipe::Send(long)",
          "Send:  << CQorlixSRVPipe::Send SendResult=" + std::string(result) +
              " writeResult=0x1  DataLength=" + std::to_string(length)};
}

Lines Request(std::string_view code, const Lines& command) {
  return RequestComes(code) + command + NextRead();
}

Lines Refused(std::string_view code, const Lines& command) {
  const Lines error = {"RunSrvLoop:  Error occured : lResult=0x219a"};
  return Request(code, command + error + SendLong("0x219a"));
}

}  // namespace lines
}  // namespace e2e
