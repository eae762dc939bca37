#ifndef FUZZ_BOARDMODEL_H_
#define FUZZ_BOARDMODEL_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/WireHex.h"

/// What a client of the board and device commands has to be answered, worked out from the request
/// and from what the library does, without anything of the server.
namespace board_model {

inline constexpr std::size_t kOuts = 6;

/// What the library does with one out buffer.
struct Out {
  Bytes bytes;                          ///< written as far as the length that it was told allows
  std::optional<std::uint32_t> length;  ///< reported; nothing: left as it came
};

/// What the library does with one call.
struct Script {
  bool raises = false;  ///< after everything has been written
  std::uint32_t result = 0;
  Out outs[kOuts];
  std::uint32_t value = 0;
  std::uint8_t byte = 0;
};

/// What the library has to see.
struct Seen {
  bool isCalled = false;
  std::vector<std::optional<std::string>> texts;
  std::vector<std::uint32_t> numbers;
  std::vector<std::uint32_t> lengths;
  Bytes guid;
  Bytes blocks[2];
};

struct Expected {
  Seen seen;
  std::optional<Bytes> reply;  ///< nothing: the client is disconnected
};

/// Codes of the commands, and the kinds of their fields: n number, t text, r length, s short,
/// b byte, x buffer, v number as a buffer.
struct Shape {
  std::uint16_t code;
  const char* request;
};
extern const std::vector<Shape> kShapes;

/// The answer to a request that begins with the code of one of the commands.
Expected Answer(const Bytes& request, const Script& script);

}  // namespace board_model

#endif  // FUZZ_BOARDMODEL_H_
