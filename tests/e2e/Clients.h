#ifndef TESTS_E2E_CLIENTS_H_
#define TESTS_E2E_CLIENTS_H_

#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

#include "tests/e2e/WireClient.h"

namespace e2e {

/// As many clients as the server serves at once.
inline constexpr std::size_t kInstances = 64;

/// Connects `count` more clients.
testing::AssertionResult ConnectMore(std::vector<WireClient>& clients, std::size_t count);

/// All of them hold their connection and are answered, though all ask before anyone listens.
testing::AssertionResult AreServedAtOnce(std::vector<WireClient>& clients);

/// The pool is whole: this many new clients are connected and served at once.
testing::AssertionResult AllInstancesServe();

}  // namespace e2e

#endif  // TESTS_E2E_CLIENTS_H_
