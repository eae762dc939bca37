#include "tests/faults/Expectations.h"

#include <algorithm>
#include <cstring>

#include "client/ReplyDecoder.h"
#include "tests/faults/ExpectationRules.h"

namespace expectations {
namespace {

using fault_session::How;
using fault_session::Outcome;
using fault_session::Result;
using fault_session::Script;
using fault_session::Step;

bool IsPrefix(const Bytes& prefix, const Bytes& whole) {
  return prefix.size() <= whole.size() && std::equal(prefix.begin(), prefix.end(), whole.begin());
}

// A reply of the command with this result and the fields that go with it, and nothing behind it.
bool IsReplyWith(const Bytes& request, const Bytes& reply, std::uint32_t result) {
  const client::ReplyLayout layout = client::ExamineReply(request, reply);
  return (layout.state == client::ReplyState::Complete ||
          layout.state == client::ReplyState::MayGrow) &&
         layout.size == reply.size() && layout.result == result && !layout.brokenOff;
}

// The parts of a reply that a command sends twice; nothing of others.
bool SplitDoubled(const Bytes& request, const Bytes& reply, Bytes& first, Bytes& second) {
  const client::ReplyLayout layout = client::ExamineReply(request, reply);
  if (layout.parts != 3) return false;
  const auto at = [&](std::uint32_t offset) {
    return reply.begin() + static_cast<std::ptrdiff_t>(offset);
  };
  first.assign(reply.begin(), at(layout.part[0].size));
  second.assign(at(layout.part[1].offset), reply.end());
  return true;
}

// By design: a write that fails is not reported, and the second one carries the first reply, too.
// So a pipe that takes the second only delivers both replies once. With less than the second the
// client is dropped, or it would wait for ever.
bool IsSecondWriteAlone(const Bytes& request, const Bytes& good, const Outcome& seen) {
  Bytes first;
  Bytes second;
  if (!SplitDoubled(request, good, first, second)) return false;
  first.pop_back();  // where the first was short by a byte
  const Bytes both = first + second;
  if (seen.lost) return IsPrefix(seen.reply, both);
  return seen.reply == second || seen.reply == both;
}

class Judge {
 public:
  Judge(const Case& which, const Result& good, const Result& seen)
      : case_(which), good_(good), seen_(seen) {}

  std::vector<std::string> Differences() {
    for (std::size_t i = 0; i < Script().size(); ++i) JudgeStep(i);
    const Outcome& stop = seen_.outcomes[Script().size() - 2];
    if (!seen_.stopped && !ended_ && !stop.unserved) Say("the server", "does not stop");
    for (const std::string& problem : seen_.leftOver) Say("afterwards", problem);
    return std::move(differences_);
  }

 private:
  void Say(const std::string& where, const std::string& what) {
    differences_.push_back(where + ": " + what);
  }

  const Rule& RuleOf(const fault_plan::Hit& hit, const Step& step) const {
    return FindRule(case_.function->name, case_.failure->name, hit.detail, step, hit.nthInStep);
  }
  std::uint32_t ResultOf(std::uint32_t ruled) const {
    return ruled == kOwnCode ? case_.failure->code : ruled;
  }

  // The first of the step's failures that shows decides what is seen.
  const Rule* DecidingRule(const Outcome& outcome, const Step& step) const {
    const Rule* deciding = nullptr;
    for (const fault_plan::Hit& hit : outcome.hits) {
      const Rule& rule = RuleOf(hit, step);
      if (deciding == nullptr || deciding->effect == Effect::Same) deciding = &rule;
    }
    return deciding;
  }

  void JudgeStep(std::size_t i) {
    const Step& step = Script()[i];
    const Outcome& good = good_.outcomes[i];
    const Outcome& seen = seen_.outcomes[i];
    const std::string where = "step " + std::to_string(i) + " (" + step.name + ")";
    for (const fault_plan::Hit& hit : seen.hits) {
      ended_ = ended_ || RuleOf(hit, step).effect == Effect::Ends;
    }
    if (!seen.reached) {
      if (!ended_) Say(where, "is not reached");
      return;
    }
    if (ended_ && step.how != How::End) return Say(where, "is reached");
    const Rule* const rule = DecidingRule(seen, step);
    if (seen.unserved) {
      if (!case_.onward || !CostsConnections(case_.function->name)) Say(where, "is not served");
      return;
    }
    JudgeReply(where, step, rule, good, seen);
    JudgeEvents(where, rule, good, seen);
    JudgeBoxes(where, rule, good, seen);
  }

  void JudgeReply(const std::string& where, const Step& step, const Rule* rule, const Outcome& good,
                  const Outcome& seen) {
    if (step.restart >= 0 && JudgeFetch(step, good, seen)) return;
    Effect effect = rule != nullptr ? rule->effect : Effect::Same;
    // Whoever left has not seen a reply in any case.
    if (good.lost && effect != Effect::MayLose) effect = Effect::Same;
    const bool same = seen.reply == good.reply && seen.lost == good.lost;
    bool allowed = same;
    switch (effect) {
      case Effect::Same:
      case Effect::Ends:
        break;
      case Effect::MayLose:
        allowed = same || (seen.lost && (good.lost || IsPrefix(seen.reply, good.reply))) ||
                  IsSecondWriteAlone(step.request, good.reply, seen);
        break;
      case Effect::Result:
        allowed = !seen.lost && IsReplyWith(step.request, seen.reply, ResultOf(rule->result));
        break;
      case Effect::Exactly:
        allowed = !seen.lost && seen.reply == Wire(rule->bytes);
        break;
      case Effect::Text:
        allowed = seen.reply == TextBytes(rule->bytes);
        break;
    }
    if (allowed) return;
    Say(where, std::string(seen.lost ? "the client is dropped after " : "the reply is ") +
                   Hex(seen.reply) + " instead of " + Hex(good.reply) +
                   (rule != nullptr ? std::string(", allowed was: ") + rule->why : ""));
  }

  // A result that a restart has left. \returns whether it is what the restart's failures make it.
  bool JudgeFetch(const Step& step, const Outcome& good, const Outcome& seen) const {
    static const Bytes nobodys = Wire("0400 03010000");
    const auto index = static_cast<std::size_t>(step.restart);
    const Outcome& start = seen_.outcomes[index];
    if (good.reply == nobodys || seen.lost) return false;
    if (start.lost || start.unserved) return seen.reply == nobodys;
    for (const fault_plan::Hit& hit : start.hits) {
      const Rule& rule = RuleOf(hit, Script()[index]);
      if (rule.fetched != 0) {
        return IsReplyWith(step.request, seen.reply, ResultOf(rule.fetched));
      }
    }
    return false;
  }

  void JudgeEvents(const std::string& where, const Rule* rule, const Outcome& good,
                   const Outcome& seen) {
    if (seen.events == good.events) return;
    const bool hit = !seen.hits.empty();
    // The log has refused it.
    if (hit && Is("ReportErrorEvent") && seen.events.empty()) return;
    // A path that cannot be made plain is refused as one that leads elsewhere.
    if (hit && Is("CanonicalisePath") && seen.events.size() <= good.events.size() + 8 &&
        std::all_of(seen.events.begin(), seen.events.end(), [](const auto& event) {
          return event.text.starts_with("Invalid Access to Reg-Key: ");
        })) {
      return;
    }
    // Where something else went wrong first, nobody has looked at the path.
    if (rule != nullptr && rule->effect == Effect::Result && seen.events.empty()) return;
    // Who was dropped before the request was read has not been refused anything.
    if (seen.lost && seen.events.empty()) return;
    Say(where, std::to_string(seen.events.size()) + " events instead of " +
                   std::to_string(good.events.size()));
  }

  void JudgeBoxes(const std::string& where, const Rule* rule, const Outcome& good,
                  const Outcome& seen) {
    if (seen.boxes == good.boxes) return;
    const bool hit = !seen.hits.empty();
    if (hit && Is("platform::ShowMessageBox") && seen.boxes.empty()) return;
    if (rule != nullptr && rule->box != nullptr &&
        seen.boxes == std::vector<std::string>{rule->box})
      return;
    if (seen.lost && seen.boxes.empty()) return;
    Say(where, std::to_string(seen.boxes.size()) + " message boxes instead of " +
                   std::to_string(good.boxes.size()));
  }

  bool Is(const char* function) const { return std::strcmp(case_.function->name, function) == 0; }

  const Case& case_;
  const Result& good_;
  const Result& seen_;
  bool ended_ = false;
  std::vector<std::string> differences_;
};

}  // namespace

std::string Describe(const Case& which) {
  return std::string(which.function->name) + ", " + which.failure->name + ", call " +
         std::to_string(which.nth) + (which.onward ? " and all behind it" : "");
}

fault_plan::Plan PlanOf(const Case& which) {
  return {which.function->name, which.nth, which.onward, which.failure->code,
          which.failure->raises};
}

std::vector<std::string> Differences(const Case& which, const Result& good, const Result& seen) {
  return Judge(which, good, seen).Differences();
}

}  // namespace expectations
