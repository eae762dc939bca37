#include <string>
#include <vector>

#include "board/testing/BoardFixture.h"
#include "tests/fakes/trace/FakeTrace.h"
#include "trace/Zqotrc.h"

// What the board-control commands trace under their own names, the names of siblings included.

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct TraceCase {
  const char* name;
  const char* result;  ///< with the library's result 31
  const char* exception;
  std::vector<const char*> fields;  ///< how each is named when it cannot be read
};

const TraceCase kCases[] = {
    {"EnumBoard",
     "<< BRDX_EnumBoardExBL result = 0x1f",
     "Exception: BRDX_EnumBoardExBL",
     {"DeviceId", "iValue", "BoardLen", "BoardMapLen", "AdapterLen"}},
    {"EnumInstBoard",
     "<< BRDX_EnumInstBoardBL result = 0x1f",
     "Exception: BRDX_EnumInstBoardBL",
     {"iValue", "BoardLen", "DeviceIdLen", "NetTypeLen", "HardwareIdLen", "HardwareInstanceIdLen",
      "BoardMapLen"}},
    {"EnumAvailableBoard",
     "<< BRDX_EnumAvailableBoardsBL result = 0x1f",
     "Exception: BRDX_EnumAvailableBoardsBL",
     {"iValue", "BoardLen", "DeviceIdLen"}},
    {"EnumAdapters",
     "<< BRDX_EnumAdaptersBL result = 0x1f",
     "Exception: BRDX_EnumAdaptersBL",
     {"iValue", "pcbAdapterNameLen", "BoardMapLen"}},
    {"EnumConfiguration",
     "<< BRDX_EnumConfigurationBL result = 0x1f",
     "Exception: BRDX_EnumConfigurationBL",
     {"iValue", "BoardName", "BoardMap", "DeviceId", "HardwareInstanceId", "ConfigurationLen",
      "ProtocolTypeLen", "L4ProtocolLen", "UnitLen"}},
    {"BoardGetMap",
     "<< BRDX_BoardGetMapBL BoardMapLen=0x7 result = 0x1f",
     "Exception: BRDX_BoardGetMapBL",
     {"DeviceID", "Adapter", "HardwareId", "BoardMapIdLen"}},
    {"GetBoardInfo",
     "<< BRDX_GetBoardInfoBL result = 0x1f",
     "Exception: BRDX_GetBoardInfoBL",
     {"InfoType", "BoardName", "BoardMap", "DeviceId", "HardwareInstanceId", "ValueLen"}},
    // Kept: the exception goes under the sibling's name.
    {"GetBoardInfoEx",
     "<< BRDX_GetBoardInfoExBL result = 0x1f",
     "Exception: BRDX_GetBoardInfoBL",
     {"InfoType", "BoardName", "BoardMap", "HardwareInstanceId", "BufferLen"}},
    {"Scan", "<< BRDX_ScanBL result = 0x1f", "Exception: BRDX_ScanBL", {}},
    {"CreateAllLogdevices",
     "<< BRDX_CreateAllLogdevicesBL result = 0x1f",
     "Exception: BRDX_CreateAllLogdevicesBL",
     {}},
    {"HasUninitializedInstances",
     "<< BRDX_HasUninitializedInstancesBL result = 0x1f",
     "Exception: BRDX_HasUninitializedInstancesBL",
     {}},
    // Kept: the result goes under another operation's name.
    {"UpdateLogDevicesForDevice",
     "<< BRDX_SetParameterData result = 0x1f",
     "Exception: BRDX_UpdateLogdevicesForDeviceBL",
     {"DeviceId", "HardwareId"}},
};

class BoardTraceTest : public BoardFixture, public testing::WithParamInterface<TraceCase> {
 protected:
  const BoardTestCommand& Command() const { return BoardCommandNamed(GetParam().name); }

  // The command's own lines at these bits, codec left out.
  std::vector<std::string> Trace(std::uint32_t mask, const Bytes& request) {
    FakeTrace::Collect(mask);
    (void)Handle(Command(), request);
    std::vector<std::string> lines;
    const std::string function = std::string("BC_") + GetParam().name + ": ";
    for (const FakeTrace::Line& line : FakeTrace::Lines()) {
      EXPECT_EQ(line.component, "SRV");
      // The column holds 32 characters.
      if (line.function.rfind("BC_", 0) != 0) continue;
      EXPECT_EQ(line.function, function.substr(0, line.function.size()));
      lines.push_back(line.text);
    }
    return lines;
  }
};

INSTANTIATE_TEST_SUITE_P(Commands, BoardTraceTest, testing::ValuesIn(kCases),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_P(BoardTraceTest, StartAndResultStandAtTheirOwnBits) {
  answers_ = {{"", 7}};
  result_ = 31;
  const Bytes request = Request(Command());
  EXPECT_THAT(Trace(TRC_PROGRESS, request), ElementsAre(">> Start"));
  EXPECT_THAT(Trace(TRC_RESULT, request), ElementsAre(GetParam().result));
  EXPECT_THAT(Trace(TRC_ERROR, request), IsEmpty());
  EXPECT_THAT(Trace(TRC_PROGRESS | TRC_RESULT | TRC_ERROR, request),
              ElementsAre(">> Start", GetParam().result));
}

TEST_P(BoardTraceTest, AComposedReplyIsAnnounced) {
  const std::string name = GetParam().name;
  const bool isComposed = name.rfind("Enum", 0) == 0;
  answers_.assign(6, {"", 0});
  const std::vector<std::string> lines = Trace(TRC_PROGRESS, Request(Command()));
  if (isComposed) {
    EXPECT_THAT(lines, ElementsAre(">> Start", ">> intern Send"));
  } else {
    EXPECT_THAT(lines, ElementsAre(">> Start"));
  }
}

TEST_P(BoardTraceTest, AnExceptionIsTracedInPlaceOfAResult) {
  raises_ = true;
  EXPECT_THAT(Trace(TRC_ERROR | TRC_RESULT, Request(Command())), ElementsAre(GetParam().exception));
  EXPECT_THAT(Trace(TRC_RESULT, Request(Command())), IsEmpty());
}

TEST_P(BoardTraceTest, AFieldThatCannotBeReadIsNamed) {
  // Texts of the requests have one byte, so a field has four or five; it is cut behind its first.
  const Bytes whole = Request(Command());
  const std::size_t textsEnd = Command().textsAt + 5 * Command().texts;
  std::size_t at = 2;
  for (std::size_t i = 0; i < GetParam().fields.size(); ++i) {
    const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(at + 1));
    EXPECT_THAT(Trace(TRC_ERROR, cut),
                ElementsAre(std::string("<< result = 0x219a ") + GetParam().fields[i]));
    at += at >= Command().textsAt && at < textsEnd ? 5 : 4;
  }
  EXPECT_EQ(at, whole.size());
}

}  // namespace
