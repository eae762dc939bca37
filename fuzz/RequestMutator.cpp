#include "fuzz/RequestMutator.h"

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "client/CommandInfo.h"
#include "fuzz/Sections.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

namespace {

using Data = std::vector<std::uint8_t>;

constexpr std::size_t kMostRequests = 4;
constexpr std::size_t kLongestRequest = 8192;

class Mutation {
 public:
  explicit Mutation(unsigned seed) : random_(seed) {}

  std::size_t Below(std::size_t limit) { return random_() % limit; }

  // One part of the input; the first is the machine's script.
  void Change(std::vector<Data>& parts) {
    const std::size_t at = 1 + Below(std::min(parts.size() + 1, kMostRequests));
    if (at >= parts.size()) {
      parts.push_back(AnyRequest());
      return;
    }
    switch (Below(8)) {
      case 0:
        parts[at] = AnyRequest();
        break;
      case 1:
        parts[0] = Bytewise(parts[0], 400);
        break;
      case 2:
        parts.erase(parts.begin() + static_cast<std::ptrdiff_t>(at));
        break;
      case 3:
        parts[at].resize(Below(parts[at].size() + 1));
        break;
      default:
        ChangeField(parts[at]);
        break;
    }
  }

 private:
  static Data Bytewise(Data data, std::size_t limit) {
    const std::size_t size = std::min(data.size(), limit);
    data.resize(limit);
    data.resize(LLVMFuzzerMutate(data.data(), size, limit));
    return data;
  }

  std::uint32_t Number() {
    static constexpr std::uint32_t kEdges[] = {
        0,    1,    4,     253,   259,        260,        8159,       8160,      8191,
        8192, 8193, 65535, 65536, 0x7FFFFFFF, 0x80000000, 0x80000002, 0xFFFFFFFF};
    return Below(4) != 0 ? kEdges[Below(std::size(kEdges))] : static_cast<std::uint32_t>(random_());
  }

  Data Text() {
    static const std::string kTexts[] = {"",
                                         "dev",
                                         "v",
                                         "event",
                                         "SOFTWARE\\Vesmark\\NORVA",
                                         "SOFTWARE\\Wow6432Node\\Vesmark\\NORVA",
                                         "SOFTWARE\\Vesmark\\NORVA\\K",
                                         "SOFTWARE\\Vesmark\\NORVA\\..\\K",
                                         "SOFTWARE\\Vesmark\\NORVA\\DefDevices\\DeviceID\\dev",
                                         "Installer",
                                         std::string(259, 'x'),
                                         std::string(260, 'x'),
                                         std::string(8100, 'x')};
    const std::string& text = kTexts[Below(std::size(kTexts))];
    return {text.begin(), text.end()};
  }

  static void Put(Data& to, std::uint32_t number, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i)
      to.push_back(static_cast<std::uint8_t>(number >> (8 * i)));
  }

  // A field, with this content if it is a text or a buffer.
  void PutField(Data& to, client::FieldKind kind, const Data& content) {
    using client::FieldKind;
    switch (kind) {
      case FieldKind::Byte:
        return Put(to, Number(), 1);
      case FieldKind::Short:
        return Put(to, Number(), 2);
      case FieldKind::Long:
        return Put(to, Number(), 4);
      case FieldKind::Guid:
        return to.insert(to.end(), 16, static_cast<std::uint8_t>(Number())), void();
      case FieldKind::Text:
      case FieldKind::Buffer:
        if (Below(20) == 0) return Put(to, 65535, 4);
        Put(to, static_cast<std::uint32_t>(content.size()), 4);
        to.insert(to.end(), content.begin(), content.end());
    }
  }

  Data AnyRequest() {
    const client::CommandInfo& command = client::Commands()[Below(client::Commands().size())];
    Data request;
    Put(request, static_cast<std::uint32_t>(command.code), 2);
    client::FieldList fields(command.request);
    client::Field field;
    while (fields.Next(field)) {
      Data content = Text();
      // Most buffers hold a number.
      if (field.kind == client::FieldKind::Buffer && Below(4) != 0) {
        content.clear();
        Put(content, Number(), 4);
      }
      PutField(request, field.kind, content);
    }
    return request;
  }

  // Changes one field and leaves the others, as far as the request can be read.
  void ChangeField(Data& request) {
    const client::CommandInfo* const command = client::CommandOf(request);
    if (command == nullptr) {
      request = Bytewise(request, 16);
      return;
    }
    std::size_t left = Below(10);
    std::uint32_t cursor = 2;
    client::FieldList fields(command->request);
    client::Field field;
    while (fields.Next(field)) {
      const std::uint32_t begin = cursor;
      client::FieldValue value;
      const auto size = static_cast<std::uint32_t>(request.size());
      if (client::TakeField(field.kind, request, size, /*mayBeAbsent=*/true, cursor, value) !=
          client::FieldStatus::Taken) {
        break;
      }
      if (left-- != 0) continue;
      Data changed(request.begin(), request.begin() + begin);
      const Data content(value.bytes.begin(), value.bytes.end());
      PutField(changed, field.kind,
               Below(4) == 0 ? Text() : Bytewise(content, kLongestRequest - 64));
      changed.insert(changed.end(), request.begin() + cursor, request.end());
      request = std::move(changed);
      return;
    }
    request = Bytewise(request, std::min(request.size() + 64, kLongestRequest + 1));
  }

  std::minstd_rand random_;
};

}  // namespace

std::size_t MutateRequests(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                           unsigned seed) {
  Mutation mutation(seed);
  if (mutation.Below(3) == 0) return LLVMFuzzerMutate(data, size, maxSize);

  std::vector<Data> parts;
  for (const auto part : sections::Split({data, size}))
    parts.emplace_back(part.begin(), part.end());
  mutation.Change(parts);
  Data joined;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (i != 0) joined.insert(joined.end(), std::begin(sections::kMark), std::end(sections::kMark));
    joined.insert(joined.end(), parts[i].begin(), parts[i].end());
  }
  if (joined.size() > maxSize) return LLVMFuzzerMutate(data, size, maxSize);
  std::copy(joined.begin(), joined.end(), data);
  return joined.size();
}
