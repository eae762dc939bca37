#ifndef ACTIONS_RESTARTRESULTS_H_
#define ACTIONS_RESTARTRESULTS_H_

#include <cstdint>
#include <list>
#include <mutex>
#include <string>

/// The results of silent restarts that nobody has fetched yet, in the order filed. Every operation
/// may be called by any thread.
class RestartResults {
 public:
  /// \returns false, with nothing filed, when there is no memory for it.
  bool File(const char* eventName, std::uint32_t result);

  /// Takes the first result filed under the name. \returns false when there is none.
  bool Take(const char* eventName, std::uint32_t& result);

  /// Removes every result filed under the name. \returns how many they were.
  int Remove(const char* eventName);

 private:
  struct Entry {
    std::string eventName;
    std::uint32_t result;
  };

  std::mutex mutex_;
  std::list<Entry> entries_;
};

#endif  // ACTIONS_RESTARTRESULTS_H_
