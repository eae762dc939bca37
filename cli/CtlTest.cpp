#include "cli/Ctl.h"

#include <gtest/gtest.h>

#include <string>

#include "cli/testing/CtlFixture.h"

// Whole command lines against the scripted server, natively and on Windows.

namespace cli {
namespace {

using client::ScriptedServer;

class CtlTest : public CtlFixture {};

TEST_F(CtlTest, PingSucceedsWhenTheServerAnswersZero) {
  server_.Answers({"0400 00000000"});
  EXPECT_EQ(Run({"ping"}), kExitOk);
  EXPECT_EQ(LastRequest(), "1000");
  EXPECT_TRUE(Says("the server answered 0 (success) within "));
}

TEST_F(CtlTest, TheExitCodeTellsAnswersFromTransportErrors) {
  server_.Answers({"0400 1F000000"});
  EXPECT_EQ(Run({"ping"}), kExitServer);
  EXPECT_TRUE(Complains("the server answered 31 ERROR_GEN_FAILURE"));
  server_.AnswersAndCloses({});
  EXPECT_EQ(Run({"ping"}), kExitTransport);
  EXPECT_TRUE(Complains("closed the connection"));
  server_.StaysSilent();
  EXPECT_EQ(Run({"ping", "--timeout", "0.1"}), kExitTransport);
  EXPECT_TRUE(Complains("no whole reply"));
}

TEST_F(CtlTest, AMissingAndABusyServerAreToldApart) {
  {
    ScriptedServer busy;
    busy.IsBusy();
    EXPECT_EQ(RunAlone({"ping", "--pipe", busy.PipeName(), "--timeout", "0.1"}), kExitTransport);
    EXPECT_TRUE(Complains("busy"));
  }
  server_.IsGone();
  EXPECT_EQ(Run({"ping"}), kExitTransport);
  EXPECT_TRUE(Complains("not running"));
}

TEST_F(CtlTest, AServerThatIsGoneComesWithAHintInEveryCommand) {
  const Words lines[] = {
      {"reg", "get", "K", "N"}, {"reg", "ls", "K"}, {"board", "list", "D"}, {"board", "scan"},
      {"device", "state", "H"}, {"check"},          {"install", "D"},       {"panel"},
      {"ip", "delete", "1"},    {"test", "T"},      {"restart", "D"},       {"raw", "1000"}};
  for (const Words& words : lines) {
    server_.AnswersAndCloses({});
    EXPECT_EQ(Run(words), kExitTransport) << words[0];
    EXPECT_TRUE(Complains(
        "hint: the server may have ended; 'qorlixctl ping' tells; 'qorlixctl start' starts it\n"))
        << words[0] << output_.err;
  }
  server_.AnswersAndCloses({});
  EXPECT_EQ(Run({"ping"}), kExitTransport);
  EXPECT_TRUE(Complains("hint: the server may have ended; 'qorlixctl start' starts it\n"));
  server_.IsGone();
  for (const Words& words : lines) {
    EXPECT_EQ(Run(words), kExitTransport) << words[0];
    EXPECT_TRUE(Complains("hint: 'qorlixctl start' starts a server, whose pipe is asked without "))
        << words[0] << output_.err;
  }
}

TEST_F(CtlTest, AReplyThatDoesNotComeInTimeMayOnlyBeLate) {
  server_.StaysSilent();
  EXPECT_EQ(Run({"ping", "--timeout", "0.1"}), kExitTransport);
  EXPECT_TRUE(Complains("hint: the server may be busy with another request; it carries this one"));
  server_.StaysSilent();
  EXPECT_EQ(Run({"stop", "--timeout", "0.1"}), kExitTransport);
  EXPECT_TRUE(Complains("it carries the stop out when its turn comes"));
}

TEST_F(CtlTest, StopSucceedsWhenTheConnectionBreaks) {
  server_.AnswersAndCloses({});
  EXPECT_EQ(Run({"stop"}), kExitOk);
  EXPECT_EQ(LastRequest(), "FD00FD000000");
  EXPECT_TRUE(Says("stopped"));
}

TEST_F(CtlTest, RegSetSendsItsThreeTextsAndUsesTheBaseCommandWhenAsked) {
  server_.Answers({"0400 00000000"});
  server_.Answers({"0400 00000000"});
  EXPECT_EQ(Run({"reg", "set", "K", "N", ""}), kExitOk);
  EXPECT_EQ(LastRequest(), "0300010000004B010000004E00000000");
  EXPECT_EQ(Run({"reg", "set", "K", "", "V", "--base", "HKCU"}), kExitOk);
  EXPECT_EQ(LastRequest(), "1C0001000080010000004B000000000100000056");
  EXPECT_TRUE(Says("(default)"));
}

TEST_F(CtlTest, RegCreateDeleteAndUnsetSendTheirCommands) {
  for (int i = 0; i < 5; ++i) server_.Answers({"0400 00000000"});
  EXPECT_EQ(Run({"reg", "create", "K"}), kExitOk);
  EXPECT_EQ(LastRequest(), "0200010000004B");
  EXPECT_EQ(Run({"reg", "create", "K", "--base"}), kExitOk);
  EXPECT_EQ(LastRequest(), "1D0002000080010000004B");
  EXPECT_EQ(Run({"reg", "delete", "K"}), kExitOk);
  EXPECT_EQ(LastRequest(), "0100010000004B");
  EXPECT_TRUE(Says("\"K\\K\""));
  EXPECT_EQ(Run({"reg", "delete", "K", "--base=0x7"}), kExitOk);
  EXPECT_EQ(LastRequest(), "1E0007000000010000004B");
  EXPECT_EQ(Run({"reg", "unset", "K", "N"}), kExitOk);
  EXPECT_EQ(LastRequest(), "1200010000004B010000004E");
}

TEST_F(CtlTest, RegGetShowsTextAndLengthAndSaysWhenTheyDiffer) {
  server_.Answers({"0400 00000000 03000000 414243 03000000"});
  EXPECT_EQ(Run({"reg", "get", "K", "N"}), kExitOk);
  EXPECT_TRUE(Says("data:   \"ABC\"\nlength: 3\n"));
  EXPECT_FALSE(Says("hint"));
  server_.Answers({"0400 00000000 01000000 01 03000000"});
  EXPECT_EQ(Run({"reg", "get", "K", "N"}), kExitOk);
  EXPECT_TRUE(Says("data:   \"\\x01\"\nlength: 3\nhint: "));
}

TEST_F(CtlTest, RegGetOfTooLongAValueTellsItsSize) {
  server_.Answers({"0400 EA000000 0F270000"});
  EXPECT_EQ(Run({"reg", "get", "K", "N"}), kExitServer);
  EXPECT_TRUE(Complains("10000 bytes"));
}

TEST_F(CtlTest, RegGetInJsonHasNoDataAfterAFailure) {
  for (const char* const reply : {"0400 02000000 00000000", "0400 EA000000 0F270000"}) {
    server_.Answers({reply});
    EXPECT_EQ(Run({"reg", "get", "K", "N", "--json"}), kExitServer);
    ExpectJson();
    EXPECT_TRUE(Says("\"name\":\"N\",\"ok\":false")) << output_.out;
  }
}

TEST_F(CtlTest, RegLsAndValuesListUntilThereIsNoMore) {
  server_.Answers({"0400 00000000 01000000 41 01000000"});
  server_.Answers({"0400 03010000 E01F0000"});
  EXPECT_EQ(Run({"reg", "ls", "K"}), kExitOk);
  EXPECT_EQ(output_.out, "A\n");
  server_.Answers({"0400 9A210000 01000000 E01F0000"});
  server_.Answers({"0400 00000000 00000000 00000000 01000000 42 02000000"});
  server_.Answers({"0400 03010000 E01F0000 E01F0000"});
  EXPECT_EQ(Run({"reg", "values", "K"}), kExitOk);
  EXPECT_EQ(output_.out, "(default) = \"B\"  (2 bytes)\n");
  EXPECT_TRUE(
      Complains("value 0 does not fit a reply (8602 BUFFER_OVERFLOW): its data has 8160 bytes\n"));
}

TEST_F(CtlTest, AnEmptyKeyIsNoFailure) {
  server_.Answers({"0400 03010000 E01F0000"});
  EXPECT_EQ(Run({"reg", "ls", "K"}), kExitOk);
  EXPECT_EQ(output_.out, "(no subkeys)\n");
}

TEST_F(CtlTest, ControlCharactersOfTheRegistryDoNotReachTheTerminal) {
  server_.Answers({"0400 00000000 05000000 411B5B324A 05000000"});
  server_.Answers({"0400 03010000 E01F0000"});
  EXPECT_EQ(Run({"reg", "ls", "K"}), kExitOk);
  EXPECT_EQ(output_.out, "A\\x1b[2J\n");
}

TEST_F(CtlTest, RawShowsAKnownReplyWithItsFields) {
  server_.Answers({"0400 00000000 02000000 4142 02000000"});
  EXPECT_EQ(Run({"raw", "1600 01000000", "4B 01000000 4E"}), kExitOk);
  EXPECT_EQ(LastRequest(), "1600010000004B010000004E");
  EXPECT_TRUE(Says("Reg_GetValue, code 22"));
  EXPECT_TRUE(Says("key: 1 byte: \"K\""));
  EXPECT_TRUE(Says("data: 2 bytes: \"AB\""));
  EXPECT_TRUE(Says("dataLength: 2 (0x2)"));
}

TEST_F(CtlTest, RawSplitsADoubledReply) {
  server_.Answers({"0400 AC210000", "0400 AC210000 0400 9A210000"});
  EXPECT_EQ(Run({"raw", "10"}), kExitServer);
  EXPECT_TRUE(Says("reply, 6 bytes: mark 4, result 8620 SRV_ERR_UNKNOWN_COMMAND"));
  EXPECT_TRUE(Says("the same reply once more, 6 bytes"));
  EXPECT_TRUE(Says("a further reply, 6 bytes: mark 4, result 8602 BUFFER_OVERFLOW"));
}

TEST_F(CtlTest, RawSaysWhatTheNamesOfTheFieldsDoNotTell) {
  server_.Answers({"0400 1F000000 03000000 00200000 07000000"});
  EXPECT_EQ(Run({"raw", "C100 01000000 44 00000000 00200000 00200000 00200000"}), kExitServer);
  EXPECT_TRUE(Says("boardLength: 3 (0x3)\n    capacity: 8192 (0x2000)\n    boardMapLength: 7"));
  EXPECT_TRUE(Says("note: of a failure, capacity is the room of the server's adapter buffer"));
  server_.Answers({"0400 9A210000"});
  EXPECT_EQ(Run({"raw", "C500 00000000 00200000 00200000", "--json"}), kExitServer);
  ExpectJson();
  EXPECT_TRUE(Says("\"note\":\"an answer that is too long comes without its lengths\""));
}

TEST_F(CtlTest, RawShowsWhatIsNoReply) {
  server_.Answers({"0500 0000"});
  EXPECT_EQ(Run({"raw", "1000"}), kExitTransport);
  EXPECT_TRUE(Says("  0000  05 00 00 00"));
  EXPECT_TRUE(Complains("not a reply"));
}

TEST_F(CtlTest, RawOfAConfirmedStopSucceedsWithoutAReply) {
  server_.AnswersAndCloses({});
  EXPECT_EQ(Run({"raw", "FD00 FD000000"}), kExitOk);
  EXPECT_TRUE(Says("as a confirmed stop does"));
}

TEST_F(CtlTest, RawSendsMoreThanOneBufferAndShowsEachAnswer) {
  server_.Answers({"0400 AC210000"});
  server_.Answers({"0400 00000000"});
  EXPECT_EQ(Run({"raw", std::string(8192 * 2, 'E'), "1000", "--json"}), kExitServer);
  ExpectJson();
  EXPECT_EQ(server_.Requests().size(), 2u);
  EXPECT_TRUE(Says("\"code\":16,\"name\":\"NoOperation\""));
}

TEST_F(CtlTest, BadHexIsNotSent) {
  EXPECT_EQ(Run({"raw", "100"}), kExitUsage);
  EXPECT_TRUE(Complains("odd number"));
  EXPECT_EQ(Run({"raw", "zz"}), kExitUsage);
  EXPECT_EQ(Run({"raw", ""}), kExitUsage);
  EXPECT_EQ(server_.Connections(), 0);
  EXPECT_EQ(output_.out, "");
}

TEST_F(CtlTest, JsonIsValidForEveryCommandAndOutcome) {
  const Words lines[] = {{"ping"},
                         {"reg", "create", "K"},
                         {"reg", "delete", "K"},
                         {"reg", "set", "K", "N", "V"},
                         {"reg", "unset", "K", "N"},
                         {"reg", "get", "K", "N"},
                         {"reg", "ls", "K"},
                         {"reg", "values", "K"},
                         {"raw", "1600 0100"},
                         {"raw", "0201 00000000"}};
  for (Words line : lines) {
    line.push_back("--json");
    for (const char* const reply : {"0400 05000000", "0400 00000000",
                                    "0400 EA000000 01000000 "
                                    "02000000",
                                    "0500", "0400 AC210000"}) {
      server_.AnswersAndCloses({reply});
      (void)Run(line);
      ExpectJson();
    }
  }
  EXPECT_EQ(Run({"codes", "--json"}), kExitOk);
  ExpectJson();
  EXPECT_EQ(Run({"commands", "--json"}), kExitOk);
  ExpectJson();
}

TEST_F(CtlTest, JsonIsValidForTextsOfAnyBytes) {
  std::string bytes;
  for (int byte = 0; byte < 256; ++byte) bytes += static_cast<char>(byte);
  const std::string hex = client::ToHex(bytes.data(), bytes.size());
  server_.Answers({"0400 00000000 00010000" + hex + "00010000"});
  EXPECT_EQ(Run({"reg", "get", "K", "N", "--json"}), kExitOk);
  ExpectJson();
  EXPECT_TRUE(Says("\\u0000\\u0001"));
  EXPECT_TRUE(Says("fdfeff\""));
}

TEST_F(CtlTest, JsonSaysWhereACodeComesFrom) {
  server_.IsGone();
  EXPECT_EQ(Run({"ping", "--json"}), kExitTransport);
  EXPECT_TRUE(Says("\"ok\":false,\"result\":{\"code\":2,"));
  EXPECT_TRUE(Says("\"origin\":\"connect\""));
}

TEST_F(CtlTest, ATextOutsideTheCodePageIsRefused) {
  EXPECT_EQ(Run({"reg", "create", "\xF0\x9F\x98\x80"}), kExitUsage);
  EXPECT_TRUE(Complains("ANSI code page"));
  EXPECT_EQ(server_.Connections(), 0);
}

TEST_F(CtlTest, ATextLongerThanARequestIsRefused) {
  EXPECT_EQ(Run({"reg", "create", std::string(9000, 'k')}), kExitUsage);
  EXPECT_TRUE(Complains("8192"));
}

TEST_F(CtlTest, HelpNamesEveryCommandAndEachHasItsOwn) {
  EXPECT_EQ(RunAlone({"--help"}), kExitOk);
  const std::string overall = output_.out;
  for (const Subcommand& subcommand : Subcommands()) {
    EXPECT_NE(overall.find("  " + std::string(subcommand.name)), std::string::npos);
    Words words;
    const std::string name = subcommand.name;
    const std::size_t blank = name.find(' ');
    words.push_back(name.substr(0, blank));
    if (blank != std::string::npos) words.push_back(name.substr(blank + 1));
    Words asked = words;
    asked.push_back("--help");
    EXPECT_EQ(RunAlone(asked), kExitOk) << name;
    EXPECT_TRUE(Says("usage: qorlixctl " + name));
    const std::string help = output_.out;
    words.insert(words.begin(), "help");
    EXPECT_EQ(RunAlone(words), kExitOk);
    EXPECT_EQ(output_.out, help);
  }
}

TEST_F(CtlTest, TheRegistryCommandsHaveAHelpInCommon) {
  EXPECT_EQ(RunAlone({"reg", "--help"}), kExitOk);
  EXPECT_TRUE(Says("reg unset PATH NAME"));
  EXPECT_FALSE(Says("ping"));
  const std::string help = output_.out;
  EXPECT_EQ(RunAlone({"help", "reg"}), kExitOk);
  EXPECT_EQ(output_.out, help);
}

TEST_F(CtlTest, EveryGroupOfCommandsHasAHelpInCommon) {
  for (const std::string group : {"reg", "board", "device"}) {
    EXPECT_EQ(RunAlone({group, "--help"}), kExitOk);
    EXPECT_TRUE(Says("usage: qorlixctl " + group + " COMMAND"));
    EXPECT_TRUE(Says("for example, explains one of them"));
  }
  EXPECT_EQ(RunAlone({"device"}), kExitUsage);
  EXPECT_TRUE(Complains("device needs one of state, watch, unwatch, changes, info"));
  EXPECT_EQ(RunAlone({"board", "nonsense"}), kExitUsage);
  EXPECT_TRUE(Complains("there is no command 'board nonsense'"));
}

TEST_F(CtlTest, HelpFitsTheTerminal) {
  (void)RunAlone({"--help"});
  std::string all = output_.out;
  for (const char* const group : {"reg", "board", "device"}) {
    (void)RunAlone({"help", group});
    all += output_.out;
  }
  for (const Subcommand& subcommand : Subcommands()) all += subcommand.details;
  std::size_t begin = 0;
  for (std::size_t end = 0; (end = all.find('\n', begin)) != std::string::npos; begin = end + 1) {
    EXPECT_LE(end - begin, 100u) << all.substr(begin, end - begin);
  }
}

TEST_F(CtlTest, TheVersionIsOneLine) {
  EXPECT_EQ(RunAlone({"--version"}), kExitOk);
  EXPECT_EQ(output_.out.substr(0, 10), "qorlixctl ");
  EXPECT_EQ(output_.out.find('\n'), output_.out.size() - 1);
}

TEST_F(CtlTest, UsageErrorsGoToTheErrorOutputAndNameTheHelp) {
  EXPECT_EQ(RunAlone({}), kExitUsage);
  EXPECT_TRUE(Complains("'qorlixctl --help'"));
  EXPECT_EQ(RunAlone({"reg", "get", "K"}), kExitUsage);
  EXPECT_TRUE(Complains("'qorlixctl reg get --help'"));
  EXPECT_EQ(RunAlone({"board", "scan", "--timeout", "soon"}), kExitUsage);
  EXPECT_TRUE(Complains("'qorlixctl board scan --help'"));
  EXPECT_EQ(RunAlone({"--color", "red", "trace", "dump", "--unknown"}), kExitUsage);
  EXPECT_TRUE(Complains("not 'red'\n'qorlixctl trace dump --help'"));
  EXPECT_EQ(RunAlone({"--timeout", "soon"}), kExitUsage);
  EXPECT_TRUE(Complains("'qorlixctl --help'"));
  for (const std::string group : {"board", "ip"}) {
    EXPECT_EQ(RunAlone({group}), kExitUsage);
    EXPECT_TRUE(Complains("'qorlixctl help " + group + "'"));
  }
  for (const Words& words : {Words{"help", "nonsense"}, Words{"nonsense", "--help"}}) {
    EXPECT_EQ(RunAlone(words), kExitUsage);
    EXPECT_TRUE(Complains("there is no command 'nonsense'"));
    EXPECT_EQ(output_.out, "");
  }
  for (const Words& words :
       {Words{"help", "trace", "decode"}, Words{"trace", "decode", "--help"}}) {
    EXPECT_EQ(RunAlone(words), kExitUsage);
    EXPECT_TRUE(Complains("there is no command 'trace decode'"));
    EXPECT_EQ(output_.out, "");
  }
}

TEST_F(CtlTest, CodesAndCommandsAreListed) {
  EXPECT_EQ(RunAlone({"codes"}), kExitOk);
  EXPECT_TRUE(Says("8620  0x21ac  SRV_ERR_UNKNOWN_COMMAND"));
  EXPECT_EQ(RunAlone({"commands"}), kExitOk);
  EXPECT_TRUE(Says("292  0x0124  BC_PlausibilitaetBL"));
  EXPECT_TRUE(Says("request code; text key; text name; text value"));
}

}  // namespace
}  // namespace cli
