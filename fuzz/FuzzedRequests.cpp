#include "fuzz/FuzzedRequests.h"

#include <string>

#include "tests/fakes/FakeDynamicLibrary.h"
#include "tests/fakes/FakeRegistry.h"

namespace fuzzed_requests {
namespace {

constexpr std::size_t kLongText = 8150;
constexpr char kKey[] = "SOFTWARE\\Long";

Bytes Twice(const Bytes& reply, std::string_view behind) { return reply + Wire(behind); }

Request AnsweredTwice(const Bytes& request, std::string_view reply, std::string_view behind) {
  return {request, {Wire(reply), Twice(Wire(reply), behind)}};
}

Request LongReply() {
  const std::string text(kLongText, 'a');
  return {Wire("1600") + TextField(kKey) + TextField("v"),
          {Wire("0400 00000000") + TextField(text) + Wire("D61F0000")}};
}

Request LongRequest() {
  Bytes bytes = Wire("1000");
  bytes.resize(8192, 0x77);
  return {bytes, {Wire("0400 00000000")}};
}

const std::vector<Request>& Requests() {
  static const std::vector<Request> requests = {
      {Wire("1000"), {Wire("0400 00000000")}},
      AnsweredTwice(Wire("10"), "0400 AC210000", "0400 9A210000"),
      {Wire("FFFF"), {Wire("0400 AC210000")}},
      {Wire("FD00 00000000"), {Wire("0400 E7040000")}},
      AnsweredTwice(Wire("FD00"), "0400 05000000", "0400 9A210000"),
      AnsweredTwice(Wire("1100"), "0400 7F000000", "0400 7F000000"),
      AnsweredTwice(Wire("0C00 01000000 02000000 03000000"), "0400 9B210000 00000000 00000000",
                    "0400 9B210000"),
      LongReply(),
      LongRequest(),
  };
  return requests;
}

}  // namespace

void Arrange() {
  fake_registry::Root() = {};
  fake_registry::Create(kKey).values["V"] = {"v", 1, Bytes(kLongText, 'a') + Bytes{0}};
  fake_dynamic_library::Reset();
  fake_dynamic_library::Add("onlpanelx.cpl", {});
}

const Request& NoOperation() { return Requests().front(); }

const Request& Pick(std::uint8_t choice) {
  static const Request stop = {Wire("FD00 FD000000"), {}};
  return choice == 0xDF ? stop : Requests()[choice % Requests().size()];
}

bool IsConfirmedStop(const Bytes& request) { return request == Pick(0xDF).bytes; }

}  // namespace fuzzed_requests
