#include "tests/e2e/RequestTable.h"

namespace e2e {
namespace {

constexpr char kRoot[] = "02000080";
constexpr char kPath[] = "1A000000 'SOFTWARE\\Vesmark\\NORVA\\E2E'";
constexpr char kKeyToMake[] = "1E000000 'SOFTWARE\\Vesmark\\NORVA\\E2E\\New'";
constexpr char kName[] = "04000000 'Name'";
constexpr char kText[] = "05000000 'Value'";
constexpr char kIndex[] = "00000000";

}  // namespace

Bytes RequestRow::Request() const { return RequestWith(fields.size(), {}); }

Bytes RequestRow::RequestWith(std::size_t replaced, const Bytes& bytes) const {
  Bytes request = Wire(code);
  for (std::size_t i = 0; i < fields.size(); ++i) {
    request += i == replaced ? bytes : Wire(fields[i]);
  }
  return request;
}

std::ostream& operator<<(std::ostream& out, const RequestRow& row) { return out << row.name; }

const std::vector<RequestRow>& RegistryRequests() {
  static const std::vector<RequestRow> rows = {
      {"RegDelKey", "0100", {kPath}, {0}, ""},
      {"RegCreateKey", "0200", {kKeyToMake}, {0}, ""},
      {"RegSetValue", "0300", {kPath, kName, kText}, {0, 1, 2}, ""},
      {"RegDelValue", "1200", {kPath, kName}, {0, 1}, ""},
      {"RegEnumKey", "1500", {kPath, kIndex}, {0}, "E01F0000"},
      // One less than the room for the value: nothing was read, and the terminator is taken off.
      {"RegGetValue", "1600", {kPath, kName}, {0, 1}, "DF1F0000"},
      {"RegEnumValue", "1700", {kPath, kIndex}, {0}, "E01F0000 E01F0000"},
      {"RegSetValueBase", "1C00", {kRoot, kPath, kName, kText}, {1, 2, 3}, ""},
      {"RegCreateKeyBase", "1D00", {kRoot, kKeyToMake}, {1}, ""},
      {"RegDelKeyBase", "1E00", {kRoot, kPath}, {1}, ""},
  };
  return rows;
}

}  // namespace e2e
