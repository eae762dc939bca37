#ifndef BENCH_MARKS_H_
#define BENCH_MARKS_H_

namespace bench {

/// Puts a mark into the debug log of Wine's server, for count-requests.sh: the name of an event
/// that does not exist, for the log shows what was asked for. Waits first until whoever is still
/// busy behind the last request has come to rest.
[[gnu::format(printf, 1, 2)]] void Mark(const char* format, ...);

/// Ends what the last mark began.
void EndMark();

}  // namespace bench

#endif  // BENCH_MARKS_H_
