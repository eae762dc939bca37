#ifndef CLI_DEVNODENAMES_H_
#define CLI_DEVNODENAMES_H_

#include <cstdint>
#include <string>
#include <vector>

namespace cli {

/// The names of the bits that are set in a device node's status, lowest first.
std::vector<const char*> StatusBitNames(std::uint32_t status);

/// The name of a device node's problem number, or "" for 0 and for numbers that have none.
const char* ProblemName(std::uint32_t problem);

}  // namespace cli

#endif  // CLI_DEVNODENAMES_H_
