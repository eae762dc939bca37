#ifndef DOCTOR_SEVERITY_H_
#define DOCTOR_SEVERITY_H_

#include <cstdint>

namespace doctor {

/// How much a finding matters.
enum class Severity : std::uint8_t {
  Ok,
  Note,     ///< worth knowing; nothing fails by it
  Warning,  ///< something that clients may ask for will fail
  Error,    ///< the server does not serve, or serves whom it should not
};

}  // namespace doctor

#endif  // DOCTOR_SEVERITY_H_
