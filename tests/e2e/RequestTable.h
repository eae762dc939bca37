#ifndef TESTS_E2E_REQUESTTABLE_H_
#define TESTS_E2E_REQUESTTABLE_H_

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

#include "tests/e2e/Wire.h"

namespace e2e {

/// One valid request of a command, cut into its fields, for tests that damage it.
struct RequestRow {
  const char* name;
  const char* code;
  /// In wire order; the text fields are those that begin with a length.
  std::vector<const char*> fields;
  /// Which of them are texts.
  std::vector<std::size_t> texts;
  /// What a failure that the registry was not asked about has behind its result.
  const char* failureTail;

  /// The whole request; with `replaced`, that field holds these bytes instead.
  Bytes Request() const;
  Bytes RequestWith(std::size_t replaced, const Bytes& bytes) const;
};

/// For the names of parameterised tests.
std::ostream& operator<<(std::ostream& out, const RequestRow& row);

/// The commands of the installation and maintenance actions that have fields. Their failure tail is
/// what a request that cannot be read is answered with behind the first reply.
const std::vector<RequestRow>& ActionRequests();

/// The ten registry commands. All work in or on SOFTWARE\Vesmark\NORVA\E2E.
const std::vector<RequestRow>& RegistryRequests();

}  // namespace e2e

#endif  // TESTS_E2E_REQUESTTABLE_H_
