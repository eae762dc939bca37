#ifndef BENCH_WORKLOAD_H_
#define BENCH_WORKLOAD_H_

#include <cstdint>
#include <vector>

/// What is asked of the servers, and what they must answer.
namespace bench {

struct Workload {
  const char* name;
  std::vector<std::uint8_t> request;
  std::vector<std::uint8_t> reply;  ///< every answer is compared with this, byte for byte
};

/// Code 16 alone.
Workload NoOperation();
/// Code 16 and padding up to the largest request that is read at once.
Workload LargeRequest();
/// Code 22 for a short text value.
Workload GetValue();
/// Code 21 for the only subkey.
Workload EnumKey();

/// The request that ends either server.
std::vector<std::uint8_t> StopRequest();

/// Makes the key that the registry workloads read, and removes it again.
class RegistryFixture {
 public:
  RegistryFixture();
  ~RegistryFixture();
  RegistryFixture(const RegistryFixture&) = delete;
  RegistryFixture& operator=(const RegistryFixture&) = delete;
};

}  // namespace bench

#endif  // BENCH_WORKLOAD_H_
