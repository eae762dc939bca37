#include <windows.h>

#include <gmock/gmock.h>

#include <string>

#include "tests/e2e/RegistryCommandTest.h"

namespace e2e {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// What success of every command that changes something looks like.
const Bytes& Done() {
  static const Bytes done = Wire("0400 00000000");
  return done;
}

const Bytes& NotFound() {
  static const Bytes notFound = Wire("0400 02000000");
  return notFound;
}

class RegistryWriteTest : public RegistryCommandTest {
 protected:
  void TearDown() override {
    // All of it happens inside the permitted tree.
    EXPECT_THAT(log_.Texts(), IsEmpty());
    RegistryCommandTest::TearDown();
  }
};

TEST_F(RegistryWriteTest, CreatedKeyIsThere) {
  EXPECT_TRUE(client_.Answers(Wire("0200 1E000000 'SOFTWARE\\Vesmark\\NORVA\\E2E\\New'"), Done()));
  EXPECT_THAT(scratch_.Subkeys(kKey), ElementsAre("New"));
}

TEST_F(RegistryWriteTest, KeyIsCreatedWithAllThatLacksAboveIt) {
  EXPECT_TRUE(
      client_.Answers(Wire("0200 22000000 'SOFTWARE\\Vesmark\\NORVA\\E2E\\A\\B\\C\\D'"), Done()));
  EXPECT_TRUE(scratch_.HasKey("SOFTWARE\\Vesmark\\NORVA\\E2E\\A\\B\\C\\D"));
}

TEST_F(RegistryWriteTest, KeyThatIsThereIsOpenedAndKeepsItsContents) {
  SetValue("Name", REG_SZ, Wire("'abc' 00"));
  EXPECT_TRUE(client_.Answers(Wire("0200 1A000000 'SOFTWARE\\Vesmark\\NORVA\\E2E'"), Done()));
  EXPECT_EQ(scratch_.Value(kKey, "Name"), (StoredValue{REG_SZ, Wire("'abc' 00")}));
}

TEST_F(RegistryWriteTest, BytesBehindThePathAreIgnored) {
  EXPECT_TRUE(client_.Answers(
      Wire("0200 1E000000 'SOFTWARE\\Vesmark\\NORVA\\E2E\\New' 03000000 'Two' FF"), Done()));
  EXPECT_THAT(scratch_.Subkeys(kKey), ElementsAre("New"));
}

TEST_F(RegistryWriteTest, KeyNameAboveAsciiIsCreatedUnchanged) {
  EXPECT_TRUE(
      client_.Answers(Wire("0200 1D000000 'SOFTWARE\\Vesmark\\NORVA\\E2E\\' E4DF"), Done()));
  EXPECT_THAT(scratch_.Subkeys(kKey), ElementsAre("\xE4\xDF"));
}

TEST_F(RegistryWriteTest, PathEndsAtItsFirstZero) {
  EXPECT_TRUE(client_.Answers(Wire("0200 22000000 'SOFTWARE\\Vesmark\\NORVA\\E2E\\New' 00 '\\..'"),
                              Done()));
  EXPECT_THAT(scratch_.Subkeys(kKey), ElementsAre("New"));
}

TEST_F(RegistryWriteTest, TextIsWrittenWithItsTerminator) {
  EXPECT_TRUE(client_.Answers(Wire("0300 1A000000 'SOFTWARE\\Vesmark\\NORVA\\E2E'"
                                   "04000000 'Name' 05000000 'Value'"),
                              Done()));
  EXPECT_EQ(scratch_.Value(kKey, "Name"), (StoredValue{REG_SZ, Wire("'Value' 00")}));
}

TEST_F(RegistryWriteTest, TextReplacesAValueOfAnotherType) {
  SetValue("Name", REG_DWORD, Wire("01020304"));
  EXPECT_TRUE(client_.Answers(Wire("0300 1A000000 'SOFTWARE\\Vesmark\\NORVA\\E2E'"
                                   "04000000 'Name' 01000000 'V'"),
                              Done()));
  EXPECT_EQ(scratch_.Value(kKey, "Name"), (StoredValue{REG_SZ, Wire("'V' 00")}));
}

TEST_F(RegistryWriteTest, EmptyTextIsWrittenAsItsTerminatorAlone) {
  EXPECT_TRUE(client_.Answers(Wire("0300 1A000000 'SOFTWARE\\Vesmark\\NORVA\\E2E'"
                                   "04000000 'Name' 00000000"),
                              Done()));
  EXPECT_EQ(scratch_.Value(kKey, "Name"), (StoredValue{REG_SZ, Wire("00")}));
}

TEST_F(RegistryWriteTest, EmptyNameIsTheDefaultValue) {
  EXPECT_TRUE(client_.Answers(Wire("0300 1A000000 'SOFTWARE\\Vesmark\\NORVA\\E2E'"
                                   "00000000 05000000 'Value'"),
                              Done()));
  EXPECT_EQ(scratch_.Value(kKey, ""), (StoredValue{REG_SZ, Wire("'Value' 00")}));
}

TEST_F(RegistryWriteTest, NameAndTextAboveAsciiAreWrittenUnchanged) {
  EXPECT_TRUE(client_.Answers(Wire("0300 1A000000 'SOFTWARE\\Vesmark\\NORVA\\E2E'"
                                   "01000000 E4 03000000 F6FCDF"),
                              Done()));
  EXPECT_EQ(scratch_.Value(kKey, "\xE4"), (StoredValue{REG_SZ, Wire("F6FCDF 00")}));
}

TEST_F(RegistryWriteTest, NameAndTextEndAtTheirFirstZero) {
  EXPECT_TRUE(client_.Answers(Wire("0300 1A000000 'SOFTWARE\\Vesmark\\NORVA\\E2E'"
                                   "06000000 'Name' 00 'X' 05000000 'Va' 00 'ue'"),
                              Done()));
  EXPECT_EQ(scratch_.Value(kKey, "Name"), (StoredValue{REG_SZ, Wire("'Va' 00")}));
}

TEST_F(RegistryWriteTest, LongestTextThatFitsARequestIsWrittenWhole) {
  // Code, path, empty name and text together fill the 8192 bytes of a request.
  const Bytes text(8152, 'v');
  const Bytes request = Wire(
                            "0300 1A000000 'SOFTWARE\\Vesmark\\NORVA\\E2E'"
                            "00000000 D81F0000") +
                        text;
  ASSERT_EQ(request.size(), 8192u);
  EXPECT_TRUE(client_.Answers(request, Done()));
  EXPECT_EQ(scratch_.Value(kKey, ""), (StoredValue{REG_SZ, text + Wire("00")}));
}

TEST_F(RegistryWriteTest, ShortTextHasNothingOfTheLongOneBeforeIt) {
  EXPECT_TRUE(client_.Answers(Wire("0300 1A000000 'SOFTWARE\\Vesmark\\NORVA\\E2E'"
                                   "04000000 'Name' 401F0000") +
                                  Bytes(8000, 'v'),
                              Done()));
  EXPECT_TRUE(client_.Answers(Wire("0300 1A000000 'SOFTWARE\\Vesmark\\NORVA\\E2E'"
                                   "04000000 'Name' 02000000 'xy'"),
                              Done()));
  EXPECT_EQ(scratch_.Value(kKey, "Name"), (StoredValue{REG_SZ, Wire("'xy' 00")}));
}

TEST_F(RegistryWriteTest, ValueInAMissingKeyIsTwoAndMakesNoKey) {
  EXPECT_TRUE(client_.Answers(Wire("0300 1C000000 'SOFTWARE\\Vesmark\\NORVA\\E2E\\X'"
                                   "04000000 'Name' 05000000 'Value'"),
                              NotFound()));
  EXPECT_THAT(scratch_.Subkeys(kKey), IsEmpty());
}

TEST_F(RegistryWriteTest, DeletedValueIsGoneAndItsNeighbourStays) {
  SetValue("Name", REG_SZ, Wire("'abc' 00"));
  SetValue("Name2", REG_SZ, Wire("'abc' 00"));
  EXPECT_TRUE(client_.Answers(Wire("1200 1A000000 'SOFTWARE\\Vesmark\\NORVA\\E2E' 04000000 'Name'"),
                              Done()));
  EXPECT_EQ(scratch_.Value(kKey, "Name"), std::nullopt);
  EXPECT_NE(scratch_.Value(kKey, "Name2"), std::nullopt);
}

TEST_F(RegistryWriteTest, EmptyNameDeletesTheDefaultValue) {
  SetValue("", REG_SZ, Wire("'abc' 00"));
  SetValue("Name", REG_SZ, Wire("'abc' 00"));
  EXPECT_TRUE(
      client_.Answers(Wire("1200 1A000000 'SOFTWARE\\Vesmark\\NORVA\\E2E' 00000000"), Done()));
  EXPECT_EQ(scratch_.Value(kKey, ""), std::nullopt);
  EXPECT_NE(scratch_.Value(kKey, "Name"), std::nullopt);
}

TEST_F(RegistryWriteTest, MissingValueCannotBeDeleted) {
  EXPECT_TRUE(client_.Answers(Wire("1200 1A000000 'SOFTWARE\\Vesmark\\NORVA\\E2E' 04000000 'Name'"),
                              NotFound()));
}

TEST_F(RegistryWriteTest, ValueInAMissingKeyCannotBeDeleted) {
  EXPECT_TRUE(client_.Answers(
      Wire("1200 1C000000 'SOFTWARE\\Vesmark\\NORVA\\E2E\\X' 04000000 'Name'"), NotFound()));
}

class RegistryDeleteKeyTest : public RegistryWriteTest {
 protected:
  void SetUp() override {
    RegistryWriteTest::SetUp();
    scratch_.CreateKey(kX);
    scratch_.SetValue(kX, "Name", REG_SZ, Wire("'abc' 00"));
    scratch_.CreateKey(std::string(kX) + "\\Child");
  }

  static constexpr char kX[] = "SOFTWARE\\Vesmark\\NORVA\\E2E\\X";
  const std::string kNested = std::string(kX) + "\\" + kX;
  const Bytes kDelete = Wire("0100 1C000000 'SOFTWARE\\Vesmark\\NORVA\\E2E\\X'");
};

TEST_F(RegistryDeleteKeyTest, KeyItselfStaysWithAllThatIsInIt) {
  EXPECT_TRUE(client_.Answers(kDelete, NotFound()));
  EXPECT_NE(scratch_.Value(kX, "Name"), std::nullopt);
  EXPECT_THAT(scratch_.Subkeys(kX), ElementsAre("Child"));
}

TEST_F(RegistryDeleteKeyTest, TreeOfTheSamePathBelowTheKeyGoes) {
  scratch_.CreateKey(kNested + "\\Deep\\Deeper");
  scratch_.SetValue(kNested, "Name", REG_SZ, Wire("'abc' 00"));
  scratch_.CreateKey(kNested + "2");
  EXPECT_TRUE(client_.Answers(kDelete, Done()));
  EXPECT_FALSE(scratch_.HasKey(kNested));
  EXPECT_TRUE(scratch_.HasKey(kNested + "2"));
  EXPECT_NE(scratch_.Value(kX, "Name"), std::nullopt);
  EXPECT_TRUE(scratch_.HasKey(std::string(kX) + "\\Child"));
  EXPECT_TRUE(client_.Answers(kDelete, NotFound()));
}

TEST_F(RegistryDeleteKeyTest, DotElementsNameTheNestedTreeByItsCanonicalPath) {
  scratch_.CreateKey(kNested);
  EXPECT_TRUE(
      client_.Answers(Wire("0100 20000000 'SOFTWARE\\Vesmark\\NORVA\\.\\E2E\\.\\X'"), Done()));
  EXPECT_FALSE(scratch_.HasKey(kNested));
  EXPECT_TRUE(scratch_.HasKey(kX));
}

TEST_F(RegistryDeleteKeyTest, MissingKeyCannotBeDeleted) {
  EXPECT_TRUE(
      client_.Answers(Wire("0100 1C000000 'SOFTWARE\\Vesmark\\NORVA\\E2E\\Y'"), NotFound()));
}

TEST_F(RegistryDeleteKeyTest, RootKeyVariantDeletesTheSame) {
  scratch_.CreateKey(kNested);
  const Bytes request = Wire("1E00 02000080 1C000000 'SOFTWARE\\Vesmark\\NORVA\\E2E\\X'");
  EXPECT_TRUE(client_.Answers(request, Done()));
  EXPECT_FALSE(scratch_.HasKey(kNested));
  EXPECT_TRUE(scratch_.HasKey(kX));
  EXPECT_TRUE(client_.Answers(request, NotFound()));
}

}  // namespace
}  // namespace e2e
