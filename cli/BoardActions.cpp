#include "cli/Actions.h"
#include "cli/AnsiArguments.h"
#include "cli/Connection.h"
#include "cli/Report.h"
#include "cli/Table.h"
#include "cli/TextEncoding.h"
#include "client/BoardCalls.h"
#include "client/Enumeration.h"

namespace cli {
namespace {

using client::BoardCalls;
using client::Result;

// A library that never says that there is no more would be asked forever.
constexpr std::uint32_t kEntryLimit = 10000;

void AddArguments(Report& report, const Invocation& invocation) {
  if (!report.IsJson() || invocation.arguments.empty()) return;
  report.Json().Name("arguments").Open('[');
  for (const std::string& argument : invocation.arguments) report.Json().Text(argument);
  report.Json().Close(']');
}

// One enumeration: its entries as they come, and what is to be said of some of them at its end.
template <typename Entry>
class Listing {
 public:
  explicit Listing(Report& report) : report_(report), table_(Titles()) {
    report_.Json().Name("entries").Open('[');
  }

  // \returns whether to go on.
  bool Add(std::uint32_t index, const Result& result, Entry& entry) {
    AddJson(index, result, entry);
    if (result.ok()) {
      AddRow(index, entry);
    } else {
      remarks_.push_back(Misfit(index, result, entry));
    }
    if (entry.askedAgain) {
      remarks_.push_back("entry " + std::to_string(index) +
                         " did not fit a reply; it came when less room was asked for, and its "
                         "texts may be cut");
    }
    next_ = index + 1;
    return next_ < kEntryLimit;
  }

  int Finish(const Result& result) {
    const bool stopped = next_ == kEntryLimit;
    report_.Json().Close(']');
    if (report_.IsJson()) report_.Json().Name("complete").Bool(result.ok() && !stopped);
    if (!table_.Empty()) {
      for (const std::string& line : table_.Lines()) report_.Line(line);
    }
    for (const std::string& remark : remarks_) report_.Note(remark);
    if (result.ok() && next_ == 0) report_.Line("(none)");
    const std::string count = std::to_string(next_);
    if (stopped) {
      return report_.Finish(result, "stopped after " + count + " entries; there may be more");
    }
    if (!result.fromServer() && next_ > 0) report_.Note("the list ends before entry " + count);
    if (result.ok() || !result.fromServer()) return report_.Finish(result);
    return report_.Finish(result, "this ended the list at entry " + count +
                                      "; 259 would have said that there are no more");
  }

 private:
  static std::vector<std::string> Titles() {
    std::vector<std::string> titles = {"#"};
    Entry entry;
    for (const client::NamedText& known : entry.Texts()) titles.push_back(TitleOf(known.name));
    if (*Entry::kValueName != '\0') titles.push_back(TitleOf(Entry::kValueName));
    return titles;
  }

  void AddRow(std::uint32_t index, Entry& entry) {
    std::vector<std::string> cells = {std::to_string(index)};
    for (const client::NamedText& known : entry.Texts()) {
      cells.push_back(Printable(Utf8FromAnsi(known.text->text)));
    }
    if (*Entry::kValueName != '\0') cells.push_back(std::to_string(entry.value));
    table_.Add(std::move(cells));
  }

  void AddJson(std::uint32_t index, const Result& result, Entry& entry) {
    if (!report_.IsJson()) return;
    JsonWriter& json = report_.Json();
    json.Open('{').Name("index").Number(index).Name("code").Number(result.code());
    for (const client::NamedText& known : entry.Texts()) {
      json.Name(known.name).Text(Utf8FromAnsi(known.text->text));
      json.Name(std::string(known.name) + "Length").Number(known.text->length);
    }
    if (*Entry::kValueName != '\0') json.Name(Entry::kValueName).Number(entry.value);
    json.Name("askedAgain").Bool(entry.askedAgain).Close('}');
  }

  static std::string Misfit(std::uint32_t index, const Result& result, Entry& entry) {
    std::string line = "entry " + std::to_string(index) + " does not fit a reply (" +
                       CodeAndName(result.code(), result.name()) + ")";
    std::string lengths;
    for (const client::NamedText& known : entry.Texts()) {
      if (known.text->length == 0) continue;
      lengths += lengths.empty() ? ": " : ", ";
      lengths += std::string(known.name) + ' ' + ByteCount(known.text->length);
    }
    return line + lengths;
  }

  Report& report_;
  Table table_;
  std::vector<std::string> remarks_;
  std::uint32_t next_ = 0;
};

// Lists what `next(calls, index, entry)` tells.
template <typename Entry, typename Next>
int List(const Invocation& invocation, Output& output, Next next) {
  Report report(invocation, output);
  AddArguments(report, invocation);
  const auto client = MakeClient(invocation);
  BoardCalls calls(*client);
  Listing<Entry> listing(report);
  const Result result = client::ForEachEntry<Entry>(
      [&](std::uint32_t index, Entry& entry) { return next(calls, index, entry); },
      [&](std::uint32_t index, const Result& one, Entry& entry) {
        return listing.Add(index, one, entry);
      });
  return listing.Finish(result);
}

}  // namespace

int BoardListAction(const Invocation& invocation, Output& output) {
  const std::vector<std::string> ansi = AnsiArguments(invocation, output);
  if (ansi.empty()) return kExitUsage;
  return List<client::BoardEntry>(
      invocation, output, [&](BoardCalls& calls, std::uint32_t index, client::BoardEntry& entry) {
        return calls.BC_EnumBoard(ansi[0].c_str(), index, entry);
      });
}

int BoardInstalledAction(const Invocation& invocation, Output& output) {
  return List<client::InstBoardEntry>(
      invocation, output,
      [](BoardCalls& calls, std::uint32_t index, client::InstBoardEntry& entry) {
        return calls.BC_EnumInstBoard(index, entry);
      });
}

int BoardAvailableAction(const Invocation& invocation, Output& output) {
  return List<client::AvailableBoardEntry>(
      invocation, output,
      [](BoardCalls& calls, std::uint32_t index, client::AvailableBoardEntry& entry) {
        return calls.BC_EnumAvailableBoard(index, entry);
      });
}

int BoardAdaptersAction(const Invocation& invocation, Output& output) {
  return List<client::AdapterEntry>(
      invocation, output, [](BoardCalls& calls, std::uint32_t index, client::AdapterEntry& entry) {
        return calls.BC_EnumAdapters(index, entry);
      });
}

int BoardConfigsAction(const Invocation& invocation, Output& output) {
  const std::vector<std::string> ansi = AnsiArguments(invocation, output);
  if (ansi.empty()) return kExitUsage;
  const client::BoardSelection of = {ansi[0].c_str(), ansi[1].c_str(), ansi[2].c_str(),
                                     ansi[3].c_str()};
  return List<client::ConfigurationEntry>(
      invocation, output,
      [&](BoardCalls& calls, std::uint32_t index, client::ConfigurationEntry& entry) {
        return calls.BC_EnumConfiguration(index, of, entry);
      });
}

}  // namespace cli
