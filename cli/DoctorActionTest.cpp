#include <gmock/gmock.h>

#include <string>

#include "cli/Ctl.h"
#include "cli/testing/JsonCheck.h"
#include "doctor/testing/FindingsFixture.h"
#include "tests/fakes/FakeDoctorFacts.h"

// What doctor shows of a computer, and how it ends.

namespace cli {
namespace {

using testing::HasSubstr;
using Words = std::vector<std::string>;

class DoctorActionTest : public testing::Test {
 protected:
  DoctorActionTest() { TheDoctorFacts() = {doctor::HealthyFacts(), "", 0}; }
  ~DoctorActionTest() override { TheDoctorFacts() = {}; }

  int Run(const Words& words) {
    output_ = {};
    return RunCtl(words, output_);
  }

  doctor::Facts& facts_ = TheDoctorFacts().facts;
  Output output_;
};

TEST_F(DoctorActionTest, AHealthyComputerEndsWith0) {
  EXPECT_EQ(Run({"doctor"}), kExitOk);
  EXPECT_THAT(output_.out, HasSubstr("ok       pipe       the server answers\n"));
  EXPECT_THAT(output_.out, HasSubstr(" ok, 0 notes, 0 warnings, 0 errors\n"));
  EXPECT_EQ(output_.err, "");
}

TEST_F(DoctorActionTest, WarningsAndNotesStillEndWith0AndErrorsWith1) {
  facts_.setUp = {};
  facts_.sources[0].isRegistered = false;
  EXPECT_EQ(Run({"doctor"}), kExitOk);
  EXPECT_THAT(output_.out, HasSubstr("1 note, 1 warning, 0 errors\n"));
  EXPECT_THAT(output_.out, HasSubstr("warning  set-up     SetupSucceeded is missing: "));
  EXPECT_THAT(output_.out, HasSubstr("\n                    -> let the stack's set-up finish"));
  facts_.hasTree = false;
  EXPECT_EQ(Run({"doctor"}), kExitOk);
  EXPECT_THAT(output_.out, HasSubstr("1 note, 2 warnings, 0 errors\n"));
  facts_.devices[0].hardwareId = {};
  EXPECT_EQ(Run({"doctor"}), kExitServer);
  EXPECT_THAT(output_.out, HasSubstr("1 note, 2 warnings, 1 error\n"));
}

TEST_F(DoctorActionTest, JsonHasEveryFindingAndTheCounts) {
  facts_.hasTree = false;
  facts_.devices[0].name = "\x01\xFF\"";
  facts_.devices[0].hardwareId = {};
  EXPECT_EQ(Run({"doctor", "--json"}), kExitServer);
  EXPECT_TRUE(JsonCheck::IsValid(output_.out.substr(0, output_.out.size() - 1))) << output_.out;
  EXPECT_THAT(output_.out, HasSubstr("{\"command\":\"doctor\",\"findings\":[{\"severity\":\"ok\","
                                     "\"check\":\"pipe\",\"text\":"));
  EXPECT_THAT(output_.out, HasSubstr("\"note\":0,\"warning\":1,\"error\":1},\"ok\":false"));
  EXPECT_THAT(output_.out, HasSubstr("\\u0001\\u00ff\\\" has no HardwareID"));
}

TEST_F(DoctorActionTest, ThePipeAndTheTimeoutAreThoseOfTheCommandLine) {
  EXPECT_EQ(Run({"doctor"}), kExitOk);
  EXPECT_EQ(TheDoctorFacts().pipe, "\\\\.\\pipe\\QorlixSRVPIPE32");
  EXPECT_EQ(TheDoctorFacts().timeoutMs, 10000u);
  EXPECT_EQ(Run({"doctor", "--pipe", "P", "--timeout", "2"}), kExitOk);
  EXPECT_EQ(TheDoctorFacts().pipe, "P");
  EXPECT_EQ(TheDoctorFacts().timeoutMs, 2000u);
  EXPECT_EQ(Run({"doctor", "more"}), kExitUsage);
}

}  // namespace
}  // namespace cli
