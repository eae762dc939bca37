#include <cstring>
#include <string>
#include <vector>

#include "board/testing/BoardFixture.h"
#include "tests/fakes/FakeBoardLibrary.h"
#include "tests/support/LoopFixture.h"

// Answers within the limit whose texts do not fit the reply, seen from the client's end.

namespace {

using fake_pipe_io::CompleteRead;
using fake_pipe_io::OnWait;
using fake_pipe_io::Written;

class BoardOverflowTest : public LoopFixture {
 protected:
  BoardOverflowTest() { fake_board_library::Reset(); }
  ~BoardOverflowTest() override { fake_board_library::Reset(); }

  // The library fills its buffers with texts of these sizes and reports the lengths.
  static void Answer(std::vector<std::uint32_t> sizes, std::vector<std::uint32_t> lengths) {
    scripted_board_library::Install([=](const scripted_board_library::Call& call) {
      for (std::size_t i = 0; i < call.outs.size(); ++i) {
        std::memset(call.outs[i].bytes, 'x', sizes[i]);
        *call.outs[i].length = lengths[i];
      }
      return 0u;
    });
  }

  static Bytes Request(const char* name) {
    const BoardTestCommand& command = BoardCommandNamed(name);
    Bytes request = Wire(command.head);
    for (std::size_t i = 0; i < command.lengths; ++i) request = request + Long(8192);
    return request;
  }
};

TEST_F(BoardOverflowTest, ATextWithoutTerminatorThatFillsItsBufferIsFollowedBy8602) {
  Answer({8192}, {8160});
  ClientSends(5, Request("BoardGetMap"));
  OnWait([] { CompleteRead(5, Wire("1000")); });
  Run();
  EXPECT_EQ(Written(5), Wire("0400 00000000 00200000 0400 9A210000") + Wire("0400 00000000"));
}

TEST_F(BoardOverflowTest, WhatWasComposedBeforeTheTextStaysInFrontOf8602) {
  Answer({2, 8192, 1}, {2, 1, 1});
  ClientSends(5, Request("EnumBoard"));
  Run();
  EXPECT_EQ(Written(5),
            Wire("0400 00000000 02000000 7878 02000000 00200000") + Wire("0400 9A210000"));
}

TEST_F(BoardOverflowTest, LengthsWithinTheLimitMayStillBeTooManyForTheReply) {
  // Six texts and lengths of 8160 bytes together need 8218 bytes.
  Answer({8060, 0, 0, 0, 0, 100}, {8060, 0, 0, 0, 0, 100});
  ClientSends(5, Request("EnumInstBoard"));
  Run();
  const Bytes empty = Wire("00000000 00000000");
  EXPECT_EQ(Written(5), Wire("0400 00000000 7C1F0000") + Bytes(8060, 'x') + Wire("7C1F0000") +
                            empty + empty + empty + empty + Wire("64000000") +
                            Wire("0400 9A210000"));
}

TEST_F(BoardOverflowTest, AClientWhoseReplyHasNoRoomForThe8602IsDisconnected) {
  Answer({8157, 1, 1, 1}, {8157, 1, 1, 1});
  ClientSends(5, Request("EnumConfiguration"));
  ClientSends(6, "1000");
  Run();
  EXPECT_TRUE(Written(5).empty());
  EXPECT_EQ(Count("disconnect 5"), 1);
  EXPECT_EQ(Count("connect 5"), 2);
  EXPECT_EQ(Written(6), Wire("0400 00000000"));
}

TEST_F(BoardOverflowTest, ATruncatedRequestIsAnswered8602ByTheLoop) {
  ClientSends(5, "C100 01000000 44");
  Run();
  EXPECT_EQ(Written(5), Wire("0400 9A210000"));
  for (const std::string& call : fake_board_library::Calls()) {
    EXPECT_EQ(call, "StartHardwareDetection");
  }
}

TEST_F(BoardOverflowTest, AnExceptionIsAnsweredOnceAndTheNextRequestIsServed) {
  scripted_board_library::Install(
      [](const scripted_board_library::Call&) -> std::uint32_t { throw 1; });
  ClientSends(5, "C700");
  OnWait([] { CompleteRead(5, Wire("1000")); });
  Run();
  EXPECT_EQ(Written(5), Wire("0400 9C210000 0400 00000000"));
}

}  // namespace
