#ifndef TESTS_PROTOCOL_PROTOCOLPAGE_H_
#define TESTS_PROTOCOL_PROTOCOLPAGE_H_

#include <string>
#include <utility>
#include <vector>

#include "tests/support/WireHex.h"

/// The command reference of docs/protocol.md, as a program reads it.
namespace protocol_page {

/// One code block: the request and the reply that it shows, in bytes. One of them may be missing.
struct Example {
  Bytes request;
  Bytes reply;
};

struct Section {
  std::string heading;  ///< "3 (0x3) Reg_SetValue"
  std::string code;     ///< "3"
  std::string hex;      ///< "0x3"
  std::string name;
  /// The rows of its table, title and text: "Reply, 0" and "`result`, text `name`".
  std::vector<std::pair<std::string, std::string>> rows;
  std::vector<Example> examples;

  bool Has(const std::string& title) const;
  /// The text of a row, empty when there is none.
  std::string Row(const std::string& title) const;
};

/// One line of the list of all commands.
struct Entry {
  std::string code;
  std::string name;
  std::string anchor;
};

struct Page {
  std::vector<Entry> entries;
  std::vector<Section> sections;
};

Page Parse(const std::string& markdown);

/// The fields of a row in the way in which the client writes them, "text key; long index", without
/// the `result` of a reply. "none" has none.
std::string FieldsOf(const std::string& row);

/// The anchor that a heading gets.
std::string AnchorOf(const std::string& heading);

}  // namespace protocol_page

#endif  // TESTS_PROTOCOL_PROTOCOLPAGE_H_
