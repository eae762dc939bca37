#ifndef BENCH_PIPECLIENTS_H_
#define BENCH_PIPECLIENTS_H_

#include <windows.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "bench/Workload.h"

namespace bench {

/// Seconds from the write of each request to its reply.
using Latencies = std::vector<double>;

/// How a client goes on from one request to the next.
enum class Pace {
  /// The next request is written when the reply has been read.
  ClosedLoop,
  /// The next request is written as soon as the first bytes of the reply are there, and only then
  /// the rest of the reply is read. A server writes a reply in one piece, so it has taken the old
  /// request before the new one comes: two requests can never be read as one, and yet the new one
  /// often lies ready when the server starts its next read.
  Pipelined,
};

/// Clients of one pipe, all driven by the calling thread with overlapped I/O.
///
/// One thread, because threads of a generator compete with the server for the processor, and the
/// order in which a system lets them run is the largest noise of all. The thread takes completed
/// connections in rotating order and waits only when there is none, so that it favours nobody.
class PipeClients {
 public:
  /// Connects; a pipe without a free instance is waited for.
  PipeClients(const std::string& pipeName, unsigned connections);
  ~PipeClients();
  PipeClients(const PipeClients&) = delete;
  PipeClients& operator=(const PipeClients&) = delete;

  unsigned Count() const { return static_cast<unsigned>(connections_.size()); }

  /// Makes `requests` round trips on all connections together. \returns the seconds it took.
  double Burst(const Workload& workload, unsigned requests, Pace pace, Latencies* latencies);

  /// Keeps all connections busy for `seconds`. \returns the round trips of each connection.
  std::vector<unsigned> Saturate(const Workload& workload, double seconds);

  /// Keeps all connections but `occasional` busy for `seconds`; that one sends a request every
  /// `period` seconds, measured from its last reply. \returns the latencies of that one.
  Latencies BesideBusyOnes(const Workload& workload, unsigned occasional, double seconds,
                           double period, Latencies& busy);

 private:
  struct Connection {
    OVERLAPPED readBlock = {};
    OVERLAPPED writeBlock = {};
    HANDLE pipe = nullptr;
    bool active = false;   // a reply is awaited
    bool pending = false;  // its read is outstanding
    double sentAt = 0;
    DWORD arrived = 0;  // bytes of the reply so far
    std::uint8_t reply[8192] = {};
  };

  void Write(Connection& connection, const Workload& workload);
  void Read(Connection& connection, DWORD upTo);
  void Start(Connection& connection, const Workload& workload, Pace pace);
  bool TakeArrived(Connection& connection, const Workload& workload);
  Connection& NextDone();

  std::vector<std::unique_ptr<Connection>> connections_;
  unsigned last_ = 0;
};

/// Connects, makes one round trip and closes. \returns the seconds from the connect to the reply.
double OneShot(const std::string& pipeName, const Workload& workload);

/// Sends the request that ends a server, and waits until the pipe breaks.
void AskToStop(const std::string& pipeName, const std::vector<std::uint8_t>& request);

/// Tries one round trip. \returns false when the pipe does not exist, or breaks.
bool TryOneShot(const std::string& pipeName, const Workload& workload);

}  // namespace bench

#endif  // BENCH_PIPECLIENTS_H_
