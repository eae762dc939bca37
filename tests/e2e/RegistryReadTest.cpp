#include <windows.h>

#include <gmock/gmock.h>

#include <string>

#include "tests/e2e/RegistryCommandTest.h"

namespace e2e {
namespace {

using testing::IsEmpty;

// What a value is read into holds this many bytes.
constexpr DWORD kRoom = 8160;

class RegistryReadTest : public RegistryCommandTest {
 protected:
  // The value "Name" of the key.
  const Bytes kGetName = Wire("1600 1A000000 'SOFTWARE\\Vesmark\\NORVA\\E2E' 04000000 'Name'");
};

TEST_F(RegistryReadTest, TextIsAnsweredWithItsLength) {
  SetValue("Name", REG_SZ, Wire("'abc' 00"));
  EXPECT_TRUE(client_.Answers(kGetName, Wire("0400 00000000 03000000 'abc' 03000000")));
}

TEST_F(RegistryReadTest, BytesBehindTheLastFieldAreIgnored) {
  SetValue("Name", REG_SZ, Wire("'abc' 00"));
  EXPECT_TRUE(client_.Answers(kGetName + Wire("FFFFFFFF 'more'"),
                              Wire("0400 00000000 03000000 'abc' 03000000")));
}

TEST_F(RegistryReadTest, EmptyTextIsAnsweredAsLengthZero) {
  SetValue("Name", REG_SZ, Wire("00"));
  EXPECT_TRUE(client_.Answers(kGetName, Wire("0400 00000000 00000000 00000000")));
}

TEST_F(RegistryReadTest, TextWithoutAnyByteIsAnsweredAsLengthZero) {
  SetValue("Name", REG_SZ, {});
  EXPECT_TRUE(client_.Answers(kGetName, Wire("0400 00000000 00000000 00000000")));
}

TEST_F(RegistryReadTest, TextStoredWithoutTerminatorIsAnsweredWhole) {
  SetValue("Name", REG_SZ, Wire("'abc'"));
  EXPECT_TRUE(client_.Answers(kGetName, Wire("0400 00000000 03000000 'abc' 03000000")));
}

TEST_F(RegistryReadTest, EmptyBinaryValueIsAnsweredAsLengthZero) {
  SetValue("Name", REG_BINARY, {});
  EXPECT_TRUE(client_.Answers(kGetName, Wire("0400 00000000 00000000 00000000")));
}

TEST_F(RegistryReadTest, BinaryValueLosesNoByteButOneInItsLength) {
  SetValue("Name", REG_BINARY, Wire("01 FF 80"));
  EXPECT_TRUE(client_.Answers(kGetName, Wire("0400 00000000 03000000 01FF80 02000000")));
}

TEST_F(RegistryReadTest, BinaryValueIsCutAtItsFirstZeroAndKeepsItsLengthLessOne) {
  SetValue("Name", REG_BINARY, Wire("'A' 00 'BCD'"));
  EXPECT_TRUE(client_.Answers(kGetName, Wire("0400 00000000 01000000 'A' 04000000")));
}

TEST_F(RegistryReadTest, BinaryValueThatBeginsWithZeroIsAnEmptyTextWithALength) {
  SetValue("Name", REG_BINARY, Wire("00 'BCD'"));
  EXPECT_TRUE(client_.Answers(kGetName, Wire("0400 00000000 00000000 03000000")));
}

TEST_F(RegistryReadTest, NumberIsReportedWithLengthThree) {
  SetValue("Name", REG_DWORD, Wire("01020304"));
  EXPECT_TRUE(client_.Answers(kGetName, Wire("0400 00000000 04000000 01020304 03000000")));
}

TEST_F(RegistryReadTest, SmallNumberIsATextOfOneByteReportedWithLengthThree) {
  SetValue("Name", REG_DWORD, Wire("41000000"));
  EXPECT_TRUE(client_.Answers(kGetName, Wire("0400 00000000 01000000 'A' 03000000")));
}

TEST_F(RegistryReadTest, NumberZeroIsAnEmptyTextReportedWithLengthThree) {
  SetValue("Name", REG_DWORD, Wire("00000000"));
  EXPECT_TRUE(client_.Answers(kGetName, Wire("0400 00000000 00000000 03000000")));
}

TEST_F(RegistryReadTest, LongNumberIsReportedWithLengthSeven) {
  SetValue("Name", REG_QWORD, Wire("0102030405060708"));
  EXPECT_TRUE(client_.Answers(kGetName, Wire("0400 00000000 08000000 0102030405060708 07000000")));
}

TEST_F(RegistryReadTest, ListOfTextsIsCutBehindTheFirstAndKeepsItsLengthLessOne) {
  SetValue("Name", REG_MULTI_SZ, Wire("'one' 00 'three' 00 00"));
  EXPECT_TRUE(client_.Answers(kGetName, Wire("0400 00000000 03000000 'one' 0A000000")));
}

TEST_F(RegistryReadTest, ValueOfNoTypeIsRead) {
  SetValue("Name", REG_NONE, Wire("'xyz'"));
  EXPECT_TRUE(client_.Answers(kGetName, Wire("0400 00000000 03000000 'xyz' 02000000")));
}

TEST_F(RegistryReadTest, VariablesInATextAreExpanded) {
  char expanded[MAX_PATH] = {};
  ExpandEnvironmentStringsA("%SystemRoot%\\x", expanded, sizeof(expanded));
  SetValue("Name", REG_EXPAND_SZ, Wire("'%SystemRoot%\\x' 00"));
  EXPECT_TRUE(client_.Answers(kGetName,
                              Wire("0400 00000000") + Text(expanded) +
                                  Long(static_cast<std::uint32_t>(std::string(expanded).size()))));
}

TEST_F(RegistryReadTest, EmptyNameIsTheDefaultValue) {
  SetValue("", REG_SZ, Wire("'default' 00"));
  EXPECT_TRUE(client_.Answers(Wire("1600 1A000000 'SOFTWARE\\Vesmark\\NORVA\\E2E' 00000000"),
                              Wire("0400 00000000 07000000 'default' 07000000")));
}

TEST_F(RegistryReadTest, BytesAboveAsciiTravelUnchanged) {
  SetValue("\xE4", REG_SZ, Wire("F6FCDF 00"));
  EXPECT_TRUE(client_.Answers(Wire("1600 1A000000 'SOFTWARE\\Vesmark\\NORVA\\E2E' 01000000 E4"),
                              Wire("0400 00000000 03000000 F6FCDF 03000000")));
}

TEST_F(RegistryReadTest, NameAndPathEndAtTheirFirstZero) {
  SetValue("Name", REG_SZ, Wire("'abc' 00"));
  EXPECT_TRUE(client_.Answers(Wire("1600 1D000000 'SOFTWARE\\Vesmark\\NORVA\\E2E' 00 '\\X'"
                                   "06000000 'Name' 00 'X'"),
                              Wire("0400 00000000 03000000 'abc' 03000000")));
}

TEST_F(RegistryReadTest, NamesAreFoundWhateverTheirCase) {
  SetValue("Name", REG_SZ, Wire("'abc' 00"));
  EXPECT_TRUE(client_.Answers(Wire("1600 1A000000 'software\\VESMARK\\norva\\e2e' 04000000 'nAME'"),
                              Wire("0400 00000000 03000000 'abc' 03000000")));
}

TEST_F(RegistryReadTest, MissingKeyIsTwoWithTheRoomLessOne) {
  EXPECT_TRUE(client_.Answers(Wire("1600 1C000000 'SOFTWARE\\Vesmark\\NORVA\\E2E\\X'"
                                   "04000000 'Name'"),
                              Wire("0400 02000000 DF1F0000")));
}

TEST_F(RegistryReadTest, MissingValueIsTwoWithTheSizeThatTheRegistryLeftLessOne) {
  Bytes data(kRoom, '\0');
  DWORD size = kRoom;
  ASSERT_EQ(RegGetValueA(HKEY_LOCAL_MACHINE, kKey, "Name", RRF_RT_ANY, nullptr, data.data(), &size),
            ERROR_FILE_NOT_FOUND);
  EXPECT_TRUE(client_.Answers(kGetName, Wire("0400 02000000") + Long(size == 0 ? 0 : size - 1)));
}

TEST_F(RegistryReadTest, LongestTextIsAnsweredWhole) {
  const Bytes text(8159, 'x');
  SetValue("Name", REG_SZ, text + Wire("00"));
  EXPECT_TRUE(client_.Answers(kGetName, Wire("0400 00000000 DF1F0000") + text + Wire("DF1F0000")));
}

TEST_F(RegistryReadTest, TextOneLongerThanTheRoomIsMoreDataWithTheNeededSizeLessOne) {
  SetValue("Name", REG_SZ, Bytes(8160, 'x') + Wire("00"));
  EXPECT_TRUE(client_.Answers(kGetName, Wire("0400 EA000000 E01F0000")));
}

TEST_F(RegistryReadTest, BinaryValueThatFillsTheRoomIsAnsweredWhole) {
  const Bytes data(8160, '\x81');
  SetValue("Name", REG_BINARY, data);
  EXPECT_TRUE(client_.Answers(kGetName, Wire("0400 00000000 E01F0000") + data + Wire("DF1F0000")));
}

TEST_F(RegistryReadTest, BinaryValueOneLongerThanTheRoomIsMoreDataWithTheNeededSizeLessOne) {
  SetValue("Name", REG_BINARY, Bytes(8161, '\x81'));
  EXPECT_TRUE(client_.Answers(kGetName, Wire("0400 EA000000 E01F0000")));
}

TEST_F(RegistryReadTest, FarTooLongValueIsMoreDataWithTheNeededSizeLessOne) {
  SetValue("Name", REG_BINARY, Bytes(20000, '\x81'));
  EXPECT_TRUE(client_.Answers(kGetName, Wire("0400 EA000000 1F4E0000")));
}

TEST_F(RegistryReadTest, ShortValueHasNothingOfTheLongOneBeforeIt) {
  SetValue("Long", REG_BINARY, Bytes(8160, '\x81'));
  SetValue("Name", REG_BINARY, Wire("010203"));
  SetValue("None", REG_BINARY, {});
  const Bytes getLong = Wire("1600 1A000000 'SOFTWARE\\Vesmark\\NORVA\\E2E' 04000000 'Long'");
  const Bytes getNone = Wire("1600 1A000000 'SOFTWARE\\Vesmark\\NORVA\\E2E' 04000000 'None'");
  ASSERT_TRUE(client_.Send(getLong));
  ASSERT_EQ(client_.Receive(8174).size(), 8174u);
  EXPECT_TRUE(client_.Answers(kGetName, Wire("0400 00000000 03000000 010203 02000000")));
  ASSERT_TRUE(client_.Send(getLong));
  ASSERT_EQ(client_.Receive(8174).size(), 8174u);
  EXPECT_TRUE(client_.Answers(getNone, Wire("0400 00000000 00000000 00000000")));
}

TEST_F(RegistryReadTest, KeyOutsideTheTreeIsReadWithoutAReport) {
  scratch_.CreateKey("SOFTWARE\\E2E");
  scratch_.SetValue("SOFTWARE\\E2E", "Name", REG_SZ, Wire("'abc' 00"));
  EXPECT_TRUE(client_.Answers(Wire("1600 0C000000 'SOFTWARE\\E2E' 04000000 'Name'"),
                              Wire("0400 00000000 03000000 'abc' 03000000")));
  EXPECT_THAT(log_.Texts(), IsEmpty());
}

TEST_F(RegistryReadTest, DotElementsOfAReadPathAreTakenAsTheyStand) {
  SetValue("Name", REG_SZ, Wire("'abc' 00"));
  EXPECT_TRUE(client_.Answers(Wire("1600 21000000 'SOFTWARE\\Vesmark\\NORVA\\E2E\\..\\E2E'"
                                   "04000000 'Name'"),
                              Wire("0400 02000000 DF1F0000")));
}

TEST_F(RegistryReadTest, LongestTextFieldsAreLookedUp) {
  // 8159 bytes fit the server's room for a field; no such value exists.
  Bytes data(kRoom, '\0');
  DWORD size = kRoom;
  const Bytes name(8159, 'n');
  ASSERT_EQ(RegGetValueA(HKEY_LOCAL_MACHINE, "SOFTWARE", name.c_str(), RRF_RT_ANY, nullptr,
                         data.data(), &size),
            ERROR_FILE_NOT_FOUND);
  EXPECT_TRUE(client_.Answers(Wire("1600 08000000 'SOFTWARE' DF1F0000") + name,
                              Wire("0400 02000000") + Long(size == 0 ? 0 : size - 1)));
}

TEST_F(RegistryReadTest, TextFieldsOneLongerAreRefused) {
  EXPECT_TRUE(client_.Answers(Wire("1600 08000000 'SOFTWARE' E01F0000") + Bytes(8160, 'n'),
                              Wire("0400 9A210000")));
  EXPECT_TRUE(client_.Answers(Wire("1600 E01F0000") + Bytes(8160, 'k') + Wire("00000000"),
                              Wire("0400 9A210000")));
}

}  // namespace
}  // namespace e2e
