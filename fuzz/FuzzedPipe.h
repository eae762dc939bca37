#ifndef FUZZ_FUZZEDPIPE_H_
#define FUZZ_FUZZEDPIPE_H_

#include <cstdint>
#include <span>

/// The platform's pipe, behind server/PipeIo.h, with clients and completions that a fuzzer scripts
/// byte by byte. It aborts when the server does what no server may do: use a block or a buffer that
/// an operation still has, write what is no reply, wait for what can never come, turn without end.
///
/// When the script is used up, everything goes well from then on: clients connect to the instances
/// that took part, send the command that does nothing, and have to be answered. Then the wait
/// fails, which ends the loop.
namespace fuzzed_pipe {

/// Forgets everything and begins with a new script.
void Begin(std::span<const std::uint8_t> script);

/// Aborts if the loop had no reason to end: not every instance has been proven to serve, no pending
/// connect failed, no wait did, nobody stopped the server and the pool could be built.
void CheckEnd();

}  // namespace fuzzed_pipe

#endif  // FUZZ_FUZZEDPIPE_H_
