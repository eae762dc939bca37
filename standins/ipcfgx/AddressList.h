#ifndef STANDINS_IPCFGX_ADDRESSLIST_H_
#define STANDINS_IPCFGX_ADDRESSLIST_H_

#include <array>
#include <atomic>
#include <cstdint>

namespace standin {

/// The addresses that a process has added and not deleted. Lives in memory that is all zero at
/// first and outlives the library, so it holds no pointer and needs no constructor. Any thread may
/// call.
class AddressList {
 public:
  static constexpr std::uint32_t kMost = 256;

  /// Contexts count from 1 and instances from 1001, so that nobody takes the one for the other;
  /// neither is given twice. On failure the outputs are 0.
  ///
  /// \returns 0, 87 (address 0, or a mask with a gap), 5010 (the interface has this address
  ///   already), 1450 (as many addresses as there is room for)
  std::uint32_t Add(std::uint32_t address, std::uint32_t mask, std::uint32_t ifIndex,
                    std::uint32_t& context, std::uint32_t& instance);

  /// \returns 0, or 1168 when no address has this context
  std::uint32_t Delete(std::uint32_t context);

 private:
  struct Entry {
    std::uint32_t context;  // 0: free
    std::uint32_t address;
    std::uint32_t ifIndex;
  };

  class Lock;

  std::atomic<std::uint32_t> locked_;
  std::uint32_t given_;  // contexts so far
  std::array<Entry, kMost> entries_;
};

}  // namespace standin

#endif  // STANDINS_IPCFGX_ADDRESSLIST_H_
