#ifndef FUZZ_REQUESTMUTATOR_H_
#define FUZZ_REQUESTMUTATOR_H_

#include <cstddef>
#include <cstdint>

/// Changes an input of RequestFuzzer by what requests are made of: a field's content with the
/// length in front of it, a number, a whole request of any command; or, as often, byte by byte. The
/// wrong lengths come from the latter.
///
/// The parameters are those of LLVMFuzzerCustomMutator.
std::size_t MutateRequests(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                           unsigned seed);

#endif  // FUZZ_REQUESTMUTATOR_H_
