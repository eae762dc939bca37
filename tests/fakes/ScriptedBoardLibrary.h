#ifndef TESTS_FAKES_SCRIPTEDBOARDLIBRARY_H_
#define TESTS_FAKES_SCRIPTEDBOARDLIBRARY_H_

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "board/boardsvc32.h"

/// One script behind all operations that the board-control commands call, for tests that ask the
/// same of every command. The arguments are sorted by their kind, in the order of the declaration.
namespace scripted_board_library {

/// A buffer to be filled and the length that goes with it.
struct Out {
  std::uint8_t* bytes;
  std::uint32_t* length;
};

struct Call {
  std::string operation;     ///< as the library exports it
  std::vector<char*> texts;  ///< null where the client sent none
  std::vector<std::uint32_t> numbers;
  std::vector<Out> outs;
  std::uint32_t* value = nullptr;  ///< the extra 32-bit value that some operations fill
  std::uint8_t* byte = nullptr;    ///< the extra byte that one operation fills
};

using Script = std::function<std::uint32_t(const Call& call)>;

/// Puts the script behind the operations of the twelve board-control commands. Returns what the
/// operation returns; may throw.
void Install(Script script);

}  // namespace scripted_board_library

#endif  // TESTS_FAKES_SCRIPTEDBOARDLIBRARY_H_
