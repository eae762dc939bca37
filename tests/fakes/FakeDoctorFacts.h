#ifndef TESTS_FAKES_FAKEDOCTORFACTS_H_
#define TESTS_FAKES_FAKEDOCTORFACTS_H_

#include <cstdint>
#include <string>

#include "doctor/Facts.h"

/// What the native twin of doctor/GatherFacts.cpp finds, and what it was asked.
struct FakeDoctorFacts {
  doctor::Facts facts;
  std::string pipe;
  std::uint32_t timeoutMs = 0;
};
FakeDoctorFacts& TheDoctorFacts();

#endif  // TESTS_FAKES_FAKEDOCTORFACTS_H_
