#include "fuzz/BoardModel.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace board_model {

const std::vector<Shape> kShapes = {
    {193, "tnrrr"},
    {192, "nrrrrrr"},
    {194, "nrr"},
    {197, "nrr"},
    {196, "nttttrrrr"},
    {163, "tttr"},
    {195, "nttttr"},
    {207, "ntttr"},
    {199, ""},
    {201, ""},
    {88, ""},
    {200, "tt"},
    {256, "tnssbbbbbbbb"},
    {257, "tnssbbbbbbbb"},
    {258, "t"},
    {290, "tn"},
    {191, "xvvvxvvv"},
    {292, ""},
};

namespace {

constexpr std::uint32_t kOverflow = 8602;
constexpr std::uint32_t kRaised = 8604;
constexpr std::size_t kReplySize = 8192;

class Reader {
 public:
  explicit Reader(const Bytes& request) : bytes_(request) {}

  std::uint32_t Number(std::size_t size) {
    if (failed_ || bytes_.size() - at_ < size) {
      failed_ = true;
      return 0;
    }
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < size; ++i) value |= std::uint32_t{bytes_[at_++]} << (8 * i);
    return value;
  }
  // A counted field that has to stay below `capacity` bytes; nothing when it is absent.
  std::optional<Bytes> Counted(std::uint64_t capacity) {
    const std::uint32_t size = Number(4);
    if (failed_ || size == 65535) return std::nullopt;
    if (size >= capacity || size > bytes_.size() - at_) {
      failed_ = true;
      return std::nullopt;
    }
    const auto begin = bytes_.begin() + static_cast<std::ptrdiff_t>(at_);
    at_ += size;
    return Bytes(begin, begin + size);
  }
  bool Failed() const { return failed_; }

 private:
  const Bytes& bytes_;
  std::size_t at_ = 2;
  bool failed_ = false;
};

class Writer {
 public:
  Writer& Raw(const Bytes& bytes) {
    if (failed_ || reply_.size() + bytes.size() > kReplySize) {
      failed_ = true;
    } else {
      reply_ = reply_ + bytes;
    }
    return *this;
  }
  Writer& Number(std::uint32_t value, std::size_t size = 4) {
    Bytes bytes;
    for (std::size_t i = 0; i < size; ++i) {
      bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
    }
    return Raw(bytes);
  }
  Writer& Counted(const Bytes& bytes) {
    return Number(static_cast<std::uint32_t>(bytes.size())).Raw(bytes);
  }
  // What overflowed is followed by the loop's own answer.
  std::optional<Bytes> Reply() {
    if (failed_) {
      failed_ = false;
      Number(4, 2).Number(kOverflow);
    }
    if (failed_) return std::nullopt;
    return reply_;
  }

 private:
  Bytes reply_;
  bool failed_ = false;
};

Writer Begin(std::uint32_t result) {
  Writer writer;
  writer.Number(4, 2).Number(result);
  return writer;
}

// What is in a clear buffer once the library has written to it as much as it was told.
Bytes Filled(const Out& out, std::uint32_t told, std::size_t size) {
  Bytes buffer(size, 0);
  const std::size_t written = std::min({out.bytes.size(), std::size_t{told}, size});
  std::copy_n(out.bytes.begin(), written, buffer.begin());
  return buffer;
}

Bytes TextIn(const Bytes& buffer) {
  return {buffer.begin(), std::find(buffer.begin(), buffer.end(), 0)};
}

std::optional<std::string> AsText(const std::optional<Bytes>& field) {
  if (!field) return std::nullopt;
  return std::string(field->begin(), std::find(field->begin(), field->end(), 0));
}

// --- Board-control commands ---
//
// z 0, o overflow, R result, C capacity; T text and length of the next buffer, B buffer of that
// length, digits the length of that buffer, v the extra value, b the extra byte.
struct Answers {
  std::uint16_t code;
  const char* success;
  const char* tooLong;
  const char* failure;
};
constexpr Answers kAnswers[] = {
    {193, "zTTT", "o012", "R0C1"},
    {192, "zTTTTTTv", "o012345", "R0125"},
    {194, "zTTv", "o01", "R01"},
    {197, "zTTb", "o", "R01"},
    {196, "zTTTT", "o0123", "R0123"},
    {163, "zT", "o0", "R0"},
    {195, "zT", "o0", "R0"},
    {207, "zB", "o0", "R0"},
    {199, "z", "", "R"},
    {201, "z", "", "R"},
    {88, "z", "", "R"},
    {200, "z", "", "R"},
};

std::optional<Bytes> BoardReply(const Answers& answers, const Script& script,
                                const std::vector<std::uint32_t>& told) {
  if (script.raises) return Begin(kRaised).Reply();
  std::vector<std::uint32_t> lengths;
  std::uint64_t sum = 0;
  for (std::size_t i = 0; i < told.size(); ++i) {
    lengths.push_back(script.outs[i].length.value_or(told[i]));
    sum += lengths.back();
  }
  const char* const layout = script.result != 0 ? answers.failure
                             : sum > 8160       ? answers.tooLong
                                                : answers.success;
  Writer writer;
  writer.Number(4, 2);
  std::size_t next = 0;
  for (const char element : std::string_view(layout)) {
    switch (element) {
      case 'z':
        writer.Number(0);
        break;
      case 'o':
        writer.Number(kOverflow);
        break;
      case 'R':
        writer.Number(script.result);
        break;
      case 'C':
        writer.Number(8192);
        break;
      case 'v':
        writer.Number(script.value);
        break;
      case 'b':
        writer.Number(script.byte, 1);
        break;
      case 'T':
        writer.Counted(TextIn(Filled(script.outs[next], told[next], 8192))).Number(lengths[next]);
        ++next;
        break;
      case 'B':
        writer.Counted(Filled(script.outs[next], told[next], lengths[next]));
        break;
      default:
        writer.Number(lengths[static_cast<std::size_t>(element - '0')]);
        break;
    }
  }
  return writer.Reply();
}

std::uint32_t Bounded(std::uint16_t code, std::uint32_t length) {
  const bool passes = code == 207 && length > 0x7FFFFFFF;
  return length > 8192 && !passes ? 8192 : length;
}

// --- The others ---

std::optional<Bytes> ChangeReply(const Script& script, const Bytes& guid) {
  if (script.raises) return Begin(kRaised).Reply();
  if (script.result != 0) return Begin(script.result).Reply();
  const std::uint32_t length = script.outs[0].length.value_or(8192);
  if (length > 8160) return Begin(kOverflow).Number(length).Number(16).Reply();
  return Begin(0)
      .Number(script.byte, 1)
      .Counted(Filled(script.outs[0], 8192, length))
      .Number(length)
      .Raw(guid)
      .Reply();
}

std::uint32_t AsNumber(const std::optional<Bytes>& field) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; field && i < 4 && i < field->size(); ++i) {
    value |= std::uint32_t{(*field)[i]} << (8 * i);
  }
  return value;
}

Expected InformationAnswer(Reader& reader, const Script& script) {
  Expected expected;
  std::uint32_t values[6] = {};
  expected.seen.blocks[0] = reader.Counted(8161).value_or(Bytes());
  for (int i = 0; i < 3; ++i) values[i] = AsNumber(reader.Counted(8193));
  expected.seen.blocks[1] = reader.Counted(8161).value_or(Bytes());
  for (int i = 3; i < 6; ++i) values[i] = AsNumber(reader.Counted(8193));
  if (reader.Failed() || values[3] > 8192 || values[4] > 8192) {
    expected.reply = Begin(kOverflow).Reply();
    return expected;
  }
  expected.seen.isCalled = true;
  expected.seen.numbers.assign(values, values + 6);
  if (script.raises || script.result != 0) {
    expected.reply = Begin(script.raises ? kRaised : script.result).Reply();
    return expected;
  }
  Writer value;
  value.Number(script.value);
  expected.reply = Begin(0)
                       .Counted(Filled(script.outs[0], values[3], values[3]))
                       .Counted(*value.Reply())
                       .Counted(Filled(script.outs[1], values[4], values[4]))
                       .Number(script.outs[0].length.value_or(0))
                       .Number(script.outs[1].length.value_or(0))
                       .Reply();
  return expected;
}

const Shape& ShapeOf(std::uint16_t code) {
  for (const Shape& shape : kShapes) {
    if (shape.code == code) return shape;
  }
  std::abort();
}

}  // namespace

Expected Answer(const Bytes& request, const Script& script) {
  const auto code = static_cast<std::uint16_t>(request[0] | request[1] << 8);
  Reader reader(request);
  if (code == 191) return InformationAnswer(reader, script);

  Expected expected;
  Seen& seen = expected.seen;
  const std::uint64_t capacity = code >= 256 && code <= 258 ? 260 : 8192;
  Writer guid;
  for (const char kind : std::string_view(ShapeOf(code).request)) {
    switch (kind) {
      case 't':
        seen.texts.push_back(AsText(reader.Counted(capacity)));
        break;
      case 'r':
        seen.lengths.push_back(Bounded(code, reader.Number(4)));
        break;
      case 's':
        guid.Number(reader.Number(2), 2);
        break;
      case 'b':
        guid.Number(reader.Number(1), 1);
        break;
      default:
        seen.numbers.push_back(reader.Number(4));
        if (code == 256 || code == 257) guid.Number(seen.numbers.back());
        break;
    }
  }
  if (reader.Failed()) {
    seen = {};
    expected.reply = Begin(kOverflow).Reply();
    return expected;
  }

  seen.isCalled = true;
  seen.guid = *guid.Reply();
  if (code == 258) {
    const Bytes changed(16, script.byte);
    expected.reply = ChangeReply(script, changed);
  } else if (code == 290) {
    expected.reply = script.raises ? Begin(kRaised).Reply()
                                   : Begin(0).Number(script.value).Number(script.byte).Reply();
  } else if (code == 292) {
    // The scan raises, so no result has been kept.
    expected.reply = Begin(script.raises ? 0 : script.result).Reply();
  } else if (code == 256 || code == 257) {
    expected.reply = Begin(script.raises ? kRaised : script.result).Reply();
  } else {
    const auto* const answers = std::find_if(std::begin(kAnswers), std::end(kAnswers),
                                             [=](const Answers& row) { return row.code == code; });
    expected.reply = BoardReply(*answers, script, seen.lengths);
  }
  return expected;
}

}  // namespace board_model
