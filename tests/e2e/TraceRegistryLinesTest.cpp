#include <gmock/gmock.h>

#include "tests/e2e/RegistryScratch.h"
#include "tests/e2e/TraceTest.h"

// What the ten registry commands trace: every line of a request, in order.

namespace e2e {
namespace {

using lines::Refused;
using lines::Request;
using lines::SendLong;

constexpr char kKey[] = "SOFTWARE\\Vesmark\\NORVA\\E2E";
constexpr char kForeign[] = "SOFTWARE\\E2E";
constexpr char kRoot[] = "02000080";

struct TraceRow {
  std::string what;
  Bytes request;
  Lines lines;
};

// A field that is cut short within its length, and one that says more than there is.
const Bytes kCut = Wire("0100");
const Bytes kTooLong = Wire("05000000 'abcd'");
const Bytes kKeyField = Text(kKey);
const Bytes kAbsent = Wire("FFFF0000");

Lines CutField(const std::string& text) {
  return {"ReadLong:  ReadLong exit with BUFFER_OVERFLOW", text};
}
Lines TooLongField(const std::string& text) {
  return {"ReadString:  ReadString exit with BUFFER_OVERFLOW", text};
}

/// A command of one or more texts, perhaps behind a root key, that answers one long.
struct SimpleCommand {
  std::string name;
  std::string code;   ///< as traced
  Bytes opCode;       ///< as sent
  std::string trace;  ///< the function, with the blank that the layout puts behind it
  std::string closing;
  std::string primitive;
  std::string rootError;            ///< empty where no root key is sent
  std::vector<std::string> errors;  ///< of the text fields
};

const std::vector<SimpleCommand>& SimpleCommands() {
  static const std::vector<SimpleCommand> commands = {
      {"DelKey", "0x1", Wire("0100"), "Reg_DelKey: ", "Reg_DelKey", "RegDelKeyBL", "", {"DelKey"}},
      {"CreateKey",
       "0x2",
       Wire("0200"),
       "Reg_CreateKey: ",
       "Reg_CreateKey",
       "RegCreateKeyBL",
       "",
       {"lpszCreateKey="}},
      {"SetValue",
       "0x3",
       Wire("0300"),
       "Reg_SetValue:  ",
       "Reg_SetValue",
       "RegSetValueBL",
       "",
       {"Key", "Parameter", "Value"}},
      {"DelValue",
       "0x12",
       Wire("1200"),
       "Reg_DelValue: ",
       "Reg_DelValue",
       "RegDelValueBL",
       "",
       {"Key", "Value"}},
      {"SetValueBase",
       "0x1c",
       Wire("1C00"),
       "Reg_SetValueBase:  ",
       "Reg_SetValue",
       "RegSetValueBL",
       "<< result = 0x219a  baseKey=0x0",
       {"Key", "Parameter", "Value"}},
      {"CreateKeyBase",
       "0x1d",
       Wire("1D00"),
       "Reg_CreateKeyBase: ",
       "Reg_CreateKey",
       "RegCreateKeyBL",
       "<< result = 0x219a baseKey=0x0",
       {"lpszCreateKey="}},
      {"DelKeyBase",
       "0x1e",
       Wire("1E00"),
       "Reg_DelKey: ",
       "Reg_DelKey",
       "RegDelKeyBL",
       "<< result = 0x219a baseKey=0x0",
       {"DelKey"}},
  };
  return commands;
}

// What the primitive of a key's deletion traces itself; it always fails here, for nothing is
// nested.
Lines OfThePrimitive(const SimpleCommand& command, const std::string& result) {
  if (command.primitive != "RegDelKeyBL") return {};
  return {"RegDelKeyBL:  << Reg_DelKey result = " + result};
}

// With a permitted key, with a foreign one, with an absent one, and with every field damaged.
void AddRows(std::vector<TraceRow>& rows, const SimpleCommand& command) {
  const Bytes root = command.rootError.empty() ? Bytes() : Wire(kRoot);
  const Lines start = {command.trace + ">> Start"};
  const auto row = [&](const std::string& what, const Bytes& fields, const Lines& steps,
                       const std::string& result) {
    rows.push_back({command.name + what, command.opCode + fields,
                    Request(command.code,
                            start + steps + SendLong(result) +
                                Lines{command.trace + "<< " + command.closing + " result = 0x0"})});
  };
  const auto answered = [&](const std::string& result) {
    return Lines{command.trace + "<< " + command.primitive + " result = " + result};
  };

  Bytes more;
  for (std::size_t i = 1; i < command.errors.size(); ++i) more += Text("Name");
  const std::string served = command.primitive == "RegDelKeyBL" ? "0x2" : "0x0";
  row("Served", root + kKeyField + more, OfThePrimitive(command, served) + answered(served),
      served);
  row("Refused", root + Text(kForeign) + more, answered("0x5"), "0x5");
  row("OfAnAbsentKey", root + kAbsent + more, answered("0x57"), "0x57");

  if (!command.rootError.empty()) {
    row("WithAnotherRoot", Wire("01000080") + kKeyField + more, {}, "0x5");
    rows.push_back({command.name + "WithACutRoot", command.opCode + kCut,
                    Refused(command.code, start + CutField(command.trace + command.rootError))});
  }
  Bytes before = root;
  for (const std::string& error : command.errors) {
    const std::string text = command.trace + "<< result = 0x219a " + error;
    const std::string field = std::to_string(before.size());
    rows.push_back({command.name + "CutAtByte" + field, command.opCode + before + kCut,
                    Refused(command.code, start + CutField(text))});
    rows.push_back({command.name + "TooLongAtByte" + field, command.opCode + before + kTooLong,
                    Refused(command.code, start + TooLongField(text))});
    before += kKeyField;
  }
}

Lines Send(const std::string& shape, const std::vector<int>& sizes, int length) {
  Lines send = {"Send:  >> Begin CQorlixSRVPipe::Send(" + shape + ")"};
  for (const int size : sizes) send.push_back("AddString:  AddSizeInBytes=" + std::to_string(size));
  send.push_back("Send:  << CQorlixSRVPipe::Send DataLength=" + std::to_string(length) +
                 " writeResult=0x1");
  return send;
}

// The three that read, each with a reply shape for success and one for failure. The key has the
// value "Name" with the text "abc", and the subkey "Sub".
void AddReadingRows(std::vector<TraceRow>& rows) {
  // Kept: the closing line names the sibling that writes, and what the registry says is not traced.
  const std::string get = "Reg_GetValue:  ";
  const Lines getEnds = {get + "<< Reg_SetValue result = 0x0"};
  const auto getRow = [&](const std::string& what, const Bytes& fields, const Lines& send) {
    rows.push_back({"GetValue" + what, Wire("1600") + fields,
                    Request("0x16", Lines{get + ">> Start"} + send + getEnds)});
  };
  getRow("Served", kKeyField + Text("Name"), Send("long, TCHAR, long", {3}, 17));
  getRow("OfAMissingName", kKeyField + Text("None"), Send("long, long", {}, 10));
  getRow("OfAnAbsentKey", kAbsent + Text("Name"), Send("long, long", {}, 10));
  getRow("OfAnAbsentName", kKeyField + kAbsent, Send("long, long", {}, 10));
  Bytes before;
  for (const std::string error : {"Key", "Parameter"}) {
    const std::string text = get + "<< result = 0x219a " + error;
    rows.push_back({"GetValueCutAt" + error, Wire("1600") + before + kCut,
                    Refused("0x16", Lines{get + ">> Start"} + CutField(text))});
    rows.push_back({"GetValueTooLongAt" + error, Wire("1600") + before + kTooLong,
                    Refused("0x16", Lines{get + ">> Start"} + TooLongField(text))});
    before = kKeyField;
  }

  // Kept: both close with the line of the keys, and the values name one field twice.
  struct Enumeration {
    std::string name, code, trace, primitive, indexError, good, bad;
    Bytes opCode;
    std::vector<int> sizes;
    int goodLength, badLength;
  };
  const Enumeration enumerations[] = {
      {"EnumKey",
       "0x15",
       "Reg_EnumKey:  ",
       "RegEnumKeyBL",
       "CopyToKey",
       "long, TCHAR, long",
       "long, long",
       Wire("1500"),
       {3},
       17,
       10},
      {"EnumValue",
       "0x17",
       "Reg_EnumValue:  ",
       "RegEnumValueBL",
       "CopyFromKeyKey",
       "long, TCHAR, long, TCHAR, long",
       "long, long, long",
       Wire("1700"),
       {4, 3},
       29,
       14},
  };
  for (const Enumeration& one : enumerations) {
    const Lines start = {one.trace + ">> Start"};
    const auto row = [&](const std::string& what, const Bytes& fields, const std::string& result,
                         const Lines& send) {
      rows.push_back(
          {one.name + what, one.opCode + fields,
           Request(one.code, start +
                                 Lines{one.trace + "<< " + one.primitive + " result = " + result} +
                                 send + Lines{one.trace + "<< Reg_EnumKey result = 0x0"})});
    };
    row("Served", kKeyField + Long(0), "0x0", Send(one.good, one.sizes, one.goodLength));
    row("PastTheLast", kKeyField + Long(1), "0x103", Send(one.bad, {}, one.badLength));
    row("AtANegativeIndex", kKeyField + Long(0xFFFFFFFF), "0x57", Send(one.bad, {}, one.badLength));
    row("OfAnAbsentKey", kAbsent + Long(0), "0x57", Send(one.bad, {}, one.badLength));

    const std::string keyError = one.trace + "<< result = 0x219a CopyFromKeyKey";
    rows.push_back(
        {one.name + "CutAtKey", one.opCode + kCut, Refused(one.code, start + CutField(keyError))});
    rows.push_back({one.name + "TooLongAtKey", one.opCode + kTooLong,
                    Refused(one.code, start + TooLongField(keyError))});
    rows.push_back(
        {one.name + "CutAtIndex", one.opCode + kKeyField + kCut,
         Refused(one.code, start + CutField(one.trace + "<< result = 0x219a " + one.indexError))});
  }
}

std::vector<TraceRow> AllRows() {
  std::vector<TraceRow> rows;
  for (const SimpleCommand& command : SimpleCommands()) AddRows(rows, command);
  AddReadingRows(rows);
  return rows;
}

class TraceRegistryLinesTest : public TraceTest {
 protected:
  void SetUp() override {
    scratch_.CreateKey(std::string(kKey) + "\\Sub");
    scratch_.SetValue(kKey, "Name", 1, Wire("'abc' 00"));
    TraceTest::SetUp();
  }
  RegistryScratch scratch_;
};

// One connection for all, so that a request shows what the one before left behind as well.
TEST_F(TraceRegistryLinesTest, EveryCommandIsTracedLineByLine) {
  for (const TraceRow& row : AllRows()) {
    EXPECT_TRUE(LinesAre(LinesOf(row.request), row.lines)) << row.what;
    // What the rows that write have changed.
    scratch_.DeleteTree(kKey);
    scratch_.CreateKey(std::string(kKey) + "\\Sub");
    scratch_.SetValue(kKey, "Name", 1, Wire("'abc' 00"));
  }
}

// --- Which line comes at which bit ---

/// Something of everything: served, unknown, cut, refused, a stop that is not one.
struct MixedRequest {
  Bytes request;
  std::size_t replySize;
};
const MixedRequest kMixedRequests[] = {{Wire("1000"), 6},
                                       {Wire("0400"), 6},
                                       {Wire("10"), 18},
                                       {Wire("0300") + kCut, 6},
                                       {Wire("0300") + kKeyField + kTooLong, 6},
                                       {Wire("0100") + Text(kForeign), 6},
                                       {Wire("1600") + kKeyField + Text("Name"), 17},
                                       {Wire("1500") + kKeyField + kCut, 6},
                                       {Wire("FD00 FD"), 18}};

const Lines kMixedErrors = {
    "ReadShort:  ReadShort exit with BUFFER_OVERFLOW",
    "RunSrvLoop:  Error occured : lResult=0x219a",
    "ReadLong:  ReadLong exit with BUFFER_OVERFLOW",
    "Reg_SetValue:  << result = 0x219a Key",
    "RunSrvLoop:  Error occured : lResult=0x219a",
    "ReadString:  ReadString exit with BUFFER_OVERFLOW",
    "Reg_SetValue:  << result = 0x219a Parameter",
    "RunSrvLoop:  Error occured : lResult=0x219a",
    "ReadLong:  ReadLong exit with BUFFER_OVERFLOW",
    "Reg_EnumKey:  << result = 0x219a CopyToKey",
    "RunSrvLoop:  Error occured : lResult=0x219a",
    "ReadLong:  ReadLong exit with BUFFER_OVERFLOW",
    "StopServer:  << ReadLong(ValueLen) result = 0x219a ",
    "RunSrvLoop:  Error occured : lResult=0x219a",
};

class TraceBitsTest : public TraceRegistryLinesTest {
 protected:
  // The lines of the mixed requests at that mask, one request waiting for the other's answer.
  Lines LinesAt(const char* mask) {
    Configure(AllLinesWith({{"zqserver_level", mask}}));
    const Lines before = TextLines(trace_setup::ReadFile(trace_setup::FileName(1)));
    for (const MixedRequest& mixed : kMixedRequests) {
      EXPECT_TRUE(client_.Send(mixed.request));
      EXPECT_EQ(client_.Receive(mixed.replySize).size(), mixed.replySize);
    }
    LetItFinish();
    Lines all = TextLines(trace_setup::ReadFile(trace_setup::FileName(1)));
    all.erase(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(before.size()));
    return all;
  }

  // The same at a mask that has the steps of the loop, which tell when it waits.
  Lines StepsAt(const char* mask) {
    Configure(AllLinesWith({{"zqserver_level", mask}}));
    (void)NewLines();
    Lines all;
    for (const MixedRequest& mixed : kMixedRequests) all = all + LinesOf(mixed.request);
    return all;
  }
};

TEST_F(TraceBitsTest, FailuresAreLinesOfBit16) {
  EXPECT_TRUE(LinesAre(LinesAt("16"), kMixedErrors));
}

TEST_F(TraceBitsTest, NothingOfTheseIsALineOfBit128OrBit8) {
  EXPECT_TRUE(LinesAre(LinesAt("128"), {}));
  EXPECT_TRUE(LinesAre(LinesAt("8"), {}));
  EXPECT_TRUE(LinesAre(LinesAt("0xFFFFFFAF"), {}));
}

TEST_F(TraceBitsTest, EverythingElseIsALineOfBit64) {
  const Lines steps = StepsAt("64");
  const Lines all = StepsAt("80");
  Lines rest;
  auto error = kMixedErrors.begin();
  for (const std::string& line : all) {
    if (error != kMixedErrors.end() && line == *error) {
      ++error;
    } else {
      rest.push_back(line);
    }
  }
  EXPECT_EQ(error, kMixedErrors.end());
  EXPECT_TRUE(LinesAre(steps, rest));
}

}  // namespace
}  // namespace e2e
