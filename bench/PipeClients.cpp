#include "bench/PipeClients.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "bench/Support.h"

namespace bench {
namespace {

constexpr DWORD kBusyWaitMs = 2000;
constexpr DWORD kReplyRoom = 8192;
constexpr DWORD kPipelinedFirstRead = 2;  // the reply's mark

bool IsThrough(const OVERLAPPED& block) {
  // The system changes the status behind the compiler's back.
  const volatile ULONG_PTR& status = block.Internal;
  return status != static_cast<ULONG_PTR>(STATUS_PENDING);
}

DWORD FirstRead(Pace pace) { return pace == Pace::Pipelined ? kPipelinedFirstRead : kReplyRoom; }

HANDLE CreateIoEvent() {
  const HANDLE event = CreateEventA(/*lpEventAttributes=*/nullptr, /*bManualReset=*/TRUE,
                                    /*bInitialState=*/FALSE, /*lpName=*/nullptr);
  if (event == nullptr) DieOfLastError("CreateEvent");
  return event;
}

// \returns INVALID_HANDLE_VALUE when the pipe does not exist.
HANDLE TryOpen(const std::string& pipeName, DWORD flags) {
  for (;;) {
    const HANDLE pipe = CreateFileA(pipeName.c_str(), GENERIC_READ | GENERIC_WRITE,
                                    /*dwShareMode=*/0, /*lpSecurityAttributes=*/nullptr,
                                    OPEN_EXISTING, flags, /*hTemplateFile=*/nullptr);
    if (pipe != INVALID_HANDLE_VALUE) return pipe;
    if (GetLastError() == ERROR_FILE_NOT_FOUND) return pipe;
    if (GetLastError() != ERROR_PIPE_BUSY) DieOfLastError("opening the pipe");
    if (WaitNamedPipeA(pipeName.c_str(), kBusyWaitMs) == FALSE) DieOfLastError("WaitNamedPipe");
  }
}

HANDLE Open(const std::string& pipeName, DWORD flags) {
  const HANDLE pipe = TryOpen(pipeName, flags);
  if (pipe == INVALID_HANDLE_VALUE) DieOfLastError("opening the pipe");
  return pipe;
}

void CheckReply(const std::uint8_t* reply, DWORD size, const Workload& workload) {
  if (size != workload.reply.size() || std::memcmp(reply, workload.reply.data(), size) != 0) {
    Die("%s: a reply of %lu bytes is not the one that is due", workload.name, size);
  }
}

// One round trip on a pipe that was opened without overlapped I/O.
bool RoundTrip(HANDLE pipe, const Workload& workload) {
  DWORD written = 0;
  const auto size = static_cast<DWORD>(workload.request.size());
  if (WriteFile(pipe, workload.request.data(), size, &written, /*lpOverlapped=*/nullptr) == FALSE ||
      written != size) {
    return false;
  }
  std::uint8_t reply[kReplyRoom];
  DWORD arrived = 0;
  if (ReadFile(pipe, reply, sizeof(reply), &arrived, /*lpOverlapped=*/nullptr) == FALSE) {
    return false;
  }
  CheckReply(reply, arrived, workload);
  return true;
}

}  // namespace

PipeClients::PipeClients(const std::string& pipeName, unsigned connections) {
  for (unsigned i = 0; i < connections; ++i) {
    auto connection = std::make_unique<Connection>();
    connection->pipe = Open(pipeName, FILE_FLAG_OVERLAPPED);
    connection->readBlock.hEvent = CreateIoEvent();
    connection->writeBlock.hEvent = CreateIoEvent();
    connections_.push_back(std::move(connection));
  }
}

PipeClients::~PipeClients() {
  for (const auto& connection : connections_) {
    (void)CloseHandle(connection->pipe);
    (void)CloseHandle(connection->readBlock.hEvent);
    (void)CloseHandle(connection->writeBlock.hEvent);
  }
}

void PipeClients::Write(Connection& connection, const Workload& workload) {
  const auto size = static_cast<DWORD>(workload.request.size());
  DWORD written = 0;
  connection.sentAt = Now();
  if (WriteFile(connection.pipe, workload.request.data(), size, &written, &connection.writeBlock) ==
      FALSE) {
    // Only while the server has not yet taken all of the request; it does so without our help.
    if (GetLastError() != ERROR_IO_PENDING) DieOfLastError("writing a request");
    if (GetOverlappedResult(connection.pipe, &connection.writeBlock, &written, /*bWait=*/TRUE) ==
        FALSE) {
      DieOfLastError("writing a request");
    }
  }
  if (written != size) Die("a request was written in part");
}

void PipeClients::Read(Connection& connection, DWORD upTo) {
  const BOOL done = ReadFile(connection.pipe, connection.reply + connection.arrived, upTo,
                             /*lpNumberOfBytesRead=*/nullptr, &connection.readBlock);
  connection.pending = done == FALSE;
  if (done == FALSE && GetLastError() != ERROR_IO_PENDING) DieOfLastError("reading a reply");
}

void PipeClients::Start(Connection& connection, const Workload& workload, Pace pace) {
  connection.active = true;
  connection.arrived = 0;
  Write(connection, workload);
  Read(connection, FirstRead(pace));
}

// Takes what a read brought. \returns whether the reply is whole.
bool PipeClients::TakeArrived(Connection& connection, const Workload& workload) {
  DWORD count = 0;
  if (GetOverlappedResult(connection.pipe, &connection.readBlock, &count, /*bWait=*/TRUE) ==
          FALSE ||
      count == 0) {
    DieOfLastError("reading a reply");
  }
  connection.arrived += count;
  if (connection.arrived < workload.reply.size()) return false;
  CheckReply(connection.reply, connection.arrived, workload);
  return true;
}

PipeClients::Connection& PipeClients::NextDone() {
  for (unsigned step = 1; step <= Count(); ++step) {
    const unsigned i = (last_ + step) % Count();
    Connection& connection = *connections_[i];
    if (!connection.active || (connection.pending && !IsThrough(connection.readBlock))) continue;
    last_ = i;
    return connection;
  }

  // The event of a connection at rest may still be signalled, so only the others are waited for.
  HANDLE events[MAXIMUM_WAIT_OBJECTS] = {};
  unsigned owners[MAXIMUM_WAIT_OBJECTS] = {};
  DWORD count = 0;
  for (unsigned i = 0; i < Count(); ++i) {
    if (!connections_[i]->active) continue;
    events[count] = connections_[i]->readBlock.hEvent;
    owners[count] = i;
    ++count;
  }
  const DWORD result =
      WaitForMultipleObjects(count, events, /*bWaitAll=*/FALSE, /*dwMilliseconds=*/INFINITE);
  if (result >= count) DieOfLastError("waiting for replies");
  last_ = owners[result];
  return *connections_[last_];
}

double PipeClients::Burst(const Workload& workload, unsigned requests, Pace pace,
                          Latencies* latencies) {
  unsigned toStart = requests;
  unsigned toFinish = requests;
  const double begin = Now();
  for (const auto& connection : connections_) {
    if (toStart == 0) break;
    Start(*connection, workload, pace);
    --toStart;
  }

  while (toFinish > 0) {
    Connection& connection = NextDone();
    const double sentAt = connection.sentAt;
    bool whole = TakeArrived(connection, workload);
    const double now = Now();
    const bool goOn = toStart > 0;
    if (goOn) --toStart;
    if (!whole && pace == Pace::Pipelined) {
      // The rest of the reply and no more: behind it may lie the next one already.
      if (goOn) Write(connection, workload);
      Read(connection, static_cast<DWORD>(workload.reply.size()) - connection.arrived);
      whole = TakeArrived(connection, workload);
    }
    if (!whole) Die("a reply came in pieces");
    if (latencies != nullptr) latencies->push_back(now - sentAt);
    --toFinish;
    connection.active = goOn;
    if (!goOn) continue;
    if (pace == Pace::Pipelined) {
      connection.arrived = 0;
      Read(connection, FirstRead(pace));
    } else {
      Start(connection, workload, pace);
    }
  }
  return Now() - begin;
}

std::vector<unsigned> PipeClients::Saturate(const Workload& workload, double seconds) {
  std::vector<unsigned> served(Count());
  unsigned active = Count();
  const double end = Now() + seconds;
  for (const auto& connection : connections_) Start(*connection, workload, Pace::ClosedLoop);
  while (active > 0) {
    Connection& connection = NextDone();
    if (!TakeArrived(connection, workload)) Die("a reply came in pieces");
    if (Now() < end) {
      ++served[last_];
      Start(connection, workload, Pace::ClosedLoop);
    } else {
      connection.active = false;
      --active;
    }
  }
  return served;
}

Latencies PipeClients::BesideBusyOnes(const Workload& workload, unsigned occasional, double seconds,
                                      double period, Latencies& busy) {
  Latencies latencies;
  Connection& guest = *connections_[occasional];
  const double end = Now() + seconds;
  double due = Now() + period;
  unsigned active = 0;
  for (const auto& connection : connections_) {
    if (connection.get() == &guest) continue;
    Start(*connection, workload, Pace::ClosedLoop);
    ++active;
  }

  while (active > 0) {
    if (!guest.active && Now() >= due && Now() < end) {
      Start(guest, workload, Pace::ClosedLoop);
      ++active;
    }
    Connection& connection = NextDone();
    if (!TakeArrived(connection, workload)) Die("a reply came in pieces");
    const double now = Now();
    (&connection == &guest ? latencies : busy).push_back(now - connection.sentAt);
    if (&connection != &guest && now < end) {
      Start(connection, workload, Pace::ClosedLoop);
      continue;
    }
    connection.active = false;
    due = now + period;
    --active;
  }
  return latencies;
}

double OneShot(const std::string& pipeName, const Workload& workload) {
  const double begin = Now();
  const HANDLE pipe = Open(pipeName, /*flags=*/0);
  if (!RoundTrip(pipe, workload)) DieOfLastError("a request on a connection of its own");
  const double end = Now();
  (void)CloseHandle(pipe);
  return end - begin;
}

bool TryOneShot(const std::string& pipeName, const Workload& workload) {
  const HANDLE pipe = TryOpen(pipeName, /*flags=*/0);
  if (pipe == INVALID_HANDLE_VALUE) return false;
  const bool answered = RoundTrip(pipe, workload);
  (void)CloseHandle(pipe);
  return answered;
}

void AskToStop(const std::string& pipeName, const std::vector<std::uint8_t>& request) {
  const HANDLE pipe = TryOpen(pipeName, /*flags=*/0);
  if (pipe == INVALID_HANDLE_VALUE) return;
  DWORD count = 0;
  (void)WriteFile(pipe, request.data(), static_cast<DWORD>(request.size()), &count,
                  /*lpOverlapped=*/nullptr);
  std::uint8_t reply[kReplyRoom];
  (void)ReadFile(pipe, reply, sizeof(reply), &count, /*lpOverlapped=*/nullptr);
  (void)CloseHandle(pipe);
}

}  // namespace bench
