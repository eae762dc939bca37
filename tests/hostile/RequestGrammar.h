#ifndef TESTS_HOSTILE_REQUESTGRAMMAR_H_
#define TESTS_HOSTILE_REQUESTGRAMMAR_H_

#include <cstdint>
#include <random>
#include <string_view>
#include <vector>

#include "client/CommandInfo.h"
#include "tests/e2e/Wire.h"

namespace hostile {

/// What goes to one connection, and when.
struct Shot {
  /// Each is one write, at most kLongestShot bytes; the next one follows the answer to this one.
  std::vector<e2e::Bytes> writes;
  /// Two writes right behind each other: the server may take them as one request or as two.
  bool hurried = false;
};

inline constexpr std::size_t kLongestShot = 20000;

/// The requests that the server makes of one write that finds it reading.
std::vector<e2e::Bytes> AsTaken(const e2e::Bytes& write);

/// Whether the server would end, or wait for somebody, as it should: a confirmed stop, and a test
/// function that shows its box.
bool IsLeftOut(const e2e::Bytes& request);

client::Bytes View(const e2e::Bytes& bytes);

/// Makes requests out of the description of the commands, and damages most of them. The same seed
/// makes the same requests.
class RequestGrammar {
 public:
  explicit RequestGrammar(std::uint32_t seed) : random_(seed) {}

  Shot Next();

 private:
  struct Part {
    client::FieldKind kind;
    e2e::Bytes bytes;  ///< as it travels
  };

  std::uint32_t Below(std::uint32_t limit);
  template <typename T>
  const T& OneOf(const std::vector<T>& pool);

  const client::CommandInfo& AnyCommand();
  Shot Damaged();
  std::vector<Part> RightFields(const client::CommandInfo& command);
  e2e::Bytes TextFor(std::string_view field);
  std::uint32_t NumberFor(std::string_view field);
  e2e::Bytes RightRequest();
  e2e::Bytes Request(std::uint32_t code, const std::vector<Part>& parts);
  void DamageField(std::vector<Part>& parts);
  e2e::Bytes DamagedRequest();
  Shot InPieces(bool hurried);

  std::mt19937 random_;
};

}  // namespace hostile

#endif  // TESTS_HOSTILE_REQUESTGRAMMAR_H_
