#ifndef FUZZ_FUZZEDMACHINE_H_
#define FUZZ_FUZZEDMACHINE_H_

#include <cstdint>
#include <span>

/// The machine around the server: board library, registry, plug-ins, the vendor's other libraries.
/// A fuzzer scripts what they answer: texts without a terminator, lengths that lie, results,
/// faults, libraries and exports that are not there.
namespace fuzzed_machine {

/// Sets everything up as the script has it; what it does not decide goes well. The script must
/// outlive the machine.
void Arrange(std::span<const std::uint8_t> script);

/// Takes everything down again.
void Clear();

/// Says which command the server is about to serve: faults only happen where a guard is.
void Serving(std::uint16_t command);

/// Whether a library has answered, since then, with a result that the server has a meaning of its
/// own for, so that no client can tell what the reply holds.
bool UsedAResultOfTheServer();

}  // namespace fuzzed_machine

#endif  // FUZZ_FUZZEDMACHINE_H_
