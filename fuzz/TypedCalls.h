#ifndef FUZZ_TYPEDCALLS_H_
#define FUZZ_TYPEDCALLS_H_

#include <cstddef>

/// Every call of the client library that takes a reply apart, in C++ and in plain C, each made once
/// on a new connection. It aborts when something that was handed out does not belong to the client,
/// is no text, or is there although nothing was told.
namespace typed_calls {

std::size_t Count();
void Make(std::size_t index, const char* pipeName);

}  // namespace typed_calls

#endif  // FUZZ_TYPEDCALLS_H_
