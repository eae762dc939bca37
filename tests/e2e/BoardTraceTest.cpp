#include <gmock/gmock.h>

#include <cstdio>
#include <memory>

#include "tests/e2e/BoardSetup.h"
#include "tests/e2e/BoardTable.h"
#include "tests/e2e/BoardTraceTable.h"
#include "tests/e2e/TraceTest.h"

// What the board and device commands trace: every line of a request, in order.

namespace e2e {
namespace {

using lines::Refused;
using lines::Request;
using lines::SendLong;

std::string Hexadecimal(std::size_t number) {
  char text[16];
  (void)std::snprintf(text, sizeof(text), "%x", static_cast<unsigned>(number));
  return text;
}

// The two lines that every byte of a GUID has, for the eight of a request of that size.
Lines ReadBytes(std::size_t from, std::size_t to, std::size_t received) {
  Lines lines;
  for (std::size_t at = from; at < to; ++at) {
    lines.push_back("ReadByte:  Pipe[conId].CurrentPointer 0x" + Hexadecimal(at));
    lines.push_back("ReadByte:  Pipe[conId].ReceivePointer 0x" + Hexadecimal(received));
  }
  return lines;
}

constexpr std::size_t kGuidBytesFrom = 2 + 11 + 4 + 2 + 2;
constexpr std::size_t kGuidBytesTo = kGuidBytesFrom + 8;

bool IsRegistration(const CommandLines& command) { return command.fields.size() == 12; }

// Behind the start: what the reading of a whole request traces.
Lines Start(const CommandLines& command) {
  const Lines start = {command.function + command.start};
  return IsRegistration(command) ? start + ReadBytes(kGuidBytesFrom, kGuidBytesTo, kGuidBytesTo)
                                 : start;
}

std::string Result(const CommandLines& command, const std::string& number) {
  return command.function + command.result + number;
}

std::size_t Size(const char* bytes) { return Wire(bytes).size(); }

// First call: as it is. Second: an error. Third: too long. Fourth: an exception.
std::string Faults(const BoardRow& row) {
  const std::string begin = "[fault " + std::string(row.operation) + "]\n";
  return begin + "call = 2\nresult = 31\n" +
         (row.lengths != 0 ? begin + "call = 3\nlength = 9000\n" : std::string()) + begin +
         "call = 4\nraise = cxx\n";
}

// A server whose library does another thing at each of its first calls.
class BoardTraceTest : public TraceTest {
 protected:
  static void SetUpTestSuite() {
    machine_ = std::make_unique<Machine>();
    std::string inventory = kBoardMachine;
    // Another change to be told of, for the request that finds it too long.
    inventory +=
        "[change]\ndevice-id = HWX7101\nkind = 1\n"
        "guid = {cac88484-7515-4c03-82e6-71a87abac361}\ntext = second\n";
    for (const BoardRow& row : BoardRequests()) inventory += Faults(row);
    inventory += "[fault BRDX_EnumBoardExBL]\ncall = 5\nlength = 0\nfill = unterminated\n";
    machine_->files.Write(inventory);
    TraceTest::SetUpTestSuite();
  }
  static void TearDownTestSuite() {
    TraceTest::TearDownTestSuite();
    machine_.reset();
  }

 private:
  struct Machine {
    BoardFiles files;
    RegistryKeyScratch logNames{"SOFTWARE\\Vesmark\\NORVA\\LogNames"};
    RegistryKeyScratch logDevices{"SOFTWARE\\Vesmark\\NORVA\\LogDevices"};
    RegistryKeyScratch gate{"SOFTWARE\\Vesmark\\Shared Tools\\MIREL"};
  };
  static std::unique_ptr<Machine> machine_;
};

std::unique_ptr<BoardTraceTest::Machine> BoardTraceTest::machine_;

// Registrations hold from their first to their last row only, so each is asked four times in turn.
TEST_F(BoardTraceTest, EveryCommandIsTracedLineByLineWhateverTheLibraryDoes) {
  for (const CommandLines& command : BoardCommandLines()) {
    SCOPED_TRACE(command.row);
    const BoardRow& row = BoardRequest(command.row);
    const Bytes request = row.request.Request();
    const Lines start = Start(command);
    EXPECT_TRUE(
        LinesAre(LinesOf(request),
                 Request(command.code, start + Lines{Result(command, "0")} + command.success)));
    EXPECT_TRUE(
        LinesAre(LinesOf(request),
                 Request(command.code, start + Lines{Result(command, "1f")} +
                                           SendOf(command.failureShape, 6 + Size(row.failure)))));
    if (row.lengths != 0) {
      const std::size_t length = 6 + 4 * row.tooLong.size() + Size(row.tooLongTail);
      EXPECT_TRUE(LinesAre(LinesOf(request),
                           Request(command.code, start + Lines{Result(command, "0")} +
                                                     SendOf(command.tooLongShape, length))));
    } else {
      (void)LinesOf(request);
    }
    EXPECT_TRUE(LinesAre(
        LinesOf(request),
        Request(command.code, start + Lines{command.function + "Exception: " + command.raised} +
                                  SendLong("0x219c"))));
  }
}

TEST_F(BoardTraceTest, AFieldThatCannotBeReadIsTracedWithItsName) {
  for (const CommandLines& command : BoardCommandLines()) {
    const RequestRow& row = BoardRequest(command.row).request;
    ASSERT_EQ(command.fields.size(), row.fields.size()) << command.row;
    Bytes before = Wire(row.code);
    for (std::size_t i = 0; i < row.fields.size(); ++i) {
      SCOPED_TRACE(std::string(command.row) + " " + std::to_string(i));
      const std::string reader = command.fields[i].reader;
      const Bytes cut = before + (reader == "ReadByte" ? Bytes() : Bytes(1, '\1'));
      Lines steps = {command.function + command.start};
      // Of the byte that is missing, too.
      if (reader == "ReadByte") {
        steps = steps + ReadBytes(kGuidBytesFrom, cut.size() + 1, cut.size());
      }
      EXPECT_TRUE(
          LinesAre(LinesOf(cut),
                   Refused(command.code,
                           steps + Lines{reader + ":  " + reader + " exit with BUFFER_OVERFLOW",
                                         command.function + command.fields[i].text})));
      const Bytes field = Wire(row.fields[i]);
      const bool hasLength = field.size() > 4;
      if (hasLength) {
        const Bytes tooLong = before + field.substr(0, field.size() - 1);
        EXPECT_TRUE(LinesAre(
            LinesOf(tooLong),
            Refused(command.code, Lines{command.function + command.start,
                                        command.fields[i].copier +
                                            std::string(" ReadString exit with BUFFER_OVERFLOW"),
                                        command.function + command.fields[i].text})));
      }
      before += field;
    }
  }
}

// --- The ones with lines of their own ---

std::string ResultOfState(std::uint32_t instance) {
  const DevNode node(instance);
  return "ret=0x" + Hexadecimal(node.result) + " dwStatus=0x" + Hexadecimal(node.status) +
         " dwProblem=" + Hexadecimal(node.problem);
}

TEST_F(BoardTraceTest, AStateIsTracedWithWhatTheConfigurationManagerSaid) {
  const std::string function = "GetDeviceStateEx:  ";
  for (const std::string name : {"DeviceStateEx", "DeviceStateExWithoutOption"}) {
    SCOPED_TRACE(name);
    const Bytes request = BoardRequest(name).request.Request();
    const auto lines = [&](std::uint32_t instance) {
      return Request(
          "0x122", Lines{function + " >> Start", "GetWDMStatusHlp:  --> CM_Get_DevNode_Status()",
                         "GetWDMStatusHlp:  <-- CM_Get_DevNode_Status: " + ResultOfState(instance),
                         function + ">> intern Send", function + "<< intern Send",
                         function + "<< GetDeviceState result = 0x0"});
    };
    EXPECT_TRUE(LinesAre(LinesOf(request), lines(0xFEDCBA98)));
    // The look-up fails, and that is not looked at.
    EXPECT_TRUE(LinesAre(LinesOf(request), lines(0)));
    (void)LinesOf(request);
    EXPECT_TRUE(LinesAre(
        LinesOf(request),
        Request("0x122", Lines{function + " >> Start", function + "Exception: GetDeviceState"} +
                             SendLong("0x219c") +
                             Lines{function + "<< GetDeviceState result = 0x0"})));
  }
  EXPECT_TRUE(LinesAre(
      LinesOf(Wire("2201 0100")),
      Refused("0x122", {function + " >> Start", "ReadLong:  ReadLong exit with BUFFER_OVERFLOW",
                        function + "<< ReadString(HardwareId) result = 0x219a "})));
  EXPECT_TRUE(LinesAre(
      LinesOf(Wire("2201 01000000 'A' 00")),
      Refused("0x122", {function + " >> Start", "ReadLong:  ReadLong exit with BUFFER_OVERFLOW",
                        function + "<< ReadBuffer(DevCpmpOpt) result = 0x219a "})));
}

TEST_F(BoardTraceTest, UninitializedInstancesAreTracedAsAResult) {
  EXPECT_TRUE(LinesAre(
      LinesOf(Wire("5800")),
      Request("0x58",
              Lines{"BC_HasUninitializedInstances:  >> Start",
                    "BC_HasUninitializedInstances:  << BRDX_HasUninitializedInstancesBL result = "
                    "0x7"} +
                  SendLong("0x7"))));
}

// A suite of its own, because calls are counted by operation.
class BoardTraceOverflowTest : public BoardTraceTest {};

// What was built of a reply is told by the writer, which fails.
TEST_F(BoardTraceOverflowTest, AnAreaThatDoesNotFitIsTracedAsAnOverflow) {
  const Bytes four = Wire("04000000");
  const Bytes begin =
      Wire("BF00 00000000") + four + Long(7) + four + Long(8) + four + Long(9) + Wire("00000000");
  const Bytes end = Wire("04000000 02000000") + four + Long(10);
  EXPECT_TRUE(LinesAre(
      LinesOf(begin + four + Long(8192) + end),
      Request("0xbf", Lines{"GetBoardInformation:   >> Start",
                            "GetBoardInformation:  << BRDX_GetBoardInformation result = 0x0",
                            "AddBuffer:  BufferLength=8192",
                            "AddBuffer:  >> BUFFER_OVERFLOW in AddBuffer , Size = 8202",
                            "RunSrvLoop:  Error occured : lResult=0x219a"} +
                          SendLong("0x219a", 16))));
  // An area that could never fit is refused before anything is called.
  EXPECT_TRUE(LinesAre(LinesOf(begin + four + Long(8193) + end),
                       Refused("0xbf", {"GetBoardInformation:   >> Start"})));
}

TEST_F(BoardTraceOverflowTest, ATextThatDoesNotFitIsTracedAsAnOverflow) {
  const Bytes request = BoardRequest("EnumBoard").request.Request();
  for (int call = 1; call <= 4; ++call) (void)LinesOf(request);
  EXPECT_TRUE(LinesAre(
      LinesOf(request),
      Request("0xc1",
              Lines{"BC_EnumBoard:  >> Start", "BC_EnumBoard:  << BRDX_EnumBoardExBL result = 0x0",
                    "BC_EnumBoard:  >> intern Send", "AddString:  AddSizeInBytes=8192",
                    "AddString:  >> BUFFER_OVERFLOW in AddString , Size = 8202",
                    "RunSrvLoop:  Error occured : lResult=0x219a"} +
                  SendLong("0x219a", 16))));
}

// --- Which line comes at which bit ---

class BoardTraceBitsTest : public BoardTraceTest {
 protected:
  // The lines of these requests at that mask; the line that noticed the mask is not one of them.
  Lines LinesAt(const char* mask) {
    Configure(AllLinesWith({{"zqserver_level", mask}}));
    const Bytes before = trace_setup::ReadFile(trace_setup::FileName(1));
    for (const Bytes& request : Requests()) {
      EXPECT_TRUE(client_.Send(request));
      EXPECT_TRUE(client_.HasWaiting(6));
      ReadAway();
    }
    LetItFinish();
    return TextLines(trace_setup::ReadFile(trace_setup::FileName(1)).substr(before.size()));
  }

  static std::vector<Bytes> Requests() {
    std::vector<Bytes> requests;
    for (const char* const name : {"BoardGetMap", "EnumAdapters", "Register", "DeviceStateEx",
                                   "GetDeviceChange", "BoardInformation"}) {
      const Bytes request = BoardRequest(name).request.Request();
      requests.push_back(request);
      requests.push_back(request.substr(0, request.size() - 1));
    }
    requests.push_back(Wire("2401"));
    return requests;
  }
};

// One test, because the library counts its calls: the fourth of each operation raises.
TEST_F(BoardTraceBitsTest, ResultsAreLinesOfBit128AndFailuresOfBit16) {
  const Lines results = {
      "BC_BoardGetMap:  << BRDX_BoardGetMapBL BoardMapLen=0x1 result = 0x0",
      "BC_EnumAdapters:  << BRDX_EnumAdaptersBL result = 0x0",
      "RegisterForDeviceChangeNotifications:  << BRDX_RegisterForDeviceChangeNotifications result "
      "= 0x0",
      "GetWDMStatusHlp:  <-- CM_Get_DevNode_Status: " + ResultOfState(0xFEDCBA98),
      "GetDeviceChange:  << Funktionsname und R\xFC"
      "ckgabeparameter result = 0x0",
      "GetBoardInformation:  << BRDX_GetBoardInformation result = 0x0",
      "BC_PlausibilitaetBL:  BRDX_Scan result = 0x0",
      "BC_PlausibilitaetBL:  BRDX_RemoveAbandonLogDevices result = 0x0"};
  EXPECT_TRUE(LinesAre(LinesAt("128"), results));

  // The second and third calls are errors and answers that are too long: no lines of this bit.
  const Lines cut = {"ReadLong:  ReadLong exit with BUFFER_OVERFLOW",
                     "BC_BoardGetMap:  << result = 0x219a BoardMapIdLen",
                     "RunSrvLoop:  Error occured : lResult=0x219a",
                     "ReadLong:  ReadLong exit with BUFFER_OVERFLOW",
                     "BC_EnumAdapters:  << result = 0x219a BoardMapLen",
                     "RunSrvLoop:  Error occured : lResult=0x219a",
                     "ReadByte:  ReadByte exit with BUFFER_OVERFLOW",
                     "RegisterForDeviceChangeNotifications:  << ReadShort(GUID Part4) result = "
                     "0x219a ",
                     "RunSrvLoop:  Error occured : lResult=0x219a",
                     "ReadLong:  ReadLong exit with BUFFER_OVERFLOW",
                     "GetDeviceStateEx:  << ReadBuffer(DevCpmpOpt) result = 0x219a ",
                     "RunSrvLoop:  Error occured : lResult=0x219a",
                     "ReadString:  ReadString exit with BUFFER_OVERFLOW",
                     "GetDeviceChange:  << ReadString(DeviceId) result = 0x219a ",
                     "RunSrvLoop:  Error occured : lResult=0x219a",
                     "ReadBuffer:  ReadString exit with BUFFER_OVERFLOW",
                     "GetBoardInformation:  << ReadBuffer result = 0x219a",
                     "RunSrvLoop:  Error occured : lResult=0x219a"};
  EXPECT_TRUE(LinesAre(LinesAt("16"), cut));
  EXPECT_TRUE(LinesAre(LinesAt("0xFFFFFF2F"), {}));

  Lines raised;
  const char* const exceptions[] = {
      "BC_BoardGetMap:  Exception: BRDX_BoardGetMapBL",
      "BC_EnumAdapters:  Exception: BRDX_EnumAdaptersBL",
      "RegisterForDeviceChangeNotifications:  Exception: BRDX_RegisterForDeviceChangeNotifications",
      "GetDeviceStateEx:  Exception: GetDeviceState",
      "GetDeviceChange:  Exception: Funktionsname",
      "GetBoardInformation:  Exception: BRDX_GetDeviceDetail"};
  for (std::size_t i = 0; i < std::size(exceptions); ++i) {
    raised.emplace_back(exceptions[i]);
    raised.insert(raised.end(), cut.begin() + static_cast<std::ptrdiff_t>(3 * i),
                  cut.begin() + static_cast<std::ptrdiff_t>(3 * i + 3));
  }
  raised.emplace_back("BC_PlausibilitaetBL:  Exception: BC_PlausibilitaetBL");
  EXPECT_TRUE(LinesAre(LinesAt("16"), raised));
}

}  // namespace
}  // namespace e2e
