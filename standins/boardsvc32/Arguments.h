#ifndef STANDINS_BOARDSVC32_ARGUMENTS_H_
#define STANDINS_BOARDSVC32_ARGUMENTS_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include "board/boardsvc32.h"
#include "standins/boardsvc32/FaultScript.h"

namespace boardsim {

/// Whatever a caller claims, no more than this is written behind a pointer or read as one text:
/// every buffer of this interface has at least these bytes.
inline constexpr std::uint32_t kMostBytes = 8192;

/// What an export answers, before it is fitted into the caller's room.
struct Answer {
  std::uint32_t result = 0;
  std::vector<std::string> texts{};      ///< for the rooms, in their order
  std::vector<std::uint32_t> numbers{};  ///< for the numbers, in their order
  BRDX_GUID guid{};
  std::optional<std::size_t> change{};  ///< the device change that is gone once delivered
};

/// The arguments of one call, as they came.
///
/// Borrows everything and owns nothing, so that a call which raises leaves nothing behind.
class Arguments {
 public:
  Arguments& Text(const char* name, const char* text);
  Arguments& Number(const char* name, std::uint32_t number);
  Arguments& Guid(const char* name, const BRDX_GUID& guid);
  Arguments& Bytes(const char* name, const std::uint8_t* bytes, std::uint32_t length);

  /// A buffer for an answer; `*length` is its capacity, and then the length of the answer.
  Arguments& Room(const char* name, void* buffer, std::uint32_t* length);
  Arguments& NumberOut(const char* name, std::uint32_t* number);
  Arguments& ByteOut(const char* name, std::uint8_t* number);
  Arguments& GuidOut(const char* name, BRDX_GUID* guid);

  /// Fits an answer into the caller's room, then does to it what the fault asks for.
  ///
  /// A text fits if it is no longer than the capacity; its terminator is written where there is
  /// still room. If one does not fit, nothing is written, the lengths are those needed, and the
  /// result is 234. On any other failure all lengths are 0. Numbers of a failure are 0.
  ///
  /// \returns the result of the call.
  std::uint32_t Deliver(const Answer& answer, const Fault* fault) const;

  /// What came in: name="text", name=number, name[capacity], parted by blanks.
  std::string In() const;

  /// What went out: name=length, name=number.
  std::string Out() const;

 private:
  enum class Kind { kText, kNumber, kGuid, kBytes, kRoom, kNumberOut, kByteOut, kGuidOut };

  struct Argument {
    Kind kind;
    const char* name;
    const void* in;        // kText, kBytes
    void* out;             // kRoom, kNumberOut, kByteOut, kGuidOut
    std::uint32_t number;  // kNumber; the length of kBytes; the capacity of kRoom
    std::uint32_t* length;
    BRDX_GUID guid;
  };

  static constexpr std::size_t kMost = 12;

  Arguments& Add(const Argument& argument);
  bool Fits(const Answer& answer) const;
  void Write(const Answer& answer, std::uint32_t result) const;
  void WriteFault(const Answer& answer, const Fault& fault) const;

  std::array<Argument, kMost> list_{};
  std::size_t count_ = 0;
};
static_assert(std::is_trivially_destructible_v<Arguments>);

}  // namespace boardsim

#endif  // STANDINS_BOARDSVC32_ARGUMENTS_H_
