#ifndef TESTS_E2E_EVIDENCE_H_
#define TESTS_E2E_EVIDENCE_H_

#include <string>
#include <vector>

/// The folder in which a server that crashes leaves its evidence.
namespace e2e::evidence {

/// Its full path.
std::string Folder();

/// What lies in it, sorted.
std::vector<std::string> Names();
std::string File(const std::string& name);

/// Removes it with all that a server puts there.
void Clear();

}  // namespace e2e::evidence

#endif  // TESTS_E2E_EVIDENCE_H_
