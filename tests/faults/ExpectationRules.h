#ifndef TESTS_FAULTS_EXPECTATIONRULES_H_
#define TESTS_FAULTS_EXPECTATIONRULES_H_

#include <cstdint>
#include <string>

#include "tests/faults/Session.h"

/// The effects that failures may have. What no rule names must not be seen at all: by far the most.
namespace expectations {

enum class Effect : std::uint8_t {
  Same,     ///< nothing is seen
  Result,   ///< a reply with `result`, in the shape that the command has for it
  Exactly,  ///< the reply `bytes`
  Text,     ///< the remark `bytes` of the end
  MayLose,  ///< the client may be dropped, and has the beginning of its reply at most
  Ends,     ///< the server ends
};

inline constexpr std::uint32_t kOwnCode = 0xFFFF0000;  ///< the code that the function reported
inline constexpr std::uint32_t kAnyCommand = 0;
inline constexpr std::uint32_t kAtEnd = 0x10001;

struct Rule {
  const char* function = "";
  const char* failure = "";  ///< empty: any
  const char* detail = "";   ///< what the detail of the call contains
  std::uint32_t command = kAnyCommand;
  int call = 0;  ///< only this call of the function in a step
  Effect effect = Effect::Same;
  std::uint32_t result = 0;
  const char* bytes = "";
  std::uint32_t fetched = 0;  ///< what a restart's result becomes; 0: what it always is
  const char* box = nullptr;  ///< the message box that says so
  const char* why = "nothing is seen of it";
};

/// The first rule that fits, or one that says that nothing may be seen.
const Rule& FindRule(const std::string& function, const std::string& failure,
                     const std::string& detail, const fault_session::Step& step, int call);

/// Whether a client can stay without service as long as every call of the function fails.
bool CostsConnections(const std::string& function);

}  // namespace expectations

#endif  // TESTS_FAULTS_EXPECTATIONRULES_H_
