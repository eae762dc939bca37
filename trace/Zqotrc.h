#ifndef TRACE_ZQOTRC_H_
#define TRACE_ZQOTRC_H_

/// The process-wide trace facility: one line per call, configured from the registry.
///
/// A call site goes through ZQ_TRACE: it tests whether a line at its bit is wanted, and only then
/// touches its arguments, takes the lock, formats, writes and unlocks. `errno` and the thread's
/// last error are the same before and after.

#include <atomic>
#include <cstdint>

#include "platform/WinTypes.h"

/// Bits that a call site is guarded by.
inline constexpr std::uint32_t TRC_ENTER = 8;      ///< the start of `Deinstall` alone
inline constexpr std::uint32_t TRC_ERROR = 16;     ///< failures and exceptions
inline constexpr std::uint32_t TRC_PROGRESS = 64;  ///< starts and steps
inline constexpr std::uint32_t TRC_RESULT = 128;   ///< what a library answered

namespace zqotrc {

/// Reads the configuration and prepares the output. Call once, before any other thread exists.
/// \param security for the mutex and the ring; must stay valid until ShutDown
/// \param programMaskName registry value that holds this program's own mask; must be static
void Initialise(SECURITY_ATTRIBUTES* security, const char* programMaskName);

/// Makes every process that traces read its configuration again at its next line.
void RefreshAll();

/// \returns the mask in the registry value `valueName`, 0 when there is none.
std::uint32_t ReadMask(const char* valueName);

/// Closes outputs, ring, mutex and generation counter. The configuration stays in force: a line
/// that comes later is written as far as its output needs nothing that was closed.
void ShutDown();

/// What the guard at every call site looks at.
struct Gate {
  /// The program mask while Level is non-zero, else 0.
  std::atomic<std::uint32_t> wanted;
  /// The configuration generation that all processes share, or a word of our own.
  std::atomic<const std::atomic<std::uint32_t>*> generation;
  /// The generation that the configuration in force was read at.
  std::atomic<std::uint32_t> readAt;
};
extern Gate g_gate;

inline bool Wanted(std::uint32_t bit) {
  return (g_gate.wanted.load(std::memory_order_relaxed) & bit) != 0 ||
         g_gate.generation.load(std::memory_order_relaxed)->load(std::memory_order_relaxed) !=
             g_gate.readAt.load(std::memory_order_relaxed);
}

/// Lock, format, write, unlock. Behind the guard only; call it through ZQ_TRACE.
[[gnu::cold, gnu::format(printf, 5, 6)]] void TraceLine(const char* function, const char* component,
                                                        const char* file, std::uint32_t line,
                                                        const char* format, ...);

}  // namespace zqotrc

/// One trace line of the server at a guard bit: ZQ_TRACE(TRC_PROGRESS, kFct, "<< result = 0x%x",
/// r).
#define ZQ_TRACE(bit, function, ...) ZQ_TRACE_AS(bit, "SRV", function, __VA_ARGS__)

/// The same under another component.
#define ZQ_TRACE_AS(bit, component, function, ...)                                                \
  do {                                                                                            \
    if (zqotrc::Wanted(bit)) [[unlikely]]                                                         \
      zqotrc::TraceLine(function, component, __FILE_NAME__, static_cast<std::uint32_t>(__LINE__), \
                        __VA_ARGS__);                                                             \
  } while (false)

#endif  // TRACE_ZQOTRC_H_
