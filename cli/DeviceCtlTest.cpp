#include <gtest/gtest.h>

#include <string>

#include "cli/DevNodeNames.h"
#include "cli/testing/CtlFixture.h"

// The device commands, as whole command lines.

namespace cli {
namespace {

constexpr char kGuid[] = "{11223344-5566-7788-0102-030405060708}";
constexpr char kGuidWire[] = "44332211665588770102030405060708";
constexpr char kNoChange[] = "0400 03010000";

class DeviceCtlTest : public CtlFixture {
 protected:
  void AnswersAChange(const std::string& text) {
    server_.Answers({"0400 00000000 02" + text + kGuidWire});
  }
};

TEST_F(DeviceCtlTest, StateNamesTheBitsAndTheProblem) {
  server_.Answers({"0400 00000000 0A240000 16000000"});
  EXPECT_EQ(Run({"device", "state", "H"}), kExitOk);
  EXPECT_EQ(LastRequest(), "22010100000048FFFFFFFF");
  EXPECT_EQ(output_.out,
            "status:  0x0000240a DN_DRIVER_LOADED DN_STARTED DN_HAS_PROBLEM DN_DISABLEABLE\n"
            "problem: 22 CM_PROB_DISABLED\n");
}

TEST_F(DeviceCtlTest, StateOfNothingSaysThatItMayBeADeviceThatNobodyKnows) {
  server_.Answers({"0400 00000000 00000000 00000000"});
  EXPECT_EQ(Run({"device", "state", "H", "0x20"}), kExitOk);
  EXPECT_EQ(LastRequest(), "2201010000004820000000");
  EXPECT_TRUE(Says("problem: 0 (none)\nhint: both are 0 also for a device that nobody knows"));
  EXPECT_EQ(Run({"device", "state", "H", "many"}), kExitUsage);
  EXPECT_TRUE(Complains("OPTION is a number"));
}

TEST_F(DeviceCtlTest, AProblemWithoutANameIsShownAsANumber) {
  server_.Answers({"0400 00000000 00040000 E8030000"});
  EXPECT_EQ(Run({"device", "state", "H"}), kExitOk);
  EXPECT_TRUE(Says("problem: 1000 (no name)"));
  EXPECT_STREQ(ProblemName(1), "CM_PROB_NOT_CONFIGURED");
  EXPECT_STREQ(ProblemName(57), "CM_PROB_GUEST_ASSIGNMENT_FAILED");
  EXPECT_STREQ(ProblemName(58), "");
  EXPECT_STREQ(ProblemName(0), "");
}

TEST_F(DeviceCtlTest, WatchAndUnwatchSendDeviceIdAndGuid) {
  server_.Answers({"0400 00000000"});
  EXPECT_EQ(Run({"device", "watch", "D", kGuid}), kExitOk);
  EXPECT_EQ(LastRequest(), std::string("0001") + "0100000044" + kGuidWire);
  server_.Answers({"0400 02000000"});
  EXPECT_EQ(Run({"device", "unwatch", "D", kGuid}), kExitServer);
  EXPECT_EQ(LastRequest(), std::string("0101") + "0100000044" + kGuidWire);
}

TEST_F(DeviceCtlTest, ABadGuidOrTooLongADeviceIdIsNotSent) {
  EXPECT_EQ(Run({"device", "watch", "D", "{1234}"}), kExitUsage);
  EXPECT_TRUE(Complains("{8-4-4-4-12}"));
  EXPECT_EQ(Run({"device", "watch", std::string(260, 'd'), kGuid}), kExitUsage);
  EXPECT_TRUE(Complains("259"));
  EXPECT_EQ(Run({"device", "changes", std::string(260, 'd')}), kExitUsage);
  EXPECT_EQ(server_.Connections(), 0);
}

TEST_F(DeviceCtlTest, ChangesAreShownUntilThereIsNone) {
  AnswersAChange("04000000 41004200 04000000");
  AnswersAChange("00000000 00000000");
  server_.Answers({kNoChange});
  EXPECT_EQ(Run({"device", "changes", "D"}), kExitOk);
  EXPECT_EQ(output_.out,
            std::string("kind 2 ") + kGuid + " \"A\" \"B\"\nkind 2 " + kGuid + " \"\"\n");
  server_.Answers({kNoChange});
  EXPECT_EQ(Run({"device", "changes", "D"}), kExitOk);
  EXPECT_EQ(output_.out.find("(no changes)\nhint: changes are noted only while they are watched"),
            0u);
  server_.Answers({kNoChange});
  EXPECT_EQ(Run({"device", "changes", "D", "--json"}), kExitOk);
  ExpectJson();
  EXPECT_TRUE(Says("'qorlixctl device watch' comes first"));
}

TEST_F(DeviceCtlTest, ChangesThatTheServerDoesNotEndAreNotSaidToHaveBeenEndedByTheLibrary) {
  AnswersAChange("01000000 41 01000000");
  server_.AnswersAndCloses({});
  EXPECT_EQ(Run({"device", "changes", "D"}), kExitTransport);
  EXPECT_TRUE(Complains("the list ends after 1 changes\n"));
  EXPECT_TRUE(Complains("hint: the server may have ended"));
  server_.IsGone();
  EXPECT_EQ(Run({"device", "changes", "D"}), kExitTransport);
  EXPECT_FALSE(Complains("list"));
}

TEST_F(DeviceCtlTest, CodesOfTheLibraryAreToldAsItsOwn) {
  const struct {
    Words words;
    const char* usual;
  } kLines[] = {
      {{"device", "watch", "D", kGuid}, "it knows no such device id"},
      {{"device", "unwatch", "D", kGuid}, "nothing is watched under this device id and GUID"},
      {{"device", "info", "", "1", "2", "3", "", "0", "0", "9"},
       "it has nothing for these values"}};
  for (const auto& line : kLines) {
    server_.Answers({"0400 02000000"});
    EXPECT_EQ(Run(line.words), kExitServer);
    EXPECT_TRUE(
        Complains(std::string("hint: the code is the board library's; as a rule ") + line.usual))
        << output_.err;
    server_.Answers({"0400 EA000000"});
    EXPECT_EQ(Run(line.words), kExitServer);
    EXPECT_TRUE(Complains("as a rule its answer needs more room")) << output_.err;
    server_.Answers({"0400 9C210000"});
    EXPECT_EQ(Run(line.words), kExitServer);
    EXPECT_TRUE(Complains("hint: it was the board library that raised it")) << output_.err;
  }
}

TEST_F(DeviceCtlTest, ForSomeTimeChangesAreLookedForAgain) {
  server_.Answers({kNoChange});
  AnswersAChange("01000000 41 01000000");
  server_.Answers({kNoChange});
  EXPECT_EQ(Run({"device", "changes", "D", "--for", "0.05", "--json"}), kExitOk);
  ExpectJson();
  EXPECT_EQ(server_.Requests().size(), 3u);
  EXPECT_TRUE(Says("\"changes\":[{\"kind\":2,\"text\":\"A\",\"hex\":\"41\",\"length\":1,"));
}

TEST_F(DeviceCtlTest, WhateverElseEndsTheChangesIsSaid) {
  AnswersAChange("01000000 41 01000000");
  server_.Answers({"0400 1F000000"});
  EXPECT_EQ(Run({"device", "changes", "D", "--for", "5"}), kExitServer);
  EXPECT_TRUE(Complains("hint: this ended the list after 1 changes"));
  server_.Answers({"0400 9A210000 E11F0000 10000000"});
  EXPECT_EQ(Run({"device", "changes", "D"}), kExitServer);
  EXPECT_TRUE(Complains("the next change has 8161 bytes"));
}

TEST_F(DeviceCtlTest, ForIsForChangesOnly) {
  EXPECT_EQ(Run({"device", "state", "H", "--for", "1"}), kExitUsage);
  EXPECT_EQ(Run({"device", "changes", "H", "--for", "0"}), kExitUsage);
  EXPECT_EQ(server_.Connections(), 0);
}

TEST_F(DeviceCtlTest, InfoSendsItsFieldsAndShowsTheAreas) {
  server_.Answers({"0400 00000000 02000000 A1A2 04000000 05000000 00000000 06000000 07000000"});
  EXPECT_EQ(Run({"device", "info", "DD 01", "1", "0x2", "3", "", "2", "0", "9"}), kExitOk);
  EXPECT_EQ(LastRequest(),
            "BF00"
            "02000000DD01"
            "0400000001000000"
            "0400000002000000"
            "0400000003000000"
            "00000000"
            "0400000002000000"
            "0400000000000000"
            "0400000009000000");
  EXPECT_EQ(output_.out,
            "area1, 2 bytes:\n"
            "  0000  a1 a2\n"
            "value: 5 (0x00000005)\n"
            "area2, 0 bytes\n"
            "result1: 6 (0x00000006)\n"
            "result2: 7 (0x00000007)\n");
}

TEST_F(DeviceCtlTest, InfoRefusesWhatMakesNoRequest) {
  const Words wrong[] = {{"1", "1", "2", "3", "", "0", "0", "9"},
                         {"", "x", "2", "3", "", "0", "0", "9"},
                         {"", "1", "2", "3", "zz", "0", "0", "9"},
                         {"", "1", "2", "3", "", "4096", "4067", "9"},
                         {"", "1", "2", "3", "", "0xFFFFFFFF", "1", "9"},
                         {"", "1", "2", "3", "", "0", "0", ""},
                         {std::string(8161 * 2, 'A'), "1", "2", "3", "", "0", "0", "9"}};
  for (Words words : wrong) {
    words.insert(words.begin(), {"device", "info"});
    EXPECT_EQ(Run(words), kExitUsage) << words[2].substr(0, 10);
  }
  EXPECT_EQ(server_.Connections(), 0);
}

TEST_F(DeviceCtlTest, JsonIsValidForEveryCommandAndOutcome) {
  const Words lines[] = {{"device", "state", "H"},
                         {"device", "watch", "D", kGuid},
                         {"device", "unwatch", "D", kGuid},
                         {"device", "changes", "D"},
                         {"device", "info", "", "1", "2", "3", "", "0", "0", "9"}};
  for (Words line : lines) {
    line.push_back("--json");
    for (const char* const reply :
         {"0400 05000000", "0400 00000000 0A240000 16000000", "0400 00000000",
          "0400 9A210000 01000000 02000000", "0500", "0400 AC210000", kNoChange}) {
      server_.AnswersAndCloses({reply});
      (void)Run(line);
      ExpectJson();
    }
  }
}

}  // namespace
}  // namespace cli
