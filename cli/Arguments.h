#ifndef CLI_ARGUMENTS_H_
#define CLI_ARGUMENTS_H_

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "cli/Subcommands.h"

namespace cli {

/// Takes a command line apart, without the program's own name.
///
/// \returns an empty text, or what is wrong with it, to be shown behind the program's name. A
/// request
///   for help or the version is never wrong.
std::string ParseArguments(std::span<const std::string> words, Invocation& invocation);

/// A root key by its name (HKLM, HKEY_LOCAL_MACHINE and so on) or as 0x and up to eight digits.
bool ParseRootKey(std::string_view word, std::uint32_t& root);

/// A number below 2^32, in decimal digits or as 0x and up to eight hex digits.
bool ParseNumber(std::string_view word, std::uint32_t& number);

/// What is wrong with a word that ParseNumber refused: it is too large, or none at all.
/// \param what the name under which the user knows the number
std::string NumberError(const std::string& what, const std::string& word);

/// Seconds with up to three decimals, above 0 and at most a day, into milliseconds.
bool ParseSeconds(std::string_view word, std::uint32_t& milliseconds);

}  // namespace cli

#endif  // CLI_ARGUMENTS_H_
