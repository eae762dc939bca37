#include "cli/Actions.h"
#include "cli/AnsiArguments.h"
#include "cli/Connection.h"
#include "cli/Hex.h"
#include "cli/Report.h"
#include "cli/TextEncoding.h"
#include "client/Enumeration.h"
#include "platform/AsciiCase.h"

namespace cli {
namespace {

constexpr SrvResult kNotFound = 2;
constexpr SrvResult kAccessDenied = 5;

bool NamesRootKey(const std::string& path) {
  const std::string first = path.substr(0, path.find('\\'));
  const auto isFirst = [&](const char* root) { return platform::EqualsIgnoringCase(first, root); };
  return isFirst("HKLM") || isFirst("HKEY_LOCAL_MACHINE") || isFirst("HKCU") ||
         isFirst("HKEY_CURRENT_USER");
}

// What is wrong with a path that cannot be found or is refused because of how it is written.
std::string PathHint(const std::string& path) {
  if (path.starts_with('\\')) return "a path has no leading backslash";
  if (NamesRootKey(path)) {
    return "a path begins below HKEY_LOCAL_MACHINE, for example SOFTWARE\\Vesmark\\NORVA";
  }
  return {};
}

std::string ChangeHint(const Invocation& invocation, const client::Result& result) {
  std::string hint = PathHint(invocation.arguments[0]);
  if ((result.is(kAccessDenied) || result.is(kNotFound)) && !hint.empty()) return hint;
  if (!result.is(kAccessDenied)) return {};
  if (invocation.hasBase && invocation.base != client::kRootLocalMachine) {
    return "the server works below HKEY_LOCAL_MACHINE only; the refusal is in the event log";
  }
  return "changes are permitted below SOFTWARE\\Vesmark\\NORVA only; a refusal of the server is in "
         "the event log, under the source MIREL RegistryOperation";
}

std::string ReadHint(const Invocation& invocation, const client::Result& result) {
  return result.is(kNotFound) ? PathHint(invocation.arguments[0]) : std::string();
}

std::string ValueName(std::string_view ansi) { return ansi.empty() ? "(default)" : Quoted(ansi); }

// What ends a command that changes something.
int FinishChange(Report& report, const Invocation& invocation, const client::Result& result,
                 const std::string& done, const std::string& hint = {}) {
  if (result.ok()) report.Line("the server answered 0 (success): " + done);
  const std::string known = ChangeHint(invocation, result);
  return report.Finish(result, known.empty() ? hint : known);
}

void AddPath(Report& report, const Invocation& invocation) {
  if (report.IsJson()) report.Json().Name("path").Text(invocation.arguments[0]);
}

void AddPathAndName(Report& report, const Invocation& invocation) {
  AddPath(report, invocation);
  if (report.IsJson()) report.Json().Name("name").Text(invocation.arguments[1]);
}

void AddText(JsonWriter& json, std::string_view ansi) {
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(ansi.data());
  json.Name("text").Text(Utf8FromAnsi(ansi));
  json.Name("hex").Text(HexDigits({bytes, ansi.size()}));
}

void ShowValue(Report& report, std::uint32_t index, const client::Result& result,
               const client::RegistryEntry& entry) {
  if (report.IsJson()) {
    JsonWriter& json = report.Json();
    json.Open('{').Name("index").Number(index).Name("code").Number(result.code());
    json.Name("name").Text(Utf8FromAnsi(entry.name)).Name("nameLength").Number(entry.nameLength);
    AddText(json, entry.data);
    json.Name("dataLength").Number(entry.dataLength).Close('}');
  } else if (result.ok()) {
    report.Line(ValueName(entry.name) + " = " + Quoted(entry.data) + "  (" +
                ByteCount(entry.dataLength) + ")");
  } else {
    report.Note("value " + std::to_string(index) + " does not fit a reply (" +
                CodeAndName(result.code(), result.name()) + "): its data has " +
                ByteCount(entry.dataLength));
  }
}

void ShowKey(Report& report, std::uint32_t index, const client::Result& result,
             const client::RegistryEntry& entry) {
  if (report.IsJson()) {
    JsonWriter& json = report.Json();
    json.Open('{').Name("index").Number(index).Name("code").Number(result.code());
    json.Name("name").Text(Utf8FromAnsi(entry.name)).Name("nameLength").Number(entry.nameLength);
    json.Close('}');
  } else if (result.ok()) {
    report.Line(Printable(Utf8FromAnsi(entry.name)));
  } else {
    report.Note("key " + std::to_string(index) + " does not fit a reply (" +
                CodeAndName(result.code(), result.name()) + ")");
  }
}

std::string KeysHint(const Invocation& invocation, const client::Result& result) {
  if (!result.is(kAccessDenied)) return ReadHint(invocation, result);
  return "listing asks for full access to the key, so it fails on keys that the server may read "
         "but not change; 'reg values' and 'reg get' may work";
}

// What a key has, entry by entry.
struct Listing {
  const char* member;  // of the object
  const char* none;
  decltype(&client::QorlixClient::Reg_EnumKey) next;
  decltype(&ShowKey) show;
  decltype(&ReadHint) hint;
};

int List(const Invocation& invocation, Output& output, const Listing& listing) {
  const std::vector<std::string> ansi = AnsiArguments(invocation, output);
  if (ansi.empty()) return kExitUsage;
  Report report(invocation, output);
  AddPath(report, invocation);
  report.Json().Name(listing.member).Open('[');
  const auto client = MakeClient(invocation);
  bool any = false;
  const client::Result result = client::ForEachEntry(
      [&](std::uint32_t index, client::RegistryEntry& entry) {
        return ((*client).*listing.next)(ansi[0].c_str(), index, entry);
      },
      [&](std::uint32_t index, const client::Result& one, const client::RegistryEntry& entry) {
        listing.show(report, index, one, entry);
        return any = true;
      });
  report.Json().Close(']');
  if (result.ok() && !any) report.Line(listing.none);
  return report.Finish(result, listing.hint(invocation, result));
}

}  // namespace

int RegLsAction(const Invocation& invocation, Output& output) {
  return List(invocation, output,
              {"keys", "(no subkeys)", &client::QorlixClient::Reg_EnumKey, ShowKey, KeysHint});
}

int RegValuesAction(const Invocation& invocation, Output& output) {
  return List(invocation, output,
              {"values", "(no values)", &client::QorlixClient::Reg_EnumValue, ShowValue, ReadHint});
}

int RegGetAction(const Invocation& invocation, Output& output) {
  const std::vector<std::string> ansi = AnsiArguments(invocation, output);
  if (ansi.empty()) return kExitUsage;
  Report report(invocation, output);
  AddPathAndName(report, invocation);
  const auto client = MakeClient(invocation);
  client::RegistryData data;
  const client::Result result = client->Reg_GetValue(ansi[0].c_str(), ansi[1].c_str(), data);
  if (report.IsJson() && result.ok()) {
    AddText(report.Json(), data.text);
    report.Json().Name("length").Number(data.length);
  }
  if (result.is(client::kMoreData)) {
    return report.Finish(result, "the value has " + ByteCount(data.length + 1) +
                                     ", and the server reads no more than 8160");
  }
  if (!result.ok()) return report.Finish(result, ReadHint(invocation, result));
  report.Line("data:   " + Quoted(data.text));
  report.Line("length: " + std::to_string(data.length));
  if (data.text.size() == data.length) return report.Finish(result);
  return report.Finish(result,
                       "the length is not that of the text, so the value is no plain text; "
                       "only what stands in front of its first zero byte is sent");
}

int RegSetAction(const Invocation& invocation, Output& output) {
  const std::vector<std::string> ansi = AnsiArguments(invocation, output);
  if (ansi.empty()) return kExitUsage;
  Report report(invocation, output);
  AddPathAndName(report, invocation);
  const auto client = MakeClient(invocation);
  const char* const key = ansi[0].c_str();
  const char* const name = ansi[1].c_str();
  const char* const text = ansi[2].c_str();
  const client::Result result = invocation.hasBase
                                    ? client->Reg_SetValueBase(invocation.base, key, name, text)
                                    : client->Reg_SetValue(key, name, text);
  return FinishChange(
      report, invocation, result,
      "set " + ValueName(ansi[1]) + " to " + Quoted(ansi[2]) + " in " + Quoted(ansi[0]),
      result.is(kNotFound) ? "the key has to exist: 'qorlixctl reg create PATH'" : "");
}

int RegUnsetAction(const Invocation& invocation, Output& output) {
  const std::vector<std::string> ansi = AnsiArguments(invocation, output);
  if (ansi.empty()) return kExitUsage;
  Report report(invocation, output);
  AddPathAndName(report, invocation);
  const client::Result result =
      MakeClient(invocation)->Reg_DelValue(ansi[0].c_str(), ansi[1].c_str());
  return FinishChange(report, invocation, result,
                      "removed the value " + ValueName(ansi[1]) + " from " + Quoted(ansi[0]));
}

int RegCreateAction(const Invocation& invocation, Output& output) {
  const std::vector<std::string> ansi = AnsiArguments(invocation, output);
  if (ansi.empty()) return kExitUsage;
  Report report(invocation, output);
  AddPath(report, invocation);
  const auto client = MakeClient(invocation);
  const char* const key = ansi[0].c_str();
  const client::Result result = invocation.hasBase ? client->Reg_CreateKeyBase(invocation.base, key)
                                                   : client->Reg_CreateKey(key);
  return FinishChange(report, invocation, result,
                      "the key " + Quoted(ansi[0]) + " exists now, created or as before");
}

int RegDeleteAction(const Invocation& invocation, Output& output) {
  const std::vector<std::string> ansi = AnsiArguments(invocation, output);
  if (ansi.empty()) return kExitUsage;
  Report report(invocation, output);
  AddPath(report, invocation);
  const auto client = MakeClient(invocation);
  const char* const key = ansi[0].c_str();
  const client::Result result =
      invocation.hasBase ? client->Reg_DelKeyBase(invocation.base, key) : client->Reg_DelKey(key);
  return FinishChange(report, invocation, result,
                      "removed the tree " + Quoted(ansi[0] + "\\" + ansi[0]) + "; the key " +
                          Quoted(ansi[0]) + " itself stays",
                      result.is(kNotFound)
                          ? "the server removes the tree PATH\\PATH below the key, not the key "
                            "itself; an ordinary key has no such tree, stays, and answers 2"
                          : "");
}

}  // namespace cli
