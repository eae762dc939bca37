#include <windows.h>

#include <gmock/gmock.h>

#include <string>

#include "tests/e2e/RegistryCommandTest.h"

namespace e2e {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

constexpr char kTwin[] = "SOFTWARE\\Wow6432Node\\Vesmark\\NORVA\\E2E";

// Below this many bytes the log shows a text whole.
constexpr std::size_t kShownWhole = 200;

class RegistryPolicyTest : public RegistryCommandTest {
 protected:
  void ExpectCreated(const std::string& path, const std::string& created) {
    SCOPED_TRACE(path);
    const EventLogTail log;
    EXPECT_TRUE(client_.Answers(Wire("0200") + Text(path), Wire("0400 00000000")));
    EXPECT_TRUE(scratch_.HasKey(created));
    EXPECT_THAT(log.Texts(), IsEmpty());
  }

  void ExpectRefused(const Bytes& request, const std::string& path) {
    SCOPED_TRACE(path);
    const EventLogTail log;
    EXPECT_TRUE(client_.Answers(request, Wire("0400 05000000")));
    if (!EventLogTail::IsVisible()) return;
    const std::string report = "Invalid Access to Reg-Key: " + path;
    ASSERT_THAT(log.Texts(), SizeIs(1));
    EXPECT_EQ(log.Texts()[0].substr(0, kShownWhole), report.substr(0, kShownWhole));
  }

  void ExpectCreationRefused(const std::string& path) {
    ExpectRefused(Wire("0200") + Text(path), path);
  }
};

TEST_F(RegistryPolicyTest, TreeItselfIsPermitted) {
  ExpectCreated("SOFTWARE\\Vesmark\\NORVA", "SOFTWARE\\Vesmark\\NORVA");
}

TEST_F(RegistryPolicyTest, CaseOfTheTreeDoesNotMatter) {
  ExpectCreated("software\\VESMARK\\norva\\e2E\\x", "SOFTWARE\\Vesmark\\NORVA\\E2E\\x");
}

TEST_F(RegistryPolicyTest, PrefixNeedsNoSeparatorBehindIt) {
  ExpectCreated("SOFTWARE\\Vesmark\\NORVAE2E", "SOFTWARE\\Vesmark\\NORVAE2E");
  ExpectCreated("software\\vesmark\\norvaE2E\\Other", "SOFTWARE\\Vesmark\\NORVAE2E\\Other");
}

TEST_F(RegistryPolicyTest, TwinOfTheTreeIsPermitted) {
  ExpectCreated("SOFTWARE\\Wow6432Node\\Vesmark\\NORVA\\E2E\\x", std::string(kTwin) + "\\x");
  ExpectCreated("software\\WOW6432NODE\\vesmark\\norva\\E2E\\y", std::string(kTwin) + "\\y");
}

TEST_F(RegistryPolicyTest, NeighboursAndParentsAreRefused) {
  ExpectCreationRefused("SOFTWARE");
  ExpectCreationRefused("SOFTWARE\\E2E");
  ExpectCreationRefused("SOFTWARE\\Vesmark");
  ExpectCreationRefused("SOFTWARE\\Vesmark\\NORV");
  ExpectCreationRefused("SOFTWARE\\Vesmark\\E2E");
  ExpectCreationRefused("SOFTWARE\\VesmarkNORVA\\E2E");
  ExpectCreationRefused("SOFTWARE\\Wow6432Node\\Vesmark\\NORV");
  ExpectCreationRefused("SOFTWARE\\Wow6432Node\\Vesmark\\E2E");
  ExpectCreationRefused("SYSTEM\\E2E");
  ExpectCreationRefused("Vesmark\\NORVA\\E2E");
  ExpectCreationRefused("XSOFTWARE\\Vesmark\\NORVA\\E2E");
  EXPECT_FALSE(scratch_.HasKey("SOFTWARE\\E2E"));
  EXPECT_FALSE(scratch_.HasKey("SOFTWARE\\Vesmark\\E2E"));
  EXPECT_FALSE(scratch_.HasKey("SOFTWARE\\Vesmark\\NORV"));
  EXPECT_FALSE(scratch_.HasKey("SOFTWARE\\Wow6432Node\\Vesmark\\E2E"));
}

TEST_F(RegistryPolicyTest, ReportCarriesThePathInTheCallersSpelling) {
  ExpectCreationRefused("software\\E2e\\.\\\xE4 \"x\"");
  ExpectCreationRefused("SOFTWARE\\Vesmark\\NORVA\\..\\E2E");
}

TEST_F(RegistryPolicyTest, OneRefusalIsOneReport) {
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(client_.Answers(Wire("0200 0C000000 'SOFTWARE\\E2E'"), Wire("0400 05000000")));
  }
  if (!EventLogTail::IsVisible()) return;
  constexpr char kReport[] = "Invalid Access to Reg-Key: SOFTWARE\\E2E";
  EXPECT_THAT(log_.Texts(), ElementsAre(kReport, kReport, kReport));
}

TEST_F(RegistryPolicyTest, EmptyPathIsRefusedWithAnEmptyReport) { ExpectCreationRefused(""); }

TEST_F(RegistryPolicyTest, LeadingBackslashIsRefused) {
  ExpectCreationRefused("\\SOFTWARE\\Vesmark\\NORVA\\E2E\\x");
  ExpectCreationRefused("\\\\SOFTWARE\\Vesmark\\NORVA\\E2E\\x");
  EXPECT_THAT(scratch_.Subkeys(kKey), IsEmpty());
}

TEST_F(RegistryPolicyTest, ForwardSlashesSeparateNothing) {
  ExpectCreationRefused("SOFTWARE/Vesmark/NORVA/E2E/x");
  EXPECT_THAT(scratch_.Subkeys(kKey), IsEmpty());
}

TEST_F(RegistryPolicyTest, WayOutOfTheTreeIsRefused) {
  ExpectCreationRefused("SOFTWARE\\Vesmark\\NORVA\\..\\E2E");
  ExpectCreationRefused("SOFTWARE\\Vesmark\\NORVA\\E2E\\..\\..\\E2E");
  ExpectCreationRefused("SOFTWARE\\Vesmark\\NORVA\\..\\..\\E2E");
  ExpectCreationRefused("SOFTWARE\\Vesmark\\NORVA\\..\\..\\..\\..\\..\\SOFTWARE\\E2E");
  ExpectCreationRefused("SOFTWARE\\Vesmark\\NORVA\\..");
  ExpectCreationRefused("SOFTWARE\\Vesmark\\NORVA\\.\\..\\E2E");
  ExpectCreationRefused("SOFTWARE\\Vesmark\\NORVAE2E\\..\\E2E");
  ExpectCreationRefused("SOFTWARE\\Wow6432Node\\Vesmark\\NORVA\\..\\E2E");
  EXPECT_FALSE(scratch_.HasKey("SOFTWARE\\E2E"));
  EXPECT_FALSE(scratch_.HasKey("SOFTWARE\\Vesmark\\E2E"));
  EXPECT_FALSE(scratch_.HasKey("SOFTWARE\\Vesmark\\NORVA\\.."));
  EXPECT_FALSE(scratch_.HasKey("SOFTWARE\\Wow6432Node\\Vesmark\\E2E"));
}

TEST_F(RegistryPolicyTest, DotElementsInsideTheTreeReachTheCanonicalKey) {
  ExpectCreated("SOFTWARE\\Vesmark\\NORVA\\E2E\\.\\a", "SOFTWARE\\Vesmark\\NORVA\\E2E\\a");
  ExpectCreated("SOFTWARE\\Vesmark\\NORVA\\E2E\\x\\..\\b", "SOFTWARE\\Vesmark\\NORVA\\E2E\\b");
  EXPECT_THAT(scratch_.Subkeys(kKey), ElementsAre("a", "b"));
}

TEST_F(RegistryPolicyTest, WayThroughANeighbourReachesTheCanonicalKeyAndLeavesTheNeighbourAlone) {
  ExpectCreated("SOFTWARE\\E2E\\..\\Vesmark\\NORVA\\E2E\\a", "SOFTWARE\\Vesmark\\NORVA\\E2E\\a");
  ExpectCreated("SOFTWARE\\Vesmark\\E2E\\..\\NORVA\\E2E\\b", "SOFTWARE\\Vesmark\\NORVA\\E2E\\b");
  EXPECT_FALSE(scratch_.HasKey("SOFTWARE\\E2E"));
  EXPECT_FALSE(scratch_.HasKey("SOFTWARE\\Vesmark\\E2E"));
}

TEST_F(RegistryPolicyTest, WayUpFromAFirstElementIsAPathWithALeadingBackslash) {
  ExpectCreationRefused("E2E\\..\\SOFTWARE\\Vesmark\\NORVA\\E2E\\x");
  EXPECT_THAT(scratch_.Subkeys(kKey), IsEmpty());
}

TEST_F(RegistryPolicyTest, ApprovedSpellingWritesAndDeletesAtTheCanonicalKeyOnly) {
  scratch_.CreateKey("SOFTWARE\\Vesmark\\E2E");
  EXPECT_TRUE(client_.Answers(Wire("0300 21000000 'SOFTWARE\\Vesmark\\E2E\\..\\NORVA\\E2E'"
                                   "04000000 'Name' 01000000 'V'"),
                              Wire("0400 00000000")));
  EXPECT_EQ(scratch_.Value(kKey, "Name"), (StoredValue{REG_SZ, Wire("'V' 00")}));
  EXPECT_EQ(scratch_.Value("SOFTWARE\\Vesmark\\E2E", "Name"), std::nullopt);
  EXPECT_TRUE(client_.Answers(Wire("1200 21000000 'SOFTWARE\\Vesmark\\E2E\\..\\NORVA\\E2E'"
                                   "04000000 'Name'"),
                              Wire("0400 00000000")));
  EXPECT_EQ(scratch_.Value(kKey, "Name"), std::nullopt);
  EXPECT_THAT(log_.Texts(), IsEmpty());
}

TEST_F(RegistryPolicyTest, EveryChangingCommandIsRefusedOutsideAndChangesNothing) {
  constexpr char kOutside[] = "SOFTWARE\\E2E";
  const std::string nested = std::string(kOutside) + "\\" + kOutside;
  scratch_.CreateKey(nested);
  scratch_.SetValue(kOutside, "Name", REG_SZ, Wire("'abc' 00"));
  ExpectRefused(Wire("0100 0C000000 'SOFTWARE\\E2E'"), kOutside);
  ExpectRefused(Wire("0200 0F000000 'SOFTWARE\\E2E\\ab'"), "SOFTWARE\\E2E\\ab");
  ExpectRefused(Wire("0300 0C000000 'SOFTWARE\\E2E' 04000000 'Name' 01000000 'V'"), kOutside);
  ExpectRefused(Wire("1200 0C000000 'SOFTWARE\\E2E' 04000000 'Name'"), kOutside);
  ExpectRefused(Wire("1C00 02000080 0C000000 'SOFTWARE\\E2E' 04000000 'Name' 01000000 'V'"),
                kOutside);
  ExpectRefused(Wire("1D00 02000080 0F000000 'SOFTWARE\\E2E\\ab'"), "SOFTWARE\\E2E\\ab");
  ExpectRefused(Wire("1E00 02000080 0C000000 'SOFTWARE\\E2E'"), kOutside);
  EXPECT_TRUE(scratch_.HasKey(nested));
  EXPECT_FALSE(scratch_.HasKey("SOFTWARE\\E2E\\ab"));
  EXPECT_EQ(scratch_.Value(kOutside, "Name"), (StoredValue{REG_SZ, Wire("'abc' 00")}));
}

TEST_F(RegistryPolicyTest, EmptyPathIsRefusedByEveryChangingCommand) {
  ExpectRefused(Wire("0100 00000000"), "");
  ExpectRefused(Wire("0200 00000000"), "");
  ExpectRefused(Wire("0300 00000000 04000000 'Name' 01000000 'V'"), "");
  ExpectRefused(Wire("1200 00000000 04000000 'Name'"), "");
  ExpectRefused(Wire("1C00 02000080 00000000 04000000 'Name' 01000000 'V'"), "");
  ExpectRefused(Wire("1D00 02000080 00000000"), "");
  ExpectRefused(Wire("1E00 02000080 00000000"), "");
}

TEST_F(RegistryPolicyTest, PathOf259BytesIsServed) {
  const std::string path = std::string(kKey) + "\\" + std::string(232, 'x');
  ASSERT_THAT(path, SizeIs(259));
  ExpectCreated(path, path);
}

TEST_F(RegistryPolicyTest, PathOf260BytesIsRefused) {
  ExpectCreationRefused(std::string(kKey) + "\\" + std::string(233, 'x'));
  EXPECT_THAT(scratch_.Subkeys(kKey), IsEmpty());
}

TEST_F(RegistryPolicyTest, PathOf261BytesIsRefused) {
  ExpectCreationRefused(std::string(kKey) + "\\" + std::string(234, 'x'));
  EXPECT_THAT(scratch_.Subkeys(kKey), IsEmpty());
}

TEST_F(RegistryPolicyTest, LongPathIsRefusedEvenIfItsCanonicalFormWouldFit) {
  std::string path = kKey;
  while (path.size() < 261) path += "\\.";
  ExpectCreationRefused(path + "\\x");
  EXPECT_THAT(scratch_.Subkeys(kKey), IsEmpty());
}

TEST_F(RegistryPolicyTest, LongestTextFieldsAreJudgedAndOneLongerIsRefusedUnreported) {
  // 8159 bytes fit the server's room for a field, so that the policy is what refuses them.
  const std::string longest(8159, 'x');
  const std::string longer(8160, 'x');
  const Bytes overflow = Wire("0400 9A210000");
  ExpectRefused(Wire("0100") + Text(longest), longest);
  ExpectRefused(Wire("0200") + Text(longest), longest);
  ExpectRefused(Wire("0300 01000000 'X'") + Text(longest) + Wire("00000000"), "X");
  ExpectRefused(Wire("0300 01000000 'X' 00000000") + Text(longest), "X");
  ExpectRefused(Wire("1200 01000000 'X'") + Text(longest), "X");
  ExpectRefused(Wire("1C00 02000080 01000000 'X' 00000000") + Text(longest), "X");
  ExpectRefused(Wire("1D00 02000080") + Text(longest), longest);
  ExpectRefused(Wire("1E00 02000080") + Text(longest), longest);
  const EventLogTail log;
  EXPECT_TRUE(client_.Answers(Wire("0100") + Text(longer), overflow));
  EXPECT_TRUE(client_.Answers(Wire("0200") + Text(longer), overflow));
  EXPECT_TRUE(
      client_.Answers(Wire("0300 01000000 'X'") + Text(longer) + Wire("00000000"), overflow));
  EXPECT_TRUE(client_.Answers(Wire("0300 01000000 'X' 00000000") + Text(longer), overflow));
  EXPECT_TRUE(client_.Answers(Wire("1200 01000000 'X'") + Text(longer), overflow));
  EXPECT_TRUE(
      client_.Answers(Wire("1C00 02000080 01000000 'X' 00000000") + Text(longer), overflow));
  EXPECT_TRUE(client_.Answers(Wire("1D00 02000080") + Text(longer), overflow));
  EXPECT_TRUE(client_.Answers(Wire("1E00 02000080") + Text(longer), overflow));
  // The longest text that a request can carry at all.
  EXPECT_TRUE(client_.Answers(Wire("0200") + Text(std::string(8186, 'x')), overflow));
  EXPECT_THAT(log.Texts(), IsEmpty());
}

}  // namespace
}  // namespace e2e
