// Whatever a server answers: no decoder looks beyond it, what was told once is not taken back when
// more arrives, and everything that is handed out lies in the reply.
//
// An input is a choice, a reply, the reply to a further request, and a request, with a mark in
// between; without a request it is the shortest of a command that the choice names.

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "cli/Ctl.h"
#include "cli/testing/JsonCheck.h"
#include "client/CommandInfo.h"
#include "client/ReplyDecoder.h"
#include "client/testing/ScriptedServer.h"
#include "fuzz/Sections.h"
#include "fuzz/TypedCalls.h"

namespace {

using client::Bytes;
using client::ReplyLayout;
using client::ReplyState;

// More cannot arrive together for one request.
constexpr std::size_t kMostReceived = 20000;

void Require(bool holds) {
  if (!holds) std::abort();
}

bool IsWhole(const ReplyLayout& layout) {
  return layout.state == ReplyState::Complete || layout.state == ReplyState::MayGrow;
}

// On the heap and of its exact size, so that a step beyond it is seen.
struct Exact {
  explicit Exact(Bytes from) : size(from.size()), copy(new std::uint8_t[from.size()]) {
    std::copy(from.begin(), from.end(), copy.get());
  }
  Bytes get() const { return {copy.get(), size}; }
  std::size_t size;
  std::unique_ptr<std::uint8_t[]> copy;
};

void CheckParts(const ReplyLayout& layout, Bytes received) {
  Require(layout.parts >= 1 && layout.parts <= 3 && layout.size <= received.size());
  std::uint32_t end = 0;
  for (std::uint32_t i = 0; i < layout.parts; ++i) {
    const client::ReplyPart& part = layout.part[i];
    Require(part.offset == end && part.size >= 6);
    end += part.size;
    const std::uint8_t* const head = received.data() + part.offset;
    Require(head[0] == 4 && head[1] == 0);
    for (int byte = 0; byte < 4; ++byte)
      Require(head[2 + byte] == (part.result >> 8 * byte & 0xFF));
  }
  Require(end == layout.size && (layout.parts == 2) == layout.brokenOff);
  if (layout.parts == 3) {
    Require(layout.part[1].size == layout.part[0].size && layout.part[2].size == 6);
    Require(std::equal(received.begin(), received.begin() + layout.part[0].size,
                       received.begin() + layout.part[1].offset));
  }
}

// Takes the fields of the first part; together they are the part.
void CheckFields(const ReplyLayout& layout, Bytes received) {
  const Exact part(received.first(layout.part[0].size));
  client::ReplyReader reader(part.get());
  client::FieldList fields(layout.fields);
  client::Field field;
  std::size_t size = 6;
  while (fields.Next(field)) {
    switch (field.kind) {
      case client::FieldKind::Byte:
        (void)reader.Byte();
        size += 1;
        break;
      case client::FieldKind::Guid:
        size += reader.Guid().size();
        break;
      case client::FieldKind::Text:
        size += 4 + reader.Text().size();
        break;
      case client::FieldKind::Buffer:
        size += 4 + reader.Buffer().size();
        break;
      default:
        (void)reader.Long();
        size += 4;
        break;
    }
  }
  Require(reader.Failed() == layout.brokenOff);
  if (!layout.brokenOff) Require(size == part.size);
}

// What is told of the first bytes has to hold when more arrive.
void CheckBeginning(Bytes request, Bytes received, std::size_t size, const ReplyLayout& whole) {
  const Exact beginning(received.first(size));
  const ReplyLayout layout = client::ExamineReply(request, beginning.get());
  if (layout.state == ReplyState::Malformed) Require(whole.state == ReplyState::Malformed);
  if (layout.state == ReplyState::Complete) {
    Require(whole.state == ReplyState::Complete && whole.size == layout.size &&
            whole.result == layout.result && whole.parts == layout.parts);
  }
  if (whole.state == ReplyState::Complete && size < whole.size) {
    Require(layout.state == ReplyState::Incomplete || layout.state == ReplyState::MayGrow);
  }
}

void Examine(Bytes request, Bytes received) {
  const Exact bytes(received);
  const ReplyLayout whole = client::ExamineReply(request, bytes.get());
  if (IsWhole(whole)) {
    CheckParts(whole, received);
    CheckFields(whole, received);
  }
  for (std::size_t size = 0; size < std::min<std::size_t>(received.size(), 40); ++size) {
    CheckBeginning(request, received, size, whole);
  }
  if (received.size() > 40) CheckBeginning(request, received, received.size() - 1, whole);
  if (IsWhole(whole)) CheckBeginning(request, received, whole.size, whole);
}

int Decode(std::vector<std::string> words, Bytes message) {
  words.insert(words.begin(), "decode");
  words.push_back(client::ToHex(message.data(), message.size()));
  cli::Output output;
  const int code = cli::RunCtl(words, output);
  if (words[1] == "--json" && code != cli::kExitUsage) {
    std::string json = output.out;
    while (!json.empty() && json.back() == '\n') json.pop_back();
    Require(cli::JsonCheck::IsValid(json));
  }
  return code;
}

bool Fits(Bytes request, Bytes reply) {
  const ReplyLayout layout = client::ExamineReply(request, reply);
  return IsWhole(layout) && layout.size == reply.size();
}

void DecodeAll(const client::CommandInfo& command, Bytes request, Bytes reply) {
  if (!reply.empty()) {
    const std::vector<std::uint8_t> shortest = client::SmallestRequest(command);
    const bool fits = Fits(shortest, reply) || Fits(Bytes(shortest).first(2), reply);
    const int code = Decode({"--json", "--reply", "--command", command.name}, reply);
    Require((code == cli::kExitOk) == fits);
    Require(Decode({"--reply", "--command", command.name}, reply) == code);
    (void)Decode({"--reply"}, reply);
  }
  if (request.empty()) return;
  const client::CommandInfo* const named = client::CommandOf(request);
  const bool isReadable = named != nullptr && client::IsReadable(*named, request);
  const int code = Decode({"--json"}, request);
  Require((code == cli::kExitOk) == (isReadable && request.size() <= 8192));
}

void Call(std::size_t index, Bytes first, Bytes second) {
  client::ScriptedServer server;
  const std::size_t half = first.size() / 2;
  const std::string begin = client::ToHex(first.data(), half);
  const std::string end = client::ToHex(first.data() + half, first.size() - half);
  if (first.empty()) server.StaysSilent();
  if (!first.empty() && half == 0) server.Answers({end});
  if (half != 0) server.Answers({begin, end});
  if (!second.empty()) server.AnswersAndCloses({client::ToHex(second.data(), second.size())});
  typed_calls::Make(index, server.PipeName());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  auto parts = sections::Split({data, std::min(size, kMostReceived)});
  parts.resize(std::max<std::size_t>(parts.size(), 4));
  const std::size_t choice = parts[0].empty() ? 0 : parts[0][0];
  const std::span<const client::CommandInfo> commands = client::Commands();
  const client::CommandInfo& command = commands[choice % commands.size()];

  std::vector<std::uint8_t> request(parts[3].begin(), parts[3].end());
  if (request.empty()) request = client::SmallestRequest(command);
  Examine(request, parts[1]);
  DecodeAll(command, parts[3], parts[1]);
  Call(choice % typed_calls::Count(), parts[1], parts[2]);
  return 0;
}
