#ifndef FUZZ_PROTOCOLDICTIONARY_H_
#define FUZZ_PROTOCOLDICTIONARY_H_

#include <string>

/// The text of fuzz/protocol.dict: what a fuzzer cannot guess of requests and replies, in the
/// format of libFuzzer. It follows from the client's description of the commands.
std::string ProtocolDictionary();

#endif  // FUZZ_PROTOCOLDICTIONARY_H_
