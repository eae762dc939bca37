// The native twin of RestartEvent.cpp: names in memory. A wait ends at once.

#include <cstdio>
#include <map>
#include <utility>

#include "client/RestartEvent.h"
#include "client/testing/EventSetter.h"

namespace client {
namespace {

constexpr std::uint32_t kInvalidHandle = 6;

struct FakeEvent {
  int handles = 0;
  int setters = 0;
  bool set = false;
};

std::map<std::string, FakeEvent>& Events() {
  static std::map<std::string, FakeEvent> events;
  return events;
}

}  // namespace

struct EventSetter::State {
  std::string name;
};

EventSetter::EventSetter(std::string name) : state_(std::make_unique<State>()) {
  state_->name = std::move(name);
  ++Events()[state_->name].setters;
}

EventSetter::~EventSetter() { --Events()[state_->name].setters; }

struct EventHolder::State {
  std::string name;
};

EventHolder::EventHolder(std::string name) : state_(std::make_unique<State>()) {
  state_->name = std::move(name);
  ++Events()[state_->name].handles;
  Events()[state_->name].set = true;
}

EventHolder::~EventHolder() { --Events()[state_->name].handles; }

std::uint32_t RestartEvent::Create(const char* name, bool& existed) noexcept {
  Close();
  existed = false;
  // As on the platform, a backslash stands behind one of two first words only.
  const std::string text = name;
  const std::size_t slash = text.find('\\');
  if (slash != std::string::npos && text.substr(0, slash) != "Global" &&
      text.substr(0, slash) != "Local") {
    return kInvalidHandle;
  }
  FakeEvent& event = Events()[name];
  existed = event.handles != 0;
  ++event.handles;
  event.set = false;
  event_ = &event;
  return 0;
}

bool RestartEvent::Wait(std::uint32_t /*timeoutMs*/) noexcept {
  const auto* const event = static_cast<const FakeEvent*>(event_);
  return event != nullptr && (event->set || event->setters != 0);
}

void RestartEvent::Close() noexcept {
  if (event_ != nullptr) --static_cast<FakeEvent*>(event_)->handles;
  event_ = nullptr;
}

bool RestartEvent::Exists(const char* name) noexcept {
  const auto found = Events().find(name);
  return found != Events().end() && found->second.handles != 0;
}

void UnusedEventName(char* name, std::uint32_t capacity) noexcept {
  static int count = 0;
  (void)std::snprintf(name, capacity, R"(Global\qorlixctl-restart-1-%x)", ++count);
}

}  // namespace client
