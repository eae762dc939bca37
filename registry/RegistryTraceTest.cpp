#include <stdexcept>
#include <string>
#include <vector>

#include "tests/fakes/FakeRegistry.h"
#include "tests/fakes/trace/FakeTrace.h"
#include "tests/support/PoolFixture.h"
#include "tests/support/RegistrySetup.h"
#include "trace/Zqotrc.h"

// What the registry commands trace under their own names, the names of siblings included.

namespace {

using testing::ElementsAre;

const std::string kTree = "SOFTWARE\\Vesmark\\NORVA\\TraceTest";
const Bytes kPath = TextField(kTree);
const Bytes kName = TextField("v");
const Bytes kRoot = Wire("02000080");
const Bytes kIndex = Wire("00000000");

class RegistryTraceTest : public PoolFixture {
 protected:
  using Handler = SrvResult (CQorlixSRVPipe::*)(int);

  RegistryTraceTest() { registry_setup::DeleteTree(kTree); }
  ~RegistryTraceTest() override {
    fake_registry::OnCall({});
    FakeTrace::Reset();
  }

  // The handler's own lines, codec left out.
  std::vector<std::string> Trace(Handler handler, const Bytes& fields,
                                 std::uint32_t mask = TRC_ERROR | TRC_PROGRESS) {
    FakeTrace::Collect(mask);
    ReceiveCommand(Wire("0000") + fields);
    (void)(srv_.*handler)(kConId);
    std::vector<std::string> lines;
    for (const FakeTrace::Line& line : FakeTrace::Lines()) {
      EXPECT_EQ(line.component, "SRV");
      if (line.function.rfind("Reg", 0) == 0) lines.push_back(line.function + line.text);
    }
    return lines;
  }

  std::vector<std::string> TraceFault(Handler handler, const Bytes& fields) {
    fake_registry::OnCall([] { throw std::runtime_error("fault"); });
    std::vector<std::string> lines = Trace(handler, fields);
    fake_registry::OnCall({});
    return lines;
  }
};

TEST_F(RegistryTraceTest, CreateKey) {
  constexpr auto kHandler = &CQorlixSRVPipe::Reg_CreateKey;
  EXPECT_THAT(Trace(kHandler, kPath),
              ElementsAre("Reg_CreateKey:>> Start", "Reg_CreateKey:<< RegCreateKeyBL result = 0x0",
                          "Reg_CreateKey:<< Reg_CreateKey result = 0x0"));
  EXPECT_THAT(Trace(kHandler, {}, TRC_ERROR),
              ElementsAre("Reg_CreateKey:<< result = 0x219a lpszCreateKey="));
  EXPECT_THAT(TraceFault(kHandler, kPath),
              ElementsAre("Reg_CreateKey:>> Start", "Reg_CreateKey:Exception: RegCreateKeyEx",
                          "Reg_CreateKey:<< Reg_CreateKey result = 0x0"));
}

TEST_F(RegistryTraceTest, DelKey) {
  constexpr auto kHandler = &CQorlixSRVPipe::Reg_DelKey;
  EXPECT_THAT(Trace(kHandler, kPath),
              ElementsAre("Reg_DelKey:>> Start", "Reg_DelKey:<< RegDelKeyBL result = 0x2",
                          "Reg_DelKey:<< Reg_DelKey result = 0x0"));
  EXPECT_THAT(Trace(kHandler, {}, TRC_ERROR), ElementsAre("Reg_DelKey:<< result = 0x219a DelKey"));
  EXPECT_THAT(TraceFault(kHandler, kPath),
              ElementsAre("Reg_DelKey:>> Start", "Reg_DelKey:Exception: SHDeleteKey",
                          "Reg_DelKey:<< Reg_DelKey result = 0x0"));
}

TEST_F(RegistryTraceTest, SetValue) {
  constexpr auto kHandler = &CQorlixSRVPipe::Reg_SetValue;
  EXPECT_THAT(Trace(kHandler, kPath + kName + kName),
              ElementsAre("Reg_SetValue: >> Start", "Reg_SetValue: << RegSetValueBL result = 0x2",
                          "Reg_SetValue: << Reg_SetValue result = 0x0"));
  EXPECT_THAT(Trace(kHandler, {}, TRC_ERROR), ElementsAre("Reg_SetValue: << result = 0x219a Key"));
  EXPECT_THAT(Trace(kHandler, kPath, TRC_ERROR),
              ElementsAre("Reg_SetValue: << result = 0x219a Parameter"));
  EXPECT_THAT(Trace(kHandler, kPath + kName, TRC_ERROR),
              ElementsAre("Reg_SetValue: << result = 0x219a Value"));
  EXPECT_THAT(TraceFault(kHandler, kPath + kName + kName),
              ElementsAre("Reg_SetValue: >> Start", "Reg_SetValue: Exception: RegSetValueBL",
                          "Reg_SetValue: << Reg_SetValue result = 0x0"));
}

TEST_F(RegistryTraceTest, GetValueNamesItsSiblingsInTheExceptionAndAtTheEnd) {
  constexpr auto kHandler = &CQorlixSRVPipe::Reg_GetValue;
  EXPECT_THAT(Trace(kHandler, kPath + kName),
              ElementsAre("Reg_GetValue: >> Start", "Reg_GetValue: << Reg_SetValue result = 0x0"));
  EXPECT_THAT(Trace(kHandler, {}, TRC_ERROR), ElementsAre("Reg_GetValue: << result = 0x219a Key"));
  EXPECT_THAT(Trace(kHandler, kPath, TRC_ERROR),
              ElementsAre("Reg_GetValue: << result = 0x219a Parameter"));
  EXPECT_THAT(TraceFault(kHandler, kPath + kName),
              ElementsAre("Reg_GetValue: >> Start", "Reg_GetValue: Exception: RegDeleteValue",
                          "Reg_GetValue: << Reg_SetValue result = 0x0"));
}

TEST_F(RegistryTraceTest, DelValue) {
  constexpr auto kHandler = &CQorlixSRVPipe::Reg_DelValue;
  EXPECT_THAT(Trace(kHandler, kPath + kName),
              ElementsAre("Reg_DelValue:>> Start", "Reg_DelValue:<< RegDelValueBL result = 0x2",
                          "Reg_DelValue:<< Reg_DelValue result = 0x0"));
  EXPECT_THAT(Trace(kHandler, {}, TRC_ERROR), ElementsAre("Reg_DelValue:<< result = 0x219a Key"));
  EXPECT_THAT(Trace(kHandler, kPath, TRC_ERROR),
              ElementsAre("Reg_DelValue:<< result = 0x219a Value"));
  EXPECT_THAT(TraceFault(kHandler, kPath + kName),
              ElementsAre("Reg_DelValue:>> Start", "Reg_DelValue:Exception: RegDeleteValue",
                          "Reg_DelValue:<< Reg_DelValue result = 0x0"));
}

TEST_F(RegistryTraceTest, EnumKey) {
  constexpr auto kHandler = &CQorlixSRVPipe::Reg_EnumKey;
  EXPECT_THAT(Trace(kHandler, kPath + kIndex),
              ElementsAre("Reg_EnumKey: >> Start", "Reg_EnumKey: << RegEnumKeyBL result = 0x2",
                          "Reg_EnumKey: << Reg_EnumKey result = 0x0"));
  EXPECT_THAT(Trace(kHandler, {}, TRC_ERROR),
              ElementsAre("Reg_EnumKey: << result = 0x219a CopyFromKeyKey"));
  EXPECT_THAT(Trace(kHandler, kPath, TRC_ERROR),
              ElementsAre("Reg_EnumKey: << result = 0x219a CopyToKey"));
  EXPECT_THAT(TraceFault(kHandler, kPath + kIndex),
              ElementsAre("Reg_EnumKey: >> Start", "Reg_EnumKey: Exception: RegEnumKeyEx",
                          "Reg_EnumKey: << Reg_EnumKey result = 0x0"));
}

TEST_F(RegistryTraceTest, EnumValueClosesInTheNameOfEnumKey) {
  constexpr auto kHandler = &CQorlixSRVPipe::Reg_EnumValue;
  EXPECT_THAT(
      Trace(kHandler, kPath + kIndex),
      ElementsAre("Reg_EnumValue: >> Start", "Reg_EnumValue: << RegEnumValueBL result = 0x2",
                  "Reg_EnumValue: << Reg_EnumKey result = 0x0"));
  EXPECT_THAT(Trace(kHandler, {}, TRC_ERROR),
              ElementsAre("Reg_EnumValue: << result = 0x219a CopyFromKeyKey"));
  EXPECT_THAT(Trace(kHandler, kPath, TRC_ERROR),
              ElementsAre("Reg_EnumValue: << result = 0x219a CopyFromKeyKey"));
  EXPECT_THAT(TraceFault(kHandler, kPath + kIndex),
              ElementsAre("Reg_EnumValue: >> Start", "Reg_EnumValue: Exception: RegEnumKeyEx",
                          "Reg_EnumValue: << Reg_EnumKey result = 0x0"));
}

TEST_F(RegistryTraceTest, SetValueBase) {
  constexpr auto kHandler = &CQorlixSRVPipe::Reg_SetValueBase;
  EXPECT_THAT(
      Trace(kHandler, kRoot + kPath + kName + kName),
      ElementsAre("Reg_SetValueBase: >> Start", "Reg_SetValueBase: << RegSetValueBL result = 0x2",
                  "Reg_SetValueBase: << Reg_SetValue result = 0x0"));
  EXPECT_THAT(Trace(kHandler, {}, TRC_ERROR),
              ElementsAre("Reg_SetValueBase: << result = 0x219a  baseKey=0x0"));
  EXPECT_THAT(Trace(kHandler, kRoot, TRC_ERROR),
              ElementsAre("Reg_SetValueBase: << result = 0x219a Key"));
  EXPECT_THAT(Trace(kHandler, kRoot + kPath, TRC_ERROR),
              ElementsAre("Reg_SetValueBase: << result = 0x219a Parameter"));
  EXPECT_THAT(Trace(kHandler, kRoot + kPath + kName, TRC_ERROR),
              ElementsAre("Reg_SetValueBase: << result = 0x219a Value"));
  EXPECT_THAT(
      TraceFault(kHandler, kRoot + kPath + kName + kName),
      ElementsAre("Reg_SetValueBase: >> Start", "Reg_SetValueBase: Exception: RegSetValueBL",
                  "Reg_SetValueBase: << Reg_SetValue result = 0x0"));
}

TEST_F(RegistryTraceTest, CreateKeyBase) {
  constexpr auto kHandler = &CQorlixSRVPipe::Reg_CreateKeyBase;
  EXPECT_THAT(
      Trace(kHandler, kRoot + kPath),
      ElementsAre("Reg_CreateKeyBase:>> Start", "Reg_CreateKeyBase:<< RegCreateKeyBL result = 0x0",
                  "Reg_CreateKeyBase:<< Reg_CreateKey result = 0x0"));
  EXPECT_THAT(Trace(kHandler, {}, TRC_ERROR),
              ElementsAre("Reg_CreateKeyBase:<< result = 0x219a baseKey=0x0"));
  EXPECT_THAT(Trace(kHandler, kRoot, TRC_ERROR),
              ElementsAre("Reg_CreateKeyBase:<< result = 0x219a lpszCreateKey="));
  EXPECT_THAT(
      TraceFault(kHandler, kRoot + kPath),
      ElementsAre("Reg_CreateKeyBase:>> Start", "Reg_CreateKeyBase:Exception: RegCreateKeyEx",
                  "Reg_CreateKeyBase:<< Reg_CreateKey result = 0x0"));
}

TEST_F(RegistryTraceTest, DelKeyBaseTracesAsDelKey) {
  constexpr auto kHandler = &CQorlixSRVPipe::Reg_DelKeyBase;
  EXPECT_THAT(Trace(kHandler, kRoot + kPath),
              ElementsAre("Reg_DelKey:>> Start", "Reg_DelKey:<< RegDelKeyBL result = 0x2",
                          "Reg_DelKey:<< Reg_DelKey result = 0x0"));
  EXPECT_THAT(Trace(kHandler, {}, TRC_ERROR),
              ElementsAre("Reg_DelKey:<< result = 0x219a baseKey=0x0"));
  EXPECT_THAT(Trace(kHandler, kRoot, TRC_ERROR),
              ElementsAre("Reg_DelKey:<< result = 0x219a DelKey"));
  EXPECT_THAT(TraceFault(kHandler, kRoot + kPath),
              ElementsAre("Reg_DelKey:>> Start", "Reg_DelKey:Exception: SHDeleteKey",
                          "Reg_DelKey:<< Reg_DelKey result = 0x0"));
}

TEST_F(RegistryTraceTest, AWrongRootKeyTracesNoResultOfAPrimitive) {
  EXPECT_THAT(
      Trace(&CQorlixSRVPipe::Reg_CreateKeyBase, Wire("01000080") + kPath),
      ElementsAre("Reg_CreateKeyBase:>> Start", "Reg_CreateKeyBase:<< Reg_CreateKey result = 0x0"));
}

}  // namespace
