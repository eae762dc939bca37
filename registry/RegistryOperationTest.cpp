#include "registry/RegistryOperation.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "platform/WinTypes.h"
#include "tests/support/RegistrySetup.h"

// Runs against the real registry on Windows and against the fake one elsewhere, so that what is
// tested on the fake rests on something.

namespace {

using registry_setup::kBinary;
using registry_setup::kDword;
using registry_setup::kSz;

const std::string kTree = "SOFTWARE\\Vesmark\\NORVA\\OperationTest";
const std::string kOutside = "SOFTWARE\\Vesmark\\OperationTest";

class RegistryOperationTest : public testing::Test {
 protected:
  RegistryOperationTest() { Clear(); }
  ~RegistryOperationTest() override { Clear(); }
  static void Clear() {
    registry_setup::DeleteTree(kTree);
    registry_setup::DeleteTree(kOutside);
  }
  static std::string Sub(const std::string& name) { return kTree + "\\" + name; }
};

TEST_F(RegistryOperationTest, MissingArgumentsAreRefused) {
  char buffer[16];
  std::uint32_t size = sizeof(buffer);
  const char* const path = kTree.c_str();
  EXPECT_EQ(RegCreateKeyBL(nullptr), 87u);
  EXPECT_EQ(RegDelKeyBL(nullptr), 87u);
  EXPECT_EQ(RegSetValueBL(nullptr, "n", "t"), 87u);
  EXPECT_EQ(RegSetValueBL(path, nullptr, "t"), 87u);
  EXPECT_EQ(RegSetValueBL(path, "n", nullptr), 87u);
  EXPECT_EQ(RegDelValueBL(nullptr, "n"), 87u);
  EXPECT_EQ(RegDelValueBL(path, nullptr), 87u);
  EXPECT_EQ(RegGetValueBL(nullptr, "n", buffer, size), 87u);
  EXPECT_EQ(RegGetValueBL(path, nullptr, buffer, size), 87u);
  EXPECT_EQ(RegGetValueBL(path, "n", nullptr, size), 87u);
  EXPECT_EQ(RegEnumKeyBL(nullptr, 0, buffer, size), 87u);
  EXPECT_EQ(RegEnumKeyBL(path, 0, nullptr, size), 87u);
  EXPECT_EQ(RegEnumKeyBL(path, -1, buffer, size), 87u);
  EXPECT_EQ(RegEnumValueBL(nullptr, 0, buffer, size, buffer, size), 87u);
  EXPECT_EQ(RegEnumValueBL(path, 0, nullptr, size, buffer, size), 87u);
  EXPECT_EQ(RegEnumValueBL(path, 0, buffer, size, nullptr, size), 87u);
  EXPECT_EQ(RegEnumValueBL(path, -1, buffer, size, buffer, size), 87u);
  std::uint32_t zero = 0;
  EXPECT_EQ(RegGetValueBL(path, "n", buffer, zero), 87u);
  EXPECT_EQ(RegEnumKeyBL(path, 0, buffer, zero), 87u);
  EXPECT_EQ(RegEnumValueBL(path, 0, buffer, zero, buffer, size), 87u);
  EXPECT_EQ(RegEnumValueBL(path, 0, buffer, size, buffer, zero), 87u);
}

TEST_F(RegistryOperationTest, CreateMakesTheKeyAndItsParentsAndTakesAnExistingOne) {
  EXPECT_EQ(RegCreateKeyBL(Sub("a\\b\\c").c_str()), 0u);
  EXPECT_TRUE(registry_setup::KeyExists(Sub("a\\b\\c")));
  EXPECT_EQ(RegCreateKeyBL(Sub("a\\b\\c").c_str()), 0u);
}

TEST_F(RegistryOperationTest, ChangesOutsideTheTreeAreRefusedAndChangeNothing) {
  const Bytes old = TextBytes("old") + Bytes{0};
  registry_setup::SetValue(kOutside, "v", kSz, old);
  EXPECT_EQ(RegCreateKeyBL((kOutside + "\\new").c_str()), 5u);
  EXPECT_EQ(RegSetValueBL(kOutside.c_str(), "v", "new"), 5u);
  EXPECT_EQ(RegDelValueBL(kOutside.c_str(), "v"), 5u);
  EXPECT_EQ(RegDelKeyBL(kOutside.c_str()), 5u);
  EXPECT_EQ(RegSetValueBL((kTree + "\\..\\..\\OperationTest").c_str(), "v", "new"), 5u);
  EXPECT_FALSE(registry_setup::KeyExists(kOutside + "\\new"));
  EXPECT_EQ(registry_setup::Value(kOutside, "v"), Bytes{kSz} + old);
}

TEST_F(RegistryOperationTest, AValueIsWrittenAsTextWithItsTerminator) {
  registry_setup::CreateKey(kTree);
  EXPECT_EQ(RegSetValueBL(kTree.c_str(), "v", "abc"), 0u);
  EXPECT_EQ(registry_setup::Value(kTree, "v"), Bytes{kSz} + TextBytes("abc") + Bytes{0});
  EXPECT_EQ(RegSetValueBL(kTree.c_str(), "", "default"), 0u);
  EXPECT_EQ(registry_setup::Value(kTree, ""), Bytes{kSz} + TextBytes("default") + Bytes{0});
}

TEST_F(RegistryOperationTest, SetDoesNotCreateTheKey) {
  EXPECT_EQ(RegSetValueBL(Sub("none").c_str(), "v", "abc"), 2u);
  EXPECT_FALSE(registry_setup::KeyExists(Sub("none")));
}

TEST_F(RegistryOperationTest, DotElementsWithinTheTreeReachTheCanonicalKey) {
  registry_setup::CreateKey(Sub("b"));
  EXPECT_EQ(RegSetValueBL(Sub("a\\..\\b").c_str(), "v", "x"), 0u);
  EXPECT_TRUE(registry_setup::Value(Sub("b"), "v").has_value());
  EXPECT_FALSE(registry_setup::KeyExists(Sub("a")));
}

TEST_F(RegistryOperationTest, DeleteTakesTheNestedTreeAndLeavesTheKey) {
  const std::string key = Sub("X");
  registry_setup::CreateKey(key + "\\" + key + "\\deeper");
  EXPECT_EQ(RegDelKeyBL(key.c_str()), 0u);
  EXPECT_TRUE(registry_setup::KeyExists(key));
  EXPECT_FALSE(registry_setup::KeyExists(key + "\\" + key));
}

TEST_F(RegistryOperationTest, DeleteOfAKeyWithoutANestedTwinAnswersTheRegistrysCode) {
  registry_setup::CreateKey(Sub("X\\child"));
  EXPECT_EQ(RegDelKeyBL(Sub("X").c_str()), 2u);
  EXPECT_TRUE(registry_setup::KeyExists(Sub("X\\child")));
  EXPECT_EQ(RegDelKeyBL(Sub("none").c_str()), 2u);
}

TEST_F(RegistryOperationTest, DeleteValueRemovesOneValue) {
  registry_setup::SetValue(kTree, "v", kSz, TextBytes("abc"));
  EXPECT_EQ(RegDelValueBL(kTree.c_str(), "v"), 0u);
  EXPECT_FALSE(registry_setup::Value(kTree, "v").has_value());
  EXPECT_EQ(RegDelValueBL(kTree.c_str(), "v"), 2u);
}

TEST_F(RegistryOperationTest, GetTakesAnyTypeAndTextWithItsTerminator) {
  registry_setup::SetValue(kTree, "text", kSz, TextBytes("abc") + Bytes{0});
  registry_setup::SetValue(kTree, "number", kDword, Wire("01020304"));
  registry_setup::SetValue(kTree, "bytes", kBinary, Wire("00FF00"));
  char buffer[64];
  std::uint32_t size = sizeof(buffer);
  EXPECT_EQ(RegGetValueBL(kTree.c_str(), "text", buffer, size), 0u);
  EXPECT_EQ(size, 4u);
  EXPECT_STREQ(buffer, "abc");
  size = sizeof(buffer);
  EXPECT_EQ(RegGetValueBL(kTree.c_str(), "number", buffer, size), 0u);
  EXPECT_EQ(size, 4u);
  EXPECT_EQ(std::memcmp(buffer, "\1\2\3\4", 4), 0);
  size = sizeof(buffer);
  EXPECT_EQ(RegGetValueBL(kTree.c_str(), "bytes", buffer, size), 0u);
  EXPECT_EQ(size, 3u);
}

TEST_F(RegistryOperationTest, GetReadsOutsideTheTreeToo) {
  registry_setup::SetValue(kOutside, "v", kSz, TextBytes("abc") + Bytes{0});
  char buffer[16];
  std::uint32_t size = sizeof(buffer);
  EXPECT_EQ(RegGetValueBL(kOutside.c_str(), "v", buffer, size), 0u);
}

TEST_F(RegistryOperationTest, GetOfWhatIsMissingIsFileNotFound) {
  registry_setup::CreateKey(kTree);
  char buffer[16];
  std::uint32_t size = sizeof(buffer);
  EXPECT_EQ(RegGetValueBL(kTree.c_str(), "none", buffer, size), 2u);
  size = sizeof(buffer);
  EXPECT_EQ(RegGetValueBL(Sub("none").c_str(), "v", buffer, size), 2u);
}

TEST_F(RegistryOperationTest, ABufferThatIsTooSmallAnswersWhatIsNeeded) {
  registry_setup::SetValue(kTree, "v", kBinary, Bytes(20, 7));
  char buffer[16];
  std::uint32_t size = sizeof(buffer);
  EXPECT_EQ(RegGetValueBL(kTree.c_str(), "v", buffer, size), 234u);
  EXPECT_EQ(size, 20u);
}

TEST_F(RegistryOperationTest, EnumKeyNamesEverySubkeyAndEndsWith259) {
  registry_setup::CreateKey(Sub("one"));
  registry_setup::CreateKey(Sub("three"));
  char name[64];
  std::uint32_t length = sizeof(name);
  EXPECT_EQ(RegEnumKeyBL(kTree.c_str(), 0, name, length), 0u);
  EXPECT_STREQ(name, "one");
  EXPECT_EQ(length, 3u);
  length = sizeof(name);
  EXPECT_EQ(RegEnumKeyBL(kTree.c_str(), 1, name, length), 0u);
  EXPECT_STREQ(name, "three");
  EXPECT_EQ(length, 5u);
  length = sizeof(name);
  EXPECT_EQ(RegEnumKeyBL(kTree.c_str(), 2, name, length), 259u);
  EXPECT_EQ(RegEnumKeyBL(Sub("none").c_str(), 0, name, length), 2u);
}

TEST_F(RegistryOperationTest, EnumValueNamesValuesWithTheirData) {
  registry_setup::SetValue(kTree, "number", kDword, Wire("01020304"));
  char name[64];
  char data[64];
  std::uint32_t nameLength = sizeof(name);
  std::uint32_t dataLength = sizeof(data);
  EXPECT_EQ(RegEnumValueBL(kTree.c_str(), 0, name, nameLength, data, dataLength), 0u);
  EXPECT_STREQ(name, "number");
  EXPECT_EQ(nameLength, 6u);
  EXPECT_EQ(dataLength, 4u);
  nameLength = dataLength = 64;
  EXPECT_EQ(RegEnumValueBL(kTree.c_str(), 1, name, nameLength, data, dataLength), 259u);
}

TEST_F(RegistryOperationTest, AQueryThatLeavesItsKeyOpenTakesAnyTypeAsItIsStored) {
  registry_setup::SetValue(kTree, "text", kSz, TextBytes("abc"));
  registry_setup::SetValue(kTree, "number", kDword, Wire("41424344"));
  char buffer[8] = "-------";
  std::uint32_t size = 4;
  EXPECT_EQ(RegQueryValueLeavingKeyOpen(kTree.c_str(), "number", buffer, size), 0u);
  EXPECT_EQ(size, 4u);
  EXPECT_STREQ(buffer, "ABCD---");
  size = 3;
  EXPECT_EQ(RegQueryValueLeavingKeyOpen(kTree.c_str(), "number", buffer, size), 234u);
  EXPECT_EQ(size, 4u);
  EXPECT_EQ(RegQueryValueLeavingKeyOpen(kTree.c_str(), "none", buffer, size), 2u);
  EXPECT_EQ(RegQueryValueLeavingKeyOpen(Sub("none").c_str(), "text", buffer, size), 2u);
  EXPECT_EQ(RegQueryValueLeavingKeyOpen((kTree + "\\").c_str(), "number", buffer, size), 0u);
}

}  // namespace
