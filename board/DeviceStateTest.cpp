#include <cstring>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>

#include "board/DevNodeStatus.h"
#include "board/testing/BoardFixture.h"
#include "tests/fakes/FakeBoardLibrary.h"
#include "tests/fakes/FakeDynamicLibrary.h"
#include "tests/fakes/FakeNamedObject.h"
#include "tests/fakes/FakeSystemPath.h"
#include "tests/fakes/trace/FakeTrace.h"
#include "trace/Zqotrc.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const char kLibrary[] = "C:\\windows\\system32\\cfgmgr32.dll";
const char kExport[] = "CM_Get_DevNode_Status";

// What the configuration manager does; it has no context of its own.
std::function<std::uint32_t(std::uint32_t*, std::uint32_t*, std::uint32_t, std::uint32_t)>
    g_configurationManager;

std::uint32_t ENTRY_STDCALL GetStatus(std::uint32_t* status, std::uint32_t* problem,
                                      std::uint32_t instance, std::uint32_t flags) {
  return g_configurationManager(status, problem, instance, flags);
}

class DeviceStateTest : public BoardFixture {
 protected:
  DeviceStateTest() {
    fake_dynamic_library::Reset();
    fake_system_path::Reset();
    fake_dynamic_library::Add(kLibrary, {{kExport, fake_dynamic_library::Export(GetStatus)}});
    g_configurationManager = [this](std::uint32_t* status, std::uint32_t* problem,
                                    std::uint32_t instance, std::uint32_t flags) {
      instance_ = instance;
      flags_ = flags;
      *status = 0x0180200A;
      *problem = 22;
      return 0u;
    };
    fake_board_library::Library& lib = fake_board_library::Lib();
    lib.getDeviceInstance = [this](char* hardwareId, std::uint32_t* instance) {
      Note(hardwareId);
      *instance = 2;
      return result_;
    };
    lib.getDeviceInstanceOpt = [this](char* hardwareId, std::uint32_t option,
                                      std::uint32_t* instance) {
      Note(hardwareId);
      option_ = option;
      *instance = 3;
      return result_;
    };
  }
  ~DeviceStateTest() override { g_configurationManager = nullptr; }

  void Note(const char* hardwareId) {
    hardwareId_ = hardwareId == nullptr ? std::nullopt : std::optional<std::string>(hardwareId);
    if (hardwareId != nullptr) {
      const std::size_t size = std::strlen(hardwareId);
      wasClear_ = Bytes(hardwareId + size, hardwareId + 8192) == Bytes(8192 - size, 0);
    }
    if (raises_) throw std::runtime_error("fault");
  }

  Bytes Run(const Bytes& fields) {
    ReceiveCommand(Wire("2201") + fields);
    EXPECT_EQ(srv_.GetDeviceStateEx(kConId), SRV_OK);
    EXPECT_EQ(fake_dynamic_library::StillLoaded(), 0);
    return Reply();
  }

  const Bytes kRequest = TextField("PCI\\X") + Long(0);
  const Bytes kNothingKnown = Wire("0400 00000000 00000000 00000000");
  std::optional<std::string> hardwareId_;
  bool wasClear_ = false;
  std::optional<std::uint32_t> option_;
  std::uint32_t instance_ = 77;
  std::uint32_t flags_ = 77;
};

TEST_F(DeviceStateTest, StatusAndProblemOfTheDeviceAreAnswered) {
  EXPECT_EQ(Run(kRequest), Wire("0400 00000000 0A208001 16000000"));
  EXPECT_EQ(hardwareId_, "PCI\\X");
  EXPECT_EQ(instance_, 3u);
  EXPECT_EQ(flags_, 0u);
  EXPECT_THAT(fake_dynamic_library::Calls(),
              ElementsAre(std::string("load ") + kLibrary, std::string("find ") + kExport,
                          std::string("free ") + kLibrary));
}

TEST_F(DeviceStateTest, OnlyTheOptionOfAllOnesUsesTheLookUpWithoutOne) {
  for (const std::uint32_t option : {0u, 1u, 0x7FFFFFFFu, 0xFFFFFFFEu}) {
    fake_board_library::Calls().clear();
    (void)Run(TextField("x") + Long(option));
    EXPECT_THAT(fake_board_library::Calls(), ElementsAre("BRDX_GetDeviceInstanceBL/3"));
    EXPECT_EQ(option_, option);
    EXPECT_EQ(instance_, 3u);
  }
  fake_board_library::Calls().clear();
  (void)Run(TextField("x") + Long(0xFFFFFFFF));
  EXPECT_THAT(fake_board_library::Calls(), ElementsAre("BRDX_GetDeviceInstanceBL/2"));
  EXPECT_EQ(instance_, 2u);
}

TEST_F(DeviceStateTest, AnUnknownDeviceIsAskedForAllTheSame) {
  result_ = 0xE000020B;
  EXPECT_EQ(Run(kRequest), Wire("0400 00000000 0A208001 16000000"));
  EXPECT_EQ(instance_, 3u);
}

TEST_F(DeviceStateTest, ALibraryThatLeavesTheInstanceAloneLeavesItZero) {
  fake_board_library::Lib().getDeviceInstance = {};
  fake_board_library::Lib().getDeviceInstanceOpt = {};
  DirtyTheStack('\x5A');
  (void)Run(kRequest);
  EXPECT_EQ(instance_, 0u);
  (void)Run(TextField("x") + Long(0xFFFFFFFF));
  EXPECT_EQ(instance_, 0u);
}

TEST_F(DeviceStateTest, AFailedStatusIsSentAsItStands) {
  g_configurationManager = [](std::uint32_t* status, auto*, auto, auto) {
    *status = 5;
    return 13u;
  };
  EXPECT_EQ(Run(kRequest), Wire("0400 00000000 05000000 00000000"));
  g_configurationManager = [](auto*, auto*, auto, auto) { return 13u; };
  DirtyTheStack('\x5A');
  EXPECT_EQ(Run(kRequest), kNothingKnown);
}

TEST_F(DeviceStateTest, WithoutConfigurationManagerStatusAndProblemAreZero) {
  fake_dynamic_library::Add(kLibrary, {});
  EXPECT_EQ(Run(kRequest), kNothingKnown);
  fake_dynamic_library::Reset();
  EXPECT_EQ(Run(kRequest), kNothingKnown);
  fake_system_path::SetSystemDirectory("");
  EXPECT_EQ(Run(kRequest), kNothingKnown);
}

TEST_F(DeviceStateTest, ExceptionsInEitherCallAnswer8604) {
  raises_ = true;
  EXPECT_EQ(Run(kRequest), Wire("0400 9C210000"));
  EXPECT_EQ(Run(TextField("x") + Long(0xFFFFFFFF)), Wire("0400 9C210000"));
  EXPECT_THAT(fake_dynamic_library::Calls(), IsEmpty());
  raises_ = false;
  g_configurationManager = [](auto* status, auto*, auto, auto) -> std::uint32_t {
    *status = 5;
    throw std::runtime_error("fault");
  };
  EXPECT_EQ(Run(kRequest), Wire("0400 9C210000"));
  EXPECT_EQ(fake_dynamic_library::Calls().back(), std::string("free ") + kLibrary);
}

TEST_F(DeviceStateTest, AnExceptionWhileTheConfigurationManagerIsLoadedAnswers8604) {
  fake_dynamic_library::OnLoad([](const std::string&) { throw std::runtime_error("fault"); });
  EXPECT_EQ(Run(kRequest), Wire("0400 9C210000"));
}

TEST_F(DeviceStateTest, TheLockIsLeftAlone) {
  (void)Run(kRequest);
  EXPECT_THAT(fake_named_object::Calls(), IsEmpty());
}

TEST_F(DeviceStateTest, AnAbsentHardwareIdIsANullPointer) {
  hardwareId_ = "before";
  (void)Run(Wire("FFFF0000 00000000"));
  EXPECT_EQ(hardwareId_, std::nullopt);
}

TEST_F(DeviceStateTest, TheLongestHardwareIdReachesTheLibraryWhole) {
  const std::string text(8192 - 2 - 4 - 4, 'h');
  DirtyTheStack('\x5A');
  (void)Run(TextField(text) + Long(0));
  EXPECT_EQ(hardwareId_, text);
  EXPECT_TRUE(wasClear_);
}

TEST_F(DeviceStateTest, EveryTruncationIsRefused) {
  for (std::size_t size = 0; size < kRequest.size(); ++size) {
    ReceiveCommand(Wire("2201") +
                   Bytes(kRequest.begin(), kRequest.begin() + static_cast<std::ptrdiff_t>(size)));
    EXPECT_EQ(srv_.GetDeviceStateEx(kConId), BUFFER_OVERFLOW) << size;
    EXPECT_THAT(Reply(), IsEmpty());
  }
  EXPECT_THAT(fake_board_library::Calls(), IsEmpty());
}

TEST_F(DeviceStateTest, TheTraceFromStartToEnd) {
  const auto trace = [this](const Bytes& fields, std::uint32_t mask) {
    FakeTrace::Collect(mask);
    ReceiveCommand(Wire("2201") + fields);
    (void)srv_.GetDeviceStateEx(kConId);
    std::vector<std::string> lines;
    for (const std::string& line : FakeTrace::Texts()) {
      if (line.rfind("Get", 0) == 0) lines.push_back(line);
    }
    return lines;
  };
  EXPECT_THAT(
      trace(kRequest, TRC_PROGRESS | TRC_RESULT),
      ElementsAre("GetDeviceStateEx:  >> Start", "GetWDMStatusHlp: --> CM_Get_DevNode_Status()",
                  "GetWDMStatusHlp: <-- CM_Get_DevNode_Status: ret=0x0 dwStatus=0x180200a "
                  "dwProblem=16",
                  "GetDeviceStateEx: >> intern Send", "GetDeviceStateEx: << intern Send",
                  "GetDeviceStateEx: << GetDeviceState result = 0x0"));
  EXPECT_EQ(trace(kRequest, TRC_RESULT).size(), 1u);
  EXPECT_THAT(trace(kRequest, TRC_ERROR), IsEmpty());
  EXPECT_THAT(trace({}, TRC_ERROR),
              ElementsAre("GetDeviceStateEx: << ReadString(HardwareId) result = 0x219a "));
  EXPECT_THAT(trace(TextField("x"), TRC_ERROR),
              ElementsAre("GetDeviceStateEx: << ReadBuffer(DevCpmpOpt) result = 0x219a "));
  raises_ = true;
  EXPECT_THAT(
      trace(kRequest, TRC_PROGRESS | TRC_ERROR),
      ElementsAre("GetDeviceStateEx:  >> Start", "GetDeviceStateEx: Exception: GetDeviceState",
                  "GetDeviceStateEx: << GetDeviceState result = 0x0"));
}

// --- The internal operation ---

class DevNodeStatusTest : public DeviceStateTest {
 protected:
  SrvResult Status() {
    DirtyTheStack('\x5A');
    return GetWDMStatusHlp(9, status_, problem_, raised_);
  }
  std::uint32_t status_ = 1;
  std::uint32_t problem_ = 2;
  bool raised_ = true;
};

TEST_F(DevNodeStatusTest, ReturnsWhatTheConfigurationManagerReturned) {
  g_configurationManager = [this](auto*, auto*, std::uint32_t instance, auto) {
    instance_ = instance;
    return 13u;
  };
  EXPECT_EQ(Status(), 13u);
  EXPECT_EQ(instance_, 9u);
  EXPECT_FALSE(raised_);
  EXPECT_EQ(status_, 1u);
  EXPECT_EQ(problem_, 2u);
}

TEST_F(DevNodeStatusTest, WithoutSystemDirectory8602AndNothingIsLoaded) {
  fake_system_path::SetSystemDirectory("");
  EXPECT_EQ(Status(), 8602u);
  // Told as 261, the size that it would need.
  fake_system_path::SetSystemDirectory(std::string(260, 'd'));
  EXPECT_EQ(Status(), 8602u);
  EXPECT_THAT(fake_dynamic_library::Calls(), IsEmpty());
  EXPECT_FALSE(raised_);
}

TEST_F(DevNodeStatusTest, APathThatDoesNotFitYields34AndNothingIsLoaded) {
  fake_system_path::SetSystemDirectory(std::string(247, 'd'));
  EXPECT_EQ(Status(), 34u);
  fake_system_path::SetSystemDirectory(std::string(259, 'd'));
  EXPECT_EQ(Status(), 34u);
  EXPECT_THAT(fake_dynamic_library::Calls(), IsEmpty());
}

TEST_F(DevNodeStatusTest, ThePathMayHave259Characters) {
  const std::string directory(246, 'd');
  const std::string path = directory + "\\cfgmgr32.dll";
  ASSERT_EQ(path.size(), 259u);
  fake_system_path::SetSystemDirectory(directory);
  fake_dynamic_library::Add(path, {{kExport, fake_dynamic_library::Export(GetStatus)}});
  EXPECT_EQ(Status(), 0u);
  EXPECT_EQ(status_, 0x0180200Au);
}

TEST_F(DevNodeStatusTest, AMissingLibraryYields8603) {
  fake_dynamic_library::Reset();
  EXPECT_EQ(Status(), 8603u);
  EXPECT_THAT(fake_dynamic_library::Calls(), ElementsAre(std::string("load ") + kLibrary));
}

TEST_F(DevNodeStatusTest, AMissingEntryPointYields8601AndTheLibraryIsFreed) {
  fake_dynamic_library::Add(kLibrary, {});
  EXPECT_EQ(Status(), 8601u);
  EXPECT_EQ(fake_dynamic_library::StillLoaded(), 0);
  EXPECT_EQ(status_, 1u);
}

TEST_F(DevNodeStatusTest, AnExceptionIsToldAndTheLibraryIsFreed) {
  g_configurationManager = [](auto*, auto*, auto, auto) -> std::uint32_t { throw 1; };
  raised_ = false;
  EXPECT_EQ(Status(), 8604u);
  EXPECT_TRUE(raised_);
  EXPECT_EQ(fake_dynamic_library::StillLoaded(), 0);
}

TEST_F(DevNodeStatusTest, TheLibraryIsLoadedForEveryCall) {
  (void)Status();
  (void)Status();
  EXPECT_EQ(fake_dynamic_library::Calls().size(), 6u);
  EXPECT_EQ(fake_dynamic_library::StillLoaded(), 0);
}

}  // namespace
