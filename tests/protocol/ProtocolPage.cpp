#include "tests/protocol/ProtocolPage.h"

#include <algorithm>
#include <cctype>
#include <regex>
#include <sstream>

namespace protocol_page {
namespace {

// The bytes at the beginning of a line: pairs of digits with one blank between them. Two blanks end
// them; what follows explains.
std::string HexOf(const std::string& line) {
  static const std::regex kBytes("^[0-9A-F]{2}( [0-9A-F]{2})*(?=$|  )");
  std::smatch match;
  return std::regex_search(line, match, kBytes) ? match.str() : std::string();
}

Example ParseExample(const std::vector<std::string>& lines) {
  std::string message[2];
  int at = 0;
  for (const std::string& line : lines) {
    if (line.empty() && at == 0) {
      at = 1;
    } else {
      message[at] += HexOf(line) + ' ';
    }
  }
  // A block without an empty line is one message alone: a reply if it begins with the mark of one.
  if (at == 0 && message[0].starts_with("04 00")) std::swap(message[0], message[1]);
  return {Wire(message[0]), Wire(message[1])};
}

// Reads the page line by line, and knows which section it is in.
class Reader {
 public:
  void Take(const std::string& line) {
    static const std::regex kEntry(R"(^\| (\d+) \(0x[0-9A-F]+\) \| \[(\w+)\]\(#([^)]*)\) \|$)");
    static const std::regex kHeading(R"(^### ((\d+) \((0x[0-9A-F]+)\) (\w+))$)");
    static const std::regex kRow(R"(^\| ([A-Z][^|]*) \| (.*) \|$)");
    std::smatch match;
    if (line == "```") {
      ToggleBlock();
    } else if (inBlock_) {
      block_.push_back(line);
    } else if (std::regex_match(line, match, kEntry)) {
      page.entries.push_back({match[1], match[2], match[3]});
    } else if (std::regex_match(line, match, kHeading)) {
      page.sections.push_back({match[1], match[2], match[3], match[4], {}, {}});
      inSection_ = true;
    } else if (line.starts_with("#")) {
      inSection_ = false;
    } else if (inSection_ && std::regex_match(line, match, kRow)) {
      page.sections.back().rows.emplace_back(match[1], match[2]);
    }
  }

  Page page;

 private:
  void ToggleBlock() {
    inBlock_ = !inBlock_;
    if (!inBlock_ && inSection_) page.sections.back().examples.push_back(ParseExample(block_));
    block_.clear();
  }

  bool inSection_ = false;
  bool inBlock_ = false;
  std::vector<std::string> block_;
};

}  // namespace

bool Section::Has(const std::string& title) const {
  return std::any_of(rows.begin(), rows.end(), [&](const auto& row) { return row.first == title; });
}

std::string Section::Row(const std::string& title) const {
  for (const auto& [found, text] : rows) {
    if (found == title) return text;
  }
  return {};
}

Page Parse(const std::string& markdown) {
  Reader reader;
  std::istringstream stream(markdown);
  std::string line;
  while (std::getline(stream, line)) reader.Take(line);
  return reader.page;
}

std::string FieldsOf(const std::string& row) {
  static const std::regex kField(R"((byte|short|long|guid|text|buffer) `(\w+)`)");
  std::string fields;
  for (auto at = std::sregex_iterator(row.begin(), row.end(), kField); at != std::sregex_iterator();
       ++at) {
    if (!fields.empty()) fields += "; ";
    fields += at->str(1) + ' ' + at->str(2);
  }
  return fields;
}

std::string AnchorOf(const std::string& heading) {
  std::string anchor;
  for (const char c : heading) {
    const auto byte = static_cast<unsigned char>(c);
    if (std::isalnum(byte) != 0 || c == '_') anchor += static_cast<char>(std::tolower(byte));
    if (c == ' ') anchor += '-';
  }
  return anchor;
}

}  // namespace protocol_page
