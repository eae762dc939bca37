#ifndef CLIENT_ENUMERATION_H_
#define CLIENT_ENUMERATION_H_

#include <cstdint>

#include "client/QorlixClient.h"

namespace client {

inline constexpr SrvResult kMoreData = 234;
inline constexpr SrvResult kNoMoreItems = 259;

/// Asks for entry after entry with `next(index, entry)` until the server says that there are no
/// more.
///
/// \tparam Entry what is told of one entry; its `told` says that the server answered for it.
/// Calls `visit(index, result, entry)` for each. An entry that does not fit a reply does not end
/// the enumeration: it is visited with the server's code (234 or 8602) and the lengths alone. The
/// visitor returns whether it wants to go on; it may use the client.
///
/// \returns 0 when all were visited or the visitor had enough, otherwise what ended the
/// enumeration.
///   Entries that come or go meanwhile may be met twice or not at all.
template <typename Entry = RegistryEntry, typename Next, typename Visit>
Result ForEachEntry(Next&& next, Visit&& visit) {
  // The server reads the index as a signed number, so it ends there.
  constexpr std::uint32_t kIndexLimit = 0x80000000;
  for (std::uint32_t index = 0; index < kIndexLimit; ++index) {
    Entry entry;
    const Result result = next(index, entry);
    if (result.is(kNoMoreItems)) return {};
    // 8602 without lengths is about the request; asking for the next entry would not end.
    const bool tooLong = entry.told && (result.is(kMoreData) || result.is(BUFFER_OVERFLOW));
    if (!result.ok() && !tooLong) return result;
    if (!visit(index, result, entry)) return {};
  }
  return {};
}

/// All subkeys of a key. The server needs full access to a key for this, so it answers 5 for keys
/// that it may read but not change.
template <typename Visit>
Result ForEachKey(QorlixClient& client, const char* key, Visit&& visit) {
  return ForEachEntry([&](std::uint32_t index,
                          RegistryEntry& entry) { return client.Reg_EnumKey(key, index, entry); },
                      visit);
}

/// All values of a key.
template <typename Visit>
Result ForEachValue(QorlixClient& client, const char* key, Visit&& visit) {
  return ForEachEntry([&](std::uint32_t index,
                          RegistryEntry& entry) { return client.Reg_EnumValue(key, index, entry); },
                      visit);
}

}  // namespace client

#endif  // CLIENT_ENUMERATION_H_
