#ifndef TESTS_FAULTS_EXPECTATIONS_H_
#define TESTS_FAULTS_EXPECTATIONS_H_

#include <string>
#include <vector>

#include "tests/faults/RimTable.h"
#include "tests/faults/Session.h"

/// What may be seen of a failure, and what may not.
namespace expectations {

/// One session with one function failing.
struct Case {
  const rim_table::Function* function;
  const rim_table::Failure* failure;
  int nth = 1;
  bool onward = false;
};

/// "pipe_io::Read, broken, call 3 and all behind it"
std::string Describe(const Case& which);

fault_plan::Plan PlanOf(const Case& which);

/// What differs from the session without a failure and should not; empty when all is well.
std::vector<std::string> Differences(const Case& which, const fault_session::Result& good,
                                     const fault_session::Result& seen);

}  // namespace expectations

#endif  // TESTS_FAULTS_EXPECTATIONS_H_
