#include "tests/hostile/GrammarConnection.h"

#include <algorithm>
#include <utility>

#include "client/ReplyDecoder.h"

namespace hostile {
namespace {

using client::ExamineReply;
using client::ReplyLayout;
using client::ReplyState;
using e2e::Bytes;

// A heap that is checked at every step takes its time.
constexpr std::uint32_t kGivenUpMs = 30000;

// Only an answer with texts can outgrow a reply.
bool MayOutgrowAReply(const Bytes& request) {
  const client::CommandInfo* const command = client::CommandOf(View(request));
  if (command == nullptr) return false;
  const std::string_view fields = command->success;
  return fields.find("text ") != fields.npos || fields.find("buffer ") != fields.npos;
}

}  // namespace

testing::AssertionResult GrammarConnection::Connect() {
  received_.clear();
  return client_.Connect();
}

void GrammarConnection::Load(Shot shot) { shot_ = std::move(shot); }

Bytes GrammarConnection::Awaited() const {
  Bytes all;
  for (const Bytes& request : awaited_) all += request;
  return all;
}

testing::AssertionResult GrammarConnection::Failure(const char* what, const Bytes& request) const {
  return testing::AssertionFailure() << what << "\n  request " << e2e::Describe(request)
                                     << "\n  received " << e2e::Describe(received_);
}

testing::AssertionResult GrammarConnection::Fire() {
  std::vector<Bytes>& writes = shot_.writes;
  if (shot_.hurried) {
    awaited_ = std::exchange(writes, {});
    const auto first = client_.Send(awaited_[0], kGivenUpMs);
    return first ? client_.Send(awaited_[1], kGivenUpMs) : first;
  }
  awaited_ = AsTaken(writes.front());
  const Bytes write = writes.front();
  writes.erase(writes.begin());
  return client_.StartSend(write);
}

testing::AssertionResult GrammarConnection::Collect() {
  if (std::exchange(shot_.hurried, false)) return CollectHurried(awaited_[0], awaited_[1]);
  const std::uint64_t breaks = breaks_;
  for (const Bytes& request : awaited_) {
    const auto collected = CollectOne(request);
    if (!collected) return collected;
    if (breaks_ != breaks) return collected;
  }
  if (!client_.SendIsDone(kGivenUpMs)) return Failure("not all of it was read", awaited_.back());
  return received_.empty() ? testing::AssertionSuccess()
                           : Failure("more than the reply", awaited_.back());
}

GrammarConnection::Taken GrammarConnection::ReceiveMore(std::uint32_t milliseconds) {
  const Bytes more = client_.Receive(std::max<std::size_t>(client_.Waiting(), 1), milliseconds);
  received_ += more;
  if (!more.empty()) return Taken::Reply;
  return client_.IsBroken(/*milliseconds=*/1) ? Taken::End : Taken::Nothing;
}

testing::AssertionResult GrammarConnection::CollectOne(const Bytes& request) {
  for (;;) {
    const ReplyLayout layout = ExamineReply(View(request), View(received_));
    if (layout.state == ReplyState::Malformed) return Failure("not a reply", request);
    if (layout.state == ReplyState::MayGrow) return CollectGrowing(request);
    if (layout.state == ReplyState::Complete) {
      received_.erase(0, layout.size);
      ++replies_;
      return testing::AssertionSuccess();
    }
    switch (ReceiveMore(kGivenUpMs)) {
      case Taken::Reply:
        break;
      case Taken::End:
        return Ended(request);
      case Taken::Nothing:
        return Failure("no whole reply", request);
    }
  }
}

// Whether a reply was the whole one shows in front of the next, and so there has to be a next, of
// another look.
testing::AssertionResult GrammarConnection::CollectGrowing(const Bytes& request) {
  const Bytes unknown = e2e::Wire("FFFF");
  const Bytes answer = e2e::Wire("0400 AC210000");
  const auto sent = client_.Send(unknown, kGivenUpMs);
  if (!sent) return sent;
  while (!received_.ends_with(answer)) {
    if (ReceiveMore(kGivenUpMs) != Taken::Reply) return Failure("no end of a reply", request);
  }
  received_.resize(received_.size() - answer.size());
  const ReplyLayout layout = ExamineReply(View(request), View(received_));
  const bool whole = layout.state == ReplyState::Complete || layout.state == ReplyState::MayGrow;
  if (!whole || layout.size != received_.size()) return Failure("not a reply", request);
  received_.clear();
  ++replies_;
  return testing::AssertionSuccess();
}

// The server takes both as one request, or the second as one of its own, which nobody can tell from
// a server that is slow: so the connection ends behind the first answer.
testing::AssertionResult GrammarConnection::CollectHurried(const Bytes& first,
                                                           const Bytes& second) {
  const Bytes both = first + second;
  for (;;) {
    const ReplyState one = ExamineReply(View(first), View(received_)).state;
    const ReplyState together = ExamineReply(View(both), View(received_)).state;
    const auto isThere = [](ReplyState state) {
      return state == ReplyState::Complete || state == ReplyState::MayGrow;
    };
    if (isThere(one) || isThere(together)) {
      ++replies_;
      Close();
      return Connect();
    }
    if (one == ReplyState::Malformed && together == ReplyState::Malformed) {
      return Failure("neither a reply to the first nor to both", both);
    }
    switch (ReceiveMore(kGivenUpMs)) {
      case Taken::Reply:
        break;
      case Taken::End:
        return Ended(both);
      case Taken::Nothing:
        return Failure("no whole reply", both);
    }
  }
}

testing::AssertionResult GrammarConnection::Ended(const Bytes& request) {
  if (!MayOutgrowAReply(request)) return Failure("the connection ended", request);
  ++breaks_;
  shot_.writes.clear();
  client_.Close();
  return Connect();
}

}  // namespace hostile
