#include <gtest/gtest.h>

#include <string>

#include "cli/testing/CtlFixture.h"

// The board commands and the check, as whole command lines.

namespace cli {
namespace {

constexpr char kMost[] = "00200000";                             // the room of one text
constexpr char kEndOfTwo[] = "0400 03010000 00000000 00000000";  // 259 with two lengths

class BoardCtlTest : public CtlFixture {};

TEST_F(BoardCtlTest, InstalledBoardsAreATableUntilThereAreNoMore) {
  server_.Answers(
      {"0400 00000000 06000000 4E4234313041 06000000 07000000 48575837313031 07000000"
       "01000000 43 01000000 01000000 44 01000000 01000000 45 01000000 01000000 46 01000000"
       "01000000"});
  server_.Answers({"0400 03010000 00000000 00000000 00000000 00000000"});
  EXPECT_EQ(Run({"board", "installed"}), kExitOk);
  EXPECT_EQ(output_.out,
            "#  BOARD   DEVICE ID  NET TYPE  HARDWARE ID  HARDWARE INSTANCE ID  BOARD MAP  STATE\n"
            "0  NB410A  HWX7101    C         D            E                     F          1\n");
  EXPECT_EQ(LastRequest(),
            std::string("C00001000000") + kMost + kMost + kMost + kMost + kMost + kMost);
}

TEST_F(BoardCtlTest, ListNeedsADeviceIdAndSendsIt) {
  EXPECT_EQ(Run({"board", "list"}), kExitUsage);
  EXPECT_TRUE(Complains("board list needs DEVICEID"));
  EXPECT_EQ(server_.Connections(), 0);
  server_.Answers({"0400 03010000 00000000 00200000 00000000"});
  EXPECT_EQ(Run({"board", "list", "HWX"}), kExitOk);
  EXPECT_EQ(LastRequest(), std::string("C1000300000048575800000000") + kMost + kMost + kMost);
  EXPECT_EQ(output_.out, "(none)\n");
}

TEST_F(BoardCtlTest, WhateverElseEndsAListIsSaid) {
  server_.Answers({"0400 00000000 01000000 41 01000000 01000000 42 01000000 07000000"});
  server_.Answers({"0400 1F000000 00000000 00000000"});
  EXPECT_EQ(Run({"board", "available"}), kExitServer);
  EXPECT_TRUE(Says("0  A      B          7\n"));
  EXPECT_TRUE(Complains("the server answered 31 ERROR_GEN_FAILURE"));
  EXPECT_TRUE(Complains("hint: this ended the list at entry 1"));
}

TEST_F(BoardCtlTest, AListThatTheServerDoesNotEndIsNotSaidToHaveBeenEndedByTheLibrary) {
  server_.Answers({"0400 00000000 01000000 41 01000000 01000000 42 01000000 07000000"});
  server_.AnswersAndCloses({});
  EXPECT_EQ(Run({"board", "available"}), kExitTransport);
  EXPECT_TRUE(Complains("the list ends before entry 1\n"));
  EXPECT_TRUE(Complains("hint: the server may have ended"));
  server_.IsGone();
  EXPECT_EQ(Run({"board", "available"}), kExitTransport);
  EXPECT_FALSE(Complains("entry"));
  EXPECT_TRUE(Complains("not running"));
}

TEST_F(BoardCtlTest, EntriesThatDoNotFitAreToldOfAndDoNotEndTheList) {
  // The first does not fit twice, the second fits when less room is asked for.
  server_.Answers({"0400 9A210000 00200000 00200000"});
  server_.Answers({"0400 EA000000 00200000 00200000"});
  server_.Answers({"0400 9A210000 00200000 00200000"});
  server_.Answers({"0400 00000000 01000000 41 01000000 01000000 42 01000000 07000000"});
  server_.Answers({kEndOfTwo});
  EXPECT_EQ(Run({"board", "available"}), kExitOk);
  EXPECT_TRUE(Says("1  A      B          7\n"));
  EXPECT_TRUE(
      Complains("entry 0 does not fit a reply (8602 BUFFER_OVERFLOW): board 8192 bytes, "
                "deviceId 8192 bytes\n"));
  EXPECT_TRUE(Complains("entry 1 did not fit a reply; it came when less room was asked for"));
  EXPECT_FALSE(Says("fit a reply"));
}

TEST_F(BoardCtlTest, AListInJsonHasTextsLengthsAndNumbers) {
  server_.Answers({"0400 00000000 01000000 41 02000000 01000000 42 01000000 FE"});
  server_.Answers({kEndOfTwo});
  EXPECT_EQ(Run({"board", "adapters", "--json"}), kExitOk);
  ExpectJson();
  EXPECT_TRUE(
      Says("\"entries\":[{\"index\":0,\"code\":0,\"adapterName\":\"A\",\"adapterNameLength\":2,"
           "\"boardMap\":\"B\",\"boardMapLength\":1,\"value\":254,\"askedAgain\":false}],"
           "\"complete\":true"));
}

TEST_F(BoardCtlTest, ConfigurationsSendWhatIsLeftOutAsEmpty) {
  server_.Answers({"0400 03010000 00000000 00000000 00000000 00000000"});
  EXPECT_EQ(Run({"board", "configs", "B", "", "D"}), kExitOk);
  EXPECT_EQ(LastRequest(), std::string("C40000000000") + "0100000042" + "00000000" + "0100000044" +
                               "00000000" + kMost + kMost + kMost + kMost);
  EXPECT_EQ(Run({"board", "configs", "1", "2", "3", "4", "5"}), kExitUsage);
}

TEST_F(BoardCtlTest, MapAndInfoShowTheirText) {
  server_.Answers({"0400 00000000 02000000 4D31 02000000"});
  EXPECT_EQ(Run({"board", "map", "D", "", "H"}), kExitOk);
  EXPECT_EQ(LastRequest(), std::string("A300") + "0100000044" + "00000000" + "0100000048" + kMost);
  EXPECT_EQ(output_.out, "boardMap: \"M1\"\n");
  server_.Answers({"0400 00000000 02000000 4D31 02000000"});
  EXPECT_EQ(Run({"board", "info", "0x10", "B"}), kExitOk);
  EXPECT_EQ(LastRequest(), std::string("C300") + "10000000" + "0100000042" + "00000000" +
                               "00000000" + "00000000" + kMost);
  EXPECT_EQ(output_.out, "value: \"M1\"\n");
}

TEST_F(BoardCtlTest, InfoExShowsItsBytes) {
  server_.Answers({"0400 00000000 03000000 00FF41"});
  EXPECT_EQ(Run({"board", "info-ex", "2", "B", "M", "I"}), kExitOk);
  EXPECT_EQ(LastRequest(),
            std::string("CF00") + "02000000" + "0100000042" + "010000004D" + "0100000049" + kMost);
  EXPECT_TRUE(Says("data, 3 bytes:\n  0000  00 ff 41"));
  server_.Answers({"0400 00000000 03000000 00FF41"});
  EXPECT_EQ(Run({"board", "info-ex", "2", "--json"}), kExitOk);
  EXPECT_TRUE(Says("\"hex\":\"00ff41\""));
  ExpectJson();
}

TEST_F(BoardCtlTest, ATooLongAnswerIsToldWithItsLength) {
  server_.Answers({"0400 9A210000 E11F0000"});
  server_.Answers({"0400 9A210000 E11F0000"});
  EXPECT_EQ(Run({"board", "info", "1"}), kExitServer);
  EXPECT_TRUE(Complains("8161 bytes"));
}

TEST_F(BoardCtlTest, ATypeThatIsNoNumberIsNotSent) {
  for (const char* const type : {"x", "", "0x", "-1", "1.5", "0x1G"}) {
    EXPECT_EQ(Run({"board", "info", type}), kExitUsage) << type;
    EXPECT_TRUE(Complains("TYPE is a number"));
    EXPECT_EQ(Run({"board", "info-ex", type}), kExitUsage) << type;
  }
  for (const char* const type : {"4294967296", "0x123456789", "99999999999999999999"}) {
    EXPECT_EQ(Run({"board", "info", type}), kExitUsage) << type;
    EXPECT_TRUE(Complains(std::string("TYPE is too large: '") + type + "'"));
  }
  EXPECT_EQ(server_.Connections(), 0);
}

TEST_F(BoardCtlTest, CommandsWithoutAnAnswerSayWhatWasDone) {
  const struct {
    Words words;
    const char* request;
  } kLines[] = {{{"board", "scan"}, "C700"},
                {{"board", "create-logdevices"}, "C900"},
                {{"board", "update-logdevices", "D", "H"}, "C80001000000440100000048"},
                {{"board", "uninitialized"}, "5800"}};
  for (const auto& line : kLines) {
    server_.Answers({"0400 00000000"});
    EXPECT_EQ(Run(line.words), kExitOk);
    EXPECT_EQ(LastRequest(), line.request);
    EXPECT_TRUE(Says("the server answered 0"));
    server_.Answers({"0400 03000000"});
    EXPECT_EQ(Run(line.words), kExitServer);
    EXPECT_TRUE(Complains("the server answered 3"));
  }
}

TEST_F(BoardCtlTest, TheNumberOfUninitializedBoardsIsNotToldAsACodeOfWindows) {
  server_.Answers({"0400 01000000"});
  EXPECT_EQ(Run({"board", "uninitialized"}), kExitServer);
  EXPECT_TRUE(Complains("the server answered 1: a number of the board library"));
  EXPECT_FALSE(Complains("ERROR_"));
  server_.Answers({"0400 02000000"});
  EXPECT_EQ(Run({"board", "uninitialized", "--json"}), kExitServer);
  ExpectJson();
  EXPECT_TRUE(Says("\"number\":2,\"ok\":false,\"result\":{\"code\":2,\"name\":\"\","));
  server_.Answers({"0400 00000000"});
  EXPECT_EQ(Run({"board", "uninitialized", "--json"}), kExitOk);
  EXPECT_TRUE(Says("\"number\":0,\"ok\":true"));
  // The server's own codes are no number of the library.
  server_.Answers({"0400 9C210000"});
  EXPECT_EQ(Run({"board", "uninitialized", "--json"}), kExitServer);
  EXPECT_FALSE(Says("\"number\""));
  EXPECT_TRUE(Says("SRV_ERR_EXCEPTION_OCCURED"));
  EXPECT_TRUE(Says("it was the board library that raised it"));
}

TEST_F(BoardCtlTest, CodesOfTheLibraryAreToldAsItsOwn) {
  const struct {
    Words words;
    const char* usual;
  } kLines[] = {{{"board", "map", "D"}, "no board that is there fits these texts"},
                {{"board", "info", "9"}, "it has nothing of this TYPE on such a board"},
                {{"board", "info-ex", "9"}, "it has nothing of this TYPE on such a board"},
                {{"board", "update-logdevices", "D", "H"},
                 "no board that is there has this device id and hardware id"}};
  for (const auto& line : kLines) {
    server_.Answers({"0400 02000000 00000000"});
    EXPECT_EQ(Run(line.words), kExitServer);
    EXPECT_TRUE(
        Complains(std::string("hint: the code is the board library's; as a rule ") + line.usual))
        << output_.err;
    server_.Answers({"0400 57000000 00000000"});
    EXPECT_EQ(Run(line.words), kExitServer);
    EXPECT_TRUE(Complains("as a rule an argument that it needs is empty")) << output_.err;
    server_.Answers({"0400 1F000000 00000000"});
    EXPECT_EQ(Run(line.words), kExitServer);
    EXPECT_TRUE(Complains("its documents say what it means")) << output_.err;
    server_.Answers({"0400 AC210000"});
    EXPECT_EQ(Run(line.words), kExitServer);
    EXPECT_FALSE(Complains("hint")) << output_.err;
  }
}

TEST_F(BoardCtlTest, AScanThatTakesLongerThanTheTimeoutIsNotCalledAFailureOfTheScan) {
  server_.StaysSilent();
  EXPECT_EQ(Run({"board", "scan", "--timeout", "0.1"}), kExitTransport);
  EXPECT_TRUE(Complains("hint: the server goes on with it"));
}

// The answers of the registry that the check is framed by: one logical name, with this device.
constexpr char kOneName[] = "0400 00000000 04000000 504C4331 04000000";  // PLC1
constexpr char kNoMoreNames[] = "0400 03010000 E01F0000";
constexpr char kHasADevice[] = "0400 00000000 02000000 4C44 02000000";  // LD
constexpr char kHasNone[] = "0400 00000000 00000000 00000000";

TEST_F(BoardCtlTest, TheCheckShowsWhichLogicalNamesLostTheirDevice) {
  for (const char* const reply :
       {kOneName, kNoMoreNames, kHasADevice, "0400 00000000", kOneName, kNoMoreNames, kHasNone}) {
    server_.Answers({reply});
  }
  EXPECT_EQ(Run({"check"}), kExitOk);
  EXPECT_EQ(server_.Requests().at(3), "2401");
  EXPECT_TRUE(Says("unassigned: \"PLC1\", which had \"LD\"\n"));
}

TEST_F(BoardCtlTest, TheCheckTellsTheLibrarysResultAndGoesOn) {
  for (const char* const reply : {kOneName, kNoMoreNames, kHasADevice, "0400 1F000000", kOneName,
                                  kNoMoreNames, kHasADevice}) {
    server_.Answers({reply});
  }
  EXPECT_EQ(Run({"check"}), kExitServer);
  EXPECT_TRUE(Complains("the server answered 31"));
  EXPECT_TRUE(Says("no logical name had to be unassigned"));
}

TEST_F(BoardCtlTest, TheCheckRunsAlsoWhereThereAreNoLogicalNames) {
  for (const char* const reply :
       {"0400 02000000 E01F0000", "0400 00000000", "0400 02000000 E01F0000"}) {
    server_.Answers({reply});
  }
  EXPECT_EQ(Run({"check", "--json"}), kExitOk);
  ExpectJson();
  EXPECT_TRUE(Says("\"unassigned\":[]"));
}

TEST_F(BoardCtlTest, TheCheckRunsAlsoIfTheLogicalNamesCannotBeListed) {
  server_.Answers({"0400 05000000 E01F0000"});
  server_.Answers({"0400 00000000"});
  EXPECT_EQ(Run({"check"}), kExitOk);
  EXPECT_EQ(LastRequest(), "2401");
  EXPECT_TRUE(Says("what was unassigned is not known"));
}

TEST_F(BoardCtlTest, JsonIsValidForEveryCommandAndOutcome) {
  const Words lines[] = {{"board", "list", "D"},
                         {"board", "installed"},
                         {"board", "available"},
                         {"board", "adapters"},
                         {"board", "configs"},
                         {"board", "map", "D"},
                         {"board", "info", "1"},
                         {"board", "info-ex", "1"},
                         {"board", "scan"},
                         {"board", "create-logdevices"},
                         {"board", "update-logdevices", "D", "H"},
                         {"board", "uninitialized"},
                         {"check"}};
  for (Words line : lines) {
    line.push_back("--json");
    for (const char* const reply :
         {"0400 05000000", "0400 00000000 00000000 00000000 00000000 00000000",
          "0400 9A210000 01000000 02000000 03000000 04000000 05000000 06000000",
          "0400 1F000000 01000000 02000000 03000000 04000000", "0500", "0400 AC210000"}) {
      server_.AnswersAndCloses({reply});
      (void)Run(line);
      ExpectJson();
    }
  }
}

}  // namespace
}  // namespace cli
