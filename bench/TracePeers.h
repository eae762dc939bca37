#ifndef BENCH_TRACEPEERS_H_
#define BENCH_TRACEPEERS_H_

#include <memory>

/// A widely used logging library beside the trace facility, each road as it is meant to be used. It
/// is no floor: it writes from one process only, and most of its roads keep the file open.
namespace bench {

enum class PeerRoad {
  kFileBuffered,  ///< the file stays open, lines wait in a buffer
  kFileFlushed,   ///< the file stays open, every line is handed to the system
  kFileReopened,  ///< every line opens and closes the file
  kRing,          ///< the last lines in memory of the process, laid out only when they are read
};

class Peer {
 public:
  /// \param file not used by kRing
  Peer(PeerRoad road, const char* file);
  ~Peer();
  Peer(const Peer&) = delete;
  Peer& operator=(const Peer&) = delete;

  void Line(const char* function, const char* file, int line, unsigned result, const char* key);

  /// From now on lines are below the level, and SixteenDisabledPeerCalls go here.
  void Disable();

  struct Logger;

 private:
  std::unique_ptr<Logger> logger_;
};

/// 16 calls at 16 places.
void SixteenDisabledPeerCalls(unsigned result, const char* key);

}  // namespace bench

#endif  // BENCH_TRACEPEERS_H_
