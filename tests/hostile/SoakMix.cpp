#include "tests/hostile/SoakMix.h"

#include <algorithm>

#include "client/ReplyDecoder.h"
#include "tests/hostile/RequestGrammar.h"

namespace hostile {
namespace {

using client::ReplyLayout;
using client::ReplyState;
using e2e::Bytes;
using e2e::Long;
using e2e::Text;
using e2e::Wire;

constexpr std::uint32_t kNotFound = 2;
constexpr std::uint32_t kNoMore = 259;
constexpr std::uint32_t kStaying = 0;
constexpr unsigned kVisit = 3;  // requests of a client that leaves soon

const Bytes kRoom = Long(8192);
const Bytes kHardwareId = Text("PCI\\VEN_1F3C&DEV_5101&SUBSYS_51011F3C");

Step NoOperation() { return {Wire("1000")}; }

std::vector<Step> Reading() {
  const Bytes key = Text(kScratchKey);
  return {{Wire("1600") + key + Text(kBigName)},
          {Wire("1500") + key + Long(0)},
          {Wire("1500") + key + Long(99), kNoMore},
          {Wire("1700") + key + Long(0)},
          {Wire("1700") + key + Long(99), kNoMore},
          {Wire("1600") + key + Text("no such value"), kNotFound},
          NoOperation()};
}

std::vector<Step> Writing() {
  const Bytes key = Text(std::string(kScratchKey) + "\\Soak");
  const Bytes name = Text("Station");
  const Bytes root = Long(0x80000002);
  return {{Wire("0200") + key},
          {Wire("0300") + key + name + Text("TCP/1")},
          {Wire("1600") + key + name},
          {Wire("1C00") + root + key + name + Text(Bytes(500, 'y'))},
          {Wire("1600") + key + name},
          {Wire("1200") + key + name},
          {Wire("1200") + key + name, kNotFound},
          {Wire("1D00") + root + key}};
}

std::vector<Step> LookingAtBoards() {
  const Bytes device = Text("HWX7101");
  const Bytes five = kRoom + kRoom + kRoom + kRoom + kRoom;
  return {{Wire("5800")},
          {Wire("C100") + device + Long(0) + kRoom + kRoom + kRoom},
          {Wire("C100") + device + Long(1) + kRoom + kRoom + kRoom, kNoMore},
          {Wire("C000") + Long(0) + five + kRoom},
          {Wire("C000") + Long(1) + five + kRoom},
          {Wire("C000") + Long(2) + five + kRoom, kNoMore},
          {Wire("C200") + Long(0) + kRoom + kRoom},
          {Wire("C500") + Long(0) + kRoom + kRoom},
          {Wire("C300") + Long(1) + Text("NB410A") + Text("1") + device + Text("") + kRoom},
          {Wire("C400") + Long(0) + Text("NB410A") + Text("1") + device + Text("") + kRoom + kRoom +
           kRoom + kRoom},
          {Wire("A300") + device + Text("") + Text("") + kRoom},
          {Wire("CF00") + Long(1) + Text("NB410A") + Text("1") + Text("") + kRoom}};
}

std::vector<Step> WatchingDevices() {
  const Bytes device = Text("HWX7104");
  const Bytes guid = Wire("8484C8CA 1575 034C 82E6 71A87ABAC361");
  return {{Wire("0001") + device + guid},
          {Wire("0201") + device, kNoMore},
          {Wire("2201") + kHardwareId + Long(0xFFFFFFFF)},
          {Wire("2201") + Text("None") + Long(1)},
          {Wire("0201") + device, kNoMore},
          {Wire("0101") + device + guid},
          NoOperation()};
}

// A restart now and then, its end awaited and its result fetched; a scan, a check.
std::vector<Step> Restarting(const Surroundings& surroundings) {
  constexpr int kBetween = 48;
  std::vector<Step> steps;
  for (std::uint32_t i = 0; i < kEvents; ++i) {
    steps.push_back({e2e::restart::Begin("CP_L2_1:", EventName(i))});
    steps.push_back({e2e::restart::Ask(EventName(i)), 0, &surroundings.Event(i)});
    steps.push_back({e2e::restart::Ask(EventName(i)), kNoMore});
    steps.push_back({Wire("C700")});
    steps.push_back({Wire("2401")});
    for (int k = 0; k < kBetween; ++k) steps.push_back(NoOperation());
  }
  return steps;
}

}  // namespace

testing::AssertionResult SoakClient::Ask() {
  const Step& step = Current();
  if (asked_ == 0 || (leavesAfter_ != 0 && asked_ % leavesAfter_ == 0)) {
    const auto connected = client_.Connect();
    if (!connected) return connected;
    ++connections_;
  }
  if (step.event != nullptr) {
    const auto set = step.event->IsSet();
    if (!set) return set;
    step.event->Reset();
    ++restarts_;
  }
  return client_.Send(step.request);
}

testing::AssertionResult SoakClient::Take() {
  const Step& step = Current();
  Bytes received;
  ReplyLayout layout;
  do {
    const Bytes more = client_.Receive(std::max<std::size_t>(client_.Waiting(), 1));
    received += more;
    layout = client::ExamineReply(View(step.request), View(received));
    if (more.empty() || layout.state == ReplyState::Malformed) break;
  } while (layout.state == ReplyState::Incomplete);
  ++asked_;
  if (layout.state == ReplyState::Complete && layout.size == received.size() &&
      layout.result == step.result) {
    return testing::AssertionSuccess();
  }
  return testing::AssertionFailure()
         << "not with result " << step.result << ": request " << e2e::Describe(step.request)
         << "\n  received " << e2e::Describe(received);
}

std::vector<std::unique_ptr<SoakClient>> SoakMix(const Surroundings& surroundings) {
  std::vector<std::unique_ptr<SoakClient>> clients;
  const auto add = [&](std::vector<Step> steps, unsigned leavesAfter) {
    clients.push_back(std::make_unique<SoakClient>(std::move(steps), leavesAfter));
  };
  add({NoOperation()}, kStaying);
  add(Reading(), kStaying);
  add(Writing(), kStaying);
  add(LookingAtBoards(), kStaying);
  add(WatchingDevices(), kStaying);
  add(Restarting(surroundings), kStaying);
  add(Reading(), kVisit);
  add(LookingAtBoards(), kVisit);
  return clients;
}

}  // namespace hostile
