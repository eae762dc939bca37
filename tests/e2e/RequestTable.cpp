#include "tests/e2e/RequestTable.h"

namespace e2e {
namespace {

constexpr char kRoot[] = "02000080";
constexpr char kPath[] = "1A000000 'SOFTWARE\\Vesmark\\NORVA\\E2E'";
constexpr char kKeyToMake[] = "1E000000 'SOFTWARE\\Vesmark\\NORVA\\E2E\\New'";
constexpr char kName[] = "04000000 'Name'";
constexpr char kText[] = "05000000 'Value'";
constexpr char kDevice[] = "04000000 'DEV1'";
constexpr char kLanguage[] = "02000000 'de'";
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

const std::vector<RequestRow>& ActionRequests() {
  static const std::vector<RequestRow> rows = {
      {"Install", "0500", {kDevice, kLanguage}, {0, 1}, ""},
      {"Deinstall", "0600", {kDevice, kLanguage, kText}, {0, 1, 2}, ""},
      // Two zero outputs, then the whole again and the failure once more.
      {"AddIpAddress",
       "0C00",
       {"C0A80705", "FFFFFF00", "09000000"},
       {},
       "00000000 00000000 0400 9A210000 00000000 00000000 0400 9A210000"},
      {"DelIpAddress", "0D00", {"01000000"}, {}, ""},
      {"InstallWdmDriver", "0F00", {kName, kText, kLanguage, "01000000"}, {0, 1, 2}, ""},
      {"TestFunction", "F000", {kText}, {0}, ""},
      {"SilentRestart", "2001", {kDevice, kName}, {0, 1}, ""},
      {"GetSilentRestartResult", "2101", {kName}, {0}, ""},
  };
  return rows;
}

}  // namespace e2e
