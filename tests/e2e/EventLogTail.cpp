#include "tests/e2e/EventLogTail.h"

#include <cstdlib>
#include <fstream>
#include <iterator>

namespace e2e {
namespace {

constexpr char kReport[] = ":eventlog:ReportEventW L\"";

std::string StreamSoFar() {
  const char* const path = std::getenv("QORLIX_STDERR_FILE");
  if (path == nullptr) return {};
  std::ifstream file("Z:" + std::string(path), std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), {});
}

// The text behind the opening quote at `at`; its wide characters are shown escaped.
std::string Unescape(const std::string& stream, std::size_t at) {
  std::string text;
  while (at < stream.size() && stream[at] != '"') {
    if (stream[at] != '\\') {
      text += stream[at++];
      continue;
    }
    const char escaped = at + 1 < stream.size() ? stream[at + 1] : '\0';
    at += 2;
    switch (escaped) {
      case '\\':
      case '"':
        text += escaped;
        break;
      case 'n':
        text += '\n';
        break;
      case 'r':
        text += '\r';
        break;
      case 't':
        text += '\t';
        break;
      default:  // four hex digits, of which the first was taken
        text += static_cast<char>(std::strtoul(stream.substr(at - 1, 4).c_str(), nullptr, 16));
        at += 3;
    }
  }
  return text;
}

}  // namespace

EventLogTail::EventLogTail() : start_(StreamSoFar().size()) {}

bool EventLogTail::IsVisible() { return std::getenv("QORLIX_STDERR_FILE") != nullptr; }

std::vector<std::string> EventLogTail::Texts() const {
  std::vector<std::string> texts;
  const std::string stream = StreamSoFar();
  constexpr std::size_t kSize = sizeof(kReport) - 1;
  for (std::size_t at = stream.find(kReport, start_); at != std::string::npos;
       at = stream.find(kReport, at + kSize)) {
    texts.push_back(Unescape(stream, at + kSize));
  }
  return texts;
}

}  // namespace e2e
