#include <windows.h>

#include <gmock/gmock.h>

#include <regex>

#include "tests/e2e/TraceTest.h"

// What the trace parameters make of the lines, over a server that is told of each change.

namespace e2e {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using trace_setup::FileName;
using trace_setup::ReadFile;

constexpr char kKey[] = "SOFTWARE\\Vesmark\\NORVA\\E2E";

class TraceConfigurationTest : public TraceTest {
 protected:
  // Takes the parameters up, whatever they are, and sends the request twice; that one has an answer
  // of six bytes. \returns whatever the first file holds then.
  Lines Traced(const TraceParameters& parameters, const Bytes& request = Wire("0400")) {
    trace_setup::Replace(parameters);
    Ask(request);
    return SplitLines(ReadFile(FileName(1)));
  }

  void Ask(const Bytes& request) {
    EXPECT_TRUE(client_.Send(request));
    EXPECT_EQ(client_.Receive(6).size(), 6u);
    LetItFinish();
  }

  static TraceParameters OneLineWith(TraceParameters more) {
    more.emplace_back("String", "opCode?0x4");
    return AllLinesWith(more);
  }
};

// --- Layouts ---

struct Layout {
  const char* format;
  const char* line;
};

TEST_F(TraceConfigurationTest, EveryLayoutHasItsColumns) {
  const std::string date =
      "L QORLIXSR P(\\d{9})T(\\d{9}) -- SRV  0  0000 "
      "(\\d\\d):(\\d\\d):(\\d\\d),\\d{3} Dispatch\\.cpp,\\d{5} "
      "RunSrvLoop:  opCode 0x4";
  const std::string time = "T QORLIXSR -- SRV  0  0000 (\\d{5}\\.\\d{6}) RunSrvLoop:  opCode 0x4";
  const std::string brief = "S QORLIXSR -- SRV  0  0000 RunSrvLoop:  opCode 0x4";
  const std::string text = "RunSrvLoop:  opCode 0x4 ";
  const std::pair<const char*, std::string> layouts[] = {
      {"SHORT", brief}, {"short", brief},   {"Short", brief}, {"TIME", time},  {"time", time},
      {"TEXT", text},   {"text", text},     {"tExT", text},   {"LONG", date},  {"long", date},
      {"", date},       {"ANYTHING", date}, {"TEXT ", date},  {" TEXT", date}, {"TEXTS", date}};
  for (const auto& [format, line] : layouts) {
    EXPECT_THAT(Traced(OneLineWith({{"Format", format}})), SizeIs(1)) << format;
    const Bytes content = ReadFile(FileName(1));
    EXPECT_TRUE(std::regex_match(content, std::regex(line + "\r\n"))) << format << ": " << content;
  }
  TraceParameters absent = OneLineWith({});
  std::erase_if(absent, [](const auto& one) { return one.first == "Format"; });
  EXPECT_THAT(Traced(absent), SizeIs(1));
  EXPECT_TRUE(std::regex_match(ReadFile(FileName(1)), std::regex(date + "\r\n")));
}

TEST_F(TraceConfigurationTest, TheLongLayoutNamesProcessAndThreadAndTheTimeOfDay) {
  SYSTEMTIME before;
  GetLocalTime(&before);
  const Lines lines = Traced(AllLinesWith({{"Format", "LONG"}}));
  ASSERT_THAT(lines, Not(IsEmpty()));
  const std::regex columns(
      "L QORLIXSR P(\\d{9})T(\\d{9}) -- SRV  0  0000 (\\d\\d):(\\d\\d):(\\d\\d),\\d{3} "
      "([^,]{1,12}),\\d{5} .*");
  std::string thread;
  for (const std::string& line : lines) {
    std::smatch parts;
    ASSERT_TRUE(std::regex_match(line, parts, columns)) << line;
    EXPECT_EQ(std::stoul(parts[1]), Server().Id());
    if (thread.empty()) thread = parts[2];
    EXPECT_EQ(parts[2], thread) << "one thread serves";
    const int seconds = (std::stoi(parts[3]) * 60 + std::stoi(parts[4])) * 60 + std::stoi(parts[5]);
    const int since = seconds - ((before.wHour * 60 + before.wMinute) * 60 + before.wSecond);
    EXPECT_LE((since + 86400) % 86400, 5) << line;
  }
  // A longer file name shows its first twelve characters.
  EXPECT_THAT(lines, testing::Contains(testing::HasSubstr(" ReplyWriter.,")));
}

TEST_F(TraceConfigurationTest, TheTimeLayoutIsTheClockOfThePerformanceCounter) {
  ASSERT_THAT(Traced(OneLineWith({{"Format", "TIME"}})), SizeIs(1));
  LARGE_INTEGER counter;
  LARGE_INTEGER frequency;
  (void)QueryPerformanceCounter(&counter);
  (void)QueryPerformanceFrequency(&frequency);
  std::smatch parts;
  const std::string line = ReadFile(FileName(1));
  ASSERT_TRUE(std::regex_search(line, parts, std::regex("0000 (\\d{5}\\.\\d{6}) "))) << line;
  const auto now = static_cast<double>(counter.QuadPart / frequency.QuadPart % 100000);
  EXPECT_NEAR(std::stod(parts[1]), now, 5);
}

// --- Level and mask ---

TEST_F(TraceConfigurationTest, ALevelCountsWhenItIsATextThatIsNotZero) {
  for (const char* const level :
       {"1", "255", "0x1", "0XFF", "010", "-1", " 7", "4294967295", "99999999999", "16 or so"}) {
    EXPECT_THAT(Traced(OneLineWith({{"Level", level}})), SizeIs(1)) << level;
  }
  for (const char* const level : {"0", "0x0", "00", "", "high", "x1", "08x"}) {
    EXPECT_THAT(Traced(OneLineWith({{"Level", level}})), IsEmpty()) << level;
  }
}

TEST_F(TraceConfigurationTest, ALevelThatIsNoTextOrAbsentLeavesTracingOff) {
  TraceParameters absent = OneLineWith({});
  std::erase_if(absent, [](const auto& one) { return one.first == "Level"; });
  EXPECT_THAT(Traced(absent), IsEmpty());

  const Bytes number = Long(0xFF);
  const std::pair<std::uint32_t, Bytes> others[] = {{REG_DWORD, number},
                                                    {REG_BINARY, "255" + Bytes(1, '\0')},
                                                    {REG_EXPAND_SZ, "255" + Bytes(1, '\0')},
                                                    {REG_MULTI_SZ, "255" + Bytes(2, '\0')},
                                                    {REG_SZ, ""}};
  for (const auto& [type, data] : others) {
    trace_setup::Replace(absent);
    trace_setup::SetRaw("Level", type, data);
    trace_setup::Refresh();
    Ask(Wire("0400"));
    EXPECT_THAT(SplitLines(ReadFile(FileName(1))), IsEmpty()) << type;
  }
}

TEST_F(TraceConfigurationTest, TheProgramsMaskIsReadInEveryBase) {
  for (const char* const mask : {"64", "0x40", "0100", "-1", "4294967295"}) {
    EXPECT_THAT(Traced(OneLineWith({{"zqserver_level", mask}})), SizeIs(1)) << mask;
  }
  for (const char* const mask : {"0", "16", "0x10", "020", "none", "0xFFFFFFBF"}) {
    EXPECT_THAT(Traced(OneLineWith({{"zqserver_level", mask}})), IsEmpty()) << mask;
  }
}

TEST_F(TraceConfigurationTest, AMaskThatIsGoneStaysAsItWas) {
  TraceParameters absent = OneLineWith({});
  std::erase_if(absent, [](const auto& one) { return one.first == "zqserver_level"; });
  EXPECT_THAT(Traced(OneLineWith({{"zqserver_level", "64"}})), SizeIs(1));
  EXPECT_THAT(Traced(absent), SizeIs(1));
  EXPECT_THAT(Traced(OneLineWith({{"zqserver_level", "16"}})), IsEmpty());
  EXPECT_THAT(Traced(absent), IsEmpty());
}

// --- Who takes a change up, and when ---

// Kept: the first line behind a change is judged by the level alone, not by the program's mask.
TEST_F(TraceConfigurationTest, TheLineThatTakesAChangeUpIsJudgedByTheLevelAlone) {
  EXPECT_THAT(
      Traced(AllLinesWith({{"Level", "1"}, {"zqserver_level", "0"}})),
      ElementsAre(testing::StartsWith("RunSrvLoop:  WaitForMultipleObjects received Element")));
  EXPECT_THAT(Traced(AllLinesWith({{"Level", "0"}})), IsEmpty());
}

TEST_F(TraceConfigurationTest, AChangeHasNoEffectUntilSomebodyTellsOfIt) {
  EXPECT_THAT(Traced(OneLineWith({})), SizeIs(1));
  trace_setup::ReplaceQuietly(AllLinesWith({{"Level", "0"}}));
  Ask(Wire("0400"));
  EXPECT_THAT(SplitLines(ReadFile(FileName(1))), SizeIs(2));
  trace_setup::Refresh();
  Ask(Wire("0400"));
  EXPECT_THAT(SplitLines(ReadFile(FileName(1))), SizeIs(2));
}

TEST_F(TraceConfigurationTest, ConsultTakesAChangeUpWhenItsSecondsHavePassed) {
  EXPECT_THAT(Traced(OneLineWith({{"Consult", "2"}})), SizeIs(1));
  const ULONGLONG changed = GetTickCount64();
  trace_setup::ReplaceQuietly(OneLineWith({{"Format", "SHORT"}}));
  Lines lines;
  do {
    Sleep(50);
    Ask(Wire("0400"));
    lines = SplitLines(ReadFile(FileName(1)));
  } while (lines.back().starts_with("RunSrvLoop") && GetTickCount64() < changed + kPatienceMs);
  const ULONGLONG took = GetTickCount64() - changed;
  EXPECT_EQ(lines.back(), "S QORLIXSR -- SRV  0  0000 RunSrvLoop:  opCode 0x4");
  // Whole seconds of a clock that was anywhere in its second.
  EXPECT_GE(took, 900u);
  EXPECT_LE(took, kPatienceMs);
}

TEST_F(TraceConfigurationTest, ConsultNeverFiresWhileNothingIsWanted) {
  EXPECT_THAT(Traced(OneLineWith({{"Consult", "1"}, {"zqserver_level", "0"}})), IsEmpty());
  trace_setup::ReplaceQuietly(OneLineWith({}));
  Sleep(2100);
  Ask(Wire("0400"));
  EXPECT_THAT(SplitLines(ReadFile(FileName(1))), IsEmpty());
}

// --- Filters ---

TEST_F(TraceConfigurationTest, FourFiltersAndAllHaveToPass) {
  struct Case {
    const char* name;
    std::vector<const char*> passing, stopping;
  };
  // The function ends in a blank, which no pattern can name.
  const Case cases[] = {
      {"FctName",
       {"RunSrvLoop:?", "runsrvloop*", "*", "*LOOP*", "INSTALL RUN*", "R?nSrv*:?", "*:*", ""},
       {"RunSrvLoop:", "RunSrvLoop", "INSTALL", "?", "Run", "RUNSRVLOOP:??", "*x*"}},
      {"Module", {"SRV", "srv", "S*", "???", "PST SRV", "*V"}, {"SR", "PST", "SRVX", "?", "V*"}},
      {"TraceId",
       {"QORLIXSRV64", "qorlixsrv64", "QORLIX*", "*64", "*SRV??"},
       {"QORLIXSRV", "QORLIXSR", "QORLIXSRV64X", "SRV"}},
  };
  for (const Case& one : cases) {
    for (const char* const pattern : one.passing) {
      EXPECT_THAT(Traced(OneLineWith({{one.name, pattern}})), SizeIs(1)) << one.name << pattern;
    }
    for (const char* const pattern : one.stopping) {
      EXPECT_THAT(Traced(OneLineWith({{one.name, pattern}})), IsEmpty()) << one.name << pattern;
    }
  }
  EXPECT_THAT(Traced(OneLineWith({{"FctName", "RUN*"}, {"Module", "SRV"}, {"TraceId", "Q*"}})),
              SizeIs(1));
  EXPECT_THAT(Traced(OneLineWith({{"FctName", "RUN*"}, {"Module", "PST"}, {"TraceId", "Q*"}})),
              IsEmpty());
}

TEST_F(TraceConfigurationTest, ATextHasToBeginWithItsPattern) {
  for (const char* const pattern : {"opCode", "OPC*", "opcode?0x4", "o", "*0X4", "none opCode"}) {
    EXPECT_THAT(Traced(AllLinesWith({{"FctName", "RUN*"}, {"Module", "SRV"}, {"String", pattern}})),
                testing::Contains("RunSrvLoop:  opCode 0x4 "))
        << pattern;
  }
  for (const char* const pattern : {"pCode", "opCode?0x5", "opCode?0x4?", "0x4"}) {
    EXPECT_THAT(Traced(AllLinesWith({{"String", pattern}})),
                Not(testing::Contains("RunSrvLoop:  opCode 0x4 ")))
        << pattern;
  }
}

// An entry without a star is the whole name: REG_SETVALUE does not pass its longer sibling.
TEST_F(TraceConfigurationTest, AFunctionEntryWithoutAStarIsTheWholeName) {
  const Bytes create = Wire("0200") + Text(kKey).substr(0, 8);
  const Bytes createBase = Wire("1D00 02000080") + Text(kKey).substr(0, 8);
  const auto with = [](const char* pattern) {
    return AllLinesWith({{"FctName", pattern}, {"zqserver_level", "16"}});
  };
  const std::string plain = "Reg_CreateKey: << result = 0x219a lpszCreateKey= ";
  const std::string base = "Reg_CreateKeyBase: << result = 0x219a lpszCreateKey= ";
  EXPECT_THAT(Traced(with("REG_CREATEKEY:"), create), ElementsAre(plain));
  EXPECT_THAT(Traced(with("REG_CREATEKEY:"), createBase), IsEmpty());
  EXPECT_THAT(Traced(with("REG_CREATEKEY*"), createBase), ElementsAre(base));
  EXPECT_THAT(Traced(with("REG_CREATEKEY"), create), IsEmpty());
}

TEST_F(TraceConfigurationTest, PatternsBeyondTheirBufferAreCutAndDoNoHarm) {
  const std::string filler(250, 'x');
  EXPECT_THAT(Traced(OneLineWith({{"FctName", filler + " R*"}})), SizeIs(1));
  EXPECT_THAT(Traced(OneLineWith({{"FctName", filler + "xxxxxx R*"}})), IsEmpty())
      << "258 characters, of which 255 are looked at";
  EXPECT_THAT(Traced(OneLineWith({{"FctName", filler + filler}})), SizeIs(1))
      << "more than is read is no value";
  std::string many;
  for (int i = 0; i < 120; ++i) many += "x ";
  EXPECT_THAT(Traced(OneLineWith({{"FctName", many + "R*"}})), IsEmpty())
      << "behind the hundredth entry";
  EXPECT_THAT(Traced(OneLineWith({{"FctName", many.substr(0, 198) + "R*"}})), SizeIs(1));
}

}  // namespace
}  // namespace e2e
