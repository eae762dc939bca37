#include "server/CommandTable.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>

namespace {

// Codes and answers written out again, as a client author finds them in docs/protocol.md.
const std::map<int, Answer> kExpected = {
    {1, Answer::Handler},   {2, Answer::Handler},
    {3, Answer::Handler},   {5, Answer::Loop},
    {6, Answer::Loop},      {12, Answer::LoopWithOutputs},
    {13, Answer::Loop},     {15, Answer::HandlerThenLoop},
    {16, Answer::Loop},     {17, Answer::HandlerThenLoop},
    {18, Answer::Handler},  {21, Answer::Handler},
    {22, Answer::Handler},  {23, Answer::Handler},
    {28, Answer::Handler},  {29, Answer::Handler},
    {30, Answer::Handler},  {88, Answer::Handler},
    {163, Answer::Handler}, {191, Answer::Handler},
    {192, Answer::Handler}, {193, Answer::Handler},
    {194, Answer::Handler}, {195, Answer::Handler},
    {196, Answer::Handler}, {197, Answer::Handler},
    {199, Answer::Handler}, {200, Answer::Handler},
    {201, Answer::Handler}, {207, Answer::Handler},
    {240, Answer::Handler}, {253, Answer::Stop},
    {256, Answer::Handler}, {257, Answer::Handler},
    {258, Answer::Handler}, {288, Answer::Handler},
    {289, Answer::Handler}, {290, Answer::Handler},
    {292, Answer::Handler},
};

TEST(CommandTableTest, EveryCodeOf16BitsIsKnownOrUnknownAsListed) {
  for (int code = 0; code <= 0xFFFF; ++code) {
    const CommandRow* const row = FindCommand(static_cast<std::uint16_t>(code));
    const auto expected = kExpected.find(code);
    ASSERT_EQ(row != nullptr, expected != kExpected.end()) << code;
    if (row == nullptr) continue;
    EXPECT_EQ(static_cast<int>(row->code), code);
    EXPECT_EQ(row->answer, expected->second) << code;
  }
}

}  // namespace
