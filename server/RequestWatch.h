#ifndef SERVER_REQUESTWATCH_H_
#define SERVER_REQUESTWATCH_H_

#include <cstdint>

#include "platform/WinTypes.h"

/// A thread that looks at the request log now and then and reports a request that hangs. Whoever
/// serves requests does nothing for it.
class RequestWatch {
 public:
  /// Starts the thread. Without the memory or the handles for it, there is no watch.
  ///
  /// \param limitMs how long a request may run; 0 for no watch
  explicit RequestWatch(std::uint32_t limitMs);
  /// As Stop.
  ~RequestWatch();
  RequestWatch(const RequestWatch&) = delete;
  RequestWatch& operator=(const RequestWatch&) = delete;

  /// Ends the thread and waits for it, for a moment. \returns false when it has not ended by then:
  /// it waits for the trace, whose locks it may hold.
  bool Stop();

 private:
  // What the thread works with. It outlives the object when the thread does.
  struct Work;
  static unsigned __stdcall Run(void* work);

  HANDLE thread_ = nullptr;
  Work* work_ = nullptr;
};

#endif  // SERVER_REQUESTWATCH_H_
