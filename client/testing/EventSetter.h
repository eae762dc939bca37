#ifndef CLIENT_TESTING_EVENTSETTER_H_
#define CLIENT_TESTING_EVENTSETTER_H_

#include <memory>
#include <string>

namespace client {

/// Plays the server's part on a named event, for as long as it lives.
///
/// On Windows a thread sets the event, whenever one of that name exists, again and again. Natively
/// it tells the fake of RestartEvent, whose wait ends at once either way.
class EventSetter {
 public:
  explicit EventSetter(std::string name);
  ~EventSetter();
  EventSetter(const EventSetter&) = delete;
  EventSetter& operator=(const EventSetter&) = delete;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

/// Another program that has the event, for as long as it lives.
class EventHolder {
 public:
  explicit EventHolder(std::string name);
  ~EventHolder();
  EventHolder(const EventHolder&) = delete;
  EventHolder& operator=(const EventHolder&) = delete;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace client

#endif  // CLIENT_TESTING_EVENTSETTER_H_
