#include <cstring>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "board/testing/BoardFixture.h"
#include "tests/fakes/FakeBoardLibrary.h"
#include "tests/fakes/FakeNamedObject.h"
#include "tests/fakes/trace/FakeTrace.h"
#include "trace/Zqotrc.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// The eight fields of a request, each with its length in front.
struct Fields {
  Bytes block1 = Wire("03000000 A1A2A3");
  Bytes value1 = Wire("04000000 11000000");
  Bytes value2 = Wire("04000000 22000000");
  Bytes value3 = Wire("04000000 33000000");
  Bytes block2 = Wire("02000000 B1B2");
  Bytes area1 = Wire("04000000 03000000");
  Bytes area2 = Wire("04000000 02000000");
  Bytes last = Wire("04000000 99000000");

  Bytes Request() const {
    return Wire("BF00") + block1 + value1 + value2 + value3 + block2 + area1 + area2 + last;
  }
};

class BoardInformationTest : public BoardFixture {
 protected:
  using Input = BRDX_INFO_INPUT;
  using Output = BRDX_INFO_OUTPUT;
  using Action = std::function<void(std::uint8_t* block1, Input& input, Output& output)>;

  BoardInformationTest() {
    fake_board_library::Lib().getBoardInformation = [this](std::uint8_t* block1, Input* input,
                                                           Output* output, std::uint32_t last) {
      block1_ = Bytes(block1, block1 + 8160);
      data_ = Bytes(input->data, input->data + 8160);
      input_ = *input;
      output_ = *output;
      valueBefore_ = *input->value;
      area1_ = Bytes(input->area1, input->area1 + input->cbArea1);
      area2_ = Bytes(output->area2, output->area2 + output->cbArea2);
      last_ = last;
      if (action_) action_(block1, *input, *output);
      if (raises_) throw std::runtime_error("fault");
      return result_;
    };
  }

  Bytes Run(const Fields& fields = {}) {
    ReceiveCommand(fields.Request());
    EXPECT_EQ(srv_.GetBoardInformation(kConId), SRV_OK);
    return Reply();
  }

  void ExpectRefused(const Fields& fields) {
    fake_board_library::Calls().clear();
    ReceiveCommand(fields.Request());
    EXPECT_EQ(srv_.GetBoardInformation(kConId), BUFFER_OVERFLOW);
    EXPECT_THAT(Reply(), IsEmpty());
    EXPECT_THAT(fake_board_library::Calls(), IsEmpty());
  }

  Action action_;
  Bytes block1_, data_, area1_, area2_;
  Input input_ = {};
  Output output_ = {};
  std::uint32_t valueBefore_ = 77;
  std::uint32_t last_ = 0;
};

TEST_F(BoardInformationTest, TheBlocksReachTheLibraryAsItDeclaresThem) {
  (void)Run();
  EXPECT_EQ(block1_, Wire("A1A2A3") + Bytes(8157, 0));
  EXPECT_EQ(input_.value1, 0x11u);
  EXPECT_EQ(input_.value2, 0x22u);
  EXPECT_EQ(input_.value3, 0x33u);
  EXPECT_EQ(data_, Wire("B1B2") + Bytes(8158, 0));
  EXPECT_EQ(input_.cbData, 2u);
  EXPECT_EQ(input_.cbArea1, 3u);
  EXPECT_EQ(area1_, Bytes(3, 0));
  EXPECT_EQ(valueBefore_, 0u);
  EXPECT_EQ(output_.cbArea2, 2u);
  EXPECT_EQ(area2_, Bytes(2, 0));
  EXPECT_EQ(output_.result1, 0u);
  EXPECT_EQ(output_.result2, 0u);
  EXPECT_EQ(last_, 0x99u);
}

TEST_F(BoardInformationTest, WhatTheLibraryFillsInIsAnswered) {
  action_ = [](std::uint8_t*, Input& input, Output& output) {
    std::memcpy(input.area1, "abc", 3);
    *input.value = 0x04030201;
    std::memcpy(output.area2, "yz", 2);
    output.result1 = 0x77;
    output.result2 = 0x88;
  };
  EXPECT_EQ(Run(), Wire("0400 00000000 03000000 616263 04000000 01020304 02000000 797A"
                        "77000000 88000000"));
}

TEST_F(BoardInformationTest, TheAreasAreSentAsTheClientMeasuredThem) {
  action_ = [](std::uint8_t*, Input& input, Output& output) {
    input.area1[0] = 'a';
    input.cbArea1 = 0xFFFFFFFF;
    input.area1 = nullptr;
    input.value = nullptr;
    output.cbArea2 = 0x80000000;
    output.area2 = nullptr;
  };
  EXPECT_EQ(Run(), Wire("0400 00000000 03000000 610000 04000000 00000000 02000000 0000"
                        "00000000 00000000"));
}

TEST_F(BoardInformationTest, AFailureIsAnsweredAlone) {
  action_ = [](std::uint8_t*, Input&, Output& output) { output.result1 = 5; };
  result_ = 1168;
  EXPECT_EQ(Run(), Wire("0400 90040000"));
}

TEST_F(BoardInformationTest, AnExceptionAnswers8604) {
  raises_ = true;
  EXPECT_EQ(Run(), Wire("0400 9C210000"));
}

TEST_F(BoardInformationTest, TheLockIsLeftAlone) {
  (void)Run();
  EXPECT_THAT(fake_named_object::Calls(), IsEmpty());
}

TEST_F(BoardInformationTest, OfANumberTheFirstFourBytesCountAndWhatIsMissingIsZero) {
  Fields fields;
  fields.value1 = Wire("00000000");
  fields.value2 = Wire("01000000 EE");
  fields.value3 = Wire("06000000 010203040506");
  fields.area1 = Wire("01000000 05");
  fields.area2 = Wire("08000000 01000000FFFFFFFF");
  fields.last = Wire("FFFF0000");
  (void)Run(fields);
  EXPECT_EQ(input_.value1, 0u);
  EXPECT_EQ(input_.value2, 0xEEu);
  EXPECT_EQ(input_.value3, 0x04030201u);
  EXPECT_EQ(input_.cbArea1, 5u);
  EXPECT_EQ(output_.cbArea2, 1u);
  EXPECT_EQ(last_, 0u);
}

TEST_F(BoardInformationTest, ANumberOfManyBytesOverrunsNothing) {
  Fields fields;
  fields.value1 = Long(8000) + Bytes(8000, 0xEE);
  (void)Run(fields);
  EXPECT_EQ(input_.value1, 0xEEEEEEEEu);
  EXPECT_EQ(input_.value2, 0x22u);
}

TEST_F(BoardInformationTest, AbsentAndEmptyBlocksAreClear) {
  for (const char* length : {"FFFF0000", "00000000"}) {
    Fields fields;
    fields.block1 = Wire(length);
    fields.block2 = Wire(length);
    DirtyTheStack('\x5A');
    (void)Run(fields);
    EXPECT_EQ(block1_, Bytes(8160, 0));
    EXPECT_EQ(data_, Bytes(8160, 0));
    EXPECT_EQ(input_.cbData, 0u);
  }
}

TEST_F(BoardInformationTest, ABlockMayBeAsLongAsTheRequestAndNoLonger) {
  // The shortest request around a block has seven lengths and the code.
  Fields fields = {Wire(""),         Wire("00000000"), Wire("00000000"), Wire("00000000"),
                   Wire("00000000"), Wire("00000000"), Wire("00000000"), Wire("00000000")};
  const std::uint32_t largest = 8192 - 2 - 8 * 4;
  ASSERT_EQ(largest, 8158u);
  fields.block1 = Long(largest) + Bytes(largest, 'x');
  (void)Run(fields);
  EXPECT_EQ(block1_, Bytes(largest, 'x') + Bytes(2, 0));

  fields.block1 = Long(8161) + Bytes(largest, 'x');
  ExpectRefused(fields);
}

TEST_F(BoardInformationTest, ABlockBeyond8160BytesIsRefusedThoughTheRequestHoldsIt) {
  ReceiveCommand(Wire("BF00") + Long(8161) + Bytes(8161, 'x') + Bytes(25, 0));
  EXPECT_EQ(srv_.GetBoardInformation(kConId), BUFFER_OVERFLOW);
  EXPECT_EQ(PipeOf(kConId).CurrentPointer, 6u);
}

TEST_F(BoardInformationTest, AnAreaThatCouldNeverFitAReplyIsRefusedBeforeTheLibraryIsCalled) {
  for (const char* size : {"01200000", "FFFFFF7F", "00000080", "FFFFFFFF"}) {
    Fields first, second;
    first.area1 = Wire("04000000") + Wire(size);
    ExpectRefused(first);
    second.area2 = Wire("04000000") + Wire(size);
    ExpectRefused(second);
  }
}

TEST_F(BoardInformationTest, AreasThatDoNotFitTheReplyTogetherReachTheLibrary) {
  Fields fields;
  fields.area1 = Wire("04000000 00200000");
  fields.area2 = Wire("04000000 00200000");
  ReceiveCommand(fields.Request());
  EXPECT_EQ(srv_.GetBoardInformation(kConId), BUFFER_OVERFLOW);
  // What fitted stays, and the loop appends its answer.
  EXPECT_EQ(Reply(), Wire("0400 00000000 00200000"));
  EXPECT_EQ(area1_, Bytes(8192, 0));
  EXPECT_EQ(area2_, Bytes(8192, 0));
}

TEST_F(BoardInformationTest, TheLargestAreasThatFitAreAnswered) {
  // 2 + 4, three lengths, 4 and 8 bytes stand around the areas.
  Fields fields;
  fields.area1 = Wire("04000000") + Long(8162);
  fields.area2 = Wire("00000000");
  action_ = [](std::uint8_t*, Input& input, Output&) { std::memset(input.area1, 'x', 8162); };
  EXPECT_EQ(Run(fields), Wire("0400 00000000") + Long(8162) + Bytes(8162, 'x') +
                             Wire("04000000 00000000 00000000 00000000 00000000"));
  EXPECT_EQ(Reply().size(), 8192u);

  fields.area1 = Wire("04000000") + Long(8163);
  ReceiveCommand(fields.Request());
  EXPECT_EQ(srv_.GetBoardInformation(kConId), BUFFER_OVERFLOW);
}

TEST_F(BoardInformationTest, NothingOfAnEarlierRequestIsInAReply) {
  for (const char garbage : {'\x5A', '\xA5'}) {
    Fields fields;
    fields.area1 = Wire("04000000") + Long(4000);
    fields.area2 = Wire("04000000") + Long(4000);
    action_ = [=](std::uint8_t*, Input& input, Output& output) {
      std::memset(input.area1, garbage, 4000);
      std::memset(output.area2, garbage, 4000);
    };
    (void)Run(fields);
    action_ = {};
    DirtyTheStack(garbage);
    EXPECT_EQ(Run(fields), Wire("0400 00000000") + Long(4000) + Bytes(4000, 0) +
                               Wire("04000000 00000000") + Long(4000) + Bytes(4000, 0) +
                               Wire("00000000 00000000"));
  }
}

TEST_F(BoardInformationTest, EveryTruncationIsRefused) {
  const Bytes whole = Fields().Request();
  for (std::size_t size = 2; size < whole.size(); ++size) {
    ReceiveCommand(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
    EXPECT_EQ(srv_.GetBoardInformation(kConId), BUFFER_OVERFLOW) << size;
    EXPECT_THAT(Reply(), IsEmpty()) << size;
  }
  EXPECT_THAT(fake_board_library::Calls(), IsEmpty());
}

TEST_F(BoardInformationTest, TheTraceNamesASiblingInTheException) {
  const auto trace = [this](const Bytes& request, std::uint32_t mask) {
    FakeTrace::Collect(mask);
    ReceiveCommand(request);
    (void)srv_.GetBoardInformation(kConId);
    std::vector<std::string> lines;
    for (const std::string& line : FakeTrace::Texts()) {
      if (line.rfind("Get", 0) == 0) lines.push_back(line);
    }
    return lines;
  };
  const Bytes whole = Fields().Request();
  EXPECT_THAT(trace(whole, TRC_PROGRESS), ElementsAre("GetBoardInformation:  >> Start"));
  for (const std::ptrdiff_t size : {3, 9, 17, 25, 33, 39, 47, 55}) {
    EXPECT_THAT(trace(Bytes(whole.begin(), whole.begin() + size), TRC_ERROR),
                ElementsAre("GetBoardInformation: << ReadBuffer result = 0x219a"))
        << size;
  }
  raises_ = true;
  EXPECT_THAT(trace(whole, TRC_ERROR | TRC_RESULT),
              ElementsAre("GetBoardInformation: Exception: BRDX_GetDeviceDetail"));
}

}  // namespace
