#ifndef FUZZ_FUZZEDREQUESTS_H_
#define FUZZ_FUZZEDREQUESTS_H_

#include <cstdint>
#include <vector>

#include "tests/support/WireHex.h"

/// Requests of every way to be answered: once, twice, with the longest reply, by the loop itself,
/// not at all. What the server may write for each is spelled out.
namespace fuzzed_requests {

struct Request {
  Bytes bytes;
  std::vector<Bytes> writes;  ///< in order; of two, the second repeats the first
};

/// Arranges what the requests are about: a registry value and a panel without its entry point.
void Arrange();

/// The command that does nothing.
const Request& NoOperation();
/// Any of the requests; 0 is the command that does nothing, 0xDF the confirmed stop.
const Request& Pick(std::uint8_t choice);

bool IsConfirmedStop(const Bytes& request);

}  // namespace fuzzed_requests

#endif  // FUZZ_FUZZEDREQUESTS_H_
