#include <windows.h>

#include <gmock/gmock.h>

#include <cstdio>
#include <memory>

#include "tests/e2e/BoardSetup.h"
#include "tests/e2e/BoardTable.h"
#include "tests/e2e/TraceTest.h"

// What the board and device commands trace: every line of a request, in order.

namespace e2e {
namespace {

using lines::Refused;
using lines::Request;
using lines::SendLong;

/// One field of a request, as the line of a failed read names it.
struct FieldLine {
  std::string text;                     ///< behind the function
  const char* reader = "ReadLong";      ///< who finds the field cut at its beginning
  const char* copier = "ReadString: ";  ///< and who behind its length
};

/// What a command traces between the loop's lines, by the name of its row in BoardRequests.
struct CommandLines {
  const char* row;
  const char* code;
  std::string function;  ///< with the blank that the layout puts behind it
  const char* start;
  const char* result;  ///< the line of the library's result, up to the number; empty: none
  const char* raised;
  std::vector<FieldLine> fields;
  Lines success;
  const char* failureShape;
  const char* tooLongShape = "";
};

std::vector<FieldLine> Named(const std::vector<const char*>& names) {
  std::vector<FieldLine> fields;
  for (const char* const name : names)
    fields.push_back({std::string("<< result = 0x219a ") + name});
  return fields;
}

std::vector<FieldLine> OfARegistration() {
  std::vector<FieldLine> fields = {
      {"<< ReadString(DeviceId) result = 0x219a "},
      {"<< ReadULong(GUID Part1) result = 0x219a "},
      {"<< ReadShort(GUID Part2) result = 0x219a ", "ReadShort"},
      {"<< ReadShort(GUID Part3) result = 0x219a ", "ReadShort"},
  };
  fields.insert(fields.end(), 8, {"<< ReadShort(GUID Part4) result = 0x219a ", "ReadByte"});
  return fields;
}

std::string Hexadecimal(std::size_t number) {
  char text[16];
  (void)std::snprintf(text, sizeof(text), "%x", static_cast<unsigned>(number));
  return text;
}

Lines Texts(const std::vector<std::size_t>& sizes) {
  Lines lines;
  for (const std::size_t size : sizes) {
    lines.push_back("AddString:  AddSizeInBytes=" + std::to_string(size));
  }
  return lines;
}

Lines Composed(const std::string& function, const std::vector<std::size_t>& sizes) {
  return Lines{function + ">> intern Send"} + Texts(sizes);
}

Lines SendOf(const std::string& shape, std::size_t length, const Lines& inside = {}) {
  if (shape == "long") return SendLong("0x{:x}", static_cast<int>(length));
  return Lines{"Send:  >> Begin CQorlixSRVPipe::Send(" + shape + ")"} + inside +
         Lines{"Send:  << CQorlixSRVPipe::Send DataLength=" + std::to_string(length) +
               " writeResult=0x1"};
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

const std::vector<CommandLines>& Commands() {
  static const std::vector<CommandLines> commands = {
      {"EnumBoard", "0xc1", "BC_EnumBoard:  ", ">> Start", "<< BRDX_EnumBoardExBL result = 0x",
       "BRDX_EnumBoardExBL", Named({"DeviceId", "iValue", "BoardLen", "BoardMapLen", "AdapterLen"}),
       Composed("BC_EnumBoard:  ", {6, 1, 6}), "long, long, long, long", "long, long, long, long"},
      // Kept: seven longs are announced as five.
      {"EnumInstBoard", "0xc0", "BC_EnumInstBoard:  ", ">> Start",
       "<< BRDX_EnumInstBoardBL result = 0x", "BRDX_EnumInstBoardBL",
       Named({"iValue", "BoardLen", "DeviceIdLen", "NetTypeLen", "HardwareIdLen",
              "HardwareInstanceIdLen", "BoardMapLen"}),
       Composed("BC_EnumInstBoard:  ", {6, 7, 4, 21, 5, 1}), "long, long, long, long, long",
       "long, long, long, long, long"},
      {"EnumAvailableBoard", "0xc2", "BC_EnumAvailableBoard:  ", ">> Start",
       "<< BRDX_EnumAvailableBoardsBL result = 0x", "BRDX_EnumAvailableBoardsBL",
       Named({"iValue", "BoardLen", "DeviceIdLen"}), Composed("BC_EnumAvailableBoard:  ", {5, 7}),
       "long, long, long", "long, long, long"},
      {"EnumAdapters", "0xc5", "BC_EnumAdapters:  ", ">> Start",
       "<< BRDX_EnumAdaptersBL result = 0x", "BRDX_EnumAdaptersBL",
       Named({"iValue", "pcbAdapterNameLen", "BoardMapLen"}),
       Composed("BC_EnumAdapters:  ", {6, 1}), "long, long, long", "long"},
      {"EnumConfiguration", "0xc4", "BC_EnumConfiguration:  ", ">> Start",
       "<< BRDX_EnumConfigurationBL result = 0x", "BRDX_EnumConfigurationBL",
       Named({"iValue", "BoardName", "BoardMap", "DeviceId", "HardwareInstanceId",
              "ConfigurationLen", "ProtocolTypeLen", "L4ProtocolLen", "UnitLen"}),
       Composed("BC_EnumConfiguration:  ", {7, 3, 8, 3}), "long, long, long, long, long",
       "long, long, long, long, long"},
      {"BoardGetMap", "0xa3", "BC_BoardGetMap:  ", ">> Start",
       "<< BRDX_BoardGetMapBL BoardMapLen=0x{:x} result = 0x", "BRDX_BoardGetMapBL",
       Named({"DeviceID", "Adapter", "HardwareId", "BoardMapIdLen"}),
       SendOf("long, TCHAR, long", 15, Texts({1})), "long, long", "long, long"},
      {"GetBoardInfo", "0xc3", "BC_GetBoardInfo:  ", ">> Start",
       "<< BRDX_GetBoardInfoBL result = 0x", "BRDX_GetBoardInfoBL",
       Named({"InfoType", "BoardName", "BoardMap", "DeviceId", "HardwareInstanceId", "ValueLen"}),
       SendOf("long, TCHAR, long", 17, Texts({3})), "long, long", "long, long"},
      // Kept: its exception goes under the name of its sibling.
      {"GetBoardInfoEx", "0xcf", "BC_GetBoardInfoEx:  ", ">> Start",
       "<< BRDX_GetBoardInfoExBL result = 0x", "BRDX_GetBoardInfoBL",
       Named({"InfoType", "BoardName", "BoardMap", "HardwareInstanceId", "BufferLen"}),
       Lines{"SendBuffer:  >> Begin CQorlixSRVPipe::SendBuffer", "AddBuffer:  BufferLength=4",
             "SendBuffer:  << CQorlixSRVPipe::SendBuffer DataLength=14 writeResult=0x1"},
       "long, long", "long, long"},
      {"Scan",
       "0xc7",
       "BC_Scan:  ",
       ">> Start",
       "<< BRDX_ScanBL result = 0x",
       "BRDX_ScanBL",
       {},
       SendLong("0x0"),
       "long"},
      {"CreateAllLogdevices",
       "0xc9",
       "BC_CreateAllLogdevices:  ",
       ">> Start",
       "<< BRDX_CreateAllLogdevicesBL result = 0x",
       "BRDX_CreateAllLogdevicesBL",
       {},
       SendLong("0x0"),
       "long"},
      {"UpdateLogDevicesForDevice", "0xc8", "BC_UpdateLogDevicesForDevice:  ", ">> Start",
       // Kept: its result goes under the name of another operation.
       "<< BRDX_SetParameterData result = 0x", "BRDX_UpdateLogdevicesForDeviceBL",
       Named({"DeviceId", "HardwareId"}), SendLong("0x0"), "long"},
      {"Register", "0x100", "RegisterForDeviceChangeNotifications:  ", ">> Start",
       "<< BRDX_RegisterForDeviceChangeNotifications result = 0x",
       "BRDX_RegisterForDeviceChangeNotifications", OfARegistration(), SendLong("0x0"), "long"},
      // Kept: neither its result nor its exception names the operation.
      {"GetDeviceChange",
       "0x102",
       "GetDeviceChange:  ",
       ">> Start",
       "<< Funktionsname und R\xFC"
       "ckgabeparameter result = 0x",
       "Funktionsname",
       {{"<< ReadString(DeviceId) result = 0x219a "}},
       Lines{"GetDeviceChange:  AddString =\\\\?\\pci#3",
             "AddString:  >> Begin CQorlixSRVPipe::AddString(9, Spezial)",
             "AddString:  << CQorlixSRVPipe::AddString(Spezial)",
             "GetDeviceChange:  << intern Send (len=40)"},
       "long",
       "long, long, long"},
      {"Unregister", "0x101", "UnregisterForDeviceChangeNotifications:  ", ">> Start",
       "<< BRDX_UnregisterForDeviceChangeNotifications result = 0x",
       "BRDX_UnregisterForDeviceChangeNotifications", OfARegistration(), SendLong("0x0"), "long"},
      {"BoardInformation", "0xbf", "GetBoardInformation:  ", " >> Start",
       "<< BRDX_GetBoardInformation result = 0x", "BRDX_GetDeviceDetail",
       std::vector<FieldLine>(8, {"<< ReadBuffer result = 0x219a", "ReadLong", "ReadBuffer: "}),
       Lines{"AddBuffer:  BufferLength=4", "AddBuffer:  BufferLength=4",
             "AddBuffer:  BufferLength=2"},
       "long"},
  };
  return commands;
}

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
  for (const CommandLines& command : Commands()) {
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
  for (const CommandLines& command : Commands()) {
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

// The result that the configuration manager has for the instance.
std::string ResultOfState(DWORD instance) {
  using Query = DWORD(WINAPI*)(DWORD*, DWORD*, DWORD, DWORD);
  const HMODULE library = LoadLibraryA("cfgmgr32.dll");
  const auto query = reinterpret_cast<Query>(
      reinterpret_cast<void*>(GetProcAddress(library, "CM_Get_DevNode_Status")));
  DWORD status = 0;
  DWORD problem = 0;
  const DWORD result = query(&status, &problem, instance, 0);
  (void)FreeLibrary(library);
  return "ret=0x" + Hexadecimal(result) + " dwStatus=0x" + Hexadecimal(status) +
         " dwProblem=" + Hexadecimal(problem);
}

TEST_F(BoardTraceTest, AStateIsTracedWithWhatTheConfigurationManagerSaid) {
  const std::string function = "GetDeviceStateEx:  ";
  for (const std::string name : {"DeviceStateEx", "DeviceStateExWithoutOption"}) {
    SCOPED_TRACE(name);
    const Bytes request = BoardRequest(name).request.Request();
    const auto lines = [&](DWORD instance) {
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

// What was built of a reply is told by the writer, which fails.
TEST_F(BoardTraceTest, AnAreaThatDoesNotFitIsTracedAsAnOverflow) {
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
