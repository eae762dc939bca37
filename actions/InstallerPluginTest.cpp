#include <stdexcept>

#include "actions/InstallerPluginFixture.h"
#include "tests/fakes/FakeRegistry.h"

// What Install and Deinstall have in common, and what they have not.

namespace {

using namespace installer_plugin;
using fake_dynamic_library::Calls;
using registry_setup::kDword;
using testing::ElementsAre;
using testing::IsEmpty;

INSTANTIATE_TEST_SUITE_P(Kinds, InstallerPluginTest, testing::ValuesIn(kKinds),
                         [](const auto& info) { return info.param.name; });

TEST_P(InstallerPluginTest, TheLoopAnswersWhatThePluginReturned) {
  SetDevice("p.dll,Run");
  AddPlugin(TheKind(), kSystem + "p.dll");
  for (const std::uint32_t result : {0u, 31u, 8604u, 0xFFFFFFFFu}) {
    g_result = result;
    EXPECT_EQ(Run(), result);
    EXPECT_TRUE(Reply().empty());
  }
}

TEST_P(InstallerPluginTest, ThePluginGetsTheHardwareIdTheTextsAndAZero) {
  SetDevice("p.dll,Run");
  AddPlugin(TheKind(), kSystem + "p.dll");
  EXPECT_EQ(Run(), 0u);
  ASSERT_TRUE(g_ran);
  EXPECT_EQ(g_ran->hardwareId, "HW");
  EXPECT_EQ(g_ran->deviceId, "d");
  EXPECT_EQ(g_ran->languageExt, "007");
  EXPECT_EQ(g_ran->zero, 0u);
  EXPECT_EQ(g_ran->board, TheKind().trailingTexts == 2 ? "Board 1" : "");
}

TEST_P(InstallerPluginTest, BehindItsTextsThePluginFindsZeros) {
  SetDevice("p.dll,Run");
  AddPlugin(TheKind(), kSystem + "p.dll");
  EXPECT_EQ(Run(), 0u);
  ASSERT_TRUE(g_ran);
  EXPECT_EQ(g_ran->zeroFilled, 2 + TheKind().trailingTexts);
}

TEST_P(InstallerPluginTest, ItRunsBehindLoadAndFindAndBeforeAnythingElse) {
  SetDevice("p.dll,Run");
  AddPlugin(TheKind(), kSystem + "p.dll");
  EXPECT_EQ(Run(), 0u);
  ASSERT_TRUE(g_ran);
  EXPECT_THAT(g_ran->libraryCalls, ElementsAre("load " + kSystem + "p.dll", "find Run"));
  EXPECT_EQ(g_ran->boardCalls, 0u);
}

TEST_P(InstallerPluginTest, ExceptForTheDeviceIdAnAbsentTextIsANullPointer) {
  SetDevice("p.dll,Run");
  AddPlugin(TheKind(), kSystem + "p.dll");
  EXPECT_EQ(Do(TheKind().handler, TextField("d") + Absent() + Absent()), 0u);
  ASSERT_TRUE(g_ran);
  EXPECT_EQ(g_ran->languageExt, "(null)");
  EXPECT_EQ(g_ran->board, TheKind().trailingTexts == 2 ? "(null)" : "");
}

TEST_P(InstallerPluginTest, AnAbsentDeviceIdIs87BeforeAnythingIsRead) {
  int reads = 0;
  fake_registry::OnCall([&] { ++reads; });
  EXPECT_EQ(Do(TheKind().handler, Absent() + TextField("x") + TextField("y")), 87u);
  fake_registry::OnCall({});
  EXPECT_EQ(reads, 0);
  EXPECT_THAT(Calls(), IsEmpty());
  // A later field that cannot be read comes first.
  EXPECT_EQ(Do(TheKind().handler, Absent() + Wire("0500")), BUFFER_OVERFLOW);
}

TEST_P(InstallerPluginTest, EveryTruncationIsTheReadersCode) {
  SetDevice("p.dll,Run");
  ExpectEveryTruncationRefused(TheKind().handler, Request("d"));
}

TEST_P(InstallerPluginTest, TextsOf259BytesAreServedAndLongerOnesRefused) {
  SetDevice("p.dll,Run");
  AddPlugin(TheKind(), kSystem + "p.dll");
  const Bytes d = TextField("d");
  const Bytes fits = TextField(std::string(259, 'x'));
  const Bytes tooLong = TextField(std::string(260, 'x'));
  EXPECT_EQ(Do(TheKind().handler, d + fits + fits), 0u);
  EXPECT_EQ(g_ran->languageExt, std::string(259, 'x'));
  EXPECT_EQ(Do(TheKind().handler, d + tooLong + fits), BUFFER_OVERFLOW);
  EXPECT_EQ(Do(TheKind().handler, tooLong + fits + fits), BUFFER_OVERFLOW);
  if (TheKind().trailingTexts == 2) {
    EXPECT_EQ(g_ran->board, std::string(259, 'x'));
    EXPECT_EQ(Do(TheKind().handler, d + fits + tooLong), BUFFER_OVERFLOW);
  }
}

// --- What the registry holds ---

TEST_P(InstallerPluginTest, ADeviceWithoutAKeyAnswersTwoAndLoadsNothing) {
  EXPECT_EQ(Run(), 2u);
  EXPECT_THAT(Calls(), IsEmpty());
}

TEST_P(InstallerPluginTest, AMissingValueAnswersTwoAndLoadsNothing) {
  SetText("d", TheKind().valueName, "p.dll,Run");
  EXPECT_EQ(Run(), 2u) << "no hardware id";
  SetText("e", "HardwareID", "HW");
  EXPECT_EQ(Run("e"), 2u) << "no plug-in";
  EXPECT_THAT(Calls(), IsEmpty());
}

TEST_P(InstallerPluginTest, TheHardwareIdIsReadFirst) {
  SetValue("d", "HardwareID", Bytes(261, 'h'));
  EXPECT_EQ(Run(), 234u);
}

TEST_P(InstallerPluginTest, TheOtherCommandsValueIsNotLookedAt) {
  SetText("d", "HardwareID", "HW");
  SetText("d", TheKind().trailingTexts == 1 ? "Deinstaller" : "Installer", "p.dll,Run");
  EXPECT_EQ(Run(), 2u);
}

TEST_P(InstallerPluginTest, AKeyPathOf259BytesIsServedAndALongerOneIs34) {
  const std::size_t parent = kDevices.size() + 1;
  const std::string fits(259 - parent, 'd');
  AddPlugin(TheKind(), kSystem + "p.dll");
  SetDevice("p.dll,Run", fits);
  EXPECT_EQ(Run(fits), 0u);
  EXPECT_TRUE(g_ran);
  for (const std::size_t size : {260 - parent, 261 - parent, std::size_t{259}}) {
    const std::string device(size, 'd');
    SetDevice("p.dll,Run", device);
    EXPECT_EQ(Run(device), 34u) << size;
  }
}

TEST_P(InstallerPluginTest, AnEmptyDeviceIdIsTheKeyOfAllDevices) {
  registry_setup::CreateKey(kDevices);
  EXPECT_EQ(Run(""), 2u);
  SetDevice("p.dll,Run", "");
  AddPlugin(TheKind(), kSystem + "p.dll");
  EXPECT_EQ(Run(""), 0u);
}

TEST_P(InstallerPluginTest, AValueOf260BytesIsServedAlsoWithoutTerminatorAndALongerOneIs234) {
  SetDevice("p.dll,Run");
  AddPlugin(TheKind(), kSystem + "p.dll");
  for (const std::size_t size : {std::size_t{258}, std::size_t{259}}) {
    SetValue("d", "HardwareID", Bytes(size, 'h') + Bytes{0});
    EXPECT_EQ(Run(), 0u);
    EXPECT_EQ(g_ran->hardwareId, std::string(size, 'h'));
  }
  for (const std::size_t size : {std::size_t{1}, std::size_t{259}, std::size_t{260}}) {
    SetValue("d", "HardwareID", Bytes(size, 'h'));
    EXPECT_EQ(Run(), 0u);
    EXPECT_EQ(g_ran->hardwareId, std::string(size, 'h'));
  }
  SetValue("d", "HardwareID", Bytes(261, 'h'));
  EXPECT_EQ(Run(), 234u);
  SetText("d", "HardwareID", "HW");
  SetValue("d", TheKind().valueName, Bytes(261, 'p'));
  EXPECT_EQ(Run(), 234u);
}

TEST_P(InstallerPluginTest, APluginValueWithoutTerminatorIsCutWhereItEnds) {
  SetText("d", "HardwareID", "HW");
  AddPlugin(TheKind(), kSystem + "p.dll", std::string(254, 'f'));
  SetValue("d", TheKind().valueName, TextBytes("p.dll," + std::string(254, 'f')));
  EXPECT_EQ(Run(), 0u);
  EXPECT_TRUE(g_ran);
}

TEST_P(InstallerPluginTest, TheTypeOfAValueIsNotLookedAt) {
  SetValue("d", "HardwareID", Wire("41424344"), kDword);
  SetValue("d", TheKind().valueName, Wire("502C 5278"), kDword);  // "P,Rx"
  AddPlugin(TheKind(), kSystem + "P", "Rx");
  EXPECT_EQ(Run(), 0u);
  EXPECT_EQ(g_ran->hardwareId, "ABCD");
}

TEST_P(InstallerPluginTest, AnEmptyPluginValueLoadsTheDirectoryAndFails) {
  SetDevice("");
  EXPECT_EQ(Run(), 126u);
  EXPECT_THAT(Calls(), ElementsAre("load " + kSystem));
}

// --- Where the two differ ---

class InstallTest : public InstallerPluginFixture {
 protected:
  const Kind& kind_ = kKinds[0];
  const Bytes request_ = TextField("d") + TextField("");

  InstallTest() {
    SetText("d", "HardwareID", "HW");
    SetText("d", kind_.valueName, "p.dll,Run");
    AddPlugin(kind_, kSystem + "p.dll");
  }
};

TEST_F(InstallTest, ThePlausibilityCheckRunsBehindTheUnloadingWhateverThePluginReturned) {
  std::vector<std::string> before;
  fake_board_library::Lib().scan = [&] {
    before = Calls();
    return 0u;
  };
  fake_board_library::Lib().removeAbandonLogDevices = [] { return 55u; };
  for (const std::uint32_t result : {0u, 5u}) {
    g_result = result;
    before.clear();
    EXPECT_EQ(Do(kind_.handler, request_), result);
    ASSERT_FALSE(before.empty());
    EXPECT_EQ(before.back(), "free " + kSystem + "p.dll");
    EXPECT_TRUE(Reply().empty());
  }
  EXPECT_EQ(fake_dynamic_library::StillLoaded(), 0);
}

class DeinstallTest : public InstallerPluginFixture {
 protected:
  const Kind& kind_ = kKinds[1];
};

TEST_F(DeinstallTest, KeptTheLibraryStaysLoadedAndNoCheckFollows) {
  SetText("d", "HardwareID", "HW");
  SetText("d", kind_.valueName, "p.dll,Run");
  AddPlugin(kind_, kSystem + "p.dll");
  const Bytes request = TextField("d") + TextField("") + TextField("");
  EXPECT_EQ(Do(kind_.handler, request), 0u);
  g_result = 5;
  EXPECT_EQ(Do(kind_.handler, request), 5u);
  EXPECT_EQ(fake_dynamic_library::StillLoaded(), 2);
  EXPECT_TRUE(fake_board_library::Calls().empty());
}

}  // namespace
