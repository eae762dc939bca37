#ifndef TESTS_FAKES_FAULTPLAN_H_
#define TESTS_FAKES_FAULTPLAN_H_

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

/// One switch for all fakes: which call of which rim function goes wrong, and how.
///
/// A fake asks at the start of each function that can fail. As long as nobody has armed the plan,
/// everything goes well and nothing is counted.
namespace fault_plan {

/// Codes of failures that the platform reports with no error code.
inline constexpr std::uint32_t kAtOnce = 0xFA010001;   ///< succeeds where it should be pending
inline constexpr std::uint32_t kShort = 0xFA010002;    ///< moves a byte less
inline constexpr std::uint32_t kEmpty = 0xFA010003;    ///< moves nothing
inline constexpr std::uint32_t kNothing = 0xFA010004;  ///< does nothing, and nobody is told

struct Plan {
  std::string function;    ///< as the fakes name it; empty: everything goes well, calls are counted
  int nth = 0;             ///< from 1
  bool onward = false;     ///< the calls behind the n-th fail as well
  std::uint32_t code = 0;  ///< what the call fails with
  bool raises = false;     ///< it raises instead; only calls that somebody guards are counted then
};

/// What a call that was planned to raise throws.
struct Raised {};

/// Forgets all calls and lets the plan take effect.
void Arm(const Plan& plan);
void Disarm();

/// Counts a call. \returns 0 when it is to go well, else the code to fail with. Throws Raised when
/// the plan says so.
/// \param detail what tells calls of one function apart: a file name, an operation
std::uint32_t CodeFor(const char* function, const char* detail = "");
inline bool Fails(const char* function, const char* detail = "") {
  return CodeFor(function, detail) != 0;
}

/// A call that went wrong.
struct Hit {
  std::string detail;
  int nthInStep = 0;  ///< among the function's calls since the hits were taken last, from 1
};
/// The hits since Arm or the last call.
std::vector<Hit> TakeHits();

/// How often each function was called since Arm.
struct Count {
  int calls = 0;
  int guarded = 0;                               ///< of these, inside a guarded call
  std::set<std::string, std::less<>> unguarded;  ///< details of the others
};
std::map<std::string, Count> Counts();

/// Inside, the calls of this thread are guarded: what they raise is caught.
class Guarded {
 public:
  Guarded() { ++depth_; }
  ~Guarded() { --depth_; }
  Guarded(const Guarded&) = delete;
  Guarded& operator=(const Guarded&) = delete;

  static bool Inside() { return depth_ != 0; }

 private:
  static inline thread_local int depth_ = 0;
};

}  // namespace fault_plan

#endif  // TESTS_FAKES_FAULTPLAN_H_
