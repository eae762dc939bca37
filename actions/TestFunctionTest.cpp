#include "actions/ActionFixture.h"

namespace {

using fake_message_box::Shown;

constexpr auto kTestFunction = &CQorlixSRVPipe::TestFunction;

class TestFunctionTest : public ActionFixture {};

TEST_F(TestFunctionTest, TheTextIsShownAndAnsweredBehind999) {
  EXPECT_EQ(Do(kTestFunction, TextField("abc")), 0u);
  EXPECT_EQ(Reply(), Wire("0400 E7030000 03000000 616263"));
  ASSERT_EQ(Shown().size(), 1u);
  EXPECT_EQ(Shown()[0].text, "abc");
  EXPECT_EQ(Shown()[0].caption, "TestFunction");
  EXPECT_EQ(Shown()[0].style, platform::BoxStyle::kOkCancel);
}

TEST_F(TestFunctionTest, AnAbsentTextIsAnEmptyOne) {
  for (const Bytes& text : {Absent(), TextField("")}) {
    EXPECT_EQ(Do(kTestFunction, text), 0u);
    EXPECT_EQ(Reply(), Wire("0400 E7030000 00000000"));
  }
  ASSERT_EQ(Shown().size(), 2u);
  EXPECT_EQ(Shown()[0].text, "");
}

TEST_F(TestFunctionTest, ATextEndsAtItsFirstZeroByte) {
  EXPECT_EQ(Do(kTestFunction, Wire("03000000 610062")), 0u);
  EXPECT_EQ(Reply(), Wire("0400 E7030000 01000000 61"));
}

TEST_F(TestFunctionTest, ATextOf259BytesIsServedAndALongerOneIsRefusedWithoutABox) {
  EXPECT_EQ(Do(kTestFunction, TextField(std::string(259, 'x'))), 0u);
  EXPECT_EQ(Shown().at(0).text, std::string(259, 'x'));
  EXPECT_EQ(Do(kTestFunction, TextField(std::string(260, 'x'))), BUFFER_OVERFLOW);
  EXPECT_TRUE(Reply().empty());
  EXPECT_EQ(Shown().size(), 1u);
}

TEST_F(TestFunctionTest, EveryTruncationIsTheReadersCodeWithoutABox) {
  ExpectEveryTruncationRefused(kTestFunction, TextField("abc"));
  EXPECT_TRUE(Shown().empty());
}

}  // namespace
