#include "board/LogDeviceList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> Split(std::string text) {
  std::vector<std::string> names;
  LogDeviceList list(text.data());
  while (const char* const name = list.Next()) names.emplace_back(name);
  return names;
}

TEST(LogDeviceListTest, NamesComeInOrder) {
  EXPECT_THAT(Split("one"), ElementsAre("one"));
  EXPECT_THAT(Split("one,two,three"), ElementsAre("one", "two", "three"));
}

TEST(LogDeviceListTest, EmptyNamesAreSkipped) {
  EXPECT_THAT(Split(",one,,two,"), ElementsAre("one", "two"));
  EXPECT_THAT(Split(",,,one"), ElementsAre("one"));
  EXPECT_THAT(Split("one,,,"), ElementsAre("one"));
}

TEST(LogDeviceListTest, NothingButCommasHasNoNames) {
  EXPECT_THAT(Split(""), IsEmpty());
  EXPECT_THAT(Split(","), IsEmpty());
  EXPECT_THAT(Split(",,,"), IsEmpty());
}

TEST(LogDeviceListTest, BlanksBelongToTheNames) {
  EXPECT_THAT(Split("one, two ,;"), ElementsAre("one", " two ", ";"));
}

TEST(LogDeviceListTest, TheEndOfTheListIsFinal) {
  std::string text = "one,";
  LogDeviceList list(text.data());
  EXPECT_STREQ(list.Next(), "one");
  EXPECT_EQ(list.Next(), nullptr);
  EXPECT_EQ(list.Next(), nullptr);
}

TEST(LogDeviceListTest, TheTextReadsAsItsFirstNameOnceThatWasTaken) {
  std::string text = "one,two";
  LogDeviceList list(text.data());
  (void)list.Next();
  EXPECT_STREQ(text.c_str(), "one");
  (void)list.Next();
  EXPECT_STREQ(text.c_str(), "one");
}

TEST(LogDeviceListTest, ATextThatBeginsWithACommaKeepsIt) {
  std::string text = ",one,two";
  LogDeviceList list(text.data());
  (void)list.Next();
  EXPECT_STREQ(text.c_str(), ",one");
}

TEST(LogDeviceListTest, AUsbProgrammerIsKnownByItsNameInThatCase) {
  EXPECT_TRUE(IsUsbProgrammer("KWTUSB"));
  EXPECT_TRUE(IsUsbProgrammer("other,xKWTUSB1"));
  EXPECT_FALSE(IsUsbProgrammer("kwtusb"));
  EXPECT_FALSE(IsUsbProgrammer("KWT,USB"));
  EXPECT_FALSE(IsUsbProgrammer(""));
}

}  // namespace
