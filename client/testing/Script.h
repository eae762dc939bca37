#ifndef CLIENT_TESTING_SCRIPT_H_
#define CLIENT_TESTING_SCRIPT_H_

#include <cstdint>
#include <deque>
#include <initializer_list>
#include <string>
#include <vector>

namespace client {

/// What a scripted server does on one request.
struct ScriptStep {
  std::deque<std::vector<std::uint8_t>> parts;
  bool closes = false;
};

ScriptStep MakeStep(std::initializer_list<std::string> parts, bool closes);

}  // namespace client

#endif  // CLIENT_TESTING_SCRIPT_H_
