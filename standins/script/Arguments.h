#ifndef STANDINS_SCRIPT_ARGUMENTS_H_
#define STANDINS_SCRIPT_ARGUMENTS_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

#include "standins/script/CallScript.h"

namespace standin {

/// The arguments of one call, as they came.
///
/// Borrows everything and owns nothing, so that a call which raises leaves nothing behind.
class Arguments {
 public:
  Arguments& Text(const char* name, const char* text);
  Arguments& Number(const char* name, std::uint32_t number);
  /// A word for an answer; may be null.
  Arguments& Out(const char* name, std::uint32_t* word);

  /// Writes what the script says into the output words that the caller lent.
  void Deliver(const ScriptAnswer& answer) const;

  /// What came in: name="text", name=number, parted by blanks; (null) for what is absent.
  std::string In() const;

  /// What went out: name=number.
  std::string Outs() const;

 private:
  enum class Kind { kText, kNumber, kOut };

  struct Argument {
    Kind kind;
    const char* name;
    const char* text;
    std::uint32_t number;
    std::uint32_t* word;
  };

  static constexpr std::size_t kMost = 5;

  Arguments& Add(const Argument& argument);

  std::array<Argument, kMost> list_{};
  std::size_t count_ = 0;
};
static_assert(std::is_trivially_destructible_v<Arguments>);

}  // namespace standin

#endif  // STANDINS_SCRIPT_ARGUMENTS_H_
