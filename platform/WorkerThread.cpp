#include "platform/WorkerThread.h"

#include <new>
#include <system_error>
#include <thread>
#include <utility>

bool platform::StartWorker(std::unique_ptr<Work> work) {
  try {
    std::thread([owned = std::move(work)] { owned->Run(); }).detach();
    return true;
  } catch (const std::system_error&) {
    return false;
  } catch (const std::bad_alloc&) {
    return false;
  }
}
