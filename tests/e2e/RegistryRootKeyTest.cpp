#include <windows.h>

#include <gmock/gmock.h>

#include <string>

#include "tests/e2e/RegistryCommandTest.h"

namespace e2e {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Everything but the one root key, neighbours and predefined keys for the same hive included.
constexpr std::uint32_t kOtherRoots[] = {0x80000001, 0,          0x80000000, 0x80000003,
                                         0x80000004, 0x80000005, 0x80000006, 2,
                                         0x02000080, 0x80000012, 0x80010002, 0xFFFFFFFF};

constexpr char kReport[] = "Only operations to HKEY_LOCAL_MACHINE are allowed!";

class RegistryRootKeyTest : public RegistryCommandTest {
 protected:
  void ExpectRefused(const Bytes& request) {
    const EventLogTail log;
    EXPECT_TRUE(client_.Answers(request, Wire("0400 05000000")));
    if (EventLogTail::IsVisible()) {
      EXPECT_THAT(log.Texts(), ElementsAre(kReport));
    }
  }
};

TEST_F(RegistryRootKeyTest, LocalMachineCreatesTheKey) {
  EXPECT_TRUE(client_.Answers(Wire("1D00 02000080 1E000000 'SOFTWARE\\Vesmark\\NORVA\\E2E\\New'"),
                              Wire("0400 00000000")));
  EXPECT_THAT(scratch_.Subkeys(kKey), ElementsAre("New"));
  EXPECT_THAT(log_.Texts(), IsEmpty());
}

TEST_F(RegistryRootKeyTest, LocalMachineWritesTheValue) {
  EXPECT_TRUE(client_.Answers(Wire("1C00 02000080 1A000000 'SOFTWARE\\Vesmark\\NORVA\\E2E'"
                                   "04000000 'Name' 05000000 'Value'"),
                              Wire("0400 00000000")));
  EXPECT_EQ(scratch_.Value(kKey, "Name"), (StoredValue{REG_SZ, Wire("'Value' 00")}));
  EXPECT_THAT(log_.Texts(), IsEmpty());
}

TEST_F(RegistryRootKeyTest, EveryOtherRootIsRefusedByCreateAndMakesNothing) {
  for (const std::uint32_t root : kOtherRoots) {
    SCOPED_TRACE(root);
    ExpectRefused(Wire("1D00") + Long(root) +
                  Wire("1E000000 'SOFTWARE\\Vesmark\\NORVA\\E2E\\New'"));
  }
  EXPECT_THAT(scratch_.Subkeys(kKey), IsEmpty());
}

TEST_F(RegistryRootKeyTest, EveryOtherRootIsRefusedBySetAndWritesNothing) {
  for (const std::uint32_t root : kOtherRoots) {
    SCOPED_TRACE(root);
    ExpectRefused(Wire("1C00") + Long(root) +
                  Wire("1A000000 'SOFTWARE\\Vesmark\\NORVA\\E2E' 04000000 'Name' 01000000 'V'"));
  }
  EXPECT_EQ(scratch_.Value(kKey, "Name"), std::nullopt);
}

TEST_F(RegistryRootKeyTest, EveryOtherRootIsRefusedByDeleteAndDeletesNothing) {
  const std::string nested = std::string(kKey) + "\\" + kKey;
  scratch_.CreateKey(nested);
  for (const std::uint32_t root : kOtherRoots) {
    SCOPED_TRACE(root);
    ExpectRefused(Wire("1E00") + Long(root) + Wire("1A000000 'SOFTWARE\\Vesmark\\NORVA\\E2E'"));
  }
  EXPECT_TRUE(scratch_.HasKey(nested));
}

TEST_F(RegistryRootKeyTest, AnotherRootIsReportedInPlaceOfTheForbiddenPath) {
  ExpectRefused(Wire("1D00 01000080 0C000000 'SOFTWARE\\E2E'"));
  EXPECT_FALSE(scratch_.HasKey("SOFTWARE\\E2E"));
}

TEST_F(RegistryRootKeyTest, AnotherRootWinsOverAnAbsentText) {
  ExpectRefused(Wire("1D00 01000080 FFFF0000"));
  ExpectRefused(Wire("1E00 01000080 FFFF0000"));
  ExpectRefused(Wire("1C00 01000080 FFFF0000 FFFF0000 FFFF0000"));
}

TEST_F(RegistryRootKeyTest, UnreadableFieldWinsOverAnotherRootAndIsNotReported) {
  EXPECT_TRUE(client_.Answers(Wire("1D00 01000080 04000000 'SOF'"), Wire("0400 9A210000")));
  EXPECT_TRUE(client_.Answers(Wire("1E00 01000080"), Wire("0400 9A210000")));
  EXPECT_TRUE(client_.Answers(Wire("1C00 01000080 00000000 00000000"), Wire("0400 9A210000")));
  EXPECT_THAT(log_.Texts(), IsEmpty());
}

TEST_F(RegistryRootKeyTest, LocalMachineDoesNotOpenTheForbiddenPath) {
  EXPECT_TRUE(
      client_.Answers(Wire("1D00 02000080 0C000000 'SOFTWARE\\E2E'"), Wire("0400 05000000")));
  EXPECT_FALSE(scratch_.HasKey("SOFTWARE\\E2E"));
  if (EventLogTail::IsVisible()) {
    EXPECT_THAT(log_.Texts(), ElementsAre("Invalid Access to Reg-Key: SOFTWARE\\E2E"));
  }
}

}  // namespace
}  // namespace e2e
