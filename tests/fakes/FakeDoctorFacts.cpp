#include "tests/fakes/FakeDoctorFacts.h"

FakeDoctorFacts& TheDoctorFacts() {
  static FakeDoctorFacts facts;
  return facts;
}

namespace doctor {

Facts GatherFacts(const char* pipe, std::uint32_t timeoutMs) {
  TheDoctorFacts().pipe = pipe;
  TheDoctorFacts().timeoutMs = timeoutMs;
  return TheDoctorFacts().facts;
}

}  // namespace doctor
