#ifndef BOARD_BOARDCOMMAND_H_
#define BOARD_BOARDCOMMAND_H_

/// What a board-control command is made of: its request, the one library call, and the three
/// answers that it may give. The commands differ in nothing else, so each is one row of data.

#include <cstddef>
#include <cstdint>
#include <initializer_list>

#include "codec/FieldReader.h"

/// Capacity of every buffer lent to the library, and the most that a client's length may announce.
inline constexpr std::uint32_t kBoardBufferSize = 8192;

/// The most that the lengths of an answer may add up to; the rest of a reply buffer is for its
/// mark, result and length fields.
inline constexpr std::uint32_t kBoardAnswerLimit = 8160;

/// Texts that go to the library, by their place in BoardCall.
enum InText : std::uint8_t { kInDeviceId, kInBoard, kInBoardMap, kInHardwareId, kInTexts };

/// A second meaning of places above, for commands that have other texts.
inline constexpr InText kInAdapter = kInBoard;
inline constexpr InText kInHardwareInstanceId = kInHardwareId;

inline constexpr std::size_t kOutBuffers = 6;

/// One buffer that the library fills. A byte longer than the library is told, and zero-filled, so
/// that what it wrote always ends somewhere.
struct OutBuffer {
  char bytes[kBoardBufferSize + 1];
  char* data = bytes;                       ///< the memory lent; may be a fenced one
  std::uint32_t length = kBoardBufferSize;  ///< in: capacity; out: what the library says
};

/// The arguments of one library call and what came back.
struct BoardCall {
  std::uint32_t number = 0;  ///< index or info type
  RequestText<kBoardBufferSize> texts[kInTexts];
  OutBuffer outs[kOutBuffers];
  std::uint32_t value = 0;  ///< the library's extra 32-bit value
  std::uint8_t byte = 0;    ///< the library's extra byte

  char* Text(InText which) { return texts[which].get(); }
  char* Buffer(std::size_t which) { return outs[which].data; }
  std::uint32_t* Length(std::size_t which) { return &outs[which].length; }
};

/// A list of a few elements, as part of a row.
template <typename T, std::size_t Capacity>
class RowList {
 public:
  constexpr RowList() = default;
  // NOLINTNEXTLINE(google-explicit-constructor): rows are written as braced lists
  constexpr RowList(std::initializer_list<T> elements) {
    for (const T& element : elements) elements_[count_++] = element;
  }

  constexpr const T* begin() const { return elements_; }
  constexpr const T* end() const { return elements_ + count_; }
  constexpr std::size_t size() const { return count_; }

 private:
  T elements_[Capacity] = {};
  std::size_t count_ = 0;
};

/// One field of a request.
struct BoardField {
  enum class Kind : std::uint8_t { kNumber, kText, kRoom };
  Kind kind = Kind::kNumber;
  std::uint8_t place = 0;
  ResultTrace trace = "<< result = 0x%x";
};

/// The index or info type.
consteval BoardField Number(ResultTrace trace) { return {BoardField::Kind::kNumber, 0, trace}; }
consteval BoardField Text(InText place, ResultTrace trace) {
  return {BoardField::Kind::kText, place, trace};
}
/// The capacity that the client wants for an out buffer.
consteval BoardField Room(std::uint8_t place, ResultTrace trace) {
  return {BoardField::Kind::kRoom, place, trace};
}

/// One element of a reply behind the mark.
struct BoardReply {
  enum class Kind : std::uint8_t {
    kResult,         ///< what the library returned
    kZero,           ///< 0
    kOverflow,       ///< BUFFER_OVERFLOW
    kCapacity,       ///< kBoardBufferSize
    kLength,         ///< the length of an out buffer
    kTextAndLength,  ///< the text in an out buffer, and its length
    kValue,          ///< the extra 32-bit value
    kByte,           ///< the extra byte
  };
  Kind kind = Kind::kResult;
  std::uint8_t place = 0;
};

constexpr BoardReply Result() { return {BoardReply::Kind::kResult, 0}; }
constexpr BoardReply Zero() { return {BoardReply::Kind::kZero, 0}; }
constexpr BoardReply Overflow() { return {BoardReply::Kind::kOverflow, 0}; }
constexpr BoardReply Capacity() { return {BoardReply::Kind::kCapacity, 0}; }
constexpr BoardReply Length(std::uint8_t place) { return {BoardReply::Kind::kLength, place}; }
constexpr BoardReply TextAndLength(std::uint8_t place) {
  return {BoardReply::Kind::kTextAndLength, place};
}
constexpr BoardReply Value() { return {BoardReply::Kind::kValue, 0}; }
constexpr BoardReply Byte() { return {BoardReply::Kind::kByte, 0}; }

/// How an answer that fits is sent.
enum class BoardSuccess : std::uint8_t {
  kResult,    ///< Send(long)
  kText,      ///< Send(long, TCHAR, long) with the first out buffer
  kBuffer,    ///< SendBuffer with the first out buffer
  kComposed,  ///< field by field, as the row's list says
};

/// How a client's length is bounded to kBoardBufferSize.
enum class BoardBound : std::uint8_t { kUnsigned, kSigned };

/// One command.
struct BoardCommand {
  const char* function;   ///< its name in the trace
  const char* operation;  ///< the library operation, as its result is traced
  const char* raised;     ///< the library operation, as its exception is traced
  RowList<BoardField, 9> request = {};
  std::uint32_t (*call)(BoardCall& call);
  BoardSuccess success = BoardSuccess::kResult;
  RowList<BoardReply, 8> reply = {};    ///< of a composed success, behind the mark
  RowList<BoardReply, 7> tooLong = {};  ///< longs; the lengths add up to more than the limit
  RowList<BoardReply, 6> failure = {Result()};  ///< longs
  BoardBound bound = BoardBound::kUnsigned;
  /// Traces the library's result where that is not "<< operation result = 0x%x".
  void (*traceResult)(const BoardCommand& row, const BoardCall& call,
                      std::uint32_t result) = nullptr;
};

#endif  // BOARD_BOARDCOMMAND_H_
