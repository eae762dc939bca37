#ifndef TESTS_E2E_BOARDTRACETABLE_H_
#define TESTS_E2E_BOARDTRACETABLE_H_

#include <cstddef>
#include <string>
#include <vector>

#include "tests/e2e/TraceLines.h"

namespace e2e {

/// One field of a request, as the line of a failed read names it.
struct FieldLine {
  std::string text;                     ///< behind the function
  const char* reader = "ReadLong";      ///< who finds the field cut at its beginning
  const char* copier = "ReadString: ";  ///< and who behind its length
};

/// What a command traces between the loop's lines, by the name of its row in BoardRequests.
struct CommandLines {
  const char* row;
  const char* code;
  std::string function;  ///< with the blank that the layout puts behind it
  const char* start;
  const char* result;  ///< the line of the library's result, up to the number; empty: none
  const char* raised;
  std::vector<FieldLine> fields;
  Lines success;
  const char* failureShape;
  const char* tooLongShape = "";
};

/// The commands whose lines are a start, a result and a reply, that is all but the states of a
/// device and the one whose result is no error.
const std::vector<CommandLines>& BoardCommandLines();

/// A reply of that shape and length, with the lines of its texts in between.
Lines SendOf(const std::string& shape, std::size_t length, const Lines& inside = {});

}  // namespace e2e

#endif  // TESTS_E2E_BOARDTRACETABLE_H_
