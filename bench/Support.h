#ifndef BENCH_SUPPORT_H_
#define BENCH_SUPPORT_H_

/// What every part of the load generator needs.
namespace bench {

/// Ends the program with exit code 2. A measurement that went wrong is worth nothing, so nothing
/// here goes on after a failure.
[[noreturn, gnu::format(printf, 1, 2)]] void Die(const char* format, ...);

/// The same, with the thread's last error.
[[noreturn]] void DieOfLastError(const char* what);

/// Seconds of a clock that only runs forward.
double Now();

}  // namespace bench

#endif  // BENCH_SUPPORT_H_
