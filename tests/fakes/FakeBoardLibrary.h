#ifndef TESTS_FAKES_FAKEBOARDLIBRARY_H_
#define TESTS_FAKES_FAKEBOARDLIBRARY_H_

#include <functional>

/// The board-control library, behind board/boardsvc32.h.
namespace fake_board_library {

/// What StartHardwareDetection does; nothing after a call without argument.
void OnStartHardwareDetection(std::function<void()> action = {});

}  // namespace fake_board_library

#endif  // TESTS_FAKES_FAKEBOARDLIBRARY_H_
