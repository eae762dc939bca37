#ifndef CLI_TEXTENCODING_H_
#define CLI_TEXTENCODING_H_

#include <string>
#include <string_view>

/// The program works in UTF-8; the server's texts are in the ANSI code page of the system.
namespace cli {

/// Bytes that mean nothing in the code page become replacement characters, so nothing is lost track
/// of in length, but the text is not always the bytes.
std::string Utf8FromAnsi(std::string_view bytes);

/// \returns false when the text is no valid UTF-8, or has a character that the code page lacks.
///   Nothing is replaced by something that looks alike.
bool AnsiFromUtf8(std::string_view text, std::string& bytes);

}  // namespace cli

#endif  // CLI_TEXTENCODING_H_
