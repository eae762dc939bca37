#include "actions/InstallerPluginFixture.h"
#include "tests/support/StrictProfileGuard.h"

// Where a plug-in may lie while the strict profile is on.

namespace installer_plugin {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class StrictPluginTest : public InstallerPluginTest {
 protected:
  // A device whose plug-in is named so and exists where the name leads.
  static void SetPlugin(const std::string& name) {
    SetDevice(name + ",Run");
    AddPlugin(TheKind(), kSystem + name);
  }
  static std::vector<std::string> Calls() { return fake_dynamic_library::Calls(); }

  const std::string kBy = ", asked for by process 4321";
  StrictProfileGuard profile_;
};

// Names that lead out of the system directory.
const std::string kOutside[] = {"..\\x.dll",        "../x.dll", "a\\..\\..\\x.dll",
                                "a/../../x.dll",    "..",       "nul",
                                "..\\system32x\\x", "a\\..",    "..\\..\\..\\windows\\x.dll"};

const std::string kInside[] = {"x.dll", "a\\x.dll", "..x.dll", "a\\..\\x.dll",
                               "..\\SYSTEM32\\x.dll"};

TEST_P(StrictPluginTest, OffAPluginIsRunFromAnywhere) {
  for (const std::string& name : kOutside) {
    SetPlugin(name);
    EXPECT_EQ(Run(), 0u) << name;
    EXPECT_TRUE(g_ran) << name;
    g_ran.reset();
  }
  EXPECT_EQ(fake_client_identity::Questions(), 0);
  EXPECT_THAT(profile_.Reports(), IsEmpty());
}

TEST_P(StrictPluginTest, ReportedAPluginFromOutsideIsRunAndReported) {
  profile_.Set("report");
  for (const std::string& name : kOutside) {
    SetPlugin(name);
    EXPECT_EQ(Run(), 0u) << name;
    EXPECT_TRUE(g_ran) << name;
    g_ran.reset();
    EXPECT_THAT(
        profile_.Reports(),
        ElementsAre("Strict profile would refuse: a plug-in from outside the system directory: " +
                    kSystem + name + kBy));
  }
}

TEST_P(StrictPluginTest, EnforcedAPluginFromOutsideIsNotEvenLoadedForAnybody) {
  profile_.Set("enforce");
  for (const bool isAdministrator : {false, true}) {
    fake_client_identity::SetAdministrator(isAdministrator);
    for (const std::string& name : kOutside) {
      SetPlugin(name);
      EXPECT_EQ(Run(), 5u) << name;
      EXPECT_FALSE(g_ran) << name;
      EXPECT_THAT(Calls(), IsEmpty()) << name;
      EXPECT_THAT(
          profile_.Reports(),
          ElementsAre("Strict profile refuses: a plug-in from outside the system directory: " +
                      kSystem + name + kBy));
    }
  }
}

TEST_P(StrictPluginTest, EnforcedAPluginOfTheSystemDirectoryIsRunAndNobodyIsAsked) {
  profile_.Set("enforce");
  for (const std::string& name : kInside) {
    SetPlugin(name);
    EXPECT_EQ(Run(), 0u) << name;
    EXPECT_TRUE(g_ran) << name;
    g_ran.reset();
  }
  EXPECT_EQ(fake_client_identity::Questions(), 0);
  EXPECT_THAT(profile_.Reports(), IsEmpty());
}

TEST_P(StrictPluginTest, EnforcedEarlierFailuresAreAnsweredAsEver) {
  profile_.Set("enforce");
  EXPECT_EQ(Run(), 2u) << "no device";
  SetDevice("..\\" + std::string(240, 'x') + ",Run");
  EXPECT_EQ(Run(), 34u) << "no room for the path";
  EXPECT_THAT(profile_.Reports(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Kinds, StrictPluginTest, testing::ValuesIn(kKinds),
                         [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace installer_plugin
