#ifndef FUZZ_FUZZEDCLIENTS_H_
#define FUZZ_FUZZEDCLIENTS_H_

#include <cstddef>
#include <cstdint>
#include <span>

#include "fuzz/FuzzedRequests.h"
#include "server/PipeIo.h"

/// The clients of a fuzzed pipe: what the script lets them do, and what they do when it is used up.
/// The pipe itself, as the server sees it, is FuzzedPipe.
namespace fuzzed_clients {

inline constexpr int kCount = 64;
inline constexpr std::uintptr_t kPending = 0x103;
inline constexpr std::uintptr_t kFailed = 0xC0000000;
inline constexpr std::uint32_t kBrokenPipe = 109;

enum class Op { kNone, kConnect, kRead, kWrite };
enum class Proof { kNone, kAsked, kServed };

struct Instance {
  bool isOpen = false;
  bool isSignalled = true;
  bool isUnderOverlapped = false;  // the block belongs to the operation
  Op op = Op::kNone;
  OVERLAPPED* block = nullptr;
  pipe_io::Outcome completion = {};
  std::uint8_t* buffer = nullptr;
  std::uint32_t size = 0;                             // of the buffer or of what is written
  const fuzzed_requests::Request* request = nullptr;  // the one that was read last
  std::size_t writes = 0;                             // of its reply, so far
  Bytes answer;                                       // read since the client asked for a proof
  Proof proof = Proof::kNone;
  std::uint32_t connects = 0;  // begun so far
};

struct State {
  std::span<const std::uint8_t> script;
  Instance instances[kCount];
  int events = 0;
  int pipes = 0;
  int failedCreation = 0;  // 1 to 128: which of the creations of the pool fails
  std::uint64_t now = 1000;
  int calls = 0;
  int calmWaits = 0;
  bool isClosing = false;
  bool mayEnd = false;
};

extern State g;

/// Aborts unless it holds.
void Require(bool holds);

/// Number of the instance, and whether clients come to it; the others stay offered.
int IndexOf(const Instance& instance);
bool IsUsed(const Instance& instance);

/// The process of its client: one of three, or 0 for one of whom the system does not tell. From
/// connection to connection another.
std::uint32_t ProcessOf(const Instance& instance);

/// Whether the script is used up.
bool IsCalm();

/// The next byte of the script; once it is used up, the one that means "as usual".
std::uint8_t Next();

/// Aborts when too many calls come without a wait or a decision of the script in between.
void CountCall();

/// The operation that is out ends so, and its event is signalled.
void Settle(Instance& instance, bool success, std::uint32_t count, std::uint32_t error);

/// Hands a request of the script's choice to the read. \returns its size.
std::uint32_t Deliver(Instance& instance, std::uint8_t choice);

/// A stop counts once the server has read it.
void NoteStop(const Instance& instance, std::uint32_t count);

/// Clients and the platform act at any moment.
void Meanwhile();

/// What a wait reports with no event signalled, as the script has it or when all goes well.
std::uint32_t Wait(std::uint32_t milliseconds, std::uint32_t& error);

}  // namespace fuzzed_clients

#endif  // FUZZ_FUZZEDCLIENTS_H_
