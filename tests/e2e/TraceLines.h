#ifndef TESTS_E2E_TRACELINES_H_
#define TESTS_E2E_TRACELINES_H_

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/e2e/Wire.h"

namespace e2e {

/// Lines of the text layout, each a function, a blank and a text.
using Lines = std::vector<std::string>;

/// Several stretches of lines, one behind the other.
Lines operator+(Lines first, const Lines& second);

/// The lines that a file holds, without their ends. A line that is not whole yet is left away.
Lines SplitLines(const Bytes& content);

/// Lines of the text layout without the blank at their end; a line without one is kept marked, so
/// that it equals nothing.
Lines TextLines(const Bytes& content);

/// Compares all lines. An expected line may hold names in braces, which stand for a number that is
/// the same wherever the name comes: `{con}` in decimal, `{con:x}` the same in hexadecimal. `{}`
/// stands for any number in decimal, `{:x}` in hexadecimal.
testing::AssertionResult LinesAre(const Lines& lines, const Lines& expected);

/// Lines that come in many places. `{con}` is the instance.
namespace lines {

/// From the end of a wait to the code of the request that was waited for.
Lines RequestComes(std::string_view code);

/// The pass behind a reply that was written at once, up to the next wait.
Lines NextRead();

/// The reply of one long.
Lines SendLong(std::string_view result, int length = 6);

/// A whole request from wait to wait, of which the lines of its command are given.
Lines Request(std::string_view code, const Lines& command);

/// A request whose command cannot read a field: what that traces, and the loop's answer.
Lines Refused(std::string_view code, const Lines& command);

}  // namespace lines
}  // namespace e2e

#endif  // TESTS_E2E_TRACELINES_H_
