#ifndef BOARD_TESTING_BOARDFIXTURE_H_
#define BOARD_TESTING_BOARDFIXTURE_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tests/fakes/ScriptedBoardLibrary.h"
#include "tests/support/PoolFixture.h"

/// A board-control command as a client knows it.
struct BoardTestCommand {
  const char* name;
  SrvResult (CQorlixSRVPipe::*handler)(int);
  const char* operation;  ///< that it calls
  const char* head;       ///< code and fields up to the lengths, in hex
  std::size_t lengths;    ///< how many lengths end the request
  std::size_t texts;      ///< of the request, of one byte each
  std::size_t textsAt;    ///< where the first of them begins
};

/// All twelve. The texts of the requests are "D" for a device id, "B" for a board, "M" for a board
/// map, "A" for an adapter, "H" for a hardware id and "I" for a hardware instance id; the number is
/// 0x44332211.
extern const std::vector<BoardTestCommand> kBoardTestCommands;

/// The command of that name.
const BoardTestCommand& BoardCommandNamed(const std::string& name);

/// For the names of parametrised tests.
void PrintTo(const BoardTestCommand& command, std::ostream* out);

/// A 32-bit value on the wire.
Bytes Long(std::uint32_t value);

/// Fills the stack below the caller with one byte, so that what is not cleared shows.
void DirtyTheStack(char byte);

/// A library that answers what a test wants, the same for all commands, and notes what it was
/// asked.
class BoardFixture : public PoolFixture {
 protected:
  /// What the library writes into an out buffer and what it says about it.
  struct Answer {
    std::string bytes;                    ///< written as they are, without a terminator
    std::optional<std::uint32_t> length;  ///< left as it came without one
  };

  /// What the library saw of the last call.
  struct Seen {
    std::string operation;
    std::vector<std::optional<std::string>> texts;
    std::vector<std::uint32_t> numbers;
    std::vector<std::uint32_t> lengths;
    bool buffersWereClear = true;   ///< every out buffer, the byte behind its capacity included
    bool textsWereClear = true;     ///< every text buffer behind its text
    std::vector<std::string> lock;  ///< what had been done with the lock
  };

  BoardFixture();
  ~BoardFixture() override;

  static Bytes Request(const BoardTestCommand& command,
                       const std::vector<std::uint32_t>& lengths = {});

  /// Runs the handler over a request, command code included. \returns what it returned.
  SrvResult Handle(const BoardTestCommand& command, const Bytes& request);

  /// The reply of a request that the handler answers itself.
  Bytes ReplyTo(const BoardTestCommand& command, const std::vector<std::uint32_t>& lengths = {});

  std::vector<Answer> answers_;  ///< by out buffer; none are left as they came
  std::uint32_t result_ = 0;
  std::uint32_t value_ = 0;
  std::uint8_t byte_ = 0;
  bool raises_ = false;  ///< after the answers have been filled in
  Seen seen_;
  int calls_ = 0;

 private:
  std::uint32_t OnCall(const scripted_board_library::Call& call);
};

#endif  // BOARD_TESTING_BOARDFIXTURE_H_
