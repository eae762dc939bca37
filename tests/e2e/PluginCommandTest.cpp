#include <windows.h>

#include <gmock/gmock.h>

#include <string>

#include "tests/e2e/PluginTest.h"

// What is the same of Install and Deinstall: the way from the device id to the plug-in's result.

namespace e2e {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kId[] = "DEV1";
constexpr std::uint32_t kRefused = 1603;  // the result of SampleRefuse

// What the system itself says to a library, or to the look-up of a function in one.
std::uint32_t CodeOfLoad(const std::string& path) {
  const HMODULE library = LoadLibraryA(path.c_str());
  if (library == nullptr) return GetLastError();
  (void)FreeLibrary(library);
  return ERROR_SUCCESS;
}

std::uint32_t CodeOfLookUp(const std::string& path, const std::string& function) {
  const HMODULE library = LoadLibraryA(path.c_str());
  SetLastError(ERROR_SUCCESS);
  const bool found = GetProcAddress(library, function.c_str()) != nullptr;
  const std::uint32_t error = GetLastError();
  (void)FreeLibrary(library);
  EXPECT_FALSE(found) << function;
  return error;
}

std::string Filled(std::string name, std::size_t size) {
  name.resize(size, '_');
  return name;
}

class PluginCommandTest : public ActionsTest, public testing::WithParamInterface<PluginCommand> {
 protected:
  const PluginCommand& Command() const { return GetParam(); }

  testing::AssertionResult Answers(std::uint32_t result, const std::string& id = kId) {
    return client_.Answers(Command().Request(id), Answer(result));
  }

  // A command that did not reach a plug-in changes nothing.
  void ExpectNothingRan() {
    EXPECT_THAT(Libraries().Calls(), IsEmpty());
    EXPECT_THAT(Libraries().BoardCalls(), IsEmpty());
  }

  Devices devices_;
};

TEST_P(PluginCommandTest, AResultOfThePluginIsPassedOnAsItIs) {
  devices_.Add(kId, "sampledev.dll,SampleRefuse");
  EXPECT_TRUE(Answers(kRefused));
  for (const char* const result : {"0", "1", "259", "8602", "8604", "0x80000000", "0xFFFFFFFF"}) {
    Libraries().Answer("SampleRefuse", std::string("result = ") + result);
    EXPECT_TRUE(Answers(std::stoul(result, nullptr, 0)));
  }
}

TEST_P(PluginCommandTest, ThePluginIsGivenTheArgumentsOfRegistryAndRequest) {
  devices_.Add(kId, std::string("sampledev.dll,Sample") + Command().name, "PCI\\VEN_1F3C&DEV_5101");
  Libraries().Answer(std::string("Sample") + Command().name, "result = 7");
  EXPECT_TRUE(Answers(7));
  EXPECT_THAT(Libraries().Calls(),
              ElementsAre(std::string("Sample") + Command().name +
                          " hardwareId=\"PCI\\\\VEN_1F3C&DEV_5101\" deviceId=\"DEV1\" "
                          "languageExt=\"de\" zero=0" +
                          Command().moreInLog + " -> 7"));
}

TEST_P(PluginCommandTest, EmptyAndAbsentTextsReachThePlugin) {
  devices_.Add(kId, std::string("sampledev.dll,Sample") + Command().name);
  Libraries().Answer(std::string("Sample") + Command().name, "result = 0");
  const bool hasBoard = *Command().more != '\0';
  const std::string arguments =
      std::string("Sample") + Command().name + " hardwareId=\"HW1\" deviceId=\"DEV1\" languageExt=";

  const Bytes empty = Long(0);
  EXPECT_TRUE(client_.Answers(
      Wire(Command().code) + Text(kId) + empty + (hasBoard ? empty : Bytes()), Answer(0)));
  EXPECT_THAT(Libraries().Calls(),
              ElementsAre(arguments + "\"\" zero=0" + (hasBoard ? " board=\"\"" : "") + " -> 0"));

  Libraries().ForgetCalls();
  const Bytes absent = Long(0xFFFF);
  EXPECT_TRUE(client_.Answers(
      Wire(Command().code) + Text(kId) + absent + (hasBoard ? absent : Bytes()), Answer(0)));
  EXPECT_THAT(Libraries().Calls(), ElementsAre(arguments + "(null) zero=0" +
                                               (hasBoard ? " board=(null)" : "") + " -> 0"));
}

TEST_P(PluginCommandTest, AnAbsentDeviceIdIsAMissingArgument) {
  devices_.Add("", "sampledev.dll,SampleRefuse");
  EXPECT_TRUE(client_.Answers(
      Wire(Command().code) + Long(0xFFFF) + Text("de") + Wire(Command().more), Answer(87)));
  ExpectNothingRan();
}

TEST_P(PluginCommandTest, AMissingKeyOrValueIsTheRegistrysCode) {
  EXPECT_TRUE(Answers(2));
  devices_.AddBare(kId);
  EXPECT_TRUE(Answers(2));
  devices_.Set(kId, Command().valueName, "sampledev.dll,SampleRefuse");
  EXPECT_TRUE(Answers(2)) << "no hardware id";
  devices_.Add(kId, "sampledev.dll,SampleRefuse");
  devices_.Registry().DeleteTree(kDeviceKeys + std::string(kId));
  devices_.AddBare(kId);
  devices_.Set(kId, "HardwareID", "HW1");
  EXPECT_TRUE(Answers(2)) << "no plug-in";
  // The other command's value does not do.
  devices_.Set(kId, Command().valueName == std::string("Installer") ? "Deinstaller" : "Installer",
               "sampledev.dll,SampleRefuse");
  EXPECT_TRUE(Answers(2)) << "the other plug-in";
  ExpectNothingRan();
}

TEST_P(PluginCommandTest, ADeviceIdBelowAnotherKeyIsAKeyLikeAnyOther) {
  devices_.Add("DEV1\\Sub", "sampledev.dll,SampleRefuse");
  EXPECT_TRUE(Answers(kRefused, "DEV1\\Sub"));
}

TEST_P(PluginCommandTest, AValueOfAnyTypeIsTakenAsText) {
  for (const std::uint32_t type : {std::uint32_t{REG_EXPAND_SZ}, std::uint32_t{REG_BINARY}}) {
    devices_.AddBare(kId);
    devices_.SetRaw(kId, "HardwareID", type, Wire("'HW1' 00"));
    devices_.SetRaw(kId, Command().valueName, type, Wire("'sampledev.dll,SampleRefuse' 00"));
    EXPECT_TRUE(Answers(kRefused)) << type;
  }
}

TEST_P(PluginCommandTest, AValueWithoutATerminatorIsTaken) {
  devices_.Add(kId, "");
  devices_.SetRaw(kId, "HardwareID", REG_SZ, "HW2");
  devices_.SetRaw(kId, Command().valueName, REG_SZ, "sampledev.dll,SampleRefuse");
  EXPECT_TRUE(Answers(kRefused));
  EXPECT_THAT(Libraries().Calls(), ElementsAre("SampleRefuse hardwareId=\"HW2\" deviceId=\"DEV1\" "
                                               "languageExt=\"de\" zero=0 -> 1603"));
}

TEST_P(PluginCommandTest, AHardwareIdOf260BytesArrivesWholeAndALongerOneIsRefused) {
  const std::string longest(259, 'h');
  devices_.Add(kId, "sampledev.dll,SampleRefuse", longest);
  EXPECT_TRUE(Answers(kRefused));
  EXPECT_THAT(Libraries().Calls(), ElementsAre("SampleRefuse hardwareId=\"" + longest +
                                               "\" deviceId=\"DEV1\" languageExt=\"de\" zero=0 "
                                               "-> 1603"));
  devices_.SetRaw(kId, "HardwareID", REG_BINARY, Bytes(260, 'h'));
  EXPECT_TRUE(Answers(kRefused));
  Libraries().ForgetCalls();

  devices_.Set(kId, "HardwareID", std::string(260, 'h'));
  EXPECT_TRUE(Answers(ERROR_MORE_DATA));
  ExpectNothingRan();
}

TEST_P(PluginCommandTest, APluginValueOf260BytesIsTakenAndALongerOneIsRefused) {
  const std::string start = "sampledev.dll,";
  const std::string sample = StandIns::InSystemDirectory("sampledev.dll");
  for (const std::size_t size : {259u, 260u}) {
    const std::string value = Filled(start + "None", size);
    devices_.Add(kId, "");
    devices_.SetRaw(kId, Command().valueName, REG_BINARY, value);
    EXPECT_TRUE(Answers(CodeOfLookUp(sample, value.substr(start.size())))) << size;
  }
  devices_.SetRaw(kId, Command().valueName, REG_BINARY, Filled(start + "None", 261));
  EXPECT_TRUE(Answers(ERROR_MORE_DATA));
  ExpectNothingRan();
}

TEST_P(PluginCommandTest, AFunctionNameOf127OrOf128CharactersIsFound) {
  for (const char* const number : {"127", "128"}) {
    devices_.Add(kId, "sampledev.dll," + Filled(std::string("SampleNameOf") + number + "Letters",
                                                std::stoul(number)));
    EXPECT_TRUE(Answers(kRefused)) << number;
  }
  // One character fewer or more names nothing.
  const std::string sample = StandIns::InSystemDirectory("sampledev.dll");
  for (const std::size_t size : {126u, 128u, 129u}) {
    const std::string function = Filled("SampleNameOf127Letters", size);
    devices_.Add(kId, "sampledev.dll," + function);
    EXPECT_TRUE(Answers(CodeOfLookUp(sample, function))) << size;
  }
}

TEST_P(PluginCommandTest, AMissingFunctionIsTheLookUpsCodeAndTheLibraryIsFreed) {
  Libraries().Place("sampledev.dll", "nofunction.dll");
  devices_.Add(kId, "nofunction.dll,NoSuchFunction");
  EXPECT_TRUE(Answers(ERROR_PROC_NOT_FOUND));
  ExpectNothingRan();
  EXPECT_FALSE(Server().HasModule("nofunction.dll"));
}

// The whole value is the library then, and the function's name is empty.
TEST_P(PluginCommandTest, AValueWithoutACommaNamesALibraryAndNoFunction) {
  Libraries().Place("sampledev.dll", "nocomma.dll");
  const std::uint32_t code = CodeOfLookUp(StandIns::InSystemDirectory("nocomma.dll"), "");
  ASSERT_NE(code, 0u);
  devices_.Add(kId, "nocomma.dll");
  EXPECT_TRUE(Answers(code));
  devices_.Add(kId, "nocomma.dll,");
  EXPECT_TRUE(Answers(code));
  ExpectNothingRan();
  EXPECT_FALSE(Server().HasModule("nocomma.dll"));
}

TEST_P(PluginCommandTest, AValueIsSplitAtItsFirstComma) {
  devices_.Add(kId, "sampledev.dll,SampleRefuse,SampleInstall");
  EXPECT_TRUE(Answers(
      CodeOfLookUp(StandIns::InSystemDirectory("sampledev.dll"), "SampleRefuse,SampleInstall")));
  devices_.Add(kId, "sampledev.dll, SampleRefuse");
  EXPECT_TRUE(Answers(ERROR_PROC_NOT_FOUND)) << "the blank belongs to the name";
  ExpectNothingRan();
}

TEST_P(PluginCommandTest, ALibraryThatIsMissingOrIsNoneIsTheLoadersCode) {
  devices_.Add(kId, "nolibrary.dll,SampleRefuse");
  EXPECT_TRUE(Answers(ERROR_MOD_NOT_FOUND));

  Libraries().PlaceBytes("notalibrary.dll", "This is a text.");
  const std::uint32_t code = CodeOfLoad(StandIns::InSystemDirectory("notalibrary.dll"));
  ASSERT_NE(code, 0u);
  devices_.Add(kId, "notalibrary.dll,SampleRefuse");
  EXPECT_TRUE(Answers(code));
  Libraries().Remove("notalibrary.dll");
  ExpectNothingRan();
}

TEST_P(PluginCommandTest, AnEmptyLibraryNameIsTheLoadersCode) {
  const std::uint32_t code = CodeOfLoad(StandIns::InSystemDirectory(""));
  ASSERT_NE(code, 0u);
  for (const char* const value : {"", ",", ",SampleRefuse"}) {
    devices_.Add(kId, value);
    EXPECT_TRUE(Answers(code)) << value;
  }
  ExpectNothingRan();
}

// Kept: what confines a plug-in is the system directory in front of its name, and no more.
TEST_P(PluginCommandTest, APathThroughTheParentIsLoadedFromThere) {
  const std::string file = std::string("outside_") + Command().name + ".dll";
  Libraries().Place("sampledev.dll", "..\\" + file);
  for (const char* const way : {"..\\", "../", ".\\..\\"}) {
    devices_.Add(kId, way + file + ",SampleRefuse");
    EXPECT_TRUE(Answers(kRefused)) << way;
  }
  EXPECT_EQ(Libraries().Calls().size(), 3u);
  // Without the way there, nothing of that name is found.
  devices_.Add(kId, file + ",SampleRefuse");
  EXPECT_TRUE(Answers(ERROR_MOD_NOT_FOUND));
}

TEST_P(PluginCommandTest, AFullPathIsNotLoadedForTheSystemDirectoryStandsInFront) {
  Libraries().Place("sampledev.dll", "..\\elsewhere.dll");
  const std::string system = StandIns::InSystemDirectory("");
  const std::string full = system + "..\\elsewhere.dll";
  ASSERT_EQ(CodeOfLoad(full), 0u);
  const std::uint32_t code = CodeOfLoad(system + full);
  ASSERT_NE(code, 0u);
  devices_.Add(kId, full + ",SampleRefuse");
  EXPECT_TRUE(Answers(code));
  ExpectNothingRan();
}

TEST_P(PluginCommandTest, APathOf259CharactersIsLoadedAndALongerOneIsRefused) {
  // Steps on the spot fill a path up without leading anywhere else.
  const std::size_t room = 259 - StandIns::InSystemDirectory("").size();
  const std::string file = "sampledev.dll";
  std::string name;
  while (name.size() + 2 + file.size() <= room) name += ".\\";
  if (name.size() + file.size() < room) name.insert(name.size() - 1, 1, '\\');
  name += file;
  ASSERT_EQ(name.size(), room);
  ASSERT_EQ(CodeOfLoad(StandIns::InSystemDirectory(name)), 0u);
  devices_.Add(kId, name + ",SampleRefuse");
  EXPECT_TRUE(Answers(kRefused));
  Libraries().ForgetCalls();

  devices_.Add(kId, "_" + name + ",SampleRefuse");
  EXPECT_TRUE(Answers(ERANGE));
  ExpectNothingRan();
}

TEST_P(PluginCommandTest, AKeyPathOf259CharactersIsReadAndALongerOneIsRefused) {
  const std::size_t room = 259 - std::string(kDeviceKeys).size();
  const std::string longest(room, 'd');
  devices_.Add(longest, "sampledev.dll,SampleRefuse");
  EXPECT_TRUE(Answers(kRefused, longest));
  Libraries().ForgetCalls();
  devices_.Add(longest + 'd', "sampledev.dll,SampleRefuse");
  EXPECT_TRUE(Answers(ERANGE, longest + 'd'));
  EXPECT_TRUE(Answers(ERANGE, std::string(259, 'd')));
  EXPECT_TRUE(Answers(8602, std::string(260, 'd')));
  ExpectNothingRan();
}

TEST_P(PluginCommandTest, AnIdEndsAtItsFirstZeroByte) {
  devices_.Add(kId, "sampledev.dll,SampleRefuse");
  EXPECT_TRUE(Answers(kRefused, Wire("'DEV1' 00 'more'")));
}

TEST_P(PluginCommandTest, AllOthersWaitWhileThePluginWorksAndAreServedAfterwards) {
  devices_.Add(kId, "sampledev.dll,SampleRefuse");
  Libraries().Answer("SampleRefuse", "delay = 400\nresult = 5");
  WireClient other;
  ASSERT_TRUE(other.Connect());
  ASSERT_TRUE(other.IsServed());
  ASSERT_TRUE(client_.Send(Command().Request(kId)));
  ASSERT_TRUE(other.Send(Wire("1000")));
  EXPECT_TRUE(other.IsQuiet(150));
  EXPECT_TRUE(client_.YieldsNext(Answer(5)));
  EXPECT_TRUE(other.YieldsNext(Answer(0)));
}

INSTANTIATE_TEST_SUITE_P(Both, PluginCommandTest, testing::Values(kInstall, kDeinstall),
                         [](const auto& command) { return std::string(command.param.name); });

}  // namespace
}  // namespace e2e
