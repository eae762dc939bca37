#include <string>

#include "codec/FieldReader.h"
#include "tests/fakes/trace/FakeTrace.h"
#include "tests/support/PoolFixture.h"
#include "trace/Zqotrc.h"

// What reader and writer trace, word for word, and at which bit.

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class CodecTraceTest : public PoolFixture {
 protected:
  CodecTraceTest() { FakeTrace::Collect(TRC_ERROR | TRC_PROGRESS); }
  ~CodecTraceTest() override { FakeTrace::Reset(); }

  // The texts since the last call.
  static std::vector<std::string> Texts(std::uint32_t nextMask = TRC_ERROR | TRC_PROGRESS) {
    std::vector<std::string> texts;
    for (const FakeTrace::Line& line : FakeTrace::Lines()) texts.push_back(line.text);
    FakeTrace::Collect(nextMask);
    return texts;
  }
};

TEST_F(CodecTraceTest, EachWidthNamesItsOwnOverflow) {
  FakeTrace::Collect(TRC_ERROR);
  std::uint16_t code = 0;
  std::uint32_t value = 0;
  std::uint64_t wide = 0;
  std::uint8_t byte = 0;
  (void)srv_.ReadLong(kConId, value);
  (void)srv_.ReadLongLong(kConId, wide);
  (void)srv_.ReadShort(kConId, code);
  (void)srv_.ReadByte(kConId, byte);
  EXPECT_THAT(
      Texts(),
      ElementsAre("ReadLong exit with BUFFER_OVERFLOW", "ReadLongLong exit with BUFFER_OVERFLOW",
                  "ReadShort exit with BUFFER_OVERFLOW", "ReadByte exit with BUFFER_OVERFLOW"));
}

TEST_F(CodecTraceTest, AllLengthPrefixedKindsShareTheOverflowOfReadString) {
  char buffer[16];
  char* text = buffer;
  std::uint32_t length = 0;
  Receive("09000000");
  (void)srv_.ReadString(kConId, text, sizeof(buffer));
  Receive("09000000");
  (void)srv_.ReadMultiString(kConId, text, sizeof(buffer), length);
  Receive("09000000");
  (void)srv_.ReadBuffer(kConId, buffer, sizeof(buffer), length);
  EXPECT_THAT(Texts(), ElementsAre("ReadString exit with BUFFER_OVERFLOW",
                                   "ReadString exit with BUFFER_OVERFLOW",
                                   "ReadString exit with BUFFER_OVERFLOW"));
}

TEST_F(CodecTraceTest, ALengthThatIsCutShortIsTracedByReadLong) {
  char buffer[16];
  char* text = buffer;
  Receive("0900");
  (void)srv_.ReadString(kConId, text, sizeof(buffer));
  EXPECT_THAT(Texts(), ElementsAre("ReadLong exit with BUFFER_OVERFLOW"));
}

TEST_F(CodecTraceTest, ReadByteTracesBothCountersFirst) {
  Receive("010203");
  PipeOf(kConId).CurrentPointer = 2;
  std::uint8_t byte = 0;
  (void)srv_.ReadByte(kConId, byte);
  EXPECT_THAT(Texts(),
              ElementsAre("Pipe[conId].CurrentPointer 0x2", "Pipe[conId].ReceivePointer 0x3"));
}

TEST_F(CodecTraceTest, ReadMultiStringTracesItsLength) {
  Receive("02000000 4100");
  char buffer[16];
  char* text = buffer;
  std::uint32_t length = 0;
  (void)srv_.ReadMultiString(kConId, text, sizeof(buffer), length);
  EXPECT_THAT(Texts(), ElementsAre("<< CQorlixSRVPipe::ReadMultiString DataLength=2"));
}

TEST_F(CodecTraceTest, SendOfOneLongClosesWithResultWriteAndLength) {
  (void)srv_.Send(kConId, 0x21AC);
  EXPECT_THAT(Texts(), ElementsAre(">> Begin CQorlixSRVPipe::Send(long)",
                                   "<< CQorlixSRVPipe::Send SendResult=0x21ac writeResult=0x0  "
                                   "DataLength=6"));
}

TEST_F(CodecTraceTest, TheOtherShapesNameThemselvesAndTheSevenLongsTheirLittleSister) {
  (void)srv_.Send(kConId, 0, 1u);
  (void)srv_.Send(kConId, 0, 1u, 2u);
  (void)srv_.Send(kConId, 0, 1u, 2u, 3u);
  (void)srv_.Send(kConId, 0, 1u, 2u, 3u, 4u);
  (void)srv_.Send(kConId, 0, 1, 2, 3, 4, 5, 6);
  EXPECT_THAT(Texts(), ElementsAre(">> Begin CQorlixSRVPipe::Send(long, long)",
                                   "<< CQorlixSRVPipe::Send DataLength=10 writeResult=0x0",
                                   ">> Begin CQorlixSRVPipe::Send(long, long, long)",
                                   "<< CQorlixSRVPipe::Send DataLength=24 writeResult=0x0",
                                   ">> Begin CQorlixSRVPipe::Send(long, long, long, long)",
                                   "<< CQorlixSRVPipe::Send DataLength=42 writeResult=0x0",
                                   ">> Begin CQorlixSRVPipe::Send(long, long, long, long, long)",
                                   "<< CQorlixSRVPipe::Send DataLength=64 writeResult=0x0",
                                   ">> Begin CQorlixSRVPipe::Send(long, long, long, long, long)",
                                   "<< CQorlixSRVPipe::Send DataLength=94 writeResult=0x0"));
}

TEST_F(CodecTraceTest, TextShapesTraceTheSizeOfEachText) {
  (void)srv_.Send(kConId, 0, "ab");
  (void)srv_.Send(kConId, 0, "abc", 1);
  (void)srv_.Send(kConId, 0, "a", 1, "", 0);
  EXPECT_THAT(Texts(),
              ElementsAre(">> Begin CQorlixSRVPipe::Send(long, TCHAR)", "AddSizeInBytes=2",
                          "<< CQorlixSRVPipe::Send DataLength=12 writeResult=0x0",
                          ">> Begin CQorlixSRVPipe::Send(long, TCHAR, long)", "AddSizeInBytes=3",
                          "<< CQorlixSRVPipe::Send DataLength=29 writeResult=0x0",
                          ">> Begin CQorlixSRVPipe::Send(long, TCHAR, long, TCHAR, long)",
                          "AddSizeInBytes=1", "AddSizeInBytes=0",
                          "<< CQorlixSRVPipe::Send DataLength=52 writeResult=0x0"));
}

TEST_F(CodecTraceTest, MultiByteStringDumpsTheWholeReplyInHex) {
  (void)srv_.SendMultiByteString(kConId, 0, "ABCDEFG", 7);
  EXPECT_THAT(Texts(),
              ElementsAre(">> Begin CQorlixSRVPipe::SendMultiByteString LengthInDW=7",
                          ">> Begin CQorlixSRVPipe::AddString(7, Spezial)",
                          "<< CQorlixSRVPipe::AddString(Spezial)",
                          "04 00 00 00 00 00 07 00 00 00 41 42 43 44 45 46", "47 07 00 00 00",
                          "<< CQorlixSRVPipe::SendMultiByteString DataLength=21 "
                          "writeResult=0x0"));
}

TEST_F(CodecTraceTest, SendBufferTracesItsLength) {
  (void)srv_.SendBuffer(kConId, 0, "AB", 2);
  EXPECT_THAT(Texts(), ElementsAre(">> Begin CQorlixSRVPipe::SendBuffer", "BufferLength=2",
                                   "<< CQorlixSRVPipe::SendBuffer DataLength=12 writeResult=0x0"));
}

TEST_F(CodecTraceTest, OverflowsTraceTheSizeThatWasTooMuch) {
  FakeTrace::Collect(TRC_ERROR);
  PipeOf(kConId).cbToWrite = kPipeBufferSize - 6;
  (void)srv_.AddString(kConId, "abc");
  PipeOf(kConId).cbToWrite = kPipeBufferSize - 6;
  (void)srv_.AddString(kConId, "abc", 3);
  PipeOf(kConId).cbToWrite = kPipeBufferSize - 6;
  (void)srv_.AddBuffer(kConId, "abc", 3);
  EXPECT_THAT(Texts(), ElementsAre(">> BUFFER_OVERFLOW in AddString , Size = 8193",
                                   ">> BUFFER_OVERFLOW in AddString , Size = 8193",
                                   ">> BUFFER_OVERFLOW in AddBuffer , Size = 8193"));
}

TEST_F(CodecTraceTest, FieldsTraceTheReadersResultAndTheField) {
  FakeTrace::Collect(TRC_ERROR);
  ReceiveCommand(Wire("0000 09000000"));
  RequestText<16> text;
  FieldReader fields(srv_, kConId, "Test: ");
  fields.Text(text, "<< result = 0x%x name=%s");
  EXPECT_THAT(FakeTrace::Texts(), ElementsAre("ReadString: ReadString exit with BUFFER_OVERFLOW",
                                              "Test: << result = 0x219a name="));

  FakeTrace::Collect(TRC_ERROR);
  ReceiveCommand(Wire("0000 09"));
  std::uint32_t value = 0x77;
  FieldReader others(srv_, kConId, "Test: ");
  others.Long(value, "<< result = 0x%x value=0x%x");
  EXPECT_THAT(FakeTrace::Texts(), ElementsAre("ReadLong: ReadLong exit with BUFFER_OVERFLOW",
                                              "Test: << result = 0x219a value=0x77"));
}

TEST_F(CodecTraceTest, NothingIsTracedAtAnotherBit) {
  FakeTrace::Collect(TRC_RESULT | TRC_ENTER);
  (void)srv_.SendMultiByteString(kConId, 0, "AB", 2);
  std::uint32_t value = 0;
  (void)srv_.ReadLong(kConId, value);
  EXPECT_THAT(FakeTrace::Lines(), IsEmpty());
}

}  // namespace
