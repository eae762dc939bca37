#include "traceview/TraceSettings.h"

#include <gmock/gmock.h>

#include <string>

namespace traceview {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;

CheckedValue Check(const char* name, const std::string& text) {
  const Setting* const setting = FindSetting(name);
  if (setting == nullptr) return {"no such setting", "", {}};
  return CheckValue(*setting, text);
}

TEST(CheckValueTest, NamesAreFoundInAnyCase) {
  EXPECT_NE(FindSetting("LEVEL"), nullptr);
  EXPECT_EQ(FindSetting("fctname")->name, "FctName");
  EXPECT_EQ(FindSetting("Levels"), nullptr);
}

TEST(CheckValueTest, MasksAreNumbersOrNames) {
  EXPECT_EQ(Check("Level", "0xFFFFFFFF").error, "");
  EXPECT_EQ(Check("Level", "0xFFFFFFFF").text, "0xFFFFFFFF");
  EXPECT_EQ(Check("zqserver_level", "error,progress").text, "0x00000050");
  EXPECT_EQ(Check("Level", "all").text, "0xFFFFFFFF");
  EXPECT_EQ(Check("Level", "0100").text, "0100");
  EXPECT_THAT(Check("Level", "0").warnings, Contains(HasSubstr("off")));
  for (const char* const wrong : {"", "on", "0x", "1 2", "-1", "089", "0x100000000"}) {
    EXPECT_NE(Check("Level", wrong).error, "") << wrong;
  }
}

TEST(CheckValueTest, NumbersAreWholeAndSizesAboveZero) {
  EXPECT_EQ(Check("Consult", "0").error, "");
  EXPECT_NE(Check("Consult", "-1").error, "");
  EXPECT_NE(Check("Consult", "5s").error, "");
  EXPECT_EQ(Check("Byte/File", "1000").error, "");
  EXPECT_NE(Check("Byte/File", "0").error, "");
  EXPECT_NE(Check("sm_size", "2147483648").error, "");
}

TEST(CheckValueTest, WordsThatWouldFallBackAreErrors) {
  EXPECT_EQ(Check("Format", "time").error, "");
  EXPECT_NE(Check("Format", "tme").error, "");
  EXPECT_EQ(Check("Output", "sm").error, "");
  EXPECT_NE(Check("Output", "RING").error, "");
  EXPECT_THAT(Check("Output", "PIPE").warnings, Contains(HasSubstr("writes nothing")));
}

TEST(CheckValueTest, QuirksAreWarnedOf) {
  EXPECT_THAT(Check("FctName", "Reg_SetValue:").warnings,
              Contains(HasSubstr("write REG_SETVALUE*")));
  EXPECT_THAT(Check("FctName", "Reg_*").warnings, IsEmpty());
  EXPECT_THAT(Check("Module", "ABC").warnings, Contains(HasSubstr("SRV")));
  EXPECT_THAT(Check("TraceId", "QORLIXSR").warnings, Contains(HasSubstr("QORLIXSRV64")));
  EXPECT_THAT(Check("Path", "D:\\Log\\").warnings, Contains(HasSubstr("doubled")));
  EXPECT_THAT(Check("FileName", "run.log").warnings, Contains(HasSubstr("run1.TRC")));
}

TEST(CheckValueTest, ValuesThatWouldBeIgnoredAreErrors) {
  EXPECT_EQ(Check("Path", std::string(259, 'x')).error, "");
  EXPECT_NE(Check("Path", std::string(260, 'x')).error, "");
  EXPECT_EQ(Check("String", std::string(255, 'x')).error, "");
  EXPECT_NE(Check("String", std::string(256, 'x')).error, "");
}

TEST(LinesAtTest, LevelAndMaskDecideTogether) {
  zqotrc::TraceConfig config;
  config.programMask = 0x50;
  EXPECT_FALSE(LinesAt(config, 16).passes);
  EXPECT_THAT(LinesAt(config, 16).why, HasSubstr("Level is 0"));
  config.level = 1;
  EXPECT_TRUE(LinesAt(config, 16).passes);
  EXPECT_FALSE(LinesAt(config, 128).passes);
  EXPECT_THAT(LinesAt(config, 128).why, HasSubstr("0x00000050 lacks the bit"));
  config.module.Assign("ABC");
  EXPECT_FALSE(LinesAt(config, 16).passes);
}

TEST(PitfallsTest, ALevelWithoutAMaskIsSaid) {
  Configuration configuration;
  configuration.stored.resize(Settings().size());
  EXPECT_THAT(Pitfalls(configuration), IsEmpty());
  configuration.config.level = 1;
  EXPECT_THAT(Pitfalls(configuration), Contains(HasSubstr("Level alone writes nothing")));
  configuration.stored[0] = {/*isThere=*/true, /*counts=*/false, "", /*type=*/4};
  EXPECT_THAT(Pitfalls(configuration), Contains(HasSubstr("Level is ignored: it is a REG_DWORD")));
}

}  // namespace
}  // namespace traceview
