#ifndef TESTS_E2E_ACTIONTRACETEST_H_
#define TESTS_E2E_ACTIONTRACETEST_H_

#include <cstdint>
#include <string>
#include <vector>

#include "tests/e2e/StandIns.h"
#include "tests/e2e/TraceTest.h"

namespace e2e {

/// One trace line: the bit it is written at, its component, and what it says.
struct BitLine {
  std::uint32_t bit;
  std::string component;
  std::string text;  ///< function and text, with placeholders as LinesAre takes them
};
using BitLines = std::vector<BitLine>;

inline constexpr std::uint32_t kEnter = 8;
inline constexpr std::uint32_t kError = 16;
inline constexpr std::uint32_t kStep = 64;
inline constexpr std::uint32_t kAnswered = 128;

/// Lines of one function. The layout puts a blank behind its name.
class Of {
 public:
  explicit Of(const std::string& function, const std::string& component = "SRV")
      : function_(function + ' '), component_(component) {}
  BitLine operator()(std::uint32_t bit, const std::string& text) const {
    return {bit, component_, function_ + text};
  }

 private:
  std::string function_, component_;
};

BitLines operator+(BitLines first, const BitLines& second);

/// A reply of one long, of that many bytes with what stands before it.
BitLines SendsLong(const std::string& result, int length = 6);

/// A text field of which the length is cut short, or the bytes.
BitLine CutLength();
BitLine CutText();

/// What the actions trace, on a server that all tests of a suite share, with the stand-ins in their
/// places.
class ActionTraceTest : public TraceTest {
 protected:
  static constexpr char kDispatcher[] =
      "*INST* GET_REG* BC_PL* *PANEL* *IPADD* SILENT* GETS* "
      "TESTF* SEND* READ*";
  static constexpr char kWorker[] = "RUNSILENT*";

  static void SetUpTestSuite();
  static void TearDownTestSuite();
  void SetUp() override;

  static StandIns& Libraries();

  /// Sends the request once for everything and once for each bit, and compares what is traced by
  /// the functions of the filter. The reply has that many bytes.
  void ExpectLines(const Bytes& request, std::size_t replySize, const BitLines& expected,
                   const std::string& filter = kDispatcher);

 private:
  Lines Traced(const Bytes& request, std::size_t replySize, std::size_t count, bool withSends);
};

}  // namespace e2e

#endif  // TESTS_E2E_ACTIONTRACETEST_H_
