#include "codec/FieldReader.h"

#include "tests/support/PoolFixture.h"

namespace {

class FieldReaderTest : public PoolFixture {};

TEST_F(FieldReaderTest, FieldsAreTakenInOrder) {
  ReceiveCommand(Wire("0300 02000000 4142 05000000"));
  RequestText<16> text;
  std::uint32_t value = 0;
  FieldReader fields(srv_, kConId, "Test: ");
  fields.Text(text, "<< result = 0x%x Text");
  fields.Long(value, "<< result = 0x%x Value");
  EXPECT_FALSE(fields.Failed());
  EXPECT_EQ(fields.Result(), SRV_OK);
  EXPECT_STREQ(text.get(), "AB");
  EXPECT_EQ(value, 5u);
}

TEST_F(FieldReaderTest, TheFirstFailureIsKeptAndNothingIsTakenBehindIt) {
  ReceiveCommand(Wire("0300 09000000 4142 05000000"));
  RequestText<16> text;
  std::uint32_t value = 77;
  FieldReader fields(srv_, kConId, "Test: ");
  fields.Text(text, "<< result = 0x%x Text");
  fields.Long(value, "<< result = 0x%x Value");
  EXPECT_TRUE(fields.Failed());
  EXPECT_EQ(fields.Result(), BUFFER_OVERFLOW);
  EXPECT_EQ(value, 77u);
  EXPECT_EQ(PipeOf(kConId).CurrentPointer, 6u);
}

TEST_F(FieldReaderTest, AFieldThatWasNotReadIsAnEmptyTextAndAnAbsentOneIsNull) {
  ReceiveCommand(Wire("0300 FFFF0000"));
  RequestText<16> absent, missing;
  FieldReader fields(srv_, kConId, "Test: ");
  fields.Text(absent, "<< result = 0x%x Text");
  fields.Text(missing, "<< result = 0x%x Text");
  EXPECT_EQ(absent.get(), nullptr);
  EXPECT_STREQ(missing.get(), "");
}

TEST_F(FieldReaderTest, ATextTakesWhatFitsItsCapacityWithTheTerminator) {
  RequestText<4> three, four;
  ReceiveCommand(Wire("0300 03000000 414243"));
  FieldReader fields(srv_, kConId, "Test: ");
  fields.Text(three, "<< result = 0x%x Text");
  EXPECT_STREQ(three.get(), "ABC");

  ReceiveCommand(Wire("0300 04000000 41424344"));
  fields.Text(four, "<< result = 0x%x Text");
  EXPECT_EQ(fields.Result(), BUFFER_OVERFLOW);
}

TEST_F(FieldReaderTest, ATraceNamesItsFileWithoutDirectory) {
  constexpr FieldTrace<'s'> kTrace("<< result = 0x%x name=%s");
  EXPECT_STREQ(kTrace.file, "FieldReaderTest.cpp");
  EXPECT_GT(kTrace.line, 0u);
}

}  // namespace
