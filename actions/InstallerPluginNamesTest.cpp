#include "actions/InstallerPluginFixture.h"

// From the name in the registry to the entry point.

namespace {

using namespace installer_plugin;
using fake_dynamic_library::Calls;
using testing::ElementsAre;
using testing::IsEmpty;

class InstallerPluginNamesTest : public InstallerPluginTest {};

INSTANTIATE_TEST_SUITE_P(Kinds, InstallerPluginNamesTest, testing::ValuesIn(kKinds),
                         [](const auto& info) { return info.param.name; });

// --- System directory ---

TEST_P(InstallerPluginNamesTest, WithoutASystemDirectoryThatFitsItIs8602) {
  SetDevice("p.dll,Run");
  for (const std::size_t size : {0u, 260u, 261u, 500u}) {
    fake_system_path::SetSystemDirectory(std::string(size, 's'));
    EXPECT_EQ(Run(), BUFFER_OVERFLOW) << size;
  }
  EXPECT_THAT(Calls(), IsEmpty());
}

TEST_P(InstallerPluginNamesTest, ADirectoryThatLeavesNoRoomForTheNameIs34) {
  SetDevice("p.dll,Run");
  fake_system_path::SetSystemDirectory(std::string(259, 's'));
  EXPECT_EQ(Run(), 34u);
  fake_system_path::SetSystemDirectory(std::string(258, 's'));
  EXPECT_EQ(Run(), 34u);
  EXPECT_THAT(Calls(), IsEmpty());
}

TEST_P(InstallerPluginNamesTest, ALibraryPathOf259BytesIsServedAndALongerOneIs34) {
  const std::string fits(259 - kSystem.size(), 'p');
  SetDevice(fits + ",Run");
  AddPlugin(TheKind(), kSystem + fits);
  EXPECT_EQ(Run(), 0u);
  SetDevice(fits + "p,Run");
  AddPlugin(TheKind(), kSystem + fits + "p");
  EXPECT_EQ(Run(), 34u);
}

// --- Names ---

TEST_P(InstallerPluginNamesTest, KeptANameThatLeadsOutOfTheDirectoryIsLoadedAllTheSame) {
  for (const char* name : {"..\\x.dll", "../x.dll", "sub\\x.dll", "c:x.dll", "\\\\host\\x.dll"}) {
    g_ran.reset();
    SetDevice(std::string(name) + ",Run");
    AddPlugin(TheKind(), kSystem + name);
    EXPECT_EQ(Run(), 0u) << name;
    EXPECT_TRUE(g_ran) << name;
  }
}

TEST_P(InstallerPluginNamesTest, BehindTheFirstCommaEverythingIsTheFunction) {
  SetDevice("p.dll,Run,x,");
  AddPlugin(TheKind(), kSystem + "p.dll", "Run,x,");
  EXPECT_EQ(Run(), 0u);
}

TEST_P(InstallerPluginNamesTest, WithoutACommaTheFunctionIsEmptyAndNotFound) {
  SetDevice("p.dll");
  AddPlugin(TheKind(), kSystem + "p.dll");
  EXPECT_EQ(Run(), 127u);
  EXPECT_THAT(Calls(),
              ElementsAre("load " + kSystem + "p.dll", "find ", "free " + kSystem + "p.dll"));
}

TEST_P(InstallerPluginNamesTest, AFunctionNameOfAnyLengthIsLookedUpAsAWhole) {
  for (const std::size_t size : {1u, 127u, 128u, 250u}) {
    g_ran.reset();
    const std::string function(size, 'f');
    SetDevice("p.dll," + function);
    AddPlugin(TheKind(), kSystem + "p.dll", function);
    EXPECT_EQ(Run(), 0u) << size;
    EXPECT_TRUE(g_ran) << size;
  }
}

// --- Library and export ---

TEST_P(InstallerPluginNamesTest, ALibraryThatCannotBeLoadedAnswersItsError) {
  SetDevice("p.dll,Run");
  EXPECT_EQ(Run(), 126u);
  fake_dynamic_library::RefuseLoad(kSystem + "p.dll", 193);
  EXPECT_EQ(Run(), 193u);
  EXPECT_TRUE(fake_board_library::Calls().empty());
}

// A failure of which the system says that there was none: that is the answer, and nothing is
// called.
TEST_P(InstallerPluginNamesTest, ALibraryThatCannotBeLoadedWithoutAnErrorAnswersZero) {
  SetDevice("p.dll,Run");
  fake_dynamic_library::RefuseLoad(kSystem + "p.dll", 0);
  EXPECT_EQ(Run(), 0u);
  EXPECT_FALSE(g_ran);
  EXPECT_TRUE(fake_board_library::Calls().empty());
}

TEST_P(InstallerPluginNamesTest, AMissingExportAnswersItsErrorAndUnloads) {
  SetDevice("p.dll,Other");
  AddPlugin(TheKind(), kSystem + "p.dll");
  EXPECT_EQ(Run(), 127u);
  EXPECT_THAT(Calls(),
              ElementsAre("load " + kSystem + "p.dll", "find Other", "free " + kSystem + "p.dll"));
  EXPECT_FALSE(g_ran);
  EXPECT_TRUE(fake_board_library::Calls().empty());
}

TEST_P(InstallerPluginNamesTest, KeptAFaultOfThePluginIsNotCaught) {
  SetDevice("p.dll,Run");
  AddPlugin(TheKind(), kSystem + "p.dll");
  g_throws = true;
  EXPECT_THROW((void)Run(), std::runtime_error);
}

}  // namespace
