#ifndef TESTS_FAKES_FAKEPIPEIO_H_
#define TESTS_FAKES_FAKEPIPEIO_H_

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "server/PipeIo.h"
#include "tests/support/WireHex.h"

/// The pipe in memory, behind server/PipeIo.h, with completions that a test scripts.
///
/// Unless told otherwise a connect and a read stay pending and a write completes at once. An event
/// is reset when an operation starts and set when it completes, as the platform does it; what fails
/// with ERROR_INVALID_HANDLE leaves it as it is.
namespace fake_pipe_io {

enum class Op { CreateEvent, CreatePipe, Connect, Disconnect, Read, Write };

void Reset();

/// What the next call of `op` on this instance answers; several are used in order.
void Script(Op op, int conId, pipe_io::Outcome outcome);
/// The next read on this instance completes at once with these bytes.
void ScriptRead(int conId, const Bytes& request);

/// Completes what is outstanding on the instance.
void Complete(int conId, bool success = true, std::uint32_t count = 0, std::uint32_t error = 0);
void CompleteRead(int conId, const Bytes& request);

/// One step per wait that the loop enters with nothing due; the wait then reports the lowest
/// signalled event. With no steps left it fails with error 6, which ends the loop.
void OnWait(std::function<void()> step);

/// What happens right before the next reset of an event.
void BeforeUnsignal(std::function<void()> step);

/// The process at the other end; 4000 and the number of the instance unless told otherwise.
void SetClientProcess(int conId, std::uint32_t id);
/// How often the client of this instance was asked for.
int ClientQuestions(int conId);

/// The calls since Reset, as text ("read 5", "write 5 0400..."); polls, clock and clients are not
/// listed.
const std::vector<std::string>& Calls();
/// How often the loop waited, and how often it only polled.
int Waits();
int Polls();
/// What was written to the instance's client, write after write.
Bytes Written(int conId);

/// How often the instance's client was dropped.
int Disconnects(int conId);
/// The operation that is outstanding on the instance.
std::optional<Op> Outstanding(int conId);
/// Bytes of the write that is outstanding.
std::uint32_t BytesInWrite(int conId);
/// Somebody else has an instance of the pipe's name: none of ours is the first.
void TakeName();

bool IsSignalled(int conId);
void AdvanceClock(std::uint64_t milliseconds);

}  // namespace fake_pipe_io

#endif  // TESTS_FAKES_FAKEPIPEIO_H_
