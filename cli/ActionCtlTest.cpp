#include <gtest/gtest.h>

#include <string>

#include "cli/testing/CtlFixture.h"

// The commands that install and set up, as whole command lines.

namespace cli {
namespace {

const std::string kTooLong(260, 'x');

class ActionCtlTest : public CtlFixture {};

TEST_F(ActionCtlTest, InstallSendsDeviceAndLanguageAndTellsOfTheCheck) {
  server_.Answers({"0400 00000000"});
  EXPECT_EQ(Run({"install", "D1", "--language", "EN"}), kExitOk);
  EXPECT_EQ(LastRequest(),
            "0500"
            "020000004431"
            "02000000454E");
  EXPECT_TRUE(
      Says("the server answered 0 (success): the installer of \"D1\" has run, and the "
           "plausibility check after it"));
  // A null pointer would be more than a plug-in expects, so a text that is left out is empty.
  server_.Answers({"0400 00000000"});
  EXPECT_EQ(Run({"install", "D1"}), kExitOk);
  EXPECT_EQ(LastRequest(),
            "0500"
            "020000004431"
            "00000000");
}

TEST_F(ActionCtlTest, DeinstallSendsTheBoardToo) {
  server_.Answers({"0400 00000000"});
  EXPECT_EQ(Run({"deinstall", "D1", "--board=B", "--language=EN"}), kExitOk);
  EXPECT_EQ(LastRequest(),
            "0600"
            "020000004431"
            "02000000454E"
            "0100000042");
  EXPECT_TRUE(Says("no plausibility check follows"));
}

TEST_F(ActionCtlTest, CodesOfAPlugInAreExplainedByWhatMayHaveGoneWrong) {
  const struct {
    const char* code;
    const char* hint;
  } kCodes[] = {{"02000000",
                 "NORVA\\DefDevices\\DeviceID\\D1 or one of its values HardwareID and "
                 "Installer is missing"},
                {"22000000", "too long for its path"},
                {"7E000000", "is not in the server's system directory"},
                {"7F000000", "lacks the function that the value Installer"},
                {"C1000000", "is not one for 32 bits"},
                {"39300000", "the plug-in's own code"}};
  for (const auto& line : kCodes) {
    server_.Answers({std::string("0400 ") + line.code});
    EXPECT_EQ(Run({"install", "D1"}), kExitServer) << line.code;
    EXPECT_TRUE(Complains(line.hint)) << output_.err;
  }
  server_.Answers({"0400 7F000000"});
  EXPECT_EQ(Run({"deinstall", "D1"}), kExitServer);
  EXPECT_TRUE(Complains("the value Deinstaller of"));
}

TEST_F(ActionCtlTest, TextsThatTheServerWouldNotTakeAreNotSent) {
  const Words kLines[] = {{"install", kTooLong},
                          {"install", "D", "--language", kTooLong},
                          {"deinstall", "D", "--board", kTooLong},
                          {"driver", "install", kTooLong, "I"},
                          {"driver", "install", "S", kTooLong},
                          {"driver", "install", "S", "I", kTooLong},
                          {"test", kTooLong}};
  for (const Words& words : kLines) {
    EXPECT_EQ(Run(words), kExitUsage) << words[0];
    EXPECT_TRUE(Complains("has at most 259 bytes here")) << words[0];
  }
  EXPECT_EQ(server_.Connections(), 0);
}

TEST_F(ActionCtlTest, OptionsOfOtherCommandsAreRefused) {
  const Words kLines[] = {
      {"install", "D", "--board", "B"},     {"panel", "--mode", "1"},
      {"ip", "delete", "1", "--wait", "1"}, {"test", "T", "--event", "E"},
      {"ping", "--language", "EN"},         {"driver", "install", "S", "I", "--fetch", "E"}};
  for (const Words& words : kLines) {
    EXPECT_EQ(Run(words), kExitUsage) << words[0];
    EXPECT_TRUE(Complains("does not take --")) << output_.err;
  }
  EXPECT_EQ(Run({"driver", "install", "S", "I", "--mode", "x"}), kExitUsage);
  EXPECT_TRUE(Complains("--mode is a number, decimal"));
  EXPECT_EQ(server_.Connections(), 0);
}

TEST_F(ActionCtlTest, ADriverIsInstalledWhenTheServerAnswersTwice) {
  server_.Answers({"0400 00000000", "0400 00000000 0400 00000000"});
  EXPECT_EQ(Run({"driver", "install", "S", "C:\\I.inf", "T", "--mode", "0x10"}), kExitOk);
  EXPECT_EQ(LastRequest(),
            "0F00"
            "0100000053"
            "08000000433A5C492E696E66"
            "0100000054"
            "10000000");
  EXPECT_TRUE(Says("the server answered 0 (success), twice: drvinstx.dll was loaded"));
}

TEST_F(ActionCtlTest, ASingleZeroIsToldAsWhatItMeans) {
  server_.Answers({"0400 00000000"});
  EXPECT_EQ(Run({"driver", "install", "S", "I"}), kExitServer);
  EXPECT_TRUE(Complains("drvinstx.dll could not be loaded; nothing was installed"));
  server_.Answers({"0400 00000000"});
  EXPECT_EQ(Run({"panel", "--json"}), kExitServer);
  ExpectJson();
  EXPECT_TRUE(Says("\"second\":{\"came\":false},\"ok\":false"));
}

TEST_F(ActionCtlTest, AFailureIsToldOnceAlthoughItComesTwice) {
  server_.Answers({"0400 1F000000 0400 1F000000 0400 1F000000"});
  EXPECT_EQ(Run({"panel"}), kExitServer);
  EXPECT_EQ(LastRequest(), "1100");
  EXPECT_TRUE(Complains("the server answered 31 ERROR_GEN_FAILURE"));
  EXPECT_EQ(output_.out, "");
  server_.Answers({"0400 9C210000 0400 9C210000 0400 9C210000"});
  EXPECT_EQ(Run({"panel"}), kExitServer);
  EXPECT_TRUE(Complains("hint: it was onlpanelx.cpl that raised it"));
}

TEST_F(ActionCtlTest, CodesOfDriverAndPanelAreToldAsWhatTheyAre) {
  server_.Answers({"0400 02000000 0400 02000000 0400 02000000"});
  EXPECT_EQ(Run({"driver", "install", "S", "I"}), kExitServer);
  EXPECT_TRUE(Complains("hint: the code is drvinstx.dll's; as a rule the INF file"));
  server_.Answers({"0400 0B0200E0 0400 0B0200E0 0400 0B0200E0"});
  EXPECT_EQ(Run({"driver", "install", "S", "I"}), kExitServer);
  EXPECT_TRUE(Complains("hint: the code is drvinstx.dll's; it may be one of the set-up functions"));
  server_.Answers({"0400 7F000000 0400 7F000000 0400 7F000000"});
  EXPECT_EQ(Run({"panel"}), kExitServer);
  EXPECT_TRUE(Complains("hint: onlpanelx.cpl lacks RunEpromPanelAsAdmin"));
  server_.Answers({"0400 1F000000 0400 1F000000 0400 1F000000"});
  EXPECT_EQ(Run({"panel"}), kExitServer);
  EXPECT_TRUE(Complains("hint: onlpanelx.cpl says that it failed, but not why"));
  server_.Answers({"0400 AC210000 0400 AC210000"});
  EXPECT_EQ(Run({"panel"}), kExitServer);
  EXPECT_FALSE(Complains("hint"));
}

TEST_F(ActionCtlTest, AnswersThatDifferAreTold) {
  server_.Answers({"0400 00000000 0400 00000000 0400 05000000"});
  EXPECT_EQ(Run({"panel"}), kExitServer);
  EXPECT_TRUE(Says("the answers differ: 0 (success), then 5 ERROR_ACCESS_DENIED"));
  server_.Answers({"0400 05000000 0400 05000000 0400 00000000"});
  EXPECT_EQ(Run({"driver", "install", "S", "I", "--json"}), kExitServer);
  ExpectJson();
  EXPECT_TRUE(Says("\"second\":{\"came\":true,\"code\":0,\"agrees\":false}"));
  // A repetition that is not one is no reply at all.
  server_.Answers({"0400 05000000 0400 06000000 0400 05000000"});
  EXPECT_EQ(Run({"panel"}), kExitTransport);
  EXPECT_TRUE(Complains("not a reply of the server"));
}

TEST_F(ActionCtlTest, WhatBlocksTheServerIsSaidWhenNoReplyComes) {
  const struct {
    Words words;
    const char* hint;
  } kLines[] = {{{"test", "T"}, "until the box on its desktop is closed"},
                {{"panel"}, "until what it shows on its desktop is closed"},
                {{"driver", "install", "S", "I"}, "until what it shows on its desktop is closed"},
                {{"install", "D"}, "until the plug-in returns"},
                {{"ip", "delete", "1"}, "until ipcfgx.dll returns"}};
  for (const auto& line : kLines) {
    server_.StaysSilent();
    Words words = line.words;
    words.insert(words.end(), {"--timeout", "0.1"});
    EXPECT_EQ(Run(words), kExitTransport) << line.words[0];
    EXPECT_TRUE(Complains(line.hint)) << output_.err;
  }
}

TEST_F(ActionCtlTest, AServerThatAPlugInTookAlongIsSuspected) {
  server_.AnswersAndCloses({});
  EXPECT_EQ(Run({"install", "D"}), kExitTransport);
  EXPECT_TRUE(Complains("the server may have ended; 'qorlixctl ping' tells"));
}

TEST_F(ActionCtlTest, AnAddressIsAddedByteByByteAndItsContextIsTold) {
  server_.Answers({"0400 00000000 05000000 07000000"});
  EXPECT_EQ(Run({"ip", "add", "192.168.1.7", "255.255.255.0", "11"}), kExitOk);
  EXPECT_EQ(LastRequest(),
            "0C00"
            "C0A80107"
            "FFFFFF00"
            "0B000000");
  EXPECT_EQ(output_.out,
            "nteContext:  5 (0x00000005)\n"
            "nteInstance: 7 (0x00000007)\n"
            "hint: 'qorlixctl ip delete 5' deletes the address again\n");
}

TEST_F(ActionCtlTest, AnAddressThatIsRefusedComesTwiceAndIsToldOnce) {
  server_.Answers(
      {"0400 9B210000 00000000 00000000", "0400 9B210000 00000000 00000000 0400 9B210000"});
  EXPECT_EQ(Run({"ip", "add", "10.0.0.1", "255.0.0.0", "1"}), kExitServer);
  EXPECT_EQ(output_.out, "");
  EXPECT_TRUE(Complains("hint: it is ipcfgx.dll, which has to be in"));
  server_.Answers(
      {"0400 57000000 01000000 02000000 0400 57000000 01000000 02000000 0400 00000000"});
  EXPECT_EQ(Run({"ip", "add", "10.0.0.1", "255.0.0.0", "1", "--json"}), kExitServer);
  ExpectJson();
  EXPECT_TRUE(
      Says("\"nteContext\":1,\"nteInstance\":2,\"second\":{\"came\":true,\"code\":0,"
           "\"agrees\":false}"));
}

TEST_F(ActionCtlTest, AnAddressIsFourNumbersWithDots) {
  for (const char* const word :
       {"", "1", "1.2.3", "1.2.3.", "1.2.3.4.", "1.2.3.4.5", "256.1.1.1", "01.2.3.4", "1..3.4",
        "0x1.2.3.4", "1.2.3.4 ", "-1.2.3.4", "a.b.c.d", "1.2.3.0004"}) {
    EXPECT_EQ(Run({"ip", "add", word, "255.0.0.0", "1"}), kExitUsage) << word;
    EXPECT_TRUE(Complains("ADDRESS is four numbers")) << word;
    EXPECT_EQ(Run({"ip", "add", "1.2.3.4", word, "1"}), kExitUsage) << word;
    EXPECT_TRUE(Complains("MASK is four numbers")) << word;
  }
  EXPECT_EQ(Run({"ip", "add", "1.2.3.4", "255.0.0.0", "eth0"}), kExitUsage);
  EXPECT_TRUE(Complains("IFINDEX is a number"));
  EXPECT_EQ(Run({"ip", "delete", "4294967296"}), kExitUsage);
  EXPECT_TRUE(Complains("CONTEXT is too large"));
  EXPECT_EQ(server_.Connections(), 0);
}

TEST_F(ActionCtlTest, AnAddressIsDeletedByItsContext) {
  server_.Answers({"0400 00000000"});
  EXPECT_EQ(Run({"ip", "delete", "0x01020304"}), kExitOk);
  EXPECT_EQ(LastRequest(), "0D0004030201");
  server_.Answers({"0400 99210000"});
  EXPECT_EQ(Run({"ip", "delete", "1"}), kExitServer);
  EXPECT_TRUE(Complains("hint: it is IE_DeleteIPAddressEx of ipcfgx.dll"));
}

TEST_F(ActionCtlTest, ATextThatWasShownIsASuccess) {
  server_.Answers({"0400 E7030000 02000000 4869"});
  EXPECT_EQ(Run({"test", "Hi"}), kExitOk);
  EXPECT_EQ(LastRequest(), "F000020000004869");
  EXPECT_EQ(output_.out, "the server answered 999, which is success here; it has shown \"Hi\"\n");
  EXPECT_EQ(output_.err, "");
  server_.Answers({"0400 E7030000 02000000 486F"});
  EXPECT_EQ(Run({"test", "Hi", "--json"}), kExitServer);
  ExpectJson();
  EXPECT_TRUE(Says("\"shown\":\"Ho\",\"ok\":false"));
  server_.Answers({"0400 00000000"});
  EXPECT_EQ(Run({"test", "Hi"}), kExitServer);
  EXPECT_TRUE(Complains("but the success of this command is 999"));
}

TEST_F(ActionCtlTest, AServerWithoutTheCommandsIsNotExplainedByLibraries) {
  const Words kLines[] = {{"install", "D"},
                          {"deinstall", "D"},
                          {"driver", "install", "S", "I"},
                          {"panel"},
                          {"restart", "N"},
                          {"ip", "add", "1.1.1.1", "1.1.1.1", "1"},
                          {"ip", "delete", "1"},
                          {"test", "T"}};
  for (const Words& words : kLines) {
    server_.Answers({"0400 AC210000"});
    EXPECT_EQ(Run(words), kExitServer) << words[0];
    EXPECT_TRUE(Complains("8620 SRV_ERR_UNKNOWN_COMMAND")) << output_.err;
    EXPECT_FALSE(Complains("hint")) << output_.err;
  }
}

TEST_F(ActionCtlTest, EveryCommandAndGroupIsExplained) {
  const Words kLines[] = {{"install"}, {"deinstall"},   {"driver"}, {"driver", "install"},
                          {"panel"},   {"restart"},     {"ip"},     {"ip", "add"},
                          {"test"},    {"ip", "delete"}};
  for (Words words : kLines) {
    words.emplace_back("--help");
    EXPECT_EQ(RunAlone(words), kExitOk);
    EXPECT_TRUE(Says("usage: qorlixctl " + words[0])) << output_.out;
  }
  EXPECT_EQ(RunAlone({"restart", "--help"}), kExitOk);
  EXPECT_TRUE(Says("restart [NAME] [--event EVENT] [--wait SECONDS] [--fetch EVENT]"));
}

}  // namespace
}  // namespace cli
