#ifndef CODEC_FIELDREADER_H_
#define CODEC_FIELDREADER_H_

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "server/QorlixSRVPipe.h"

/// One text field of a request: a buffer of `Capacity` bytes, terminator included.
///
/// Only the first byte is cleared: the reader terminates what it copies, and what lies behind the
/// terminator is never looked at.
template <std::uint32_t Capacity>
class RequestText {
 public:
  RequestText() { buffer_[0] = '\0'; }
  RequestText(const RequestText&) = delete;
  RequestText& operator=(const RequestText&) = delete;

  /// The text, or null when the client sent it as absent.
  char* get() { return text_; }

  /// Clears the whole buffer, for a library that may look behind the text.
  void Clear() { std::memset(buffer_, 0, sizeof(buffer_)); }

 private:
  friend class FieldReader;
  char buffer_[Capacity];
  char* text_ = buffer_;
};

/// The trace text of a field that could not be read, with the place that names it.
///
/// The text may print the reader's result as its first and the field as its second argument; that
/// it does nothing else is checked when it is compiled. Without a conversion for the field
/// (ResultTrace) the text goes with fields of every kind.
template <char Conversion>
struct FieldTrace {
  // NOLINTNEXTLINE(google-explicit-constructor): a literal at the call site is the whole point
  consteval FieldTrace(const char* text, std::uint32_t atLine = __builtin_LINE(),
                       const char* atFile = __builtin_FILE())
      : format(text), file(atFile), line(atLine) {
    if (!Matches(text)) NotAResultAndAField();
    for (const char* c = atFile; *c != '\0'; ++c) {
      if (*c == '/' || *c == '\\') file = c + 1;
    }
  }

  // NOLINTNEXTLINE(google-explicit-constructor): a text that prints no field suits every field
  template <char Other>
  requires(Other == '\0' && Conversion != '\0') constexpr FieldTrace(const FieldTrace<Other>& any)
      : format(any.format), file(any.file), line(any.line) {}

  const char* format;
  const char* file;
  std::uint32_t line;

 private:
  static consteval bool Matches(const char* text) {
    const char wanted[] = {'x', Conversion};
    std::size_t conversions = 0;
    for (const char* c = text; *c != '\0'; ++c) {
      if (*c != '%') continue;
      if (conversions == sizeof(wanted) || c[1] != wanted[conversions]) return false;
      ++conversions;
    }
    return true;
  }
  static void NotAResultAndAField() {}  // not consteval: reaching it stops the compilation
};

using ResultTrace = FieldTrace<'\0'>;

/// Takes a handler's fields in order and remembers the first that could not be read: from then on
/// nothing more is taken, so a handler leaves once, behind its last field.
class FieldReader {
 public:
  FieldReader(CQorlixSRVPipe& srv, int conId, const char* function)
      : srv_(srv), conId_(conId), function_(function) {}

  template <std::uint32_t Capacity>
  void Text(RequestText<Capacity>& field, const FieldTrace<'s'>& trace) {
    if (Failed()) return;
    result_ = srv_.ReadString(conId_, field.text_, Capacity);
    if (Failed()) TraceText(trace, field.get());
  }

  void Long(std::uint32_t& field, const FieldTrace<'x'>& trace);
  void Short(std::uint16_t& field, const ResultTrace& trace);
  void Byte(std::uint8_t& field, const ResultTrace& trace);
  /// \param length receives the bytes that the client sent, 0 for an absent buffer
  void Buffer(void* buffer, std::uint32_t capacity, std::uint32_t& length,
              const ResultTrace& trace);

  bool Failed() const { return result_ != SRV_OK; }
  SrvResult Result() const { return result_; }

 private:
  void TraceText(const FieldTrace<'s'>& trace, const char* text) const;
  void TraceResult(const ResultTrace& trace) const;

  CQorlixSRVPipe& srv_;
  const int conId_;
  const char* const function_;
  SrvResult result_ = SRV_OK;
};

#endif  // CODEC_FIELDREADER_H_
