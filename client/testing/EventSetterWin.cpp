// Real events, for the tests on Windows.

#include <windows.h>

#include <atomic>
#include <stdexcept>
#include <thread>
#include <utility>

#include "client/testing/EventSetter.h"

namespace client {

struct EventSetter::State {
  std::string name;
  std::atomic<bool> over = false;
  std::thread thread;

  void SetIfItExists() const {
    const HANDLE event = OpenEventA(EVENT_MODIFY_STATE, /*bInheritHandle=*/FALSE, name.c_str());
    if (event == nullptr) return;
    SetEvent(event);
    CloseHandle(event);
  }
};

EventSetter::EventSetter(std::string name) : state_(std::make_unique<State>()) {
  state_->name = std::move(name);
  state_->thread = std::thread([state = state_.get()] {
    while (!state->over) {
      state->SetIfItExists();
      Sleep(5);
    }
  });
}

EventSetter::~EventSetter() {
  state_->over = true;
  state_->thread.join();
}

struct EventHolder::State {
  HANDLE event = nullptr;
};

EventHolder::EventHolder(std::string name) : state_(std::make_unique<State>()) {
  state_->event = CreateEventA(/*lpEventAttributes=*/nullptr, /*bManualReset=*/TRUE,
                               /*bInitialState=*/TRUE, name.c_str());
  if (state_->event == nullptr) throw std::runtime_error("no event " + name);
}

EventHolder::~EventHolder() { CloseHandle(state_->event); }

}  // namespace client
