#include <string>

#include "tests/support/PoolFixture.h"
#include "tests/support/RegistrySetup.h"

// Requests and replies as they stand on the wire; over the real registry on Windows.

namespace {

using registry_setup::kBinary;
using registry_setup::kDword;
using registry_setup::kSz;

const std::string kTree = "SOFTWARE\\Vesmark\\NORVA\\CommandsTest";

const Bytes kLocalMachine = Wire("02000080");
const Bytes kCurrentUser = Wire("01000080");
const Bytes kAbsent = Wire("FFFF0000");

Bytes Long(std::uint32_t value) {
  return {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8),
          static_cast<std::uint8_t>(value >> 16), static_cast<std::uint8_t>(value >> 24)};
}

class RegistryCommandsTest : public PoolFixture {
 protected:
  using Handler = SrvResult (CQorlixSRVPipe::*)(int);

  RegistryCommandsTest() { registry_setup::DeleteTree(kTree); }
  ~RegistryCommandsTest() override { registry_setup::DeleteTree(kTree); }

  // The reply to a request whose fields stand behind a command code.
  Bytes Answer(Handler handler, const Bytes& fields) {
    ReceiveCommand(Wire("0000") + fields);
    EXPECT_EQ((srv_.*handler)(kConId), SRV_OK);
    return Reply();
  }

  // Every request that ends before its last field ends is refused by the handler without a reply.
  void ExpectEveryTruncationRefused(Handler handler, const Bytes& fields) {
    for (std::size_t size = 0; size < fields.size(); ++size) {
      ReceiveCommand(Wire("0000") +
                     Bytes(fields.begin(), fields.begin() + static_cast<std::ptrdiff_t>(size)));
      EXPECT_EQ((srv_.*handler)(kConId), BUFFER_OVERFLOW) << size;
      EXPECT_TRUE(Reply().empty()) << size;
    }
  }
};

TEST_F(RegistryCommandsTest, CreateKeyAnswersZeroAndCreates) {
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_CreateKey, TextField(kTree + "\\new")),
            Wire("0400 00000000"));
  EXPECT_TRUE(registry_setup::KeyExists(kTree + "\\new"));
}

TEST_F(RegistryCommandsTest, ChangesOutsideTheTreeAnswerFive) {
  const Bytes outside = TextField("SOFTWARE\\Elsewhere");
  const Bytes text = TextField("x");
  const Bytes refused = Wire("0400 05000000");
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_CreateKey, outside), refused);
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_DelKey, outside), refused);
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_SetValue, outside + text + text), refused);
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_DelValue, outside + text), refused);
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_CreateKeyBase, kLocalMachine + outside), refused);
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_DelKeyBase, kLocalMachine + outside), refused);
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_SetValueBase, kLocalMachine + outside + text + text),
            refused);
}

TEST_F(RegistryCommandsTest, AbsentTextsAnswer87) {
  const Bytes path = TextField(kTree);
  const Bytes text = TextField("x");
  const Bytes missing = Wire("0400 57000000");
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_CreateKey, kAbsent), missing);
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_DelKey, kAbsent), missing);
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_SetValue, kAbsent + text + text), missing);
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_SetValue, path + kAbsent + text), missing);
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_SetValue, path + text + kAbsent), missing);
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_DelValue, kAbsent + text), missing);
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_DelValue, path + kAbsent), missing);
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_CreateKeyBase, kLocalMachine + kAbsent), missing);
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_DelKeyBase, kLocalMachine + kAbsent), missing);
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_SetValueBase, kLocalMachine + path + text + kAbsent),
            missing);
  // Reads answer in the shape of their failures, with the room that they had.
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_GetValue, kAbsent + text), missing + Long(8159));
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_GetValue, path + kAbsent), missing + Long(8159));
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_EnumKey, kAbsent + Long(0)), missing + Long(8160));
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_EnumValue, kAbsent + Long(0)),
            missing + Long(8160) + Long(8160));
}

TEST_F(RegistryCommandsTest, AWrongRootKeyAnswersFiveAlsoForAPermittedOrAbsentPath) {
  const Bytes path = TextField(kTree);
  const Bytes text = TextField("x");
  const Bytes refused = Wire("0400 05000000");
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_SetValueBase, kCurrentUser + path + text + text), refused);
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_CreateKeyBase, kCurrentUser + path), refused);
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_CreateKeyBase, kCurrentUser + kAbsent), refused);
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_DelKeyBase, Wire("00000000") + path), refused);
  EXPECT_FALSE(registry_setup::KeyExists(kTree));
}

TEST_F(RegistryCommandsTest, TheBaseCommandsDoWhatTheirSiblingsDo) {
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_CreateKeyBase, kLocalMachine + TextField(kTree)),
            Wire("0400 00000000"));
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_SetValueBase,
                   kLocalMachine + TextField(kTree) + TextField("v") + TextField("abc")),
            Wire("0400 00000000"));
  EXPECT_EQ(registry_setup::Value(kTree, "v"), Bytes{kSz} + TextBytes("abc") + Bytes{0});
  registry_setup::CreateKey(kTree + "\\" + kTree);
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_DelKeyBase, kLocalMachine + TextField(kTree)),
            Wire("0400 00000000"));
  EXPECT_TRUE(registry_setup::KeyExists(kTree));
  EXPECT_FALSE(registry_setup::KeyExists(kTree + "\\" + kTree));
}

TEST_F(RegistryCommandsTest, DelKeyOfAKeyWithoutANestedTwinAnswersTwo) {
  registry_setup::CreateKey(kTree);
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_DelKey, TextField(kTree)), Wire("0400 02000000"));
}

TEST_F(RegistryCommandsTest, DelValueAnswersZeroAndThenTwo) {
  registry_setup::SetValue(kTree, "v", kSz, TextBytes("abc"));
  const Bytes fields = TextField(kTree) + TextField("v");
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_DelValue, fields), Wire("0400 00000000"));
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_DelValue, fields), Wire("0400 02000000"));
}

TEST_F(RegistryCommandsTest, GetValueOfATextAnswersItWithItsLength) {
  registry_setup::SetValue(kTree, "v", kSz, TextBytes("abc") + Bytes{0});
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_GetValue, TextField(kTree) + TextField("v")),
            Wire("0400 00000000 03000000 616263 03000000"));
}

TEST_F(RegistryCommandsTest, GetValueCountsTheLastByteOfNoType) {
  registry_setup::SetValue(kTree, "number", kDword, Wire("41424344"));
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_GetValue, TextField(kTree) + TextField("number")),
            Wire("0400 00000000 04000000 41424344 03000000"));
}

TEST_F(RegistryCommandsTest, GetValueCutsTheDataAtItsFirstZeroByte) {
  registry_setup::SetValue(kTree, "bytes", kBinary, Wire("41 00 42 43"));
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_GetValue, TextField(kTree) + TextField("bytes")),
            Wire("0400 00000000 01000000 41 03000000"));
}

TEST_F(RegistryCommandsTest, GetValueOfNoBytesAnswersLengthZero) {
  registry_setup::SetValue(kTree, "none", kBinary, {});
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_GetValue, TextField(kTree) + TextField("none")),
            Wire("0400 00000000 00000000 00000000"));
}

TEST_F(RegistryCommandsTest, GetValueThatFillsTheBufferHasNothingBehindItsData) {
  registry_setup::SetValue(kTree, "full", kBinary, Bytes(8160, 'x'));
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_GetValue, TextField(kTree) + TextField("full")),
            Wire("0400 00000000") + Long(8160) + Bytes(8160, 'x') + Long(8159));
}

TEST_F(RegistryCommandsTest, GetValueThatIsTooLongAnswersWhatIsNeededLessOne) {
  registry_setup::SetValue(kTree, "long", kBinary, Bytes(8161, 'x'));
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_GetValue, TextField(kTree) + TextField("long")),
            Wire("0400 EA000000") + Long(8160));
}

TEST_F(RegistryCommandsTest, GetValueOfAMissingKeyAnswersTwoWithTheRoomLessOne) {
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_GetValue, TextField(kTree) + TextField("v")),
            Wire("0400 02000000") + Long(8159));
}

TEST_F(RegistryCommandsTest, EnumKeyAnswersNameAndLengthAndThen259) {
  registry_setup::CreateKey(kTree + "\\sub");
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_EnumKey, TextField(kTree) + Long(0)),
            Wire("0400 00000000 03000000 737562 03000000"));
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_EnumKey, TextField(kTree) + Long(1)),
            Wire("0400 03010000") + Long(8160));
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_EnumKey, TextField(kTree) + Long(0xFFFFFFFF)),
            Wire("0400 57000000") + Long(8160));
}

TEST_F(RegistryCommandsTest, EnumValueAnswersNameAndDataWithTheirLengths) {
  registry_setup::SetValue(kTree, "num", kDword, Wire("41424344"));
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_EnumValue, TextField(kTree) + Long(0)),
            Wire("0400 00000000 03000000 6E756D 03000000 04000000 41424344 04000000"));
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_EnumValue, TextField(kTree) + Long(1)),
            Wire("0400 03010000") + Long(8160) + Long(8160));
}

TEST_F(RegistryCommandsTest, EnumValueWhoseLengthsAddUpTo8160IsAnswered) {
  registry_setup::SetValue(kTree, "abcd", kBinary, Bytes(8156, 'x'));
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_EnumValue, TextField(kTree) + Long(0)),
            Wire("0400 00000000 04000000 61626364 04000000") + Long(8156) + Bytes(8156, 'x') +
                Long(8156));
}

TEST_F(RegistryCommandsTest, EnumValueWhoseLengthsAddUpTo8161AnswersBoth) {
  registry_setup::SetValue(kTree, "abcd", kBinary, Bytes(8157, 'x'));
  EXPECT_EQ(Answer(&CQorlixSRVPipe::Reg_EnumValue, TextField(kTree) + Long(0)),
            Wire("0400 9A210000") + Long(4) + Long(8157));
}

TEST_F(RegistryCommandsTest, ATextOf8159BytesIsReadAndOneMoreIsNot) {
  registry_setup::CreateKey(kTree);
  ReceiveCommand(Wire("0000") + TextField(std::string(8159, 'a')));
  EXPECT_EQ(srv_.Reg_CreateKey(kConId), SRV_OK);
  EXPECT_EQ(Reply(), Wire("0400 05000000"));

  ReceiveCommand(Wire("0000") + TextField(std::string(8160, 'a')));
  EXPECT_EQ(srv_.Reg_CreateKey(kConId), BUFFER_OVERFLOW);
  EXPECT_TRUE(Reply().empty());
}

TEST_F(RegistryCommandsTest, ALaterFieldThatCannotBeReadWinsOverAnEarlierAbsentOne) {
  ReceiveCommand(Wire("0000") + kAbsent + Wire("0500"));
  EXPECT_EQ(srv_.Reg_DelValue(kConId), BUFFER_OVERFLOW);
  EXPECT_TRUE(Reply().empty());
}

TEST_F(RegistryCommandsTest, EveryTruncationIsRefusedWithoutAReply) {
  const Bytes path = TextField(kTree);
  const Bytes text = TextField("xy");
  ExpectEveryTruncationRefused(&CQorlixSRVPipe::Reg_CreateKey, path);
  ExpectEveryTruncationRefused(&CQorlixSRVPipe::Reg_DelKey, path);
  ExpectEveryTruncationRefused(&CQorlixSRVPipe::Reg_SetValue, path + text + text);
  ExpectEveryTruncationRefused(&CQorlixSRVPipe::Reg_GetValue, path + text);
  ExpectEveryTruncationRefused(&CQorlixSRVPipe::Reg_DelValue, path + text);
  ExpectEveryTruncationRefused(&CQorlixSRVPipe::Reg_EnumKey, path + Long(0));
  ExpectEveryTruncationRefused(&CQorlixSRVPipe::Reg_EnumValue, path + Long(0));
  ExpectEveryTruncationRefused(&CQorlixSRVPipe::Reg_SetValueBase,
                               kLocalMachine + path + text + text);
  ExpectEveryTruncationRefused(&CQorlixSRVPipe::Reg_CreateKeyBase, kLocalMachine + path);
  ExpectEveryTruncationRefused(&CQorlixSRVPipe::Reg_DelKeyBase, kLocalMachine + path);
  EXPECT_FALSE(registry_setup::KeyExists(kTree));
}

}  // namespace
