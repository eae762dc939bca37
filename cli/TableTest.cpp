#include "cli/Table.h"

#include <gtest/gtest.h>

namespace cli {
namespace {

TEST(TableTest, ColumnsAreAsWideAsTheirWidestTextAndLinesEndWithoutBlanks) {
  Table table({"#", "BOARD", "STATE"});
  EXPECT_TRUE(table.Empty());
  table.Add({"0", "NB410A rev 2", "1"});
  table.Add({"10", "", ""});
  EXPECT_FALSE(table.Empty());
  EXPECT_EQ(table.Lines(),
            (std::vector<std::string>{"#   BOARD         STATE", "0   NB410A rev 2  1", "10"}));
}

TEST(TableTest, WidthsCountCharactersAndNotBytes) {
  Table table({"A", "B"});
  table.Add({"\xC3\xA4\xC3\xB6", "x"});
  EXPECT_EQ(table.Lines()[0], "A   B");
}

TEST(TableTest, ATitleHasTheWordsOfTheName) {
  EXPECT_EQ(TitleOf("hardwareInstanceId"), "HARDWARE INSTANCE ID");
  EXPECT_EQ(TitleOf("layer4Protocol"), "LAYER4 PROTOCOL");
}

}  // namespace
}  // namespace cli
