#include "tests/hostile/Attacks.h"

#include <array>

#include "tests/hostile/ScratchKey.h"

namespace hostile {
namespace {

using e2e::Bytes;
using e2e::Padded;
using e2e::Text;
using e2e::Wire;

const Bytes& NoOperation() {
  static const Bytes request = Wire("1000");
  return request;
}

const Bytes& GetBig() {
  static const Bytes request = Wire("1600") + Text(kScratchKey) + Text(kBigName);
  return request;
}

Bytes Times(unsigned count, const Bytes& bytes) {
  Bytes all;
  for (unsigned i = 0; i < count; ++i) all += bytes;
  return all;
}

bool ConnectAndLeave(Attacker& attacker) {
  if (!attacker.Connected()) return attacker.Connect();
  attacker.Leave();
  return true;
}

bool SendAndLeave(Attacker& attacker) {
  if (!attacker.Connected()) return attacker.Connect();
  attacker.Write(attacker.Place() % 2 == 0 ? GetBig() : NoOperation());
  attacker.Leave();
  return true;
}

bool SendHalfAndLeave(Attacker& attacker) {
  if (!attacker.Connected()) return attacker.Connect();
  const std::size_t half = attacker.Place() % 2 == 0 ? 1 : GetBig().size() / 2;
  attacker.Write(GetBig().substr(0, half));
  attacker.Leave();
  return true;
}

bool BeSilent(Attacker& attacker) { return !attacker.Connected() && attacker.Connect(); }

// Some stay for ever with their pipe full, some leave after a while and come again.
bool NeverRead(Attacker& attacker) {
  static const Bytes requests = Times(3, Padded(GetBig()));
  constexpr unsigned kPatience = 20;
  if (!attacker.Connected()) return attacker.Connect();
  if (attacker.Write(requests)) return true;
  if (attacker.Place() % 2 == 0 || ++attacker.stuck < kPatience) return false;
  attacker.Leave();
  return true;
}

// The first half of a request, a while nothing, and the rest in pieces.
bool WriteHalf(Attacker& attacker) {
  constexpr unsigned kPauses = 8;
  constexpr std::size_t kPiece = 7;
  if (!attacker.Connected()) return attacker.Connect();
  const bool read = attacker.Read();
  const std::size_t half = GetBig().size() / 2;
  const unsigned phase = attacker.phase++;
  if (phase == 0) return attacker.Write(GetBig().substr(0, half));
  if (phase <= kPauses) return read;
  const std::size_t from = half + (phase - kPauses - 1) * kPiece;
  if (from < GetBig().size()) return attacker.Write(GetBig().substr(from, kPiece));
  attacker.phase = 0;
  return true;
}

// Writes until nothing more is taken, and then begins anew.
bool Flood(Attacker& attacker) {
  static const Bytes flood = Times(0x4000, NoOperation());
  constexpr unsigned kPatience = 4;
  if (!attacker.Connected()) return attacker.Connect();
  if (attacker.Write(flood)) {
    attacker.stuck = 0;
    return true;
  }
  if (++attacker.stuck < kPatience) return false;
  attacker.Leave();
  return true;
}

bool FloodAndRead(Attacker& attacker) {
  static const Bytes requests = Times(4, Padded(NoOperation()));
  if (!attacker.Connected()) return attacker.Connect();
  const bool read = attacker.Read();
  return attacker.Write(requests) || read;
}

bool WriteTooMuch(Attacker& attacker) {
  static const Bytes request = GetBig() + Bytes(20000, ' ');
  if (!attacker.Connected()) return attacker.Connect();
  const bool read = attacker.Read();
  return attacker.Write(request) || read;
}

// Without zeros, so that no request is by chance one that shows a box and waits for somebody.
bool WriteGarbage(Attacker& attacker) {
  if (!attacker.Connected()) return attacker.Connect();
  const bool read = attacker.Read();
  Bytes garbage(1 + attacker.Random(e2e::kLongestRequest), '\0');
  for (char& byte : garbage) byte = static_cast<char>(1 + attacker.Random(255));
  return attacker.Write(garbage) || read;
}

constexpr std::array kPure = {
    Attack{"dead: connect and leave", ConnectAndLeave},
    Attack{"dead: send a request and leave", SendAndLeave},
    Attack{"dead: send half a request and leave", SendHalfAndLeave},
    Attack{"silent", BeSilent},
    Attack{"never reading", NeverRead},
    Attack{"half-writing", WriteHalf},
    Attack{"flooding, unread", Flood},
    Attack{"flooding, read", FloodAndRead},
    Attack{"oversized writes", WriteTooMuch},
    Attack{"garbage", WriteGarbage},
};

bool Mix(Attacker& attacker) { return kPure[attacker.Place() % kPure.size()].step(attacker); }

constexpr auto kAll = [] {
  std::array<Attack, kPure.size() + 1> all = {};
  for (std::size_t i = 0; i < kPure.size(); ++i) all[i] = kPure[i];
  all.back() = {"a mixture of all", Mix};
  return all;
}();

}  // namespace

bool Attacker::Connect() {
  connected_ = client_.TryConnect() == 0;
  if (connected_) ++connections_;
  stuck = phase = 0;
  return connected_;
}

void Attacker::Leave() {
  client_.Close();
  connected_ = false;
}

bool Attacker::Write(const Bytes& bytes) {
  if (!client_.SendIsDone(0)) return false;
  if (!client_.StartSend(bytes)) {
    Leave();
    return false;
  }
  ++writes_;
  return true;
}

bool Attacker::Read() {
  const std::size_t waiting = client_.Waiting();
  return waiting != 0 && !client_.Receive(waiting, /*milliseconds=*/0).empty();
}

std::uint32_t Attacker::Random(std::uint32_t limit) {
  random_ = random_ * 1664525 + 1013904223;
  return static_cast<std::uint32_t>((std::uint64_t{random_} * limit) >> 32);
}

std::span<const Attack> Attacks() { return kAll; }

}  // namespace hostile
