#ifndef SERVER_REQUESTLOG_H_
#define SERVER_REQUESTLOG_H_

#include <cstdint>

/// The last 256 requests, and the one that is being served.
///
/// Written by the loop thread with stores to memory and nothing else; read by other threads at any
/// time, also while the loop thread hangs in a handler or has died in one.
namespace request_log {

inline constexpr std::uint32_t kRecords = 256;

struct Record {
  /// Counts requests from 1 on; after 2^32 of them it begins anew.
  std::uint32_t number = 0;
  std::uint16_t command = 0;     ///< 0 when the request was too short to hold one
  std::uint16_t connection = 0;  ///< 0 to 63
  /// The process that opened the pipe; 0 when the system did not tell.
  std::uint32_t client = 0;
  /// The 32-bit value behind the mark of the first reply; without a reply, what the handler or the
  /// send returned. 0 while the request is being served.
  std::uint32_t result = 0;
  bool beingServed = false;
};

/// Forgets everything. For a server that begins; who reads meanwhile may see part of it.
void Reset();

/// A request goes to its handler. Loop thread only.
void Begin(std::uint16_t command, int connection, std::uint32_t client);

/// The handler is back, and its reply built. Loop thread only.
void End(std::uint32_t result);

/// The request that is being served. \returns false when there is none, or it ended just now.
bool BeingServed(Record& record);

/// Copies the last requests, oldest first. \returns how many. A request that the loop thread
/// overwrites meanwhile is left out.
std::uint32_t Latest(Record (&records)[kRecords]);

}  // namespace request_log

#endif  // SERVER_REQUESTLOG_H_
