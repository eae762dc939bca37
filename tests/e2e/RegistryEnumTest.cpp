#include <windows.h>

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "tests/e2e/RegistryCommandTest.h"

namespace e2e {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

constexpr DWORD kRoom = 8160;

class RegistryEnumTest : public RegistryCommandTest {
 protected:
  static Bytes EnumKey(std::uint32_t index) {
    return Wire("1500 1A000000 'SOFTWARE\\Vesmark\\NORVA\\E2E'") + Long(index);
  }
  static Bytes EnumValue(std::uint32_t index) {
    return Wire("1700 1A000000 'SOFTWARE\\Vesmark\\NORVA\\E2E'") + Long(index);
  }

  // What the registry itself answers for the key's value at the index: result and both lengths.
  static Bytes RegistrysAnswer(DWORD index) {
    HKEY key = nullptr;
    EXPECT_EQ(RegOpenKeyExA(HKEY_LOCAL_MACHINE, kKey, 0, KEY_QUERY_VALUE, &key), ERROR_SUCCESS);
    Bytes name(kRoom, '\0');
    Bytes data(kRoom, '\0');
    DWORD nameLength = kRoom;
    DWORD dataLength = kRoom;
    const LSTATUS result = RegEnumValueA(key, index, name.data(), &nameLength, nullptr, nullptr,
                                         reinterpret_cast<BYTE*>(data.data()), &dataLength);
    RegCloseKey(key);
    return Long(static_cast<std::uint32_t>(result)) + Long(nameLength) + Long(dataLength);
  }
};

TEST_F(RegistryEnumTest, SubkeysAreNamedOneByOneUntilThereAreNoMore) {
  for (const char* const name : {"beta", "Alpha", "Gamma delta"}) {
    scratch_.CreateKey(std::string(kKey) + "\\" + name);
  }
  const std::vector<std::string> names = scratch_.Subkeys(kKey);
  ASSERT_THAT(names, SizeIs(3));
  for (std::uint32_t i = 0; i < 3; ++i) {
    const auto length = static_cast<std::uint32_t>(names[i].size());
    EXPECT_TRUE(client_.Answers(EnumKey(i), Wire("0400 00000000") + Text(names[i]) + Long(length)));
  }
  ASSERT_TRUE(client_.Send(EnumKey(3)));
  EXPECT_EQ(client_.Receive(6), Wire("0400 03010000"));
  EXPECT_EQ(client_.Receive(4).size(), 4u);
  EXPECT_TRUE(client_.IsServed());
}

TEST_F(RegistryEnumTest, IndexPastTheLastSubkeyIsNoMoreItemsWithTheLengthThatTheRegistryLeft) {
  HKEY key = nullptr;
  ASSERT_EQ(RegOpenKeyExA(HKEY_LOCAL_MACHINE, kKey, 0, KEY_READ, &key), ERROR_SUCCESS);
  Bytes name(kRoom, '\0');
  DWORD length = kRoom;
  ASSERT_EQ(RegEnumKeyExA(key, 0, name.data(), &length, nullptr, nullptr, nullptr, nullptr),
            ERROR_NO_MORE_ITEMS);
  RegCloseKey(key);
  EXPECT_TRUE(client_.Answers(EnumKey(0), Wire("0400 03010000") + Long(length)));
  EXPECT_TRUE(client_.Answers(EnumKey(0x7FFFFFFF), Wire("0400 03010000") + Long(length)));
}

TEST_F(RegistryEnumTest, NegativeIndexOfASubkeyIsAnInvalidParameter) {
  scratch_.CreateKey(std::string(kKey) + "\\Sub");
  EXPECT_TRUE(client_.Answers(EnumKey(0xFFFFFFFF), Wire("0400 57000000 E01F0000")));
  EXPECT_TRUE(client_.Answers(EnumKey(0x80000000), Wire("0400 57000000 E01F0000")));
}

TEST_F(RegistryEnumTest, SubkeysOfAMissingKeyAreTwoWithTheWholeRoom) {
  EXPECT_TRUE(client_.Answers(Wire("1500 1C000000 'SOFTWARE\\Vesmark\\NORVA\\E2E\\X' 00000000"),
                              Wire("0400 02000000 E01F0000")));
}

TEST_F(RegistryEnumTest, LongestSubkeyNameIsAnsweredWhole) {
  const std::string name(255, 'k');
  scratch_.CreateKey(std::string(kKey) + "\\" + name);
  EXPECT_TRUE(
      client_.Answers(EnumKey(0), Wire("0400 00000000 FF000000") + name + Wire("FF000000")));
}

TEST_F(RegistryEnumTest, SubkeyNameAboveAsciiTravelsUnchanged) {
  scratch_.CreateKey(std::string(kKey) + "\\\xE4 \xDF");
  EXPECT_TRUE(client_.Answers(EnumKey(0), Wire("0400 00000000 03000000 E420DF 03000000")));
}

TEST_F(RegistryEnumTest, SubkeysOutsideTheTreeAreNamedWithoutAReport) {
  scratch_.CreateKey("SOFTWARE\\E2E\\Inner");
  EXPECT_TRUE(client_.Answers(Wire("1500 0C000000 'SOFTWARE\\E2E' 00000000"),
                              Wire("0400 00000000 05000000 'Inner' 05000000")));
  EXPECT_THAT(log_.Texts(), IsEmpty());
}

TEST_F(RegistryEnumTest, EmptyPathIsTheRootItself) {
  char name[MAX_PATH] = {};
  DWORD length = sizeof(name);
  ASSERT_EQ(RegEnumKeyExA(HKEY_LOCAL_MACHINE, 0, name, &length, nullptr, nullptr, nullptr, nullptr),
            ERROR_SUCCESS);
  EXPECT_TRUE(client_.Answers(Wire("1500 00000000 00000000"),
                              Wire("0400 00000000") + Text(name) + Long(length)));
}

TEST_F(RegistryEnumTest, SubkeyNameHasNothingOfTheLongerOneBeforeIt) {
  scratch_.CreateKey(std::string(kKey) + "\\a" + std::string(200, 'x'));
  scratch_.CreateKey(std::string(kKey) + "\\b");
  EXPECT_TRUE(client_.Answers(
      EnumKey(0), Wire("0400 00000000 C9000000 'a'") + std::string(200, 'x') + Wire("C9000000")));
  EXPECT_TRUE(client_.Answers(EnumKey(1), Wire("0400 00000000 01000000 'b' 01000000")));
}

TEST_F(RegistryEnumTest, TextValueIsAnsweredWithItsTerminatorCounted) {
  SetValue("Name", REG_SZ, Wire("'abc' 00"));
  EXPECT_TRUE(client_.Answers(EnumValue(0), Wire("0400 00000000 04000000 'Name' 04000000"
                                                 "03000000 'abc' 04000000")));
}

TEST_F(RegistryEnumTest, ValuesAreNamedOneByOneUntilThereAreNoMore) {
  SetValue("One", REG_SZ, Wire("'1' 00"));
  SetValue("Two", REG_SZ, Wire("'2' 00"));
  const Bytes one = Wire("0400 00000000 03000000 'One' 03000000 01000000 '1' 02000000");
  const Bytes two = Wire("0400 00000000 03000000 'Two' 03000000 01000000 '2' 02000000");
  EXPECT_TRUE(client_.Answers(EnumValue(0), one));
  EXPECT_TRUE(client_.Answers(EnumValue(1), two));
  ASSERT_EQ(RegistrysAnswer(2).substr(0, 4), Wire("03010000"));
  EXPECT_TRUE(client_.Answers(EnumValue(2), Wire("0400") + RegistrysAnswer(2)));
}

TEST_F(RegistryEnumTest, DefaultValueHasAnEmptyName) {
  SetValue("", REG_SZ, Wire("'abc' 00"));
  EXPECT_TRUE(client_.Answers(EnumValue(0), Wire("0400 00000000 00000000 00000000"
                                                 "03000000 'abc' 04000000")));
}

TEST_F(RegistryEnumTest, NumberIsAnsweredWithItsWholeLength) {
  SetValue("N", REG_DWORD, Wire("01020304"));
  EXPECT_TRUE(client_.Answers(EnumValue(0), Wire("0400 00000000 01000000 'N' 01000000"
                                                 "04000000 01020304 04000000")));
}

TEST_F(RegistryEnumTest, SmallNumberIsCutAtItsFirstZeroAndKeepsItsLength) {
  SetValue("N", REG_DWORD, Wire("41000000"));
  EXPECT_TRUE(client_.Answers(EnumValue(0), Wire("0400 00000000 01000000 'N' 01000000"
                                                 "01000000 'A' 04000000")));
}

TEST_F(RegistryEnumTest, BinaryValueIsCutAtItsFirstZeroAndKeepsItsLength) {
  SetValue("N", REG_BINARY, Wire("'AB' 00 'CD'"));
  EXPECT_TRUE(client_.Answers(EnumValue(0), Wire("0400 00000000 01000000 'N' 01000000"
                                                 "02000000 'AB' 05000000")));
}

TEST_F(RegistryEnumTest, ListOfTextsIsCutBehindTheFirstAndKeepsItsLength) {
  SetValue("N", REG_MULTI_SZ, Wire("'one' 00 'two' 00 00"));
  EXPECT_TRUE(client_.Answers(EnumValue(0), Wire("0400 00000000 01000000 'N' 01000000"
                                                 "03000000 'one' 09000000")));
}

TEST_F(RegistryEnumTest, VariablesInATextStayAsTheyAre) {
  SetValue("N", REG_EXPAND_SZ, Wire("'%A%' 00"));
  EXPECT_TRUE(client_.Answers(EnumValue(0), Wire("0400 00000000 01000000 'N' 01000000"
                                                 "03000000 '%A%' 04000000")));
}

TEST_F(RegistryEnumTest, ValueWithoutAnyByteIsAnsweredAsLengthZero) {
  SetValue("N", REG_BINARY, {});
  EXPECT_TRUE(client_.Answers(EnumValue(0), Wire("0400 00000000 01000000 'N' 01000000"
                                                 "00000000 00000000")));
}

TEST_F(RegistryEnumTest, NameAboveAsciiTravelsUnchanged) {
  SetValue("\xE4\xF6", REG_SZ, Wire("FCDF 00"));
  EXPECT_TRUE(client_.Answers(EnumValue(0), Wire("0400 00000000 02000000 E4F6 02000000"
                                                 "02000000 FCDF 03000000")));
}

TEST_F(RegistryEnumTest, NegativeIndexOfAValueIsAnInvalidParameter) {
  SetValue("Name", REG_SZ, Wire("'abc' 00"));
  EXPECT_TRUE(client_.Answers(EnumValue(0xFFFFFFFF), Wire("0400 57000000 E01F0000 E01F0000")));
  EXPECT_TRUE(client_.Answers(EnumValue(0x80000000), Wire("0400 57000000 E01F0000 E01F0000")));
}

TEST_F(RegistryEnumTest, ValuesOfAMissingKeyAreTwoWithTheWholeRooms) {
  EXPECT_TRUE(client_.Answers(Wire("1700 1C000000 'SOFTWARE\\Vesmark\\NORVA\\E2E\\X' 00000000"),
                              Wire("0400 02000000 E01F0000 E01F0000")));
}

TEST_F(RegistryEnumTest, ValuesOutsideTheTreeAreNamedWithoutAReport) {
  scratch_.CreateKey("SOFTWARE\\E2E");
  scratch_.SetValue("SOFTWARE\\E2E", "N", REG_SZ, Wire("'abc' 00"));
  EXPECT_TRUE(client_.Answers(Wire("1700 0C000000 'SOFTWARE\\E2E' 00000000"),
                              Wire("0400 00000000 01000000 'N' 01000000"
                                   "03000000 'abc' 04000000")));
  EXPECT_THAT(log_.Texts(), IsEmpty());
}

TEST_F(RegistryEnumTest, NameAndDataOfTogether8160BytesAreAnsweredWhole) {
  const Bytes data(8150, '\x81');
  SetValue("TenLetters", REG_BINARY, data);
  EXPECT_TRUE(client_.Answers(EnumValue(0), Wire("0400 00000000 0A000000 'TenLetters' 0A000000"
                                                 "D61F0000") +
                                                data + Wire("D61F0000")));
}

TEST_F(RegistryEnumTest, NameAndDataOfTogether8161BytesAreAnOverflowWithBothLengths) {
  SetValue("TenLetters", REG_BINARY, Bytes(8151, '\x81'));
  EXPECT_TRUE(client_.Answers(EnumValue(0), Wire("0400 9A210000 0A000000 D71F0000")));
}

TEST_F(RegistryEnumTest, NamelessDataThatFillsTheRoomIsAnsweredWhole) {
  const Bytes data(8160, '\x81');
  SetValue("", REG_BINARY, data);
  EXPECT_TRUE(client_.Answers(
      EnumValue(0), Wire("0400 00000000 00000000 00000000 E01F0000") + data + Wire("E01F0000")));
}

TEST_F(RegistryEnumTest, LongestNameWithOneByteOfDataIsAnsweredWhole) {
  const std::string name(8159, 'n');
  SetValue(name, REG_BINARY, Wire("41"));
  EXPECT_TRUE(client_.Answers(EnumValue(0), Wire("0400 00000000 DF1F0000") + name +
                                                Wire("DF1F0000 01000000 'A' 01000000")));
}

TEST_F(RegistryEnumTest, LongestNameWithTwoBytesOfDataIsAnOverflowWithBothLengths) {
  SetValue(std::string(8159, 'n'), REG_BINARY, Wire("4142"));
  EXPECT_TRUE(client_.Answers(EnumValue(0), Wire("0400 9A210000 DF1F0000 02000000")));
}

TEST_F(RegistryEnumTest, DataOneLongerThanTheRoomIsMoreDataWithTheRegistrysLengths) {
  SetValue("Name", REG_BINARY, Bytes(8161, '\x81'));
  ASSERT_EQ(RegistrysAnswer(0).substr(0, 4), Wire("EA000000"));
  EXPECT_TRUE(client_.Answers(EnumValue(0), Wire("0400") + RegistrysAnswer(0)));
}

TEST_F(RegistryEnumTest, NameOneLongerThanTheRoomIsMoreDataWithTheRegistrysLengths) {
  SetValue(std::string(8160, 'n'), REG_BINARY, Wire("41"));
  ASSERT_EQ(RegistrysAnswer(0).substr(0, 4), Wire("EA000000"));
  EXPECT_TRUE(client_.Answers(EnumValue(0), Wire("0400") + RegistrysAnswer(0)));
}

TEST_F(RegistryEnumTest, ShortValueHasNothingOfTheLongOneBeforeIt) {
  SetValue("a" + std::string(100, 'n'), REG_BINARY, Bytes(8000, '\x81'));
  SetValue("b", REG_BINARY, Wire("0102"));
  SetValue("c", REG_BINARY, {});
  for (const std::uint32_t later : {1u, 2u}) {
    ASSERT_TRUE(client_.Send(EnumValue(0)));
    ASSERT_EQ(client_.Receive(2 + 4 + 4 + 101 + 4 + 4 + 8000 + 4).size(), 8123u);
    EXPECT_TRUE(client_.Answers(EnumValue(later), later == 1
                                                      ? Wire("0400 00000000 01000000 'b' 01000000"
                                                             "02000000 0102 02000000")
                                                      : Wire("0400 00000000 01000000 'c' 01000000"
                                                             "00000000 00000000")));
  }
}

}  // namespace
}  // namespace e2e
