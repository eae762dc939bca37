#ifndef BENCH_WORKLOAD_H_
#define BENCH_WORKLOAD_H_

#include <cstdint>
#include <vector>

/// What is asked of the servers, and what they must answer.
namespace bench {

using Bytes = std::vector<std::uint8_t>;

struct Workload {
  const char* name;
  Bytes request;
  Bytes reply;  ///< every answer is compared with this, byte for byte
};

/// Code 16 alone.
Workload NoOperation();
/// Code 16 and padding up to the largest request that is read at once.
Workload LargeRequest();
/// Code 22 for a short text value.
Workload GetValue();
/// Code 3 for another one, and code 18 that deletes it.
Workload SetValue();
Workload DelValue();
/// Codes 21 and 23 for the first subkey and the first value.
Workload EnumKey();
Workload EnumValue();
/// Code 2 for a key four levels down, and code 1 that deletes the tree with it.
Workload CreateKey();
Workload DelKey();

/// The request that ends either server.
Bytes StopRequest();

/// Makes the key that the registry workloads touch, and removes it again.
class RegistryFixture {
 public:
  RegistryFixture();
  ~RegistryFixture();
  RegistryFixture(const RegistryFixture&) = delete;
  RegistryFixture& operator=(const RegistryFixture&) = delete;
};

}  // namespace bench

#endif  // BENCH_WORKLOAD_H_
