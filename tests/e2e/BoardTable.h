#ifndef TESTS_E2E_BOARDTABLE_H_
#define TESTS_E2E_BOARDTABLE_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/e2e/RequestTable.h"

namespace e2e {

/// A machine on which every request of BoardRequests finds something.
extern const char kBoardMachine[];

/// One valid request of a board or device command, its reply, and the call in between.
struct BoardRow {
  RequestRow request;
  /// The library's operation, as faults are told for it.
  const char* operation;
  /// The call as the log tells it, up to what came back. Capacities are all 8192 where the client
  /// gives them.
  const char* call;
  /// What came back on the machine above, and the lock during the call.
  const char* answer;
  /// The whole reply to it.
  const char* reply;
  /// Lengths that the operation reports.
  std::size_t lengths = 0;
  /// What stands behind the result when the library fails and says for its n-th length n + 16.
  const char* failure = "";
  /// Which lengths stand behind 8602 when the answer is too long, and what follows them.
  std::vector<std::size_t> tooLong = {};
  const char* tooLongTail = "";

  /// The call with its n-th text, or its n-th capacity, replaced.
  std::string CallWithText(std::size_t n, const std::string& text) const;
  std::string CallWithCapacity(std::size_t n, std::uint32_t capacity) const;
};

/// The twelve board-control commands and those of devices, the two look-ups of an instance both, in
/// an order in which each finds what it needs.
const std::vector<BoardRow>& BoardRequests();

/// The row of that name.
const BoardRow& BoardRequest(const std::string& name);

/// Whether the command's call is one of those that the board-control lock is for.
bool IsUnderLock(const BoardRow& row);

/// The same fault for the operations of all rows, without a section for any other.
std::string FaultForAll(const std::string& keys);

}  // namespace e2e

#endif  // TESTS_E2E_BOARDTABLE_H_
