#include "trace/TraceFilter.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "tests/fakes/trace/TraceModels.h"

namespace {

using zqotrc::MatchesPattern;
using zqotrc::MatchMode;
using zqotrc::PatternList;

bool Whole(std::string_view pattern, std::string_view value) {
  return MatchesPattern(pattern, value, MatchMode::kWhole);
}

bool Leading(std::string_view pattern, std::string_view value) {
  return MatchesPattern(pattern, value, MatchMode::kLeadingPart);
}

bool ListPasses(std::string_view patterns, std::string_view value,
                MatchMode mode = MatchMode::kWhole) {
  PatternList list;
  list.Assign(patterns);
  return list.Passes(value, mode);
}

TEST(MatchesPatternTest, APatternWithoutWildcardsIsTheWholeValue) {
  EXPECT_TRUE(Whole("INSTALL", "INSTALL"));
  EXPECT_FALSE(Whole("INST", "INSTALL"));
  EXPECT_FALSE(Whole("INSTALLER", "INSTALL"));
  EXPECT_FALSE(Whole("XNSTALL", "INSTALL"));
}

TEST(MatchesPatternTest, AStarAtTheEndTakesTheRest) {
  EXPECT_TRUE(Whole("INST*", "INSTALL"));
  EXPECT_TRUE(Whole("INST*", "INST"));
  EXPECT_TRUE(Whole("*", ""));
  EXPECT_TRUE(Whole("*", "ANYTHING"));
  EXPECT_FALSE(Whole("INST*", "INS"));
}

TEST(MatchesPatternTest, AStarGoesOnBehindAFalseStart) {
  EXPECT_TRUE(Whole("*AB", "AAAB"));
  EXPECT_TRUE(Whole("REG*VALUE", "REG_SETVALUEVALUE"));
  EXPECT_TRUE(Whole("*A*B*C", "XAYAZBBC"));
  EXPECT_FALSE(Whole("*AB", "AAAC"));
  EXPECT_FALSE(Whole("*A", "AB"));
}

TEST(MatchesPatternTest, AStarWhoseNextCharacterComesNowhereDoesNotMatch) {
  EXPECT_FALSE(Whole("A*X", "ABC"));
  EXPECT_FALSE(Leading("A*X", "ABC"));
}

TEST(MatchesPatternTest, AQuestionMarkTakesExactlyOneCharacter) {
  EXPECT_TRUE(Whole("A?C", "ABC"));
  EXPECT_FALSE(Whole("A?C", "AC"));
  EXPECT_FALSE(Whole("ABC?", "ABC"));
  EXPECT_FALSE(Whole("?", ""));
}

TEST(MatchesPatternTest, StarsAndQuestionMarksMayStandTogether) {
  EXPECT_TRUE(Whole("**", ""));
  EXPECT_TRUE(Whole("A**B", "AXXB"));
  EXPECT_TRUE(Whole("*?", "ABC"));
  EXPECT_FALSE(Whole("*?", ""));
  EXPECT_TRUE(Whole("*?B", "AAB"));
  EXPECT_FALSE(Whole("*?B", "B"));
  EXPECT_TRUE(Whole("?*?B", "XAAB"));
}

TEST(MatchesPatternTest, AnOlderStarsPlaceIsNoneToGoBackToForANewerStar) {
  EXPECT_FALSE(Whole("A*B?*?C", "ABXC"));
  EXPECT_TRUE(Whole("A*B?*?C", "ABXYC"));
}

TEST(MatchesPatternTest, ABackslashMakesTheNextCharacterStandForItself) {
  EXPECT_TRUE(Whole("A\\*B", "A*B"));
  EXPECT_FALSE(Whole("A\\*B", "AXB"));
  EXPECT_TRUE(Whole("A\\?", "A?"));
  EXPECT_FALSE(Whole("A\\?", "AB"));
  EXPECT_TRUE(Whole("C:\\\\TMP", "C:\\TMP"));
  EXPECT_TRUE(Whole("\\A", "A"));
}

TEST(MatchesPatternTest, ABackslashAtTheEndStandsForItself) {
  EXPECT_TRUE(Whole("A\\", "A\\"));
  EXPECT_FALSE(Whole("A\\", "A"));
  EXPECT_FALSE(Whole("A\\", "AB"));
}

TEST(MatchesPatternTest, KeptBehindAStarABackslashIsLookedForAsItStands) {
  EXPECT_FALSE(Whole("*\\?", "A?"));
  EXPECT_FALSE(Whole("*\\X", "AX"));
  EXPECT_FALSE(Whole("*\\X", "A\\X"));
  EXPECT_TRUE(Whole("*\\\\", "A\\"));
  EXPECT_TRUE(Whole("*\\\\X", "A\\\\X"));
}

TEST(MatchesPatternTest, ALeadingPartIsEnoughWhereThatIsTheMode) {
  EXPECT_TRUE(Leading("ABC", "ABCDEF"));
  EXPECT_TRUE(Leading("A?C", "ABCDEF"));
  EXPECT_TRUE(Leading("*CD", "ABCDEF"));
  EXPECT_FALSE(Leading("BC", "ABCDEF"));
  EXPECT_FALSE(Leading("ABCDEFG", "ABCDEF"));
}

TEST(MatchesPatternTest, AgreesWithTryingOutEveryWay) {
  constexpr std::string_view kPatternLetters = "**??\\AABC";
  constexpr std::string_view kValueLetters = "AAABC*?\\";
  std::mt19937 random(20240717);  // NOLINT: the same patterns in every run
  const auto draw = [&random](std::string_view letters, std::size_t longest) {
    std::string text(random() % (longest + 1), ' ');
    for (char& letter : text) letter = letters[random() % letters.size()];
    return text;
  };

  int matches = 0;
  for (int round = 0; round < 200000; ++round) {
    const std::string pattern = draw(kPatternLetters, 7);
    const std::string value = draw(kValueLetters, 9);
    for (const MatchMode mode : {MatchMode::kWhole, MatchMode::kLeadingPart}) {
      const bool expected = trace_models::Matches(pattern, value, mode);
      matches += expected ? 1 : 0;
      ASSERT_EQ(MatchesPattern(pattern, value, mode), expected)
          << pattern << " on " << value << " in mode " << static_cast<int>(mode);
    }
  }
  EXPECT_GT(matches, 10000);
}

TEST(MatchesPatternTest, TheWorstPatternEndsSoon) {
  std::string pattern;
  for (int star = 0; star < 127; ++star) pattern += "*A";
  EXPECT_FALSE(Whole(pattern + "B", std::string(256, 'A')));
  EXPECT_FALSE(Whole(std::string(254, '*') + "B", std::string(256, 'A')));
}

TEST(PatternListTest, AnEmptyListLetsEverythingPass) {
  EXPECT_TRUE(ListPasses("", "Install"));
  EXPECT_TRUE(ListPasses("", ""));
}

TEST(PatternListTest, TheFirstPatternThatMatchesPassesTheList) {
  EXPECT_TRUE(ListPasses("REG* INST*", "Install"));
  EXPECT_TRUE(ListPasses("reg_setvalue", "Reg_SetValue"));
  EXPECT_FALSE(ListPasses("REG* INST", "Install"));
}

TEST(PatternListTest, AFunctionEntryWithoutAStarDoesNotPassALongerName) {
  EXPECT_FALSE(ListPasses("INST", "Install"));
  EXPECT_TRUE(ListPasses("INST*", "Install"));
}

TEST(PatternListTest, AStringEntryPassesATextThatBeginsWithIt) {
  EXPECT_TRUE(ListPasses("ABC*", "abcdef", MatchMode::kLeadingPart));
  EXPECT_TRUE(ListPasses("abc", "ABCdef", MatchMode::kLeadingPart));
  EXPECT_FALSE(ListPasses("ABC*", "xabc", MatchMode::kLeadingPart));
}

TEST(PatternListTest, BlanksSeparateAndNeverMakeAnEmptyPattern) {
  PatternList list;
  list.Assign("  A  BC ");
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(list[0], "A");
  EXPECT_EQ(list[1], "BC");
}

TEST(PatternListTest, ATextBeyondItsBufferIsCut) {
  PatternList list;
  list.Assign(std::string(254, 'A') + "BCDEF");
  ASSERT_EQ(list.size(), 1u);
  EXPECT_EQ(list[0], std::string(254, 'A') + "B");
}

TEST(PatternListTest, TheListEndsBehindItsHundredthPattern) {
  std::string patterns;
  for (int index = 0; index < 101; ++index) patterns += "A ";
  patterns += "B";
  PatternList list;
  list.Assign(patterns);
  EXPECT_EQ(list.size(), 100u);
  EXPECT_FALSE(list.Passes("B", MatchMode::kWhole));
}

TEST(PatternListTest, AssignAndClearForgetWhatWasThere) {
  PatternList list;
  list.Assign("A B C");
  list.Assign("D");
  EXPECT_FALSE(list.Passes("A", MatchMode::kWhole));
  list.Clear();
  EXPECT_TRUE(list.Passes("A", MatchMode::kWhole));
}

TEST(PatternListTest, OnlyTheFirst256CharactersOfAValueAreLookedAt) {
  const std::string value = std::string(255, 'A') + "CB";
  EXPECT_TRUE(ListPasses("*C", value));
  EXPECT_FALSE(ListPasses("*B", value));
}

}  // namespace
