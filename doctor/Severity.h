#ifndef DOCTOR_SEVERITY_H_
#define DOCTOR_SEVERITY_H_

#include <cstdint>

namespace doctor {

/// How much a finding matters.
enum class Severity : std::uint8_t {
  Ok,
  Note,     ///< worth knowing; nothing fails by it
  Warning,  ///< something that clients may ask for will fail
  /// The server does not serve, or serves whom it should not; or a library or device that is set up
  /// cannot work.
  Error,
};

}  // namespace doctor

#endif  // DOCTOR_SEVERITY_H_
