#ifndef TESTS_E2E_COMMANDWORK_H_
#define TESTS_E2E_COMMANDWORK_H_

#include <string_view>

namespace e2e {

/// Does in this process what the server does for a command beside reading, answering and locking:
/// the registry's calls, or those of the board-control library, with the arguments of
/// bench/Workload.h and of BoardRequests. Takes nothing for itself.
void DoWorkOf(std::string_view command);

}  // namespace e2e

#endif  // TESTS_E2E_COMMANDWORK_H_
